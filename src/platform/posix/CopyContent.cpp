#include "platform/posix/CopyContent.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace qo
{
namespace
{
constexpr std::size_t pumpBlock = std::size_t(256) << 10;

/// Plain reading and writing, for file systems that can do no better.
int pumpContent(PosixFile& from, PosixFile& to, const std::function<bool()>& stop)
{
    const auto block = std::make_unique_for_overwrite<char[]>(pumpBlock);
    for (;;)
    {
        if (stop && stop())
            return ECANCELED;
        const std::int64_t got = from.read(block.get(), pumpBlock);
        if (got <= 0)
            return got == 0 ? 0 : from.error();
        if (!to.write(block.get(), static_cast<std::size_t>(got)))
            return to.error();
    }
}
} // namespace

int copyContent(PosixFile& from, PosixFile& to, const std::function<bool()>& stop)
{
    if (!from.seek(0) || !to.seek(0))
        return EIO;
    constexpr std::size_t blockSize = std::size_t(8) << 20;
    while (!stop || !stop())
    {
        const ssize_t done =
            ::copy_file_range(from.descriptor(), nullptr, to.descriptor(), nullptr, blockSize, 0);
        if (done == 0)
            break;
        if (done < 0 && errno != EINTR)
            break;
    }
    // Whatever stopped it short of the end, the plain road finishes or says why it cannot.
    return pumpContent(from, to, stop);
}

int compareContent(PosixFile& one, PosixFile& other, const std::function<bool()>& stop)
{
    const auto block = std::make_unique_for_overwrite<char[]>(pumpBlock);
    const auto otherBlock = std::make_unique_for_overwrite<char[]>(pumpBlock);
    for (;;)
    {
        const std::int64_t got = one.read(block.get(), pumpBlock);
        const std::int64_t gotOther = other.read(otherBlock.get(), pumpBlock);
        if (got < 0 || gotOther < 0)
            return got < 0 ? one.error() : other.error();
        if (got != gotOther ||
            std::memcmp(block.get(), otherBlock.get(), static_cast<std::size_t>(got)) != 0)
            return EIO;
        if (got == 0)
            return 0;
        if (stop && stop())
            return ECANCELED;
    }
}
} // namespace qo
