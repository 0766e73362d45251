#include "KVTagLib/sound/SoundHead.h"

#include "KVTagLib/sound/AudioRegion.h"
#include "KVTagLib/sound/AudioRegionReader.h"
#include "platform/Platform.h"

namespace KVTagLib
{
namespace
{
constexpr std::int64_t soundHeadBytes = 64 << 10;

/// By content and not by extension, which may change with the name.
AudioFormat formatOf(qo::IFile& file, const CString& path)
{
    char head[64];
    const std::int64_t got = file.read(head, sizeof(head));
    const AudioFormat format = formatOfContent({head, static_cast<std::size_t>(got > 0 ? got : 0)});
    return format != AudioFormat::unknown ? format : formatOfPath(path);
}

std::optional<std::string> digestOfFileHead(qo::IFile& file)
{
    AudioRegionReader reader(file, soundHeadBytes);
    reader.add(0, soundHeadBytes);
    std::string digest = reader.digest();
    return reader.sound() ? std::optional(std::move(digest)) : std::nullopt;
}
} // namespace

std::optional<std::uint64_t> digestOfSoundHead(const CString& path)
{
    int error = 0;
    const std::unique_ptr<qo::IFile> file = qo::fileSystem().open(path, qo::OpenMode::read, error);
    if (!file)
        return {};
    const AudioFormat format = formatOf(*file, path);
    std::optional<std::string> digest;
    if (format != AudioFormat::unknown)
        digest = digestOfSound(*file, format, soundHeadBytes);
    if (!digest)
        digest = digestOfFileHead(*file);
    if (!digest)
        return {};
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < sizeof(number); ++i)
        number = number << 8 | static_cast<unsigned char>((*digest)[i]);
    return number;
}
} // namespace KVTagLib
