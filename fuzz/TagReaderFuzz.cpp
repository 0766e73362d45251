#include "KVTagLib/AudioFile.h"
#include "KVTagLib/ByteStream.h"
#include "KVTagLib/TagChanges.h"
#include "KVTagLib/Tags.h"
#include "KVTagLib/ape/ApeTag.h"
#include "KVTagLib/id3/Id3v2Editor.h"
#include "KVTagLib/layout/FormatLayouts.h"
#include "MemoryFile.h"

#include <cstdlib>

namespace
{
TagLib::ByteVector rendered(const KVTagLib::ApeTag& tag)
{
    return tag.render();
}

TagLib::ByteVector rendered(const KVTagLib::Id3v2Editor& tag)
{
    TagLib::ByteVector bytes;
    return tag.render(bytes) ? bytes : TagLib::ByteVector();
}

/// A tag that can be taken apart can be changed, built and taken apart again.
template <class Editor>
void edit(const TagLib::ByteVector& bytes, const KVTagLib::TagChanges& changes)
{
    Editor tag;
    if (!tag.load(bytes))
        return;
    tag.apply(changes);
    const TagLib::ByteVector changed = rendered(tag);
    Editor again;
    if (!changed.isEmpty() && !again.load(changed))
        std::abort();
}
} // namespace

/// The first byte chooses the format that the file's name would claim, the rest is the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace KVTagLib;
    if (size < 1)
        return 0;
    constexpr int formatCount = static_cast<int>(AudioFormat::trueAudio);
    const auto format = static_cast<AudioFormat>(1 + data[0] % formatCount);
    AudioFileContent content(TagExtent::everything);
    CString error;
    readAudioFile(std::make_unique<MemoryFile>(data + 1, size - 1), format, content, error);

    ByteStream stream(std::make_unique<MemoryFile>(data + 1, size - 1));
    FileParts parts;
    addParts(stream, format, parts);

    CTags wanted;
    wanted.SetTitle(u"Low Tide");
    wanted.SetTrackNumber(u"3/12");
    wanted.SetYear(u"2001-05-03");
    const TagChanges changes(wanted, content.values);
    const TagLib::ByteVector bytes(reinterpret_cast<const char*>(data + 1),
                                   static_cast<unsigned>(size - 1));
    edit<Id3v2Editor>(bytes, changes);
    edit<ApeTag>(bytes, changes);
    return 0;
}
