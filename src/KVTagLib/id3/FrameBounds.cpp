#include "KVTagLib/id3/FrameBounds.h"

#include "KVTagLib/id3/Id3v2Editor.h"
#include "KVTagLib/riff/RiffChunks.h"

#include <taglib/id3v2synchdata.h>

using namespace TagLib;

namespace KVTagLib
{
ID3v2::Header plainHeader(int majorVersion, unsigned size)
{
    ByteVector bytes("ID3", 3);
    bytes.append(ByteVector(1, static_cast<char>(majorVersion)));
    bytes.append(ByteVector(2, 0));
    bytes.append(ID3v2::SynchData::fromUInt(size));
    return ID3v2::Header(bytes);
}

bool BoundedFrameFactory::updateFrame(FrameNames::Header* header) const
{
    m_seen += header->frameSize() + ID3v2::Frame::headerSize(header->version());
    m_hasGroups = m_hasGroups || header->groupingIdentity();
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
    bool beyond = false;
    const auto look = [&](const RiffChunk& chunk)
    {
        if (!chunk.isId3())
            return true;
        stream.seek(chunk.start);
        Id3v2Editor tag;
        beyond = tag.load(stream.readBlock(static_cast<unsigned long>(chunk.size))) &&
                 tag.compressedBytes() > maxCompressedBytes;
        return !beyond;
    };
    forEachRiffChunk(stream, bigEndian, look);
    stream.seek(0);
    return beyond;
}
} // namespace KVTagLib
