#include "Walk.h"

#include <taglib/fileref.h>
#include <taglib/tag.h>

#include <cctype>

namespace
{
bool isAudio(const std::string& path)
{
    static const TagLib::StringList known = TagLib::FileRef::defaultFileExtensions();
    const std::size_t dot = path.rfind('.');
    std::string extension = dot == std::string::npos ? "" : path.substr(dot + 1);
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return known.contains(extension);
}

/// What a scanner needs of a file; the sum keeps the compiler from dropping any of it.
unsigned long readTags(const std::string& path)
{
    const TagLib::FileRef file(path.c_str());
    unsigned long sum = 0;
    if (const TagLib::Tag* tag = file.tag())
        sum += tag->artist().size() + tag->album().size() + tag->title().size() +
               tag->genre().size() + tag->year() + tag->track();
    if (const TagLib::AudioProperties* sound = file.audioProperties())
        sum += static_cast<unsigned long>(sound->lengthInMilliseconds() + sound->bitrate());
    return sum;
}
} // namespace

/// Walks a folder, stats every file and reads the tags and the properties of the sound.
int main(int argc, char** argv)
{
    if (argc != 2)
        bench::fail("usage", "floor_tags FOLDER");
    unsigned long sum = 0;
    bench::measure(
        [&]
        {
            return bench::walk(argv[1],
                               [&sum](const std::string& path, const struct stat&)
                               {
                                   if (isAudio(path))
                                       sum += readTags(path);
                               });
        });
    return sum == 1;
}
