#include "KVTagLib/TagValues.h"

#include "KVTagLib/PictureStore.h"
#include "KVTagLib/TagText.h"

namespace KVTagLib
{
namespace
{
/// Limits for hostile files, which may have millions of either.
constexpr std::size_t maxPictures = 64;
constexpr std::size_t maxArtists = 64;

int lengthLimit(Field field)
{
    return field == Field::lyrics ? maxLyricsLength : maxTextLength;
}
} // namespace

const EmbeddedPicture* TagValues::chosenPicture() const
{
    for (const EmbeddedPicture& picture : m_pictures)
    {
        if (picture.frontCover)
            return &picture;
    }
    return m_pictures.empty() ? nullptr : m_pictures.data();
}

bool TagValues::offerText(Field field, const TagLib::String& text)
{
    if (has(field) || text.isEmpty())
        return false;
    const CString whole = textOf(text, lengthLimit(field));
    const CString shown = shownText(field, whole);
    if (isBlank(shown))
        return false;
    if (field == Field::year)
        m_date = whole;
    m_values[static_cast<int>(field)] = shown;
    return true;
}

void TagValues::offer(Field field, const TagLib::StringList& texts)
{
    if (has(field))
        return;
    for (const TagLib::String& text : texts)
    {
        if (!has(field))
            offerText(field, text);
        else if (field != Field::artist || m_furtherArtists.size() >= maxArtists)
            return;
        else if (const CString further = textOf(text); !isBlank(further))
            m_furtherArtists.push_back(further);
    }
}

void TagValues::offerTrack(const TagLib::String& number, const TagLib::String& total)
{
    if (offerText(Field::trackNumber, number) && !total.isEmpty())
    {
        CString& shown = m_values[static_cast<int>(Field::trackNumber)];
        shown = withTotal(shown, textOf(total));
    }
}

void TagValues::offerPicture(const TagLib::ByteVector& content, bool frontCover)
{
    const bool fits = content.size() <= maxPictureBytes && m_pictures.size() < maxPictures;
    if (m_withPictures && fits && pictureKindOf(content))
        m_pictures.push_back({content, frontCover});
}

CString shownText(Field field, const CString& text)
{
    // Cut first, so that a text to be written and one that was read are cut in the same way and
    // compare equal.
    CString shown = text.Left(lengthLimit(field));
    if (field == Field::genre)
        return genreName(shown.Trim());
    return field == Field::year ? yearPart(shown) : shown;
}
} // namespace KVTagLib
