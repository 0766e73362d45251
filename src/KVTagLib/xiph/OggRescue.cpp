#include "KVTagLib/TagRefusal.h"
#include "KVTagLib/xiph/OggPage.h"
#include "KVTagLib/xiph/Rescue.h"

#include <taglib/xiphcomment.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

// Pages of several streams alternate, each with the number of its stream. All streams begin before
// any goes on; the first one of sound is taken, and of it the first two packets, which hold its
// properties and its comment, and the time on its last page.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr long mostBytesOfHeaders = 64L << 20;
constexpr long searchedForLastPage = 1L << 20;

struct OggPage
{
    OggPageHeader header;
    ByteVector segments = {};
    ByteVector content = {};
};

std::optional<OggPage> pageAt(IOStream& file, long at)
{
    file.seek(at);
    const auto header = OggPageHeader::of(file.readBlock(OggPageHeader::bytes));
    if (!header)
        return {};
    OggPage page{*header, file.readBlock(header->segments)};
    unsigned size = 0;
    for (const char segment : page.segments)
        size += static_cast<unsigned char>(segment);
    page.content = file.readBlock(size);
    return page;
}

/// What the first bytes of a page say, as they would at the start of a file.
AudioFormat soundOn(IOStream& file, long at)
{
    constexpr unsigned enough = 64;
    file.seek(at);
    const ByteVector head = file.readBlock(enough);
    return formatOfContent({head.data(), head.size()});
}

struct OggStream
{
    AudioFormat format = AudioFormat::unknown;
    unsigned serial = 0;
    std::vector<ByteVector> packets = {}; ///< the first two
    bool isAlone = true;
};

/// Adds what the page has of the first two packets; false when these are complete.
bool addPackets(const OggPage& page, OggStream& stream, bool& isOpen)
{
    unsigned at = 0;
    for (const char segment : page.segments)
    {
        const auto size = static_cast<unsigned char>(segment);
        if (!isOpen && stream.packets.size() == 2)
            return false;
        if (!isOpen)
            stream.packets.emplace_back();
        stream.packets.back().append(page.content.mid(at, size));
        at += size;
        isOpen = size == 255;
    }
    return isOpen || stream.packets.size() < 2;
}

std::optional<OggStream> firstSound(IOStream& file)
{
    std::optional<OggStream> stream;
    bool isOpen = false;
    int streams = 0;
    for (long at = 0; at < std::min(file.length(), mostBytesOfHeaders);)
    {
        const auto page = pageAt(file, at);
        if (!page)
            break;
        const bool isFirst = page->header.isFirstOfStream();
        const AudioFormat format = !stream && isFirst ? soundOn(file, at) : AudioFormat::unknown;
        streams += isFirst ? 1 : 0;
        if (format != AudioFormat::unknown)
            stream = OggStream{format, page->header.serial};
        if (stream && page->header.serial == stream->serial && !addPackets(*page, *stream, isOpen))
            break;
        at += long(OggPageHeader::bytes + page->segments.size() + page->content.size());
    }
    if (stream)
        stream->isAlone = streams == 1;
    return stream;
}

/// The number of samples up to the last page of the stream; 0 if that is not found.
long long samplesIn(IOStream& file, unsigned serial)
{
    file.seek(std::max(0L, file.length() - searchedForLastPage));
    const ByteVector end = file.readBlock(searchedForLastPage);
    const std::string_view bytes(end.data(), end.size());
    for (std::size_t after = bytes.size(); after > 0;)
    {
        after = bytes.rfind("OggS", after - 1);
        if (after == bytes.npos)
            break;
        const auto header =
            OggPageHeader::of(end.mid(static_cast<unsigned>(after), OggPageHeader::bytes));
        if (header && header->serial == serial && header->time > 0)
            return header->time;
    }
    return 0;
}

unsigned numberIn(const ByteVector& packet, unsigned at, unsigned bytes)
{
    return at + bytes <= packet.size() ? packet.toUInt(at, bytes, false) : 0;
}

AudioProperties propertiesOf(IOStream& file, const OggStream& stream)
{
    const ByteVector& head = stream.packets.front();
    AudioProperties properties;
    long long samples = samplesIn(file, stream.serial);
    switch (stream.format)
    {
    case AudioFormat::oggFlac:
        properties = flacProperties(head.mid(17), 0);
        break;
    case AudioFormat::vorbis:
        properties.channels = static_cast<int>(numberIn(head, 11, 1));
        properties.sampleRate = static_cast<int>(numberIn(head, 12, 4));
        properties.bitrate = static_cast<int>(numberIn(head, 20, 4) / 1000);
        break;
    case AudioFormat::opus:
        properties.channels = static_cast<int>(numberIn(head, 9, 1));
        properties.sampleRate = 48000;
        samples -= numberIn(head, 10, 2); // are not played
        break;
    default: // Speex
        properties.sampleRate = static_cast<int>(numberIn(head, 36, 4));
        properties.channels = static_cast<int>(numberIn(head, 48, 4));
    }
    if (properties.sampleRate <= 0 || samples <= 0)
        return properties;
    const double time = 1000.0 * static_cast<double>(samples) / properties.sampleRate;
    properties.milliseconds =
        static_cast<int>(std::min<double>(time, std::numeric_limits<int>::max()));
    return properties;
}

/// The comment without what the codec puts ahead of it.
ByteVector commentIn(const OggStream& stream)
{
    const ByteVector& packet = stream.packets.back();
    switch (stream.format)
    {
    case AudioFormat::vorbis:
        return packet.mid(7);
    case AudioFormat::opus:
        return packet.mid(8);
    case AudioFormat::oggFlac:
        return packet.mid(4);
    default:
        return packet;
    }
}
} // namespace

bool rescueOgg(IOStream& file, AudioFileContent& content)
{
    const std::optional<OggStream> stream = firstSound(file);
    if (!stream || stream->packets.empty())
        return false;
    content.format = stream->format;
    content.properties = propertiesOf(file, *stream);
    if (stream->packets.size() == 2)
    {
        Ogg::XiphComment comment(commentIn(*stream));
        collect(comment, content.values);
    }
    content.obstacle = stream->isAlone
                           ? withCopyAdvice(u"its first packets are damaged")
                           : CString(u"it holds several streams; a copy of its sound made with "
                                     u"\"ffmpeg -i OLD -vn -c copy NEW\" can be changed");
    return true;
}

OggHead oggHeadOf(IOStream& file)
{
    const std::optional<OggStream> stream = firstSound(file);
    if (!stream || stream->packets.size() < 2)
        return {
            stream && !stream->packets.empty() ? stream->packets.front() : ByteVector(), {}, {}};
    return {stream->packets.front(), stream->packets.back(), commentIn(*stream)};
}
} // namespace KVTagLib
