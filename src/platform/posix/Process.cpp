#include "platform/Process.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace qo
{
namespace
{
constexpr std::size_t largePage = std::size_t(2) << 20;
constexpr std::size_t mostReserved = std::size_t(4) << 30;
constexpr int defaultMostMappings = 65536;
constexpr int largestBlockOfHeap = 32 << 20;

/// A part of this machine's memory; none of it is taken before it is used.
std::size_t wantedReserve()
{
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0)
        return 0;
    return std::min(static_cast<std::size_t>(pages) / 4 * static_cast<std::size_t>(pageSize),
                    mostReserved);
}

/// Asks for large pages where the heap will grow: a big collection is walked in no order that the
/// processor's table of small pages could keep up with. The heap keeps what it was given.
void growIntoLargePages()
{
    const std::size_t size = wantedReserve();
    ::mallopt(M_TRIM_THRESHOLD, -1); // never
    ::mallopt(M_MMAP_MAX, 0);
    void* const block = size == 0 ? nullptr : std::malloc(size);
    const auto start = reinterpret_cast<std::uintptr_t>(block);
    // Another allocator may stand in for the system's, which would not keep the place.
    if (block && start + size <= reinterpret_cast<std::uintptr_t>(::sbrk(0)))
    {
        const std::uintptr_t first = (start + largePage - 1) & ~(largePage - 1);
        (void)::madvise(reinterpret_cast<void*>(first), start + size - first, MADV_HUGEPAGE);
    }
    std::free(block);
    ::mallopt(M_MMAP_MAX, defaultMostMappings);
    ::mallopt(M_MMAP_THRESHOLD, largestBlockOfHeap);
}
} // namespace

void useOneHeap()
{
    ::mallopt(M_ARENA_MAX, 1);
    growIntoLargePages();
}
} // namespace qo
