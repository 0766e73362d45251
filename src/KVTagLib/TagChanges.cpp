#include "KVTagLib/TagChanges.h"

#include "KVTagLib/TagText.h"
#include "KVTagLib/Tags.h"
#include "KVTagLib/pictures/PictureStore.h"
#include "types/CharClass.h"

#include <algorithm>

// Compares wanted values with those of a file, and later the file as written with what was wanted.
// Both use the form that a reader shows (comparable()), so a value that only looks different in the
// tag is no change: a genre "(17)" and "Rock", a track "03" and "3".

namespace KVTagLib
{
namespace
{
CString trimmed(CString text)
{
    return text.Trim();
}

/// The form in which both sides are compared: as shown, and trimmed as the kernel trims what it
/// reads.
CString comparable(Field field, const CString& text)
{
    return trimmed(shownText(field, textOf(tagTextOf(text), maxLyricsLength)));
}

/// The same for a date of which more than the year is compared.
CString comparableDate(const CString& text)
{
    return trimmed(textOf(tagTextOf(text)));
}

/// Whether it is more than a year.
bool isDate(const CString& text)
{
    return yearPart(text) != text;
}

CString leftOfSlash(const CString& text)
{
    const int slash = text.Find(u'/');
    return trimmed(slash < 0 ? text : text.Left(slash));
}

CString rightOfSlash(const CString& text)
{
    const int slash = text.Find(u'/');
    return slash < 0 ? CString() : trimmed(text.Mid(slash + 1));
}

/// Without leading zeros, and "" for zero: formats that store numbers lose them.
CString asNumber(const CString& part)
{
    if (!std::ranges::all_of(part.view(), qo::isDigit))
        return part;
    int zeros = 0;
    while (zeros < part.GetLength() && part[zeros] == u'0')
        ++zeros;
    return part.Mid(zeros);
}

/// The wanted track number with the file's total, if the wanted one has none: "4" and "3/12" give
/// "4/12". A slash at the end says that there shall be no total.
CString mergedTrack(const CString& wanted, const CString& present)
{
    const bool alone = !wanted.IsEmpty() && wanted.Find(u'/') < 0;
    const CString total = rightOfSlash(alone ? present : wanted);
    return asNumber(total).IsEmpty() ? leftOfSlash(wanted) : leftOfSlash(wanted) + u'/' + total;
}

/// Whether the file has the wanted number, as far as formats differ in spelling it. Some formats
/// cannot hold a total without a number; such a total is never shown, so it is not compared.
bool sameTrack(const CString& wanted, const CString& found)
{
    const CString number = asNumber(leftOfSlash(wanted));
    return number == asNumber(leftOfSlash(found)) &&
           (number.IsEmpty() || asNumber(rightOfSlash(wanted)) == asNumber(rightOfSlash(found)));
}
} // namespace

TagChanges::TagChanges(const CTags& wanted, const TagValues& present)
{
    using Getter = bool (CTags::*)(CString&) const;
    static constexpr std::pair<Field, Getter> getters[] = {
        {Field::album, &CTags::GetAlbum},
        {Field::title, &CTags::GetTitle},
        {Field::genre, &CTags::GetGenre},
        {Field::trackNumber, &CTags::GetTrackNumber},
        {Field::year, &CTags::GetYear},
        {Field::lyrics, &CTags::GetLyrics},
    };
    if (CString rating; wanted.GetText(Field::rating, rating))
        compare(Field::rating, rating, present);
    compareArtists(wanted, present);
    for (const auto& [field, getter] : getters)
    {
        CString text;
        if ((wanted.*getter)(text))
            compare(field, text, present);
    }
    comparePictures(wanted, present);
}

void TagChanges::comparePictures(const CTags& wanted, const TagValues& present)
{
    CPictureTag picture;
    if (!wanted.GetPicture(0, picture))
    {
        m_removal = wanted.GetPictureRemoval();
        if (std::ranges::none_of(present.pictures(),
                                 [this](const auto& each) { return removesPicture(each.type); }))
            m_removal = PictureRemoval::none;
        return;
    }
    // An unchanged picture comes back as the path of its extracted file. If that file is gone, the
    // embedded picture must stay, so a picture that cannot be loaded changes nothing.
    TagLib::ByteVector content;
    if (!loadPicture(picture.GetFilePath(), content))
        return;
    const EmbeddedPicture* chosen = present.chosenPicture();
    if (!chosen || chosen->content != content)
        m_picture = content;
}

void TagChanges::compareArtists(const CTags& wanted, const TagValues& present)
{
    CString first;
    if (!wanted.GetFirstValidArtist(first))
        return;
    compare(Field::artist, first, present);
    if (wanted.GetArtists().GetSize() < 2)
        return;
    // More than one artist describes the whole list.
    TagLib::StringList all;
    for (const CString& artist : wanted.GetArtists())
    {
        if (!isBlank(artist))
            all.append(tagTextOf(artist));
    }
    TagLib::StringList old(tagTextOf(present.value(Field::artist)));
    for (const CString& artist : present.further(Field::artist))
        old.append(tagTextOf(artist));
    if (all == old || all.isEmpty())
        return;
    m_allArtists = all;
    m_texts[static_cast<int>(Field::artist)] = first;
}

void TagChanges::compare(Field field, const CString& wanted, const TagValues& present)
{
    const CString text = trimmed(wanted);
    const CString& old = present.value(field);
    if (field == Field::trackNumber)
        return compareTrack(comparable(field, text), comparable(field, old));
    const bool same = field == Field::year && isDate(text)
                          ? comparableDate(text) == comparableDate(present.date())
                          : comparable(field, text) == comparable(field, old);
    if (!same)
        m_texts[static_cast<int>(field)] = text;
}

void TagChanges::compareTrack(const CString& wanted, const CString& present)
{
    const CString text = mergedTrack(wanted, present);
    if (wanted == present || text == present)
        return;
    m_texts[static_cast<int>(Field::trackNumber)] = text;
    m_removesTrackTotal = wanted.Find(u'/') >= 0 && rightOfSlash(text).IsEmpty();
}

bool TagChanges::empty() const
{
    return !m_picture && !removesPictures() &&
           std::ranges::none_of(m_texts, [](const auto& text) { return !!text; });
}

TagLib::StringList TagChanges::changed(Field field, const TagLib::StringList& old) const
{
    if (removes(field))
        return {};
    if (field == Field::artist && !m_allArtists.isEmpty())
        return m_allArtists;
    const TagLib::String text = tagTextOf(*this->text(field));
    TagLib::StringList list;
    bool done = false;
    for (const TagLib::String& value : old)
    {
        const bool shown = !done && !isBlank(textOf(value, maxLyricsLength));
        list.append(shown ? text : value);
        done = done || shown;
    }
    return done ? list : TagLib::StringList(text);
}

int TagChanges::rating() const
{
    return qo::textToInt(text(Field::rating)->view());
}

TagLib::String TagChanges::trackNumber() const
{
    return tagTextOf(leftOfSlash(*text(Field::trackNumber)));
}

TagLib::String TagChanges::trackTotal() const
{
    return tagTextOf(rightOfSlash(*text(Field::trackNumber)));
}

bool TagChanges::fulfilledBy(const TagValues& before, const TagValues& after) const
{
    // All fields are compared: one that should not change must be as before, with all its values.
    for (int i = 0; i < fieldCount; ++i)
    {
        const auto field = static_cast<Field>(i);
        const CString& wanted = m_texts[i] ? *m_texts[i] : before.value(field);
        const CString& found = after.value(field);
        const bool same = field == Field::trackNumber
                              ? sameTrack(wanted, found)
                              : comparable(field, wanted) == comparable(field, found);
        if (!same || (!m_texts[i] && before.further(field) != after.further(field)))
            return false;
    }
    const std::optional<CString>& year = text(Field::year);
    const CString& date = year ? *year : before.date();
    if ((!year || isDate(date)) && comparableDate(date) != comparableDate(after.date()))
        return false;
    return picturesFulfilledBy(before, after);
}

bool TagChanges::picturesFulfilledBy(const TagValues& before, const TagValues& after) const
{
    // Only a front cover is replaced; of every other picture the file must have the same bytes.
    const auto kept = [](const TagValues& values, const auto& isNamed)
    {
        std::vector<TagLib::ByteVector> list;
        for (const EmbeddedPicture& picture : values.pictures())
        {
            if (!isNamed(picture.type))
                list.push_back(picture.content);
        }
        return list;
    };
    const auto isRemoved = [this](int type) { return removesPicture(type); };
    if (!m_picture)
        return kept(before, isRemoved) == kept(after, [](int) { return false; });
    const auto isFront = [](int type) { return type == pictureType::frontCover; };
    const EmbeddedPicture* const shown = after.chosenPicture();
    return shown && shown->content == *m_picture && kept(before, isFront) == kept(after, isFront);
}
} // namespace KVTagLib
