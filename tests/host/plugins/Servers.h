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
#include <functional>
#include <string>
#include <thread>
#include <vector>

/// A socket that listens on a port of loopback that was free.
class ListeningSocket
{
public:
    ListeningSocket()
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
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

    HostileServer() : m_thread([this] { serve(); }) {}
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
        return "http://127.0.0.1:" + std::to_string(m_socket.port) + path;
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
            end = text.find("\r\n\r\n");
            const std::size_t field = text.find("Content-Length: ");
            length = field < end ? std::strtoul(text.c_str() + field + 16, nullptr, 10) : 0;
        }
        return text;
    }

    ListeningSocket m_socket;
    std::atomic<bool> m_ends = false;
    std::vector<int> m_silent;
    std::thread m_thread;
};

/// "rclone serve webdav" over a folder, for the user "ann" with the password "s3cret".
class RcloneServer
{
public:
    explicit RcloneServer(const std::string& folder)
    {
        {
            const ListeningSocket free;
            m_port = free.port;
        }
        const std::string address = "127.0.0.1:" + std::to_string(m_port);
        std::vector<std::string> words = {"rclone",
                                          "serve",
                                          "webdav",
                                          folder,
                                          "--addr",
                                          address,
                                          "--user",
                                          "ann",
                                          "--pass",
                                          "s3cret"};
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        if (::posix_spawnp(&m_pid, "rclone", &actions, nullptr, argv.data(), environ) != 0)
            m_pid = -1;
        posix_spawn_file_actions_destroy(&actions);
        isRunning = m_pid > 0 && waitForPort();
    }
    ~RcloneServer()
    {
        if (m_pid <= 0)
            return;
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    RcloneServer(const RcloneServer&) = delete;
    RcloneServer& operator=(const RcloneServer&) = delete;

    std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port) + "/"; }

    bool isRunning = false;

private:
    bool waitForPort() const
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(m_port));
        for (int i = 0; i < 400; ++i)
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

    int m_port = 0;
    pid_t m_pid = -1;
};
