#include "share/ShareServer.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "share/ConnectionWatch.h"

#include <climits>
#include <microhttpd.h>
#include <netdb.h>
#include <sys/socket.h>

#include <cerrno>
#include <charconv>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

namespace qo::host
{
namespace
{
constexpr const char* bearer = "Bearer ";
constexpr const char* filesPath = "/1/files/";
constexpr const char* extractPath = "/1/extract";
constexpr std::size_t blockSize = std::size_t{64} * 1024;
constexpr std::size_t memoryOfConnection = std::size_t{32} * 1024;
constexpr unsigned serverThreads = 4;
constexpr std::chrono::milliseconds tick{200};
constexpr int ticksToTell = 5;
constexpr std::size_t mostToldOf = 1000; // machines
constexpr const char* tlsVersions = "NORMAL:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2";

using Clock = ConnectionWatch::Clock;

std::string_view headerOf(MHD_Connection* connection, const char* name)
{
    const char* const value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
    return value ? value : "";
}

std::string numberOf(const sockaddr* address)
{
    char host[NI_MAXHOST] = "";
    const socklen_t size =
        address->sa_family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
    ::getnameinfo(address, size, host, sizeof(host), nullptr, 0, NI_NUMERICHOST);
    return host;
}

std::string peerOf(MHD_Connection* connection)
{
    const MHD_ConnectionInfo* const info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    return info && info->client_addr ? numberOf(info->client_addr) : "";
}

/// A whole number and nothing else; -1 for any other text.
std::int64_t wholeNumber(std::string_view text)
{
    std::int64_t number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : -1;
}

/// The first byte of "bytes=17-"; nothing for other ranges, which may be answered with the whole
/// file.
std::optional<std::int64_t> rangeStart(std::string_view header)
{
    constexpr std::string_view unit = "bytes=";
    if (!header.starts_with(unit) || !header.ends_with('-'))
        return {};
    const std::int64_t first =
        wholeNumber(header.substr(unit.size(), header.size() - unit.size() - 1));
    return first >= 0 ? std::optional(first) : std::nullopt;
}

bool hasBody(MHD_Connection* connection)
{
    return !headerOf(connection, MHD_HTTP_HEADER_CONTENT_LENGTH).empty() ||
           !headerOf(connection, MHD_HTTP_HEADER_TRANSFER_ENCODING).empty();
}

void addHeader(MHD_Response* response, const char* name, const std::string& value)
{
    MHD_add_response_header(response, name, value.c_str());
}

/// What a friend's list has of the file is a path in the share: the drive is its first component.
std::string markOf(const Offer::File& file)
{
    const CQoCollPath path(file.path);
    return fileMark(CQoCollPath::makeShare({}, path).getComponents(), file.size);
}

/// One request, from its head to its end.
struct Visit
{
    std::shared_ptr<const Offer> offer; ///< null for a wrong share id
    std::unique_ptr<IFile> file;
    std::int64_t first = 0; ///< where the answer begins in the file
    ShareVisit told;
};

ssize_t giveBytes(void* data, std::uint64_t position, char* buffer, std::size_t size)
{
    auto& visit = *static_cast<Visit*>(data);
    const auto place = visit.first + static_cast<std::int64_t>(position);
    const bool isRight = visit.file->position() == place || visit.file->seek(place);
    const std::int64_t count =
        visit.offer->hasEnded() || !isRight ? -1 : visit.file->read(buffer, size);
    // A file that has become shorter cannot be brought to the end that was promised.
    if (count <= 0)
        return MHD_CONTENT_READER_END_WITH_ERROR;
    visit.told.bytes += count;
    return count;
}

void logServer(void*, const char* format, va_list arguments)
{
    char line[512] = "";
    std::vsnprintf(line, sizeof(line), format, arguments);
    log(level::detail, u"share server : %s", fromUtf8(line));
}

class RunningServer final : public ShareServer
{
public:
    RunningServer(const ShareKey& key,
                  const Offers& offers,
                  const PeerAddress& address,
                  const ShareLimits& limits,
                  std::function<void(const ShareVisit&)> visited)
        : m_offers(offers), m_limits(limits), m_visited(std::move(visited)), m_pem(key.pem())
    {
        start(address);
        m_timer = std::thread([this] { watch(); });
    }
    ~RunningServer() override
    {
        {
            const std::lock_guard guard(m_lock);
            m_ends = true;
        }
        m_wake.notify_all();
        m_timer.join();
        m_watch.resumeAll();
        MHD_stop_daemon(m_daemon);
    }
    RunningServer(const RunningServer&) = delete;
    RunningServer& operator=(const RunningServer&) = delete;

    int port() const override
    {
        const MHD_DaemonInfo* const info = MHD_get_daemon_info(m_daemon, MHD_DAEMON_INFO_BIND_PORT);
        return info ? info->port : 0;
    }

private:
    void start(const PeerAddress& address)
    {
        const bool isNumber6 = address.host.starts_with('[');
        const std::string host =
            isNumber6 ? address.host.substr(1, address.host.size() - 2) : address.host;
        addrinfo hints = {};
        hints.ai_family = AF_UNSPEC;
        hints.ai_socktype = SOCK_STREAM;
        hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
        addrinfo* found = nullptr;
        const std::string port = std::to_string(address.port);
        if (const int error = ::getaddrinfo(host.c_str(), port.c_str(), &hints, &found))
            throw HostError(ExitCode::usage,
                            "there is no address " + address.host +
                                " here: " + ::gai_strerror(error));
        const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owned(found, ::freeaddrinfo);
        const unsigned family =
            found->ai_family == AF_INET6 ? static_cast<unsigned>(MHD_USE_IPv6) : 0U;
        errno = 0;
        m_daemon = MHD_start_daemon(MHD_USE_TLS | MHD_USE_EPOLL_INTERNAL_THREAD |
                                        MHD_ALLOW_SUSPEND_RESUME | MHD_USE_ERROR_LOG | family,
                                    0,
                                    nullptr,
                                    nullptr,
                                    &RunningServer::answer,
                                    this,
                                    MHD_OPTION_EXTERNAL_LOGGER,
                                    &logServer,
                                    nullptr,
                                    MHD_OPTION_SOCK_ADDR,
                                    found->ai_addr,
                                    MHD_OPTION_HTTPS_MEM_KEY,
                                    m_pem.c_str(),
                                    MHD_OPTION_HTTPS_MEM_CERT,
                                    m_pem.c_str(),
                                    MHD_OPTION_HTTPS_PRIORITIES,
                                    tlsVersions,
                                    MHD_OPTION_THREAD_POOL_SIZE,
                                    serverThreads,
                                    MHD_OPTION_CONNECTION_LIMIT,
                                    m_limits.connections,
                                    MHD_OPTION_PER_IP_CONNECTION_LIMIT,
                                    m_limits.connectionsOfOne,
                                    MHD_OPTION_CONNECTION_TIMEOUT,
                                    m_limits.stallSeconds,
                                    MHD_OPTION_CONNECTION_MEMORY_LIMIT,
                                    memoryOfConnection,
                                    MHD_OPTION_NOTIFY_CONNECTION,
                                    &RunningServer::connectionChanged,
                                    this,
                                    MHD_OPTION_NOTIFY_COMPLETED,
                                    &RunningServer::completed,
                                    this,
                                    MHD_OPTION_END);
        if (!m_daemon)
            throw HostError(ExitCode::failed,
                            "nothing can be served at " + address.place() +
                                (errno != 0 ? ": " + errorWords(errno) : std::string()));
    }

    /// Keeps the times of connections.
    void watch()
    {
        std::unique_lock lock(m_lock);
        int ticks = 0;
        while (!m_wake.wait_for(lock, tick, [this] { return m_ends; }))
        {
            m_watch.resume(Clock::now());
            m_watch.cutOff(std::chrono::seconds(m_limits.requestSeconds), m_limits.connections / 2);
            if (++ticks % ticksToTell == 0)
                tellWrongIds();
        }
        tellWrongIds();
    }

    static void connectionChanged(void* self,
                                  MHD_Connection* connection,
                                  void**,
                                  MHD_ConnectionNotificationCode code)
    {
        auto& watch = static_cast<RunningServer*>(self)->m_watch;
        const auto note = [&]
        {
            if (code == MHD_CONNECTION_NOTIFY_STARTED)
                watch.came(connection);
            else
                watch.left(connection);
            return MHD_YES;
        };
        (void)guarded(note);
    }

    static void
    completed(void* self, MHD_Connection* connection, void** data, MHD_RequestTerminationCode code)
    {
        auto& running = *static_cast<RunningServer*>(self);
        running.m_watch.setBusy(connection, false);
        const std::unique_ptr<Visit> visit(static_cast<Visit*>(std::exchange(*data, nullptr)));
        if (!visit)
            return;
        visit->told.isWhole = visit->file && code == MHD_REQUEST_TERMINATED_COMPLETED_OK;
        const auto tell = [&]
        {
            running.tell(*visit);
            return MHD_YES;
        };
        (void)guarded(tell);
    }

    /// What must not fly through C code counts as a failure of this one connection.
    template <class Function>
    static MHD_Result guarded(Function function)
    {
        try
        {
            return function();
        }
        catch (...)
        {
            return MHD_NO;
        }
    }

    void tell(const Visit& visit)
    {
        const ShareVisit& told = visit.told;
        if (!visit.offer)
        {
            const std::lock_guard guard(m_wrongLock);
            if (m_wrongIds.size() < mostToldOf || m_wrongIds.contains(told.from))
                ++m_wrongIds[told.from];
            return;
        }
        log(level::flow,
            u"share server : %s (%s) %s %s, %I64d bytes",
            told.friendName,
            fromUtf8(told.from),
            !visit.file    ? u"was refused"
            : told.isWhole ? u"has"
                           : u"broke off",
            told.path.IsEmpty() ? CString(u"the extract") : told.path,
            told.bytes);
        if (m_visited)
            m_visited(told);
    }

    /// Strangers decide how often they come, and shall not decide how much is written about it.
    void tellWrongIds()
    {
        std::map<std::string, int> wrong;
        {
            const std::lock_guard guard(m_wrongLock);
            wrong.swap(m_wrongIds);
        }
        for (const auto& [from, times] : wrong)
        {
            log(level::warning,
                u"share server : %d requests with a wrong share id from %s",
                times,
                fromUtf8(from));
            ShareVisit visit;
            visit.from = from;
            visit.times = times;
            if (m_visited)
                m_visited(visit);
        }
    }

    static MHD_Result answer(void* self,
                             MHD_Connection* connection,
                             const char* url,
                             const char* method,
                             const char*,
                             const char*,
                             std::size_t*,
                             void** data)
    {
        auto& running = *static_cast<RunningServer*>(self);
        const auto answer = [&]
        {
            const bool isNew = *data == nullptr;
            if (isNew)
                *data = running.meet(connection).release();
            auto& visit = *static_cast<Visit*>(*data);
            // An answer at the first call ends the connection: only whoever knows the id, and sends
            // nothing after the request, may keep it.
            if (visit.offer)
                return isNew && !hasBody(connection)
                           ? MHD_YES
                           : running.serve(connection, visit, url, method);
            if (!isNew)
                return refuse(connection, MHD_HTTP_FORBIDDEN);
            const auto until =
                Clock::now() + std::chrono::milliseconds(running.m_limits.wrongIdPause);
            return running.m_watch.suspend(connection, until, running.m_limits.waitingWrongIds)
                       ? MHD_YES
                       : MHD_NO;
        };
        return guarded(answer);
    }

    std::unique_ptr<Visit> meet(MHD_Connection* connection)
    {
        m_watch.setBusy(connection, true);
        auto visit = std::make_unique<Visit>();
        visit->told.from = peerOf(connection);
        std::string_view id = headerOf(connection, MHD_HTTP_HEADER_AUTHORIZATION);
        if (id.starts_with(bearer))
        {
            id.remove_prefix(std::string_view(bearer).size());
            visit->offer = m_offers.find(id);
        }
        if (visit->offer)
            visit->told.friendName = visit->offer->friendName();
        return visit;
    }

    static MHD_Result
    serve(MHD_Connection* connection, Visit& visit, std::string_view url, std::string_view method)
    {
        if (method != MHD_HTTP_METHOD_GET)
            return refuse(connection, MHD_HTTP_METHOD_NOT_ALLOWED);
        const Offer::File* file = nullptr;
        if (url == extractPath)
            file = &visit.offer->extract();
        else if (url.starts_with(filesPath))
        {
            const std::int64_t row = wholeNumber(url.substr(std::string_view(filesPath).size()));
            file = row > 0 && row <= INT_MAX ? visit.offer->file(static_cast<int>(row)) : nullptr;
            if (file)
                visit.told.path = file->path;
            const std::string_view mark = headerOf(connection, fileMarkHeader);
            if (file && !mark.empty() && mark != markOf(*file))
                return refuse(connection, MHD_HTTP_GONE);
        }
        return file ? give(connection, visit, *file) : refuse(connection, MHD_HTTP_NOT_FOUND);
    }

    static MHD_Result give(MHD_Connection* connection, Visit& visit, const Offer::File& file)
    {
        FileInfo info;
        int error = fileSystem().info(file.path, Spelling::exact, info);
        std::unique_ptr<IFile> opened;
        if (error == 0)
            opened = fileSystem().open(file.path, OpenMode::read, error);
        if (!opened)
            return refuse(connection,
                          error == ENOENT ? MHD_HTTP_NOT_FOUND : MHD_HTTP_INTERNAL_SERVER_ERROR);
        // The friend's list has another size: he needs a new list, and gets it with the next scan.
        if (opened->sizeAtOpen() != file.size)
            return refuse(connection, MHD_HTTP_GONE);
        const std::string tag =
            "\"" + std::to_string(info.size) + "-" + std::to_string(toTicks(info.modified)) + "\"";
        const std::string_view condition = headerOf(connection, MHD_HTTP_HEADER_IF_RANGE);
        auto first = rangeStart(headerOf(connection, MHD_HTTP_HEADER_RANGE));
        if (!condition.empty() && condition != tag)
            first.reset();
        if (first && *first >= file.size)
            return refuse(connection, MHD_HTTP_RANGE_NOT_SATISFIABLE);
        visit.first = first.value_or(0);
        visit.file = std::move(opened);
        const std::unique_ptr<MHD_Response, void (*)(MHD_Response*)> response(
            MHD_create_response_from_callback(static_cast<std::uint64_t>(file.size - visit.first),
                                              blockSize,
                                              &giveBytes,
                                              &visit,
                                              nullptr),
            MHD_destroy_response);
        if (!response)
            return MHD_NO;
        addHeader(response.get(), MHD_HTTP_HEADER_ETAG, tag);
        addHeader(response.get(), MHD_HTTP_HEADER_ACCEPT_RANGES, "bytes");
        addHeader(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, "application/octet-stream");
        if (first)
            addHeader(response.get(),
                      MHD_HTTP_HEADER_CONTENT_RANGE,
                      "bytes " + std::to_string(visit.first) + "-" + std::to_string(file.size - 1) +
                          "/" + std::to_string(file.size));
        return MHD_queue_response(
            connection, first ? MHD_HTTP_PARTIAL_CONTENT : MHD_HTTP_OK, response.get());
    }

    static MHD_Result refuse(MHD_Connection* connection, unsigned status)
    {
        static MHD_Response* const empty =
            MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT);
        return MHD_queue_response(connection, status, empty);
    }

    const Offers& m_offers;
    const ShareLimits m_limits;
    const std::function<void(const ShareVisit&)> m_visited;
    const std::string m_pem;
    ConnectionWatch m_watch;
    MHD_Daemon* m_daemon = nullptr;
    std::mutex m_wrongLock;                ///< guards m_wrongIds
    std::map<std::string, int> m_wrongIds; ///< requests of each machine, not told of yet
    std::mutex m_lock;
    std::condition_variable m_wake;
    bool m_ends = false; ///< guarded by m_lock
    std::thread m_timer;
};

} // namespace

std::unique_ptr<ShareServer> startShareServer(const ShareKey& key,
                                              const Offers& offers,
                                              const PeerAddress& address,
                                              const ShareLimits& limits,
                                              std::function<void(const ShareVisit&)> visited)
{
    return std::make_unique<RunningServer>(key, offers, address, limits, std::move(visited));
}
} // namespace qo::host
