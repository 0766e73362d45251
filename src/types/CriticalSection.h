#pragma once

#include <mutex>

/// A lock that its owner may take again.
class CCriticalSection
{
public:
    CCriticalSection() = default;
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    void Lock() { m_mutex.lock(); }
    void Unlock() { m_mutex.unlock(); }

    /// The standard spelling, so that std::lock_guard takes it: qo::Guard guard(section);
    void lock() { Lock(); }
    void unlock() { Unlock(); }

private:
    std::recursive_mutex m_mutex;
};

namespace qo
{
using Guard = std::lock_guard<CCriticalSection>;
}
