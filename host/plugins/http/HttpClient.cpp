#include "plugins/http/HttpClient.h"

#include "core/base/HostError.h"
#include "core/base/Trimmed.h"

#include <curl/curl.h>
#include <malloc.h>
#include <openssl/evp.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

namespace qo::host
{
namespace
{
constexpr int mostRedirections = 5;
constexpr int mostWaits = 3;                                     // for a server that is busy
constexpr std::size_t mostUnread = std::size_t{1} * 1024 * 1024; // bytes that nobody asked for
constexpr int pause = 100; // milliseconds between two questions whether the user has cancelled

/// The sentence for a status; a cause follows the address.
std::string wordsOf(long status, long busySeconds)
{
    switch (status)
    {
    case 401:
        return "the server does not accept the user and the password";
    case 403:
        return "the server does not allow that";
    case 404:
        return "there is no such file or folder";
    case 405:
        return "the server does not offer that, or the name is taken";
    case 409:
        return "the folder above is missing";
    case 412:
        return "it is there already";
    case 416:
        return "the file is shorter than the server said";
    case 423:
        return "it is locked by another program";
    case 429:
    case 503:
        return "the server is busy and asks to come back " +
               (busySeconds <= 0 ? "later" : "after " + std::to_string(busySeconds) + " seconds");
    case 507:
        return "the server has no room left";
    default:
        return "the server answered with status " + std::to_string(status);
    }
}

/// The sentence for a transfer that did not come to its end; the library's own words where those
/// say more, such as what is wrong with a certificate.
std::string wordsOf(CURLcode code, const char* detail)
{
    switch (code)
    {
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
        return "another server answers there than the one that is known";
    case CURLE_OPERATION_TIMEDOUT:
        return "the server does not answer, or has stopped in the middle";
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
        return "the server has broken off the connection";
    default:
        return *detail != '\0' ? detail : curl_easy_strerror(code);
    }
}

/// What the callbacks of a transfer need.
struct Exchange
{
    CURL* handle;
    const HttpRequest& request;
    std::string location;
    std::string tag;
    bool isEnded = false;
    bool hasReadFailed = false;
    std::size_t unread = 0;

    HttpHead head() const
    {
        HttpHead head;
        const char* type = nullptr;
        curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &head.status);
        curl_easy_getinfo(handle, CURLINFO_CONTENT_TYPE, &type);
        head.type = type ? type : "";
        head.tag = tag;
        return head;
    }
};

bool isSuccess(long status)
{
    return status >= 200 && status < 300;
}

std::size_t takeBody(char* bytes, std::size_t, std::size_t count, void* data)
{
    auto& exchange = *static_cast<Exchange*>(data);
    const HttpHead head = exchange.head();
    const auto& sink =
        isSuccess(head.status) ? exchange.request.sink : exchange.request.failureSink;
    exchange.unread += sink ? 0 : count;
    if (sink ? sink(head, {bytes, count}) : exchange.unread <= mostUnread)
        return count;
    exchange.isEnded = true;
    return 0;
}

/// The value of a header line of that name, which is in lower case and has its colon.
std::optional<std::string> valueOf(std::string_view line, std::string_view name)
{
    const bool isIt =
        line.size() > name.size() &&
        std::equal(name.begin(),
                   name.end(),
                   line.begin(),
                   [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b + 32 : b); });
    return isIt ? std::optional<std::string>(trimmed(line.substr(name.size()))) : std::nullopt;
}

std::size_t takeHeader(char* bytes, std::size_t, std::size_t count, void* data)
{
    auto& exchange = *static_cast<Exchange*>(data);
    const std::string_view line(bytes, count);
    // A status line: what an answer before said, as a refusal, does not count for this one.
    if (line.starts_with("HTTP/"))
    {
        exchange.location.clear();
        exchange.tag.clear();
    }
    else if (auto location = valueOf(line, "location:"))
        exchange.location = std::move(*location);
    else if (auto tag = valueOf(line, "etag:"))
        exchange.tag = std::move(*tag);
    return count;
}

std::size_t giveFile(char* bytes, std::size_t size, std::size_t count, void* data)
{
    auto& exchange = *static_cast<Exchange*>(data);
    const std::int64_t read = exchange.request.file->read(bytes, size * count);
    exchange.hasReadFailed = read < 0;
    return read < 0 ? CURL_READFUNC_ABORT : static_cast<std::size_t>(read);
}

int rewindFile(void* data, curl_off_t offset, int origin)
{
    auto& exchange = *static_cast<Exchange*>(data);
    return origin == SEEK_SET && exchange.request.file->seek(offset) ? CURL_SEEKFUNC_OK
                                                                     : CURL_SEEKFUNC_FAIL;
}

int showSent(void* data, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent)
{
    const auto& exchange = *static_cast<Exchange*>(data);
    if (exchange.request.sent)
        exchange.request.sent(sent);
    return 0;
}

void giveBack(void* memory)
{
    if (memory)
        ::explicit_bzero(memory, ::malloc_usable_size(memory));
    std::free(memory);
}

void* resized(void* memory, std::size_t size)
{
    void* const other = std::malloc(size);
    if (other && memory)
    {
        std::memcpy(other, memory, std::min(size, ::malloc_usable_size(memory)));
        giveBack(memory);
    }
    return other;
}

/// The library keeps passwords, and headers with them, in memory that it does not overwrite when it
/// gives it back.
void startLibrary()
{
    static const CURLcode started = curl_global_init_mem(
        CURL_GLOBAL_DEFAULT, std::malloc, giveBack, resized, ::strdup, std::calloc);
    (void)started;
}

/// The method, and what is sent with it.
void setContent(CURL* handle, const HttpRequest& request, Exchange& exchange)
{
    if (request.file)
    {
        curl_easy_setopt(handle, CURLOPT_UPLOAD, 1L);
        curl_easy_setopt(handle, CURLOPT_READFUNCTION, giveFile);
        curl_easy_setopt(handle, CURLOPT_READDATA, &exchange);
        curl_easy_setopt(handle, CURLOPT_SEEKFUNCTION, rewindFile);
        curl_easy_setopt(handle, CURLOPT_SEEKDATA, &exchange);
        curl_easy_setopt(
            handle, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(request.file->sizeAtOpen()));
    }
    else if (!request.body.empty())
    {
        curl_easy_setopt(handle, CURLOPT_POSTFIELDS, request.body.c_str());
        curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE, static_cast<long>(request.body.size()));
    }
    if (std::string_view(request.method) == "HEAD")
        curl_easy_setopt(handle, CURLOPT_NOBODY, 1L);
    else if (std::string_view(request.method) != "GET")
        curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, request.method);
}
} // namespace

bool restUnless(std::uint32_t milliseconds, const std::function<bool()>& isCanceled)
{
    for (std::uint32_t rested = 0; rested < milliseconds; rested += pause)
    {
        if (isCanceled && isCanceled())
            return false;
        systemClock().sleep(pause);
    }
    return !isCanceled || !isCanceled();
}

/// A handle with its open connection. One transfer at a time.
class HttpClient::Connection
{
public:
    Connection() : handle(curl_easy_init()), multi(curl_multi_init()) {}
    ~Connection()
    {
        curl_slist_free_all(headers);
        curl_easy_cleanup(handle);
        curl_multi_cleanup(multi);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Until the transfer has ended or the user has cancelled it.
    CURLcode perform(const std::function<bool()>& isCanceled)
    {
        CURLcode result = CURLE_FAILED_INIT;
        if (curl_multi_add_handle(multi, handle) != CURLM_OK)
            return result;
        int running = 1;
        while (running > 0)
        {
            if (isCanceled && isCanceled())
            {
                result = CURLE_ABORTED_BY_CALLBACK;
                // Nor is the answer of a silent name server waited for.
                curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
                break;
            }
            if (curl_multi_perform(multi, &running) != CURLM_OK ||
                (running > 0 && curl_multi_poll(multi, nullptr, 0, pause, nullptr) != CURLM_OK))
                break;
        }
        int left = 0;
        while (const CURLMsg* const message = curl_multi_info_read(multi, &left))
        {
            if (message->msg == CURLMSG_DONE)
                result = message->data.result;
        }
        curl_multi_remove_handle(multi, handle);
        return result;
    }

    CURL* const handle;
    CURLM* const multi;
    curl_slist* headers = nullptr;
    char error[CURL_ERROR_SIZE] = "";
};

/// Where an answer sends the request next, and when.
struct HttpClient::Course
{
    std::string location;
    long busySeconds = 0; ///< 0: the server does not say
};

HttpClient::HttpClient(HttpAddress root, HttpLimits limits)
    : m_root(std::move(root)), m_limits(limits), m_scheme(firstScheme())
{
    startLibrary();
}

unsigned long HttpClient::firstScheme() const
{
    const bool isSafe = m_root.isEncrypted() || m_root.isLoopback();
    return isSafe ? CURLAUTH_DIGEST | CURLAUTH_BASIC : CURLAUTH_DIGEST;
}

HttpClient::~HttpClient() = default;

void HttpClient::setLogin(const Login& login)
{
    const std::lock_guard guard(m_lock);
    m_login = login;
    forgetConnections();
}

void HttpClient::setCredentials(const CString& user, const CString& password)
{
    const std::lock_guard guard(m_lock);
    m_login.change(user, password);
    forgetConnections();
}

void HttpClient::forgetConnections()
{
    m_scheme = firstScheme();
    m_idle.clear(); // a connection remembers who was let in
}

CString HttpClient::needPassword(const std::function<bool()>& isCanceled)
{
    const std::lock_guard guard(m_lock);
    try
    {
        (void)m_login.password(isCanceled);
        return {};
    }
    catch (const HostError& error)
    {
        return fromUtf8(error.what());
    }
}

void HttpClient::trustKey(const std::string& digest)
{
    unsigned char bytes[32] = {};
    for (std::size_t i = 0; i < sizeof(bytes) && 2 * i + 2 <= digest.size(); ++i)
        std::from_chars(&digest[2 * i], &digest[2 * i] + 2, bytes[i], 16);
    constexpr std::size_t textSize = 45; // four signs for three bytes, and the end
    unsigned char text[textSize] = {};
    EVP_EncodeBlock(text, bytes, sizeof(bytes));
    m_key = "sha256//" + std::string(reinterpret_cast<const char*>(text));
}

void HttpClient::trustAuthorities(const CString& file)
{
    m_authorities = toSystemPath(file);
}

std::unique_ptr<HttpClient::Connection> HttpClient::takeConnection()
{
    const std::lock_guard guard(m_lock);
    if (m_idle.empty())
        return std::make_unique<Connection>();
    std::unique_ptr<Connection> connection = std::move(m_idle.back());
    m_idle.pop_back();
    return connection;
}

void HttpClient::prepare(Connection& connection, const HttpRequest& request)
{
    CURL* const handle = connection.handle;
    curl_easy_reset(handle);
    curl_easy_setopt(handle, CURLOPT_URL, request.address.fullUrl().c_str());
    curl_easy_setopt(handle, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, m_limits.connectSeconds);
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_TIME, m_limits.stallSeconds);
    curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, 256L * 1024);
    curl_easy_setopt(handle, CURLOPT_UPLOAD_BUFFERSIZE, 256L * 1024);
    curl_easy_setopt(handle, CURLOPT_USERAGENT, "qo");
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, connection.error);
    connection.error[0] = '\0';
    // A proxy is another machine.
    if (request.address.isLoopback())
        curl_easy_setopt(handle, CURLOPT_NOPROXY, "*");
    if (!m_key.empty())
    {
        curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 0L);
        curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 0L);
        curl_easy_setopt(handle, CURLOPT_PINNEDPUBLICKEY, m_key.c_str());
    }
    if (!m_authorities.empty())
    {
        curl_easy_setopt(handle, CURLOPT_CAINFO, m_authorities.c_str());
        curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
    }
    const std::lock_guard guard(m_lock);
    if (m_login.user().empty())
        return;
    curl_easy_setopt(handle, CURLOPT_HTTPAUTH, static_cast<long>(m_scheme));
    curl_easy_setopt(handle, CURLOPT_USERNAME, m_login.user().c_str());
    curl_easy_setopt(handle, CURLOPT_PASSWORD, m_login.known().c_str());
}

HttpAnswer HttpClient::runOnce(Connection& connection,
                               const HttpRequest& request,
                               Course& course,
                               const CString& place)
{
    prepare(connection, request);
    CURL* const handle = connection.handle;
    Exchange exchange{handle, request, {}, {}};
    curl_slist_free_all(std::exchange(connection.headers, nullptr));
    for (const std::string& header : request.headers)
        connection.headers = curl_slist_append(connection.headers, header.c_str());
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, connection.headers);
    setContent(handle, request, exchange);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, takeBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &exchange);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, takeHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, &exchange);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, showSent);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &exchange);

    const CURLcode code = connection.perform(request.isCanceled);
    HttpAnswer answer;
    answer.status = exchange.head().status;
    answer.tag = exchange.tag;
    answer.isEnded = exchange.isEnded;
    answer.isOtherServer = code == CURLE_SSL_PINNEDPUBKEYNOTMATCH;
    answer.place = place;
    course.location = exchange.location;
    curl_off_t busySeconds = 0;
    curl_easy_getinfo(handle, CURLINFO_RETRY_AFTER, &busySeconds);
    course.busySeconds = static_cast<long>(busySeconds);
    std::string cause;
    if (exchange.hasReadFailed)
        cause = "the local file cannot be read";
    else if (code != CURLE_OK && !exchange.isEnded)
        cause = wordsOf(code, connection.error);
    else if (!isSuccess(answer.status))
        cause = wordsOf(answer.status, course.busySeconds);
    if (!cause.empty())
        answer.failure = answer.place + fromUtf8(": " + cause);
    long offered = 0;
    curl_easy_getinfo(handle, CURLINFO_HTTPAUTH_AVAIL, &offered);
    const std::lock_guard guard(m_lock);
    const unsigned long usable = static_cast<unsigned long>(offered) & m_scheme;
    // The better way that the server offers is used at once the next time.
    if (answer.isDone() && usable != 0)
        m_scheme = (usable & CURLAUTH_DIGEST) != 0 ? CURLAUTH_DIGEST : CURLAUTH_BASIC;
    return answer;
}

bool HttpClient::waitUntilFree(const HttpRequest& request, long seconds) const
{
    if (seconds <= 0 || seconds > m_limits.busySeconds)
        return false;
    return restUnless(static_cast<std::uint32_t>(seconds * 1000), request.isCanceled) &&
           (!request.file || request.file->seek(0));
}

HttpAnswer HttpClient::run(HttpRequest request)
{
    HttpAnswer answer;
    // Where a redirection leads is the server's word, and may hold what no message shall.
    const CString place = fromUtf8(request.address.url());
    if (const CString cause = needPassword(request.isCanceled); !cause.IsEmpty())
    {
        answer.place = place;
        answer.failure = place + u": " + cause;
        return answer;
    }
    std::unique_ptr<Connection> connection = takeConnection();
    const std::string_view method = request.method;
    const bool isReading = method == "GET" || method == "HEAD" || method == "PROPFIND";
    int redirections = 0;
    int waits = 0;
    for (bool isFirst = true;; isFirst = false)
    {
        if (!isFirst && request.again)
            request.again();
        Course course;
        answer = runOnce(*connection, request, course, place);
        const bool isBusy = answer.status == 429 || answer.status == 503;
        if (isBusy && waits++ < mostWaits && waitUntilFree(request, course.busySeconds))
            continue;
        const bool isRedirected =
            answer.status >= 300 && answer.status < 400 && !course.location.empty();
        if (!isRedirected)
            break;
        const auto target = isReading ? request.address.resolve(course.location) : std::nullopt;
        answer.failure =
            answer.place + (target ? u": the server leads around in a ring"
                                   : u": the server leads to another place, which is not followed");
        if (!target || redirections++ == mostRedirections)
            break;
        request.address = *target;
    }
    const std::lock_guard guard(m_lock);
    m_idle.push_back(std::move(connection));
    return answer;
}
} // namespace qo::host
