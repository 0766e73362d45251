#include "KVTagLib/riff/WavPlayTime.h"

#include "KVTagLib/riff/RiffChunks.h"

#include <algorithm>
#include <limits>

using namespace TagLib;

namespace KVTagLib
{
void completeWav(IOStream& file, AudioProperties& properties)
{
    if (properties.milliseconds > 0)
        return;
    std::uint32_t bytesPerSecond = 0;
    const auto look = [&](const RiffChunk& chunk)
    {
        if (chunk.name == "fmt ")
        {
            constexpr unsigned formatBytes = 16;
            file.seek(chunk.start);
            const ByteVector format = file.readBlock(formatBytes);
            if (format.size() < formatBytes)
                return false;
            properties.channels = format.toShort(2U, false);
            properties.sampleRate = static_cast<int>(format.toUInt(4U, false));
            bytesPerSecond = format.toUInt(8U, false);
        }
        if (chunk.name != "data")
            return true;
        const long left = file.length() - chunk.start;
        if ((chunk.size != 0 && chunk.size <= left) || bytesPerSecond == 0)
            return false;
        const double time = 1000.0 * static_cast<double>(left) / bytesPerSecond + 0.5;
        properties.milliseconds =
            static_cast<int>(std::min<double>(time, std::numeric_limits<int>::max()));
        properties.bitrate = static_cast<int>(bytesPerSecond / 125);
        return false;
    };
    forEachRiffChunk(file, false, look);
}
} // namespace KVTagLib
