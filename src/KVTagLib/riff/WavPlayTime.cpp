#include "KVTagLib/riff/WavPlayTime.h"

#include <algorithm>
#include <limits>

using namespace TagLib;

namespace KVTagLib
{
void completeWav(IOStream& file, AudioProperties& properties)
{
    if (properties.milliseconds > 0)
        return;
    constexpr long formHeader = 12;
    constexpr long chunkHeader = 8;
    constexpr unsigned formatBytes = 16;
    std::uint32_t bytesPerSecond = 0;
    for (long at = formHeader; at + chunkHeader <= file.length();)
    {
        file.seek(at);
        const ByteVector chunk = file.readBlock(chunkHeader + formatBytes);
        const long size = chunk.toUInt(4U, false);
        at += chunkHeader;
        if (chunk.startsWith("fmt ") && chunk.size() == chunkHeader + formatBytes)
        {
            properties.channels = chunk.toShort(10U, false);
            properties.sampleRate = static_cast<int>(chunk.toUInt(12U, false));
            bytesPerSecond = chunk.toUInt(16U, false);
        }
        const bool isOpen = size == 0 || size > file.length() - at;
        if (chunk.startsWith("data") && isOpen && bytesPerSecond > 0)
        {
            const double time = 1000.0 * static_cast<double>(file.length() - at) / bytesPerSecond;
            properties.milliseconds =
                static_cast<int>(std::min<double>(time, std::numeric_limits<int>::max()));
            properties.bitrate = static_cast<int>(bytesPerSecond / 125);
            return;
        }
        at += size + (size & 1);
    }
}
} // namespace KVTagLib
