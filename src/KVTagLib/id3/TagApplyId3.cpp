#include "KVTagLib/TagApply.h"
#include "KVTagLib/TagText.h"
#include "KVTagLib/id3/Id3v2Editor.h"
#include "types/CharClass.h"

#include <taglib/id3v1genres.h>

#include <algorithm>

// Changes ID3 tags in a file: the ID3v2 tag at its start through Id3v2Editor, and the ID3v1 tag,
// the last 128 bytes, by patching. ID3v1: "TAG", title 30, artist 30, album 30, year 4, comment 30
// (whose last two bytes may be a zero and the track number), genre 1.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr int unknownGenre = 255;
/// Foreign bytes before a tag are rare and few.
constexpr unsigned long searchForTag = 64 << 10;

/// Writes a text into a field of fixed size, filled with zeros; a text that is not Latin-1 leaves
/// it empty.
void patch(ByteVector& tag, unsigned at, unsigned size, const String& text)
{
    ByteVector bytes = text.isLatin1() ? text.data(String::Latin1).mid(0, size) : ByteVector();
    bytes.resize(size, 0);
    std::copy(bytes.begin(), bytes.end(), tag.begin() + at);
}

/// The place of a text in the 128 bytes.
struct Id3v1Place
{
    Field field;
    unsigned at;
    unsigned size;
};

constexpr Id3v1Place id3v1Places[] = {
    {Field::title, 3, 30},
    {Field::artist, 33, 30},
    {Field::album, 63, 30},
    {Field::year, 93, 4},
};
constexpr unsigned id3v1TagBytes = 128;
constexpr unsigned id3v1ZeroAt = 125; ///< if this byte is zero the next one is the track number
constexpr unsigned id3v1GenreAt = 127;
/// The start of the file's ID3v2 tag, which may follow foreign bytes; -1 without one.
long findId3v2(IOStream& file)
{
    file.seek(0, IOStream::Beginning);
    const ByteVector head = file.readBlock(searchForTag);
    for (int at = head.find("ID3"); at >= 0; at = head.find("ID3", at + 1))
    {
        if (Id3v2Editor::sizeOf(head.mid(at, Id3v2Editor::headerBytes)) > 0)
            return at;
    }
    return -1;
}

/// The track number as a byte; 0 if it is no number or too large.
int trackByte(const String& number)
{
    bool isNumber = false;
    const int track = number.toInt(&isNumber);
    return isNumber && track > 0 && track < 256 ? track : 0;
}

/// Whether it comes back as it is: "7" does, "07" does not.
bool isTrackByte(const String& number)
{
    return trackByte(number) > 0 && String::number(trackByte(number)) == number;
}

/// The number of the genre in ID3v1; 255 if it has none.
int genreNumber(const TagChanges& changes)
{
    return ID3v1::genreIndex(tagTextOf(genreName(*changes.text(Field::genre))));
}
} // namespace

bool applyToId3v2(const TagChanges& changes, bool hasTag, IOStream& file)
{
    Id3v2Editor editor;
    unsigned long oldSize = 0;
    long start = 0;
    if (hasTag)
    {
        start = findId3v2(file);
        if (start < 0)
            return false;
        file.seek(start, IOStream::Beginning);
        oldSize = Id3v2Editor::sizeOf(file.readBlock(Id3v2Editor::headerBytes));
        file.seek(start, IOStream::Beginning);
        if (!editor.load(file.readBlock(oldSize)))
            return false;
    }
    editor.apply(changes);
    ByteVector tag;
    if (!editor.render(tag))
        return false;
    // A tag without frames would break the standard.
    if (tag.isEmpty())
        file.removeBlock(static_cast<unsigned long>(start), oldSize);
    else
        file.insert(tag, static_cast<unsigned long>(start), oldSize);
    return true;
}

void applyToId3v1(const TagChanges& changes, IOStream& file)
{
    if (file.length() < static_cast<long>(id3v1TagBytes))
        return;
    const long start = file.length() - static_cast<long>(id3v1TagBytes);
    file.seek(start, IOStream::Beginning);
    ByteVector tag = file.readBlock(id3v1TagBytes);
    if (tag.size() != id3v1TagBytes || !tag.startsWith("TAG"))
        return;
    for (const Id3v1Place& place : id3v1Places)
    {
        if (changes.has(place.field))
            patch(tag, place.at, place.size, tagTextOf(*changes.text(place.field)));
    }
    if (changes.has(Field::genre))
        tag[id3v1GenreAt] =
            static_cast<char>(changes.removes(Field::genre) ? unknownGenre : genreNumber(changes));
    // A comment of 30 letters covers the place of the track number.
    if (changes.has(Field::trackNumber) && tag[id3v1ZeroAt] == 0)
    {
        tag[id3v1ZeroAt + 1] = static_cast<char>(trackByte(changes.trackNumber()));
    }
    file.seek(start, IOStream::Beginning);
    file.writeBlock(tag);
}

bool fitsId3v1(const TagChanges& changes)
{
    for (const Id3v1Place& place : id3v1Places)
    {
        if (!changes.has(place.field))
            continue;
        const CString text = *changes.text(place.field);
        const bool plain = std::ranges::all_of(text.view(), [](char16_t c) { return c < 256; });
        if (!plain || text.GetLength() > static_cast<int>(place.size))
            return false;
    }
    const bool genreFits = !changes.has(Field::genre) || changes.removes(Field::genre) ||
                           genreNumber(changes) != unknownGenre;
    const bool trackFits = !changes.has(Field::trackNumber) ||
                           changes.removes(Field::trackNumber) ||
                           (changes.trackTotal().isEmpty() && isTrackByte(changes.trackNumber()));
    // It holds one text for each field.
    const bool artistsFit =
        !changes.has(Field::artist) || changes.changed(Field::artist, {}).size() < 2;
    return genreFits && trackFits && artistsFit && !changes.has(Field::lyrics) &&
           !changes.picture();
}
} // namespace KVTagLib
