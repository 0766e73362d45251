#pragma once

#include "core/share/Shares.h"
#include "plugins/http/HttpResume.h"

#include <QoKernel/Sharing.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace qo::host
{
/// Fetches what friends offer, from the addresses of their invitations. The server is known by the
/// digest of its key and by nothing else, so a wrong one never sees the share id. A transfer that
/// breaks off is taken up where it was, some times, unless the file has changed meanwhile. What
/// went wrong is said by setPluginFailure().
class ShareTransport final : public IVelmoraShareManager
{
public:
    /// From the friends' shares of the session, which are read when the first one is asked for.
    explicit ShareTransport(HttpLimits limits = {}, HttpPatience patience = {})
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
    /// What is fetched to where.
    struct Fetch
    {
        CString localPath;
        std::int64_t position; ///< so many bytes are in the local file
        std::int64_t largest;  ///< the local file may not become longer
        IQoProgress* progress;
        std::vector<std::string> headers = {};
    };

    /// Null for a share that is not known.
    Source* find(const CString& device);
    bool fetch(const CString& device, const std::string& path, const Fetch& fetch);

    const HttpLimits m_limits;
    const HttpPatience m_patience;
    std::mutex m_lock;                   ///< guards the others
    std::map<CString, Source> m_sources; ///< by the device of their paths; those once found stay
};
} // namespace qo::host
