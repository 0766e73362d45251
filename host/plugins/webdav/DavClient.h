#pragma once

#include "plugins/webdav/DavAddress.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace qo::host
{
/// How long a server may be silent; tests take less.
struct DavLimits
{
    long connectSeconds = 15;
    long stallSeconds = 30;
};

struct DavRequest
{
    const char* method = "GET";
    DavAddress address;
    std::vector<std::string> headers = {};
    std::string body = {};
    /// A file that is sent from its start, in place of the body.
    IFile* file = nullptr;
    /// Takes what a successful answer brings; false ends the request as wanted. The status is that
    /// of the answer.
    std::function<bool(long status, std::string_view bytes)> sink = {};
    std::function<bool()> isCanceled = {};
    std::function<void(std::int64_t sent)> sent = {};
};

struct DavAnswer
{
    long status = 0;
    CString failure;      ///< "" for a status from 200 to 299
    bool isEnded = false; ///< by the sink
    bool isDone() const { return failure.IsEmpty(); }
};

/// Requests to one server. Certificates are checked. A redirection is followed for reading, up to
/// five times, and never to another host, scheme or port: so no password gets there. Without
/// encryption it is sent as Digest only, but for this machine itself. From any thread.
class DavClient
{
public:
    explicit DavClient(DavAddress root, DavLimits limits = {});
    ~DavClient();
    DavClient(const DavClient&) = delete;
    DavClient& operator=(const DavClient&) = delete;

    const DavAddress& root() const { return m_root; }
    void setCredentials(const CString& user, const CString& password);
    DavAnswer run(DavRequest request);

private:
    class Connection;

    unsigned long firstScheme() const;
    std::unique_ptr<Connection> takeConnection();
    DavAnswer runOnce(Connection& connection, const DavRequest& request, std::string& location);
    void prepare(Connection& connection, const DavRequest& request);

    const DavAddress m_root;
    const DavLimits m_limits;
    std::mutex m_lock; ///< guards what follows
    std::vector<std::unique_ptr<Connection>> m_idle;
    std::string m_user;
    std::string m_password;
    unsigned long m_scheme; ///< the ways to send the password that are tried
};
} // namespace qo::host
