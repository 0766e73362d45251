#pragma once

#include <cstdint>

namespace qo::host
{
/// Gives the files of the loaded collection the check marks that the host's store keeps for them,
/// and takes all others off. On the kernel's thread.
void applyMarks();

struct MarkedFiles
{
    int files = 0;
    int music = 0;         ///< of them
    std::int64_t size = 0; ///< bytes on the disk; a file that cannot be reached counts as 0
};
/// Of the loaded collection, as its trees have the marks. On the kernel's thread.
MarkedFiles markedFiles();

/// Brings the marks of the trees into the store, of files whose marks changed. With the lock of the
/// data folder. Throws HostError.
void keepMarks();
} // namespace qo::host
