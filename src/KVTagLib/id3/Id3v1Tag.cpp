#include "KVTagLib/id3/Id3v1Tag.h"

#include "KVTagLib/TagText.h"
#include "types/CharClass.h"

#include <taglib/id3v1genres.h>

#include <algorithm>

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr int unknownGenre = 255;

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
constexpr unsigned id3v1ZeroAt = 125; ///< if this byte is zero the next one is the track number
constexpr unsigned id3v1GenreAt = 127;

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

/// Its bytes; none if the file has no such tag.
ByteVector id3v1TagOf(IOStream& file)
{
    file.seek(std::max(0L, file.length() - static_cast<long>(id3v1TailBytes)));
    const ByteVector tail = file.readBlock(id3v1TailBytes);
    return tail.mid(tail.size() - id3v1SizeOf(tail));
}

bool isYear(const CString& text)
{
    return std::ranges::all_of(text.view(), qo::isDigit) && qo::textToInt(text.view()) > 0;
}
} // namespace

unsigned id3v1SizeOf(const ByteVector& tail)
{
    if (tail.size() < id3v1Bytes || !tail.mid(tail.size() - id3v1Bytes).startsWith("TAG"))
        return 0;
    const bool isApe =
        tail.size() >= id3v1TailBytes && tail.mid(tail.size() - id3v1TailBytes).startsWith("APE");
    return isApe ? 0 : id3v1Bytes;
}

void applyToId3v1(const TagChanges& changes, IOStream& file)
{
    ByteVector tag = id3v1TagOf(file);
    if (tag.isEmpty())
        return;
    const long start = file.length() - static_cast<long>(id3v1Bytes);
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

bool fitsId3v1(const TagChanges& changes, IOStream& file)
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
    const ByteVector tag = id3v1TagOf(file);
    const bool hasRoom = tag.size() == id3v1Bytes && tag[id3v1ZeroAt] == 0;
    const bool genreFits = !changes.has(Field::genre) || changes.removes(Field::genre) ||
                           genreNumber(changes) != unknownGenre;
    const bool trackFits =
        !changes.has(Field::trackNumber) || changes.removes(Field::trackNumber) ||
        (changes.trackTotal().isEmpty() && isTrackByte(changes.trackNumber()) && hasRoom);
    const bool yearFits = !changes.has(Field::year) || changes.removes(Field::year) ||
                          isYear(*changes.text(Field::year));
    // It holds one text for each field.
    const bool artistsFit =
        !changes.has(Field::artist) || changes.changed(Field::artist, {}).size() < 2;
    return genreFits && trackFits && yearFits && artistsFit && !changes.has(Field::lyrics) &&
           !changes.has(Field::rating) && !changes.picture();
}
} // namespace KVTagLib
