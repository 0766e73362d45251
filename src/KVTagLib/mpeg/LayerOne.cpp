#include "KVTagLib/mpeg/LayerOne.h"

#include "KVTagLib/id3/Id3v1Tag.h"
#include "KVTagLib/id3/Id3v2Editor.h"

#include <algorithm>
#include <limits>

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr unsigned frameHeaderBytes = 4;
constexpr unsigned long searchedForFrame = 64 << 10;

struct LayerOneFrame
{
    int bitrate = 0; ///< kbit/s; 0: there is no frame
    int sampleRate = 0;
    int channels = 0;
    unsigned bytes = 0;
};

/// The frame whose header begins these bytes.
LayerOneFrame frameIn(const ByteVector& header)
{
    constexpr int rates[] = {44100, 48000, 32000};
    constexpr unsigned mono = 3;
    const unsigned bits = header.size() < frameHeaderBytes ? 0 : header.toUInt(0U, true);
    const unsigned bitrate = bits >> 12 & 15;
    const unsigned rate = bits >> 10 & 3;
    // MPEG 1, layer 1, with or without a checksum.
    if (bits >> 17 != 0x7FFF || bitrate == 0 || bitrate == 15 || rate == 3)
        return {};
    const auto kilobits = static_cast<int>(32 * bitrate);
    const auto slots = static_cast<unsigned>(12 * 1000 * kilobits / rates[rate]);
    return {kilobits, rates[rate], (bits >> 6 & 3) == mono ? 1 : 2, 4 * (slots + (bits >> 9 & 1))};
}
} // namespace

void completeMpeg(IOStream& file, AudioProperties& properties)
{
    if (properties.sampleRate > 0)
        return;
    file.seek(0);
    const long tag = Id3v2Editor::sizeOf(file.readBlock(Id3v2Editor::headerBytes));
    file.seek(tag);
    const ByteVector head = file.readBlock(searchedForFrame);
    for (int at = head.find('\xff'); at >= 0; at = head.find('\xff', static_cast<unsigned>(at) + 1))
    {
        const auto start = static_cast<unsigned>(at);
        const LayerOneFrame frame = frameIn(head.mid(start, frameHeaderBytes));
        // Another frame must follow it.
        if (frame.bitrate == 0 ||
            frameIn(head.mid(start + frame.bytes, frameHeaderBytes)).bitrate == 0)
            continue;
        file.seek(std::max(0L, file.length() - long(id3v1TailBytes)));
        const long end = file.length() - id3v1SizeOf(file.readBlock(id3v1TailBytes));
        const double time = 8.0 * static_cast<double>(end - tag - at) / frame.bitrate;
        properties.milliseconds =
            static_cast<int>(std::min<double>(time, std::numeric_limits<int>::max()));
        properties.bitrate = frame.bitrate;
        properties.sampleRate = frame.sampleRate;
        properties.channels = frame.channels;
        return;
    }
}
} // namespace KVTagLib
