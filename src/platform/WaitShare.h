#pragma once

#include "platform/Clock.h"
#include "platform/Platform.h"

#include <chrono>
#include <cstdint>

namespace qo
{
/// Tells work that waits, as for a network share, from work that computes. A thread that lost the
/// processor to another one does not count as waiting: more threads would make that worse.
class WaitShare
{
public:
    struct Measured
    {
        std::chrono::steady_clock::duration time;
        std::uint64_t waits; ///< how often the thread slept
    };

    template <class Steps>
    static Measured measure(Steps steps)
    {
        const auto began = std::chrono::steady_clock::now();
        const std::uint64_t waits = systemClock().threadWaits();
        steps();
        return {std::chrono::steady_clock::now() - began, systemClock().threadWaits() - waits};
    }

    void add(const Measured& measured)
    {
        m_sum.time += measured.time;
        m_sum.waits += measured.waits;
        ++m_count;
    }
    /// Whether more threads would help; looks anew at each round.
    bool isMostlyWaiting()
    {
        if (m_count < round)
            return false;
        const bool isSlow = m_sum.time > slow * m_count && m_sum.waits >= m_count;
        m_sum = {};
        m_count = 0;
        return isSlow;
    }

private:
    static constexpr std::uint64_t round = 16;
    /// What is in memory takes less.
    static constexpr std::chrono::milliseconds slow{1};

    Measured m_sum{};
    std::uint64_t m_count = 0;
};
} // namespace qo
