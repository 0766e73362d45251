#include "KVTagLib/TagRefusal.h"
#include "KVTagLib/xiph/FlacBlocks.h"
#include "KVTagLib/xiph/Rescue.h"

#include <taglib/flacpicture.h>
#include <taglib/xiphcomment.h>

#include <algorithm>
#include <limits>

using namespace TagLib;

namespace KVTagLib
{
bool rescueFlac(IOStream& file, AudioFileContent& content)
{
    FlacBlocks flac;
    static_cast<void>(flac.load(file));
    for (const FlacBlock& block : flac.blocks)
    {
        if (block.type == FlacBlock::streamInfo)
            content.properties = flacProperties(block.content, file.length());
        else if (block.type == FlacBlock::comment)
        {
            Ogg::XiphComment comment(block.content);
            collect(comment, content.values);
        }
        else if (block.type == FlacBlock::picture && content.values.wantsPictures())
            collect(FLAC::Picture(block.content), content.values);
    }
    content.obstacle = withCopyAdvice(u"a block before its sound is damaged");
    return !flac.blocks.empty();
}

AudioProperties flacProperties(const ByteVector& streamInfo, long bytes)
{
    // 20 bits for the rate, 3 for the channels less one, 5 for the size of a sample less one, and
    // 36 for the number of samples.
    constexpr unsigned rateAt = 10;
    constexpr unsigned size = 18;
    if (streamInfo.size() < size)
        return {};
    const unsigned rates = streamInfo.toUInt(rateAt, true);
    const std::uint64_t samples =
        std::uint64_t(streamInfo[rateAt + 3] & 15) << 32 | streamInfo.toUInt(rateAt + 4, true);
    AudioProperties properties;
    properties.sampleRate = static_cast<int>(rates >> 12);
    properties.channels = static_cast<int>(rates >> 9 & 7) + 1;
    if (properties.sampleRate == 0)
        return properties;
    const double time = 1000.0 * static_cast<double>(samples) / properties.sampleRate;
    properties.milliseconds =
        static_cast<int>(std::min<double>(time, std::numeric_limits<int>::max()));
    if (properties.milliseconds > 0)
        properties.bitrate = static_cast<int>(8 * bytes / properties.milliseconds);
    return properties;
}
} // namespace KVTagLib
