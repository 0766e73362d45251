#pragma once

#include <mutex>

/// A recursive lock: a thread that holds it may lock it again and must unlock it as often.
class CCriticalSection
{
public:
    CCriticalSection() = default;
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    void Lock() { m_mutex.lock(); }
    void Unlock() { m_mutex.unlock(); }

    /// The names that std::lock_guard needs; see qo::Guard.
    void lock() { Lock(); }
    void unlock() { Unlock(); }

private:
    std::recursive_mutex m_mutex;
};

namespace qo
{
/// Holds the lock for a scope: qo::Guard guard(section);
using Guard = std::lock_guard<CCriticalSection>;
} // namespace qo
