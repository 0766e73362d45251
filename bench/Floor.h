#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>

/// The frame of a floor program: a measured piece of work, reported as one line
/// "items seconds" that bench/compare.py reads.
namespace bench
{
[[noreturn]] inline void fail(const char* what, const char* why)
{
    std::fprintf(stderr, "%s: %s\n", what, why);
    std::exit(1);
}

/// Runs the work, which returns how many items it did.
template <class Work>
void measure(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    const long items = work();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::printf("%ld %.6f\n", items, took.count());
}
} // namespace bench
