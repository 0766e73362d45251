#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

/// A socket that listens on a port of 127.0.0.1, or the number after it, that was free.
class ListeningSocket
{
public:
    explicit ListeningSocket(in_addr_t host = INADDR_LOOPBACK)
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(host);
        socklen_t size = sizeof(address);
        auto* const plain = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(::bind(fd, plain, size), 0);
        EXPECT_EQ(::listen(fd, 16), 0);
        ::getsockname(fd, plain, &size);
        port = ntohs(address.sin_port);
    }
    ~ListeningSocket() { ::close(fd); }
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int port = 0;
};

/// Answers every request with what the test says, and closes the connection. An empty answer never
/// comes: the connection stays open and silent.
class HostileServer
{
public:
    std::function<std::string(const std::string& request)> answer;
    std::atomic<int> requests = 0;

    /// One that is not "here" is at 127.0.0.2, which counts as another machine.
    explicit HostileServer(bool isHere = true)
        : m_host(isHere ? "127.0.0.1" : "127.0.0.2")
        , m_socket(INADDR_LOOPBACK + (isHere ? 0 : 1))
        , m_thread([this] { serve(); })
    {
    }
    ~HostileServer()
    {
        m_ends = true;
        m_thread.join();
        for (const int open : m_silent)
            ::close(open);
    }
    HostileServer(const HostileServer&) = delete;
    HostileServer& operator=(const HostileServer&) = delete;

    std::string url(const std::string& path = "/dav/") const
    {
        return "http://" + m_host + ":" + std::to_string(m_socket.port) + path;
    }
    static std::string
    reply(const std::string& status, const std::string& body, const std::string& header = "")
    {
        return "HTTP/1.1 " + status + "\r\n" + header +
               "Connection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
               body;
    }

private:
    void serve()
    {
        while (!m_ends)
        {
            pollfd wait = {m_socket.fd, POLLIN, 0};
            const int open =
                ::poll(&wait, 1, 20) > 0 ? ::accept(m_socket.fd, nullptr, nullptr) : -1;
            if (open < 0)
                continue;
            const std::string request = readRequest(open);
            ++requests;
            const std::string text = answer(request);
            if (text.empty())
            {
                m_silent.push_back(open);
                continue;
            }
            for (std::size_t at = 0; at < text.size();)
            {
                const ssize_t sent = ::send(open, text.data() + at, text.size() - at, MSG_NOSIGNAL);
                if (sent <= 0)
                    break;
                at += static_cast<std::size_t>(sent);
            }
            ::close(open);
        }
    }
    /// With its body, since a connection that is closed unread loses the answer.
    static std::string readRequest(int open)
    {
        std::string text;
        char block[4096];
        std::size_t end = std::string::npos;
        std::size_t length = 0;
        while (end == std::string::npos || text.size() < end + 4 + length)
        {
            const ssize_t count = ::recv(open, block, sizeof(block), 0);
            if (count <= 0)
                break;
            text.append(block, static_cast<std::size_t>(count));
            const bool hadEnd = end != std::string::npos;
            end = text.find("\r\n\r\n");
            const std::string goOn = "HTTP/1.1 100 Continue\r\n\r\n";
            if (!hadEnd && text.find("Expect: 100") < end && end != std::string::npos)
                ::send(open, goOn.data(), goOn.size(), MSG_NOSIGNAL);
            const std::size_t field = text.find("Content-Length: ");
            length = field < end ? std::strtoul(text.c_str() + field + 16, nullptr, 10) : 0;
        }
        return text;
    }

    const std::string m_host;
    ListeningSocket m_socket;
    std::atomic<bool> m_ends = false;
    std::vector<int> m_silent;
    std::thread m_thread;
};

/// A server that is installed here, on a port of loopback, as long as this lives: it is killed at
/// the end, and its standard input ends when the test itself is killed.
class ServerProcess
{
public:
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    std::string url() const { return "http://" + m_address + "/"; }

    bool isRunning = false;

protected:
    ServerProcess()
    {
        const ListeningSocket free;
        m_port = free.port;
        m_address = "127.0.0.1:" + std::to_string(m_port);
    }
    ~ServerProcess()
    {
        if (m_pid > 0)
        {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, nullptr, 0);
        }
        ::close(m_input);
    }

    void start(std::vector<std::string> words)
    {
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        int ends[2] = {-1, -1};
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        m_input = ends[1];
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[0], 0);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        if (::posix_spawnp(&m_pid, argv.front(), &actions, nullptr, argv.data(), environ) != 0)
            m_pid = -1;
        posix_spawn_file_actions_destroy(&actions);
        ::close(ends[0]);
        isRunning = m_pid > 0 && waitForPort();
    }

    int m_port = 0;
    std::string m_address; ///< "127.0.0.1:8080"

private:
    /// False too when the process has ended.
    bool waitForPort() const
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(m_port));
        for (int i = 0; i < 2000 && ::waitpid(m_pid, nullptr, WNOHANG) == 0; ++i)
        {
            const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
            const int result =
                ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address));
            ::close(fd);
            if (result == 0)
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

    pid_t m_pid = -1;
    int m_input = -1;
};

/// "rclone serve webdav" over a folder, for the user "ann" with the password "s3cret".
class RcloneServer : public ServerProcess
{
public:
    /// Over TLS with a certificate: CERTIFICATE.pem, and CERTIFICATE.key.
    explicit RcloneServer(const std::string& folder, const std::string& certificate = {})
    {
        std::vector<std::string> words = {"rclone",
                                          "serve",
                                          "webdav",
                                          folder,
                                          "--addr",
                                          m_address,
                                          "--user",
                                          "ann",
                                          "--pass",
                                          "s3cret"};
        if (!certificate.empty())
            words.insert(words.end(),
                         {"--cert", certificate + ".pem", "--key", certificate + ".key"});
        start(words);
    }
};

/// Apache's mod_dav over a folder, for the same user, who gives the password as Digest. It refuses
/// to work for the administrator.
class ApacheServer : public ServerProcess
{
public:
    ApacheServer(const std::string& folder, const std::string& state)
    {
        std::filesystem::create_directories(state);
        std::ofstream(state + "/users") << "ann:music:06f708c9deecf7bfa1ef0e2b95f7ba28\n";
        std::ofstream settings(state + "/conf");
        settings << "ServerRoot /usr/lib/apache2\nServerName localhost\n";
        for (const char* const module : {"mpm_event",
                                         "authn_core",
                                         "authn_file",
                                         "authz_core",
                                         "authz_user",
                                         "auth_digest",
                                         "dav",
                                         "dav_fs"})
            settings << "LoadModule " << module << "_module modules/mod_" << module << ".so\n";
        settings << "Listen " << m_address << "\nPidFile " << state << "/pid\nErrorLog " << state
                 << "/errors\nDefaultRuntimeDir " << state << "\nMutex file:" << state
                 << "\nDavLockDB " << state << "/locks\nDocumentRoot " << folder
                 << "\n<Location />\nDav On\nAuthType Digest\nAuthName music\nAuthUserFile "
                 << state << "/users\nRequire valid-user\n</Location>\n";
        settings.close();
        start({"/usr/sbin/apache2", "-X", "-f", state + "/conf"});
    }
};

/// supysonic over a folder of music, for the same user. What it keeps is in another folder.
class SupysonicServer : public ServerProcess
{
public:
    SupysonicServer(const std::string& music, const std::string& state)
    {
        start({"/usr/bin/python3",
               QO_SOURCE_DIR "/tests/support/serve_music.py",
               state,
               music,
               std::to_string(m_port)});
    }
};
