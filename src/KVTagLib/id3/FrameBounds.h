#pragma once

#include <taglib/id3v2frame.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2header.h>
#include <taglib/tiostream.h>

/// Compressed ID3v2 frames may unpack to a thousand times their size, and TagLib sets no limit.
/// Only this many compressed bytes are unpacked for one file; further compressed frames are
/// skipped.
namespace KVTagLib
{
constexpr unsigned long maxCompressedBytes = 64 << 10;

/// Gives access to a nested type that TagLib declares protected.
struct FrameNames : TagLib::ID3v2::Frame
{
    using Header = TagLib::ID3v2::Frame::Header;
};

/// The header of a tag of that version without flags, as a factory wants it.
TagLib::ID3v2::Header plainHeader(int majorVersion, unsigned size);

/// For the formats whose TagLib classes take a frame factory. One object serves one file, since it
/// adds up the bytes of that file's frames.
class BoundedFrameFactory final : public TagLib::ID3v2::FrameFactory
{
public:
    ~BoundedFrameFactory() override = default;

    /// The bytes of the frames that TagLib has come to, with their headers.
    unsigned long seenBytes() const { return m_seen; }
    /// Whether one of them had a byte for a group, which TagLib takes for the frame's content.
    bool hasGroups() const { return m_hasGroups; }

protected:
    bool updateFrame(FrameNames::Header* header) const override;

private:
    mutable unsigned long m_compressed = 0;
    mutable unsigned long m_seen = 0;
    mutable bool m_hasGroups = false;
};

/// For WAV and AIFF, whose TagLib classes take no factory: whether a tag among the chunks exceeds
/// the limit. Leaves the stream at its start.
bool hasUnboundedFrames(TagLib::IOStream& stream, bool bigEndian);
} // namespace KVTagLib
