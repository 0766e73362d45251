#include "KVTagLib/id3/FrameBounds.h"

#include "KVTagLib/id3/Id3v2Editor.h"

using namespace TagLib;

namespace KVTagLib
{
bool BoundedFrameFactory::updateFrame(FrameNames::Header* header) const
{
    if (header->compression())
    {
        m_compressed += header->frameSize();
        if (m_compressed > maxCompressedBytes)
        {
            // A frame of no size is skipped.
            header->setFrameSize(0);
            return false;
        }
    }
    return FrameFactory::updateFrame(header);
}

bool hasUnboundedFrames(IOStream& stream, bool bigEndian)
{
    constexpr long formHeader = 12;
    constexpr long chunkHeader = 8;
    long at = formHeader;
    bool beyond = false;
    while (!beyond && at + chunkHeader <= stream.length())
    {
        stream.seek(at, IOStream::Beginning);
        const ByteVector header = stream.readBlock(chunkHeader);
        if (header.size() < chunkHeader)
            break;
        const long size = header.toUInt(4U, bigEndian);
        if (header.startsWith("ID3 ") || header.startsWith("id3 "))
        {
            Id3v2Editor tag;
            beyond = tag.load(stream.readBlock(static_cast<unsigned long>(size))) &&
                     tag.compressedBytes() > maxCompressedBytes;
        }
        at += chunkHeader + size + (size & 1);
    }
    stream.seek(0, IOStream::Beginning);
    return beyond;
}
} // namespace KVTagLib
