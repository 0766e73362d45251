#pragma once

#include <taglib/id3v2frame.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/tiostream.h>

/// Compressed ID3v2 frames may unfold to a thousand times their size and TagLib sets no limit, so
/// only so much of them is unfolded in one file.
namespace KVTagLib
{
constexpr unsigned long maxCompressedBytes = 64 << 10;

/// TagLib hides this name from all but the heirs of a frame.
struct FrameNames : TagLib::ID3v2::Frame
{
    using Header = TagLib::ID3v2::Frame::Header;
};

/// For the formats whose files take a factory; one for each file.
class BoundedFrameFactory final : public TagLib::ID3v2::FrameFactory
{
public:
    ~BoundedFrameFactory() override = default;

protected:
    bool updateFrame(FrameNames::Header* header) const override;

private:
    mutable unsigned long m_compressed = 0;
};

/// For WAV and AIFF, whose files take none: whether a tag among the chunks goes beyond the limit.
bool hasUnboundedFrames(TagLib::IOStream& stream, bool bigEndian);
} // namespace KVTagLib
