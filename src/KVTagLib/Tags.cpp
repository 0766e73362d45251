#include "KVTagLib/Tags.h"

#include "KVTagLib/Rating.h"
#include "KVTagLib/pictures/PictureStore.h"
#include "types/CharClass.h"

#include <algorithm>

namespace KVTagLib
{
bool CTags::GetFirstValidArtist(CString& artist) const
{
    if (m_artists.IsEmpty())
        return false;
    for (const CString& name : m_artists)
    {
        if (!name.IsEmpty())
        {
            artist = name;
            return true;
        }
    }
    artist.Empty();
    return true;
}

void CTags::AddArtist(const CString& artist, bool first)
{
    if (first)
        m_artists.InsertAt(0, artist);
    else
        m_artists.Add(artist);
}

bool CTags::AddPicture(const CString& path)
{
    TagLib::ByteVector content;
    // Loaded now so that the caller learns of a failure; the writer loads it again to compare.
    if (path.IsEmpty() || !loadPicture(path, content))
        return false;
    m_pictures.Add(CPictureTag(path, pictureKindOf(content)->mimeType, true));
    return true;
}

bool CTags::GetPicture(int index, CPictureTag& picture) const
{
    if (index < 0 || index >= m_pictures.GetSize())
        return false;
    picture = m_pictures[index];
    return true;
}

bool CTags::GetPictures(CArray<CPictureTag>& pictures) const
{
    pictures = m_pictures;
    return !pictures.IsEmpty();
}

bool CTags::GetTime(int& time) const
{
    if (m_time < 0)
        return false;
    time = m_time;
    return true;
}

bool CTags::GetBitrate(int& bitrate) const
{
    if (m_bitrate < 0)
        return false;
    bitrate = m_bitrate;
    return true;
}

CStringArray CTags::GetValues(Field field) const
{
    if (field == Field::artist)
        return m_artists;
    CStringArray values;
    CString first;
    if (!get(field, first))
        return values;
    values = m_further[static_cast<int>(field)];
    values.InsertAt(0, first);
    return values;
}

void CTags::AddFurther(Field field, const CString& value)
{
    if (field == Field::artist)
        m_artists.Add(value);
    else
        m_further[static_cast<int>(field)].Add(value);
}

bool CTags::get(Field field, CString& text) const
{
    const int item = static_cast<int>(field);
    if ((m_present & (1U << item)) == 0)
        return false;
    text = m_items[item];
    return true;
}

bool CTags::getNumber(Field field, int& number) const
{
    CString text;
    if (!get(field, text) || text.IsEmpty())
        return false;
    number = qo::textToInt(text.view());
    return true;
}

void CTags::SetRating(int halfStars)
{
    CString text;
    if (halfStars > 0)
        text.Format(u"%d", std::min(halfStars, mostHalfStars));
    set(Field::rating, text);
}

void CTags::set(Field field, const CString& text)
{
    const int item = static_cast<int>(field);
    m_items[item] = text;
    m_present = static_cast<std::uint16_t>(m_present | (1U << item));
}
} // namespace KVTagLib
