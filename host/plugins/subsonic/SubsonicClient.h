#pragma once

#include "plugins/http/HttpClient.h"
#include "plugins/subsonic/SubsonicReply.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace qo::host
{
/// The end of a question; a failure is one sentence.
struct SubsonicAnswer
{
    CString failure;
    SubsonicReply reply;
    long status = 0; ///< of HTTP
};

/// Questions to one music server. The password is never sent where a token will do: the MD5 sum of
/// password and salt, with a new salt for each question. A server that knows no tokens (the error
/// 41, and 10 of those before version 1.13, which miss a parameter then) gets it only when the
/// connection is encrypted, or leads nowhere but to this machine. From any thread.
class SubsonicClient
{
public:
    using Parameters = std::vector<std::pair<const char*, std::string>>;
    using IsCanceled = std::function<bool()>;

    explicit SubsonicClient(HttpAddress root, HttpLimits limits = {});

    void setLogin(const Login& login);
    /// As Login::change().
    void setCredentials(const CString& user, const CString& password);
    SubsonicAnswer
    ask(const char* method, const Parameters& parameters, const IsCanceled& isCanceled);
    /// Sends the request to where the bytes of a track are: as the server has them, also where it
    /// lets tracks be played but not downloaded.
    HttpAnswer fetch(const std::string& trackId, const HttpRequest& request);

private:
    struct Known
    {
        Login login;
        bool sendsPassword = false;
    };

    SubsonicAnswer
    send(const char* method, const Parameters& parameters, HttpRequest request, HttpAnswer& http);
    SubsonicAnswer
    sendOnce(HttpRequest& request, const std::vector<Secret>& secrets, HttpAnswer& http);
    /// With the password. Throws HostError when there is none.
    Known known(const IsCanceled& isCanceled);
    /// Whether the password may be sent; from then on it is.
    bool beginPassword();

    HttpAddress m_root;
    HttpClient m_http;
    std::mutex m_lock; ///< guards the login
    Known m_known;
};
} // namespace qo::host
