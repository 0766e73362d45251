#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <vector>

/// A program on a terminal of its own, as when a person types at it.
class PtyShell
{
public:
    PtyShell(const std::vector<std::string>& words,
             const std::vector<std::string>& variables,
             unsigned short columns = 80,
             unsigned short rows = 24)
    {
        std::vector<char*> argv = pointers(words);
        std::vector<char*> environment = pointers(variables);
        winsize size{rows, columns, 0, 0};
        m_pid = ::forkpty(&m_terminal, nullptr, nullptr, &size);
        if (m_pid == 0)
        {
            ::execve(argv[0], argv.data(), environment.data());
            ::_exit(127);
        }
        EXPECT_GT(m_pid, 0);
    }
    ~PtyShell()
    {
        if (m_pid > 0)
        {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, nullptr, 0);
        }
        ::close(m_terminal);
    }
    PtyShell(const PtyShell&) = delete;
    PtyShell& operator=(const PtyShell&) = delete;

    void type(const std::string& text) const
    {
        EXPECT_EQ(::write(m_terminal, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    /// What it shows up to that text, or to its end; what was shown when neither comes in time.
    std::string readTo(const std::string& text)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        std::string shown;
        while (text.empty() || shown.find(text) == std::string::npos)
        {
            pollfd ready{m_terminal, POLLIN, 0};
            if (std::chrono::steady_clock::now() > end)
                ADD_FAILURE() << "\"" << text << "\" did not come:\n" << shown;
            if (std::chrono::steady_clock::now() > end)
                return shown;
            if (::poll(&ready, 1, 100) <= 0)
                continue;
            char bytes[4096];
            const ssize_t count = ::read(m_terminal, bytes, sizeof(bytes));
            if (count <= 0)
                return shown;
            shown.append(bytes, static_cast<std::size_t>(count));
        }
        return shown;
    }

    /// Its exit code, once all that it shows was read; 128 and more for a signal, -1 when it does
    /// not come to its end.
    int finish()
    {
        int status = 0;
        for (int i = 0; ::waitpid(m_pid, &status, WNOHANG) == 0; ++i)
        {
            if (i == 1000)
                return -1;
            ::usleep(10000);
        }
        m_pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

private:
    static std::vector<char*> pointers(const std::vector<std::string>& words)
    {
        std::vector<char*> list;
        for (const std::string& word : words)
            list.push_back(const_cast<char*>(word.c_str()));
        list.push_back(nullptr);
        return list;
    }

    pid_t m_pid = -1;
    int m_terminal = -1;
};
