#pragma once

#include "plugins/base/Login.h"
#include "plugins/http/HttpAddress.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace qo::host
{
/// No honest list takes more bytes.
constexpr std::size_t mostAnswerBytes = std::size_t{64} * 1024 * 1024;

/// How long a server may be silent, and how long one that is busy is waited for; tests take less.
struct HttpLimits
{
    long connectSeconds = 15;
    long stallSeconds = 30;
    long busySeconds = 60;
};

/// What is known of an answer before its body.
struct HttpHead
{
    long status = 0;
    std::string type; ///< "text/html; charset=utf-8"; "" without one
    std::string tag;  ///< of the content ("ETag"), with its quotes; "" without one
};

struct HttpRequest
{
    const char* method = "GET";
    HttpAddress address = {};
    std::vector<std::string> headers = {};
    std::string body = {};
    /// A file that is sent from its start, in place of the body.
    IFile* file = nullptr;
    /// Takes what a successful answer brings; false ends the request as wanted.
    std::function<bool(const HttpHead& head, std::string_view bytes)> sink = {};
    /// Takes what any other answer brings, likewise.
    std::function<bool(const HttpHead& head, std::string_view bytes)> failureSink = {};
    std::function<bool()> isCanceled = {};
    std::function<void(std::int64_t sent)> sent = {};
    /// Called before the request is sent again: what the sinks have got is void.
    std::function<void()> again = {};
};

struct HttpAnswer
{
    long status = 0;
    CString place;              ///< the address without its query
    std::string tag;            ///< as in HttpHead
    CString failure;            ///< "" for a status from 200 to 299; begins with the place
    bool isEnded = false;       ///< by the sink
    bool isOtherServer = false; ///< its key is not the one of trustKey()
    bool isDone() const { return failure.IsEmpty(); }
};

/// Waits so many milliseconds; false when the user has stopped meanwhile. isCanceled may be empty.
bool restUnless(std::uint32_t milliseconds, const std::function<bool()>& isCanceled);

/// Requests to one server. Certificates are checked. A redirection is followed for reading, up to
/// five times, and never to another host, scheme or port: so no password gets there. Without
/// encryption it is sent as Digest only, but for this machine itself. A server that is busy and
/// says for how long is asked again then, up to three times. Messages have addresses without their
/// queries, which may hold secrets. From any thread.
class HttpClient
{
public:
    explicit HttpClient(HttpAddress root, HttpLimits limits = {});
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    const HttpAddress& root() const { return m_root; }
    void setLogin(const Login& login);
    /// As Login::change().
    void setCredentials(const CString& user, const CString& password);
    /// Certificates are no longer checked from now on, but the server's public key has to have this
    /// SHA-256, in digits. Before the first request.
    void trustKey(const std::string& digest);
    /// Certificates count from now on when an authority of this file (PEM) has signed them, and
    /// those of the system do not. Before the first request.
    void trustAuthorities(const CString& file);
    HttpAnswer run(HttpRequest request);

private:
    class Connection;

    struct Course;

    unsigned long firstScheme() const;
    std::unique_ptr<Connection> takeConnection();
    HttpAnswer runOnce(Connection& connection,
                       const HttpRequest& request,
                       Course& course,
                       const CString& place);
    /// Waits as long as a busy server asks; false if that is too long, or has been cancelled.
    bool waitUntilFree(const HttpRequest& request, long seconds) const;
    void prepare(Connection& connection, const HttpRequest& request);
    void forgetConnections();
    /// Why there is no password; "" when there is one, or no login.
    CString needPassword(const std::function<bool()>& isCanceled);

    const HttpAddress m_root;
    const HttpLimits m_limits;
    std::string m_key;         ///< the trusted one, as libcurl takes it; "" to check certificates
    std::string m_authorities; ///< the file; "" for those of the system
    std::mutex m_lock;         ///< guards what follows
    std::vector<std::unique_ptr<Connection>> m_idle;
    Login m_login;
    unsigned long m_scheme; ///< the ways to send the password that are tried
};
} // namespace qo::host
