#pragma once

#include "support/TestFileSystem.h"

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

/// The real file system, on which one kind of call takes 5 ms, as on a network share.
class SlowDisk
{
public:
    explicit SlowDisk(std::string call) : m_call(std::move(call)) {}

    /// How many of these calls there were at a time, at most.
    int mostAtATime() const { return m_most; }

private:
    int before(const std::string& call)
    {
        if (call != m_call)
            return 0;
        const int now = ++m_running;
        for (int seen = m_most; now > seen && !m_most.compare_exchange_weak(seen, now);)
        {
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        --m_running;
        return 0;
    }

    const std::string m_call;
    std::atomic<int> m_running{0};
    std::atomic<int> m_most{0};
    TestFileSystem m_files{[this](const std::string& call, const CString&)
                           { return before(call); }};
};
