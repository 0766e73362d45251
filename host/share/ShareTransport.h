#pragma once

#include "core/share/Shares.h"
#include "plugins/http/HttpClient.h"

#include <QoKernel/Sharing.h>

#include <map>
#include <memory>
#include <mutex>

namespace qo::host
{
/// How often a transfer that breaks off is taken up; tests take less.
struct SharePatience
{
    int attempts = 5;          ///< in a row that bring next to nothing
    std::uint32_t pause = 500; ///< milliseconds before the second one; doubles with each
};

/// Fetches what friends offer, from the addresses of their invitations. The server is known by the
/// digest of its key and by nothing else, so a wrong one never sees the share id. A transfer that
/// breaks off is taken up where it was, some times, unless the file has changed meanwhile. What
/// went wrong is said by setPluginFailure().
class ShareTransport final : public IVelmoraShareManager
{
public:
    /// From the friends' shares of the session, which are read when the first one is asked for.
    explicit ShareTransport(HttpLimits limits = {}, SharePatience patience = {})
        : m_limits(limits), m_patience(patience)
    {
    }

    int getExtract(const CString& device, const CString& localPath, IQoProgress* progress) override;
    CString getDeviceName(const CString& device) override;
    int getFile(const ShareFileRequest& request) override;

private:
    struct Source
    {
        CString name;
        std::string shareId;
        std::unique_ptr<HttpClient> client; ///< null when the invitation has no address
        /// Why nothing of it can be had, once that is known: further files are not asked for.
        CString refusal;
    };
    struct Fetch;

    /// Null for a share that is not known.
    Source* find(const CString& device);
    bool fetch(const CString& device, const std::string& path, Fetch& fetch);
    /// One request, from the byte at which the local file ends.
    HttpAnswer continueWith(const Source& source, const std::string& path, Fetch& fetch) const;

    const HttpLimits m_limits;
    const SharePatience m_patience;
    std::mutex m_lock;                   ///< guards the others
    std::map<CString, Source> m_sources; ///< by the device of their paths; those once found stay
};
} // namespace qo::host
