#include "KVTagLib/mp4/Mp4Atoms.h"

#include <algorithm>

using TagLib::ByteVector;

namespace KVTagLib
{
std::optional<Mp4Atom>
atomOf(const ByteVector& header, std::int64_t at, std::int64_t endOfSurroundings)
{
    if (header.size() < atomHeaderBytes)
        return {};
    const std::int64_t left = endOfSurroundings - at;
    std::int64_t headerBytes = atomHeaderBytes;
    std::int64_t length = header.toUInt(0U, true);
    if (length == 1 && header.size() >= longAtomHeaderBytes)
    {
        length = header.toLongLong(8U, true);
        headerBytes = longAtomHeaderBytes;
    }
    else if (length == 0)
        length = left; // the last atom of a file may say so
    if (length < headerBytes)
        return {};
    return Mp4Atom{header.mid(4, 4), at + headerBytes, at + std::min(length, left), length <= left};
}
} // namespace KVTagLib
