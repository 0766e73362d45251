#include "plugins/subsonic/SubsonicClient.h"

#include "core/base/HexText.h"
#include "core/base/HostError.h"

#include <openssl/evp.h>

#include <algorithm>
#include <string_view>

namespace qo::host
{
namespace
{
enum SubsonicError
{
    missingParameter = 10,
    otherClient = 20,
    otherServer = 30,
    wrongLogin = 40,
    noTokens = 41,
    notAllowed = 50,
    accountExpired = 60,
    notThere = 70
};

std::string md5Text(std::string_view text)
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    if (EVP_Digest(text.data(), text.size(), digest, &length, EVP_md5(), nullptr) != 1)
        length = 0; // the server then refuses the empty token
    return hexText({reinterpret_cast<const char*>(digest), length});
}

std::string newSalt()
{
    std::string salt = toUtf8(guidToText(systemClock().newGuid()));
    std::erase_if(salt, [](char c) { return c == '-' || c == '{' || c == '}'; });
    return salt;
}

bool isAnswerText(const std::string& type)
{
    return type.find("json") != std::string::npos || type.find("xml") != std::string::npos ||
           type.starts_with("text/html");
}

/// The server's own words, unless they hold a secret of the question.
CString serverWords(const std::string& message, const std::vector<Secret>& secrets)
{
    constexpr int longest = 200;
    for (const Secret& secret : secrets)
    {
        if (!secret.empty() && message.find(secret.view()) != std::string::npos)
            return {};
    }
    return singleLine(fromUtf8(message).Left(longest));
}

/// Whether the answer to a token says that the server knows none.
bool knowsNoTokens(const SubsonicReply& reply)
{
    constexpr int firstWithTokens = 1013;
    return reply.code == noTokens ||
           (reply.code == missingParameter && reply.version > 0 && reply.version < firstWithTokens);
}

CString wordsOfError(const SubsonicReply& reply, const std::vector<Secret>& secrets)
{
    if (knowsNoTokens(reply))
        return u"the server takes nothing but the password itself, which is not sent without "
               u"encryption";
    switch (reply.code)
    {
    case otherClient:
    case otherServer:
        return u"the server speaks another version of the language of music servers";
    case wrongLogin:
        return u"the server does not accept the user and the password";
    case notAllowed:
        return u"the server does not allow that";
    case notThere:
        return u"the server does not have it";
    default:
        const CString words = serverWords(reply.message, secrets);
        return words.IsEmpty() ? CString(u"the server could not do it")
                               : u"the server says: " + words;
    }
}

/// Why the answer is no success; "" for one that is.
CString
failureOf(const HttpAnswer& http, const SubsonicReply& reply, const std::vector<Secret>& secrets)
{
    using Form = SubsonicReply::Form;
    if (reply.form == Form::reply && reply.code >= 0)
        return reply.code == accountExpired ? CString(u"Account expired")
                                            : http.place + u": " + wordsOfError(reply, secrets);
    if (!http.isDone())
        return http.failure;
    if (reply.form == Form::foreign)
        return http.place + u": this is no music server";
    if (reply.form == Form::damaged)
        return http.place + u": the server's answer is damaged or too large";
    return {};
}

HttpAddress interfaceOf(HttpAddress root)
{
    if (!root.path.ends_with("/rest/"))
        root.path += "rest/";
    return root;
}
} // namespace

SubsonicClient::SubsonicClient(HttpAddress root, HttpLimits limits)
    : m_root(interfaceOf(std::move(root))), m_http(m_root, limits)
{
}

void SubsonicClient::setLogin(const Login& login)
{
    const std::lock_guard guard(m_lock);
    m_known = {login, false};
}

void SubsonicClient::setCredentials(const CString& user, const CString& password)
{
    const std::lock_guard guard(m_lock);
    m_known.login.change(user, password);
    m_known.sendsPassword = false;
}

SubsonicClient::Known SubsonicClient::known(const IsCanceled& isCanceled)
{
    const std::lock_guard guard(m_lock);
    (void)m_known.login.password(isCanceled);
    return m_known;
}

bool SubsonicClient::beginPassword()
{
    const std::lock_guard guard(m_lock);
    const bool isSafe = m_root.isEncrypted() || m_root.isLoopback();
    m_known.sendsPassword = m_known.sendsPassword || isSafe;
    return isSafe;
}

SubsonicAnswer
SubsonicClient::sendOnce(HttpRequest& request, const std::vector<Secret>& secrets, HttpAnswer& http)
{
    std::string text;
    bool isTooLong = false;
    HttpRequest sent = request;
    sent.failureSink = [&](const HttpHead&, std::string_view bytes)
    {
        isTooLong = text.size() + bytes.size() > mostAnswerBytes;
        if (!isTooLong)
            text += bytes;
        return !isTooLong;
    };
    bool isText = !request.sink;
    sent.again = [&]
    {
        text.clear();
        isText = !request.sink;
    };
    sent.sink = [&](const HttpHead& head, std::string_view bytes)
    {
        isText = isText || isAnswerText(head.type);
        return isText ? sent.failureSink(head, bytes) : request.sink(head, bytes);
    };
    http = m_http.run(sent);
    SubsonicAnswer answer;
    answer.status = http.status;
    answer.reply.form = SubsonicReply::Form::damaged;
    if (http.isDone() && !isText)
        answer.reply.form = SubsonicReply::Form::reply; // the bytes of a track
    else if (!isTooLong)
        answer.reply = readSubsonicReply(text);
    answer.failure = failureOf(http, answer.reply, secrets);
    if (answer.failure.IsEmpty() && isText && request.sink)
        answer.failure = http.place + u": the server sends no track";
    return answer;
}

SubsonicAnswer SubsonicClient::send(const char* method,
                                    const Parameters& parameters,
                                    HttpRequest request,
                                    HttpAnswer& http)
{
    request.address = m_root;
    request.address.path += std::string(method) + ".view";
    while (true)
    {
        Known known;
        try
        {
            known = this->known(request.isCanceled);
        }
        catch (const HostError& error)
        {
            SubsonicAnswer answer;
            answer.failure = fromUtf8(request.address.url() + ": " + error.what());
            return answer;
        }
        const Secret& password = known.login.known();
        const std::string salt = newSalt();
        Secret salted = password;
        salted.append(salt);
        const std::string token = md5Text(salted.view());
        std::string digits = hexText(password.view());
        const Secret hex(digits);
        wipe(digits);
        request.address.query = "u=" + percentEncoded(known.login.user(), "-._~");
        if (known.sendsPassword)
            request.address.query.append("&p=enc:").append(hex.view());
        else
            request.address.query.append("&t=").append(token).append("&s=").append(salt);
        request.address.query += "&v=1.13.0&c=qo&f=json";
        for (const auto& [name, value] : parameters)
            request.address.query.append("&").append(name).append("=").append(
                percentEncoded(value, "-._~"));
        SubsonicAnswer answer =
            sendOnce(request, {Secret(salt), Secret(token), hex, password}, http);
        if (!knowsNoTokens(answer.reply) || known.sendsPassword || known.login.user().empty() ||
            !beginPassword())
            return answer;
    }
}

SubsonicAnswer
SubsonicClient::ask(const char* method, const Parameters& parameters, const IsCanceled& isCanceled)
{
    HttpRequest request;
    request.isCanceled = isCanceled;
    HttpAnswer http;
    return send(method, parameters, std::move(request), http);
}

HttpAnswer SubsonicClient::fetch(const std::string& trackId, const HttpRequest& request)
{
    HttpAnswer http;
    SubsonicAnswer answer = send("download", {{"id", trackId}}, request, http);
    if (answer.reply.code == notAllowed)
        answer = send("stream", {{"id", trackId}, {"format", "raw"}}, request, http);
    http.failure = answer.failure;
    return http;
}
} // namespace qo::host
