#include "KVTagLib/TagValues.h"

#include "KVTagLib/TagText.h"
#include "KVTagLib/pictures/PictureStore.h"

#include <limits>

namespace KVTagLib
{
namespace
{
/// Limits for hostile files, which may have millions of either.
constexpr std::size_t maxPictures = 64;
constexpr std::size_t maxFurther = 64;

int lengthLimit(Field field)
{
    return field == Field::lyrics ? maxLyricsLength : maxTextLength;
}

CString shownForm(Field field, CString text)
{
    if (field == Field::genre)
        return genreName(text.Trim());
    return field == Field::year ? yearPart(text) : text;
}
} // namespace

const EmbeddedPicture* TagValues::chosenPicture() const
{
    const EmbeddedPicture* first = nullptr;
    for (const EmbeddedPicture& picture : m_pictures)
    {
        if (picture.isShown && picture.type == pictureType::frontCover)
            return &picture;
        if (picture.isShown && !first)
            first = &picture;
    }
    return first;
}

CString TagValues::wholeText(Field field, const TagLib::String& text) const
{
    const bool isCut = m_extent != TagExtent::everything;
    return textOf(text, isCut ? lengthLimit(field) : std::numeric_limits<int>::max());
}

void TagValues::offerText(Field field, const TagLib::String& text)
{
    if (has(field) || text.isEmpty())
        return;
    const CString whole = wholeText(field, text);
    const CString shown = shownForm(field, whole);
    if (isBlank(shown))
        return;
    if (field == Field::year)
        m_date = whole;
    m_values[static_cast<int>(field)] = shown;
}

void TagValues::offer(Field field, const TagLib::StringList& texts)
{
    if (has(field))
        return;
    std::vector<CString>& further = m_further[static_cast<int>(field)];
    const std::size_t most = m_extent == TagExtent::everything ? texts.size() : maxFurther;
    for (const TagLib::String& text : texts)
    {
        if (!has(field))
            offerText(field, text);
        else if (further.size() >= most)
            return;
        else if (const CString shown = shownForm(field, wholeText(field, text)); !isBlank(shown))
            further.push_back(shown);
    }
}

void TagValues::offerNumbered(Field field,
                              const TagLib::StringList& numbers,
                              const TagLib::String& total)
{
    if (has(field))
        return;
    offer(field, numbers);
    CString& shown = m_values[static_cast<int>(field)];
    if (!shown.IsEmpty() && !total.isEmpty())
        shown = withTotal(shown, textOf(total));
}

void TagValues::offerCount(Field field, int count)
{
    if (count > 0)
        offer(field, TagLib::String::number(count));
}

void TagValues::offerPicture(const TagLib::ByteVector& content,
                             int type,
                             const TagLib::String& description)
{
    if (!wantsPictures())
        return;
    const bool isShown = content.size() <= maxPictureBytes && pictureKindOf(content);
    if (m_extent == TagExtent::everything || (isShown && m_pictures.size() < maxPictures))
        m_pictures.push_back({content, type, description, isShown});
}

CString shownText(Field field, const CString& text)
{
    // Cut first, so that a text to be written and one that was read are cut in the same way and
    // compare equal.
    return shownForm(field, text.Left(lengthLimit(field)));
}
} // namespace KVTagLib
