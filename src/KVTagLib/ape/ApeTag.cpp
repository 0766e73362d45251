#include "KVTagLib/ape/ApeTag.h"

#include "KVTagLib/Rating.h"
#include "KVTagLib/TagText.h"
#include "KVTagLib/id3/Id3v1Tag.h"
#include "KVTagLib/pictures/PictureStore.h"
#include "types/CharClass.h"
#include "types/Utf.h"

#include <algorithm>

// Header and footer have 32 bytes: "APETAGEX", the version, the size of items and footer, the
// number of items, flags, eight zeros; all numbers with the least byte first. Version 1000 has no
// header. An item: the size of its value, its flags, the key, a zero, the value.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr auto mark = "APETAGEX";
constexpr unsigned footerBytes = 32;
constexpr unsigned versionAt = 8;
constexpr unsigned tagSizeAt = 12;
constexpr unsigned countAt = 16;
constexpr unsigned tagFlagsAt = 20;
constexpr std::uint32_t tagIsHeader = 1U << 29;
constexpr unsigned itemHeaderBytes = 8;
constexpr std::uint32_t kindOfItem = 6;
constexpr std::uint32_t binaryItem = 2;

std::uint32_t numberAt(const ByteVector& bytes, unsigned at)
{
    return bytes.toUInt(at, false);
}

ByteVector bytesOfNumber(std::size_t number)
{
    return ByteVector::fromUInt(static_cast<unsigned>(number), false);
}

bool isSame(const ByteVector& key, const char* name)
{
    return std::equal(key.begin(),
                      key.end(),
                      name,
                      name + std::char_traits<char>::length(name),
                      [](char a, char b)
                      {
                          return qo::toLower(static_cast<unsigned char>(a)) ==
                                 qo::toLower(static_cast<unsigned char>(b));
                      });
}

constexpr auto frontCoverKey = "Cover Art (Front)";
/// By pictureType.
constexpr const char* pictureKeys[] = {"Cover Art (Other)",
                                       "Cover Art (Icon)",
                                       "Cover Art (Other Icon)",
                                       frontCoverKey,
                                       "Cover Art (Back)",
                                       "Cover Art (Leaflet)",
                                       "Cover Art (Media)",
                                       "Cover Art (Lead Artist)",
                                       "Cover Art (Artist)",
                                       "Cover Art (Conductor)",
                                       "Cover Art (Band)",
                                       "Cover Art (Composer)",
                                       "Cover Art (Lyricist)",
                                       "Cover Art (Recording Location)",
                                       "Cover Art (During Recording)",
                                       "Cover Art (During Performance)",
                                       "Cover Art (Video Capture)",
                                       "Cover Art (Fish)",
                                       "Cover Art (Illustration)",
                                       "Cover Art (Band Logotype)",
                                       "Cover Art (Publisher Logotype)"};
static_assert(std::size(pictureKeys) == pictureType::count);
constexpr std::initializer_list<const char*> totalKeys = {"TRACKTOTAL", "TOTALTRACKS"};
} // namespace

/// The keys of a field; a file may have any of them, a new item gets the first.
struct ApeKeys
{
    Field field;
    std::initializer_list<const char*> keys;
};

namespace
{
constexpr ApeKeys allKeys[] = {
    {Field::artist, {"Artist"}},
    {Field::album, {"Album"}},
    {Field::title, {"Title"}},
    {Field::genre, {"Genre"}},
    {Field::trackNumber, {"Track"}},
    {Field::year, {"Year", "Date"}},
    {Field::lyrics, {"Lyrics", "UnsyncedLyrics", "Unsynced Lyrics"}},
    {Field::albumArtist, {"Album Artist", "AlbumArtist"}},
    {Field::disc, {"Disc", "DiscNumber"}},
    {Field::comment, {"Comment"}},
    {Field::rating, {"FMPS_RATING", "RATING"}},
};
} // namespace

bool ApeTag::Item::isText(const char* name) const
{
    return (flags & kindOfItem) == 0 && isSame(key, name);
}

bool ApeTag::Item::isPicture() const
{
    constexpr auto start = "Cover Art";
    constexpr unsigned length = 9;
    return (flags & kindOfItem) == binaryItem && isSame(key.mid(0, length), start) &&
           value.find('\0') >= 0;
}

int ApeTag::Item::pictureType() const
{
    const auto* const found =
        std::ranges::find_if(pictureKeys, [this](const char* name) { return isSame(key, name); });
    return found == std::end(pictureKeys) ? pictureType::other
                                          : static_cast<int>(found - pictureKeys);
}

bool ApeTag::Item::isFrontCover() const
{
    return isPicture() && isSame(key, frontCoverKey);
}

ApeTag::Place ApeTag::find(const ByteVector& tail, std::int64_t fileBytes)
{
    const unsigned id3v1 = id3v1SizeOf(tail);
    const std::int64_t end = fileBytes - id3v1;
    if (tail.size() < id3v1 + footerBytes)
        return {end, 0};
    const ByteVector footer = tail.mid(tail.size() - id3v1 - footerBytes, footerBytes);
    if (!footer.startsWith(mark))
        return {end, 0};
    const unsigned header = (numberAt(footer, tagFlagsAt) & hasHeader) != 0 ? footerBytes : 0;
    const std::int64_t size = std::int64_t(numberAt(footer, tagSizeAt)) + header;
    return {end - size, size};
}

bool ApeTag::load(const ByteVector& tag)
{
    if (tag.size() < footerBytes)
        return false;
    const ByteVector footer = tag.mid(tag.size() - footerBytes);
    m_version = numberAt(footer, versionAt);
    m_flags = numberAt(footer, tagFlagsAt);
    const unsigned start = (m_flags & hasHeader) != 0 ? footerBytes : 0;
    const std::uint32_t count = numberAt(footer, countAt);
    const bool isFramed = tag.size() >= start + footerBytes && footer.startsWith(mark) &&
                          (start == 0 || (tag.startsWith(mark) &&
                                          numberAt(tag, tagSizeAt) == tag.size() - footerBytes));
    return loadItems(tag.mid(start, tag.size() - start - footerBytes), count) && isFramed;
}

bool ApeTag::loadItems(const ByteVector& bytes, std::uint32_t count)
{
    unsigned at = 0;
    while (m_items.size() < count && bytes.size() - at > itemHeaderBytes)
    {
        const std::uint32_t size = numberAt(bytes, at);
        const unsigned keyAt = at + itemHeaderBytes;
        const int zero = bytes.find('\0', keyAt);
        if (zero <= static_cast<int>(keyAt))
            return false;
        const auto valueAt = static_cast<unsigned>(zero) + 1;
        if (size > bytes.size() - valueAt)
            return false;
        m_items.push_back({bytes.mid(keyAt, valueAt - 1 - keyAt),
                           numberAt(bytes, at + 4),
                           bytes.mid(valueAt, size)});
        at = valueAt + size;
    }
    return m_items.size() == count && at == bytes.size();
}

StringList ApeTag::textsOf(const char* key) const
{
    StringList texts;
    for (const Item& item : m_items)
    {
        if (!item.isText(key))
            continue;
        for (const ByteVector& text : ByteVectorList::split(item.value, ByteVector(1, 0)))
            texts.append(textOfBytes(text));
    }
    return texts;
}

StringList ApeTag::texts(Field field) const
{
    for (const char* key : std::ranges::find(allKeys, field, &ApeKeys::field)->keys)
    {
        if (StringList texts = textsOf(key); !texts.isEmpty())
            return texts;
    }
    return {};
}

String ApeTag::trackTotal() const
{
    for (const char* key : totalKeys)
    {
        if (const StringList texts = textsOf(key); !texts.isEmpty())
            return texts.front();
    }
    return {};
}

std::vector<ApeTag::Picture> ApeTag::pictures() const
{
    std::vector<Picture> pictures;
    for (const Item& item : m_items)
    {
        // The value is a file name, a zero and the picture.
        if (item.isPicture())
            pictures.push_back({item.value.mid(static_cast<unsigned>(item.value.find('\0')) + 1),
                                item.pictureType()});
    }
    return pictures;
}

void ApeTag::set(const char* key, const StringList& texts)
{
    ByteVector value;
    for (const String& text : texts)
    {
        if (!value.isEmpty())
            value.append(ByteVector(1, 0));
        value.append(text.data(String::UTF8));
    }
    bool isSet = texts.isEmpty();
    for (auto item = m_items.begin(); item != m_items.end();)
    {
        if (!item->isText(key))
            ++item;
        else if (isSet)
            item = m_items.erase(item);
        else
        {
            item->value = value;
            isSet = true;
            ++item;
        }
    }
    if (!isSet)
        m_items.push_back({key, 0, value});
}

void ApeTag::set(const TagChanges& changes, const ApeKeys& keys)
{
    bool isFound = false;
    for (const char* key : keys.keys)
    {
        const StringList old = textsOf(key);
        if (old.isEmpty())
            continue;
        isFound = true;
        set(key, changes.changed(keys.field, old));
    }
    if (!isFound)
        set(*keys.keys.begin(), changes.changed(keys.field, {}));
}

/// Usually "3/12" is one item; a file with the total in an item of its own keeps it there.
void ApeTag::setTrack(const TagChanges& changes, const ApeKeys& keys)
{
    const auto own = std::ranges::find_if(
        totalKeys, [this](const char* key) { return !textsOf(key).isEmpty(); });
    if (own == totalKeys.end())
        return set(changes, keys);
    const String number = changes.trackNumber();
    const String total = changes.trackTotal();
    if (!total.isEmpty() || changes.removesTrackTotal())
        set(*own, total.isEmpty() ? StringList() : total);
    set(*keys.keys.begin(), number.isEmpty() ? StringList() : number);
}

/// The second key has a scale of its own.
void ApeTag::setRating(const TagChanges& changes)
{
    const int rating = changes.rating();
    set("FMPS_RATING", rating > 0 ? StringList(fractionOfRating(rating)) : StringList());
    if (const StringList old = textsOf("RATING"); !old.isEmpty())
        set("RATING", rating > 0 ? StringList(numberOfRating(rating, old.front())) : StringList());
}

const ApeTag::Item* ApeTag::frontCover() const
{
    const auto front = std::ranges::find_if(m_items, &Item::isFrontCover);
    return front == m_items.end() ? nullptr : &*front;
}

void ApeTag::setPicture(const ByteVector& content)
{
    ByteVector value = qo::toUtf8(u"cover" + CString(pictureKindOf(content)->extension)).c_str();
    value.append(ByteVector(1, 0));
    value.append(content);
    if (const Item* front = frontCover())
        m_items[static_cast<std::size_t>(front - m_items.data())].value = value;
    else
        m_items.push_back({frontCoverKey, binaryItem, value});
}

void ApeTag::apply(const TagChanges& changes)
{
    for (const ApeKeys& keys : allKeys)
    {
        if (!changes.has(keys.field))
            continue;
        if (keys.field == Field::trackNumber)
            setTrack(changes, keys);
        else if (keys.field == Field::rating)
            setRating(changes);
        else
            set(changes, keys);
    }
    if (changes.picture())
        setPicture(*changes.picture());
    if (changes.removesPictures())
        std::erase_if(m_items,
                      [&](const Item& item)
                      { return item.isPicture() && changes.removesPicture(item.pictureType()); });
}

std::vector<ApeTag::Item> ApeTag::itemsBeside(const TagChanges& changes) const
{
    const auto isNamed = [&](const Item& item)
    {
        const auto isOne = [&item](const char* key) { return item.isText(key); };
        if (changes.has(Field::trackNumber) && std::ranges::any_of(totalKeys, isOne))
            return true;
        if (item.isPicture() && changes.removesPicture(item.pictureType()))
            return true;
        return std::ranges::any_of(allKeys,
                                   [&](const ApeKeys& keys) {
                                       return changes.has(keys.field) &&
                                              std::ranges::any_of(keys.keys, isOne);
                                   });
    };
    const Item* const picture = changes.picture() ? frontCover() : nullptr;
    std::vector<Item> items;
    for (const Item& item : m_items)
    {
        if (&item != picture && !isNamed(item))
            items.push_back(item);
    }
    return items;
}

bool ApeTag::keptBy(const ApeTag& other, const TagChanges& changes) const
{
    return itemsBeside(changes) == other.itemsBeside(changes);
}

ByteVector ApeTag::render() const
{
    if (m_items.empty())
        return {};
    ByteVector items;
    for (const Item& item : m_items)
    {
        items.append(bytesOfNumber(item.value.size()));
        items.append(bytesOfNumber(item.flags));
        items.append(item.key);
        items.append(ByteVector(1, 0));
        items.append(item.value);
    }
    const auto frame = [&](std::uint32_t flags)
    {
        ByteVector bytes(mark);
        bytes.append(bytesOfNumber(m_version));
        bytes.append(bytesOfNumber(items.size() + footerBytes));
        bytes.append(bytesOfNumber(m_items.size()));
        bytes.append(bytesOfNumber(flags));
        bytes.append(ByteVector(8, 0));
        return bytes;
    };
    ByteVector tag = (m_flags & hasHeader) != 0 ? frame(m_flags | tagIsHeader) : ByteVector();
    tag.append(items);
    tag.append(frame(m_flags));
    return tag;
}
} // namespace KVTagLib
