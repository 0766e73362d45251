#include "KVTagLib/riff/RiffChunks.h"

using namespace TagLib;

namespace KVTagLib
{
bool hasOpenSizes(const ByteVector& head)
{
    return head.startsWith("RIFF") && RiffChunk::isOpenSize(long(head.toUInt(4U, false)));
}

void forEachRiffChunk(IOStream& stream,
                      bool bigEndian,
                      const std::function<bool(const RiffChunk&)>& work)
{
    constexpr long formHeader = 12;
    for (long at = formHeader; at + long(RiffChunk::headerBytes) <= stream.length();)
    {
        stream.seek(at);
        const ByteVector header = stream.readBlock(RiffChunk::headerBytes);
        if (header.size() < RiffChunk::headerBytes)
            return;
        at += RiffChunk::headerBytes;
        const RiffChunk chunk{header.mid(0, 4), at, long(header.toUInt(4U, bigEndian))};
        if (!work(chunk))
            return;
        at += chunk.size;
        // Chunks start at even positions, except in files of careless writers.
        if ((at & 1) == 0)
            continue;
        stream.seek(at);
        at += stream.readBlock(1) == ByteVector(1, 0) ? 1 : 0;
    }
}
} // namespace KVTagLib
