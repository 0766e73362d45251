#include "KVTagLib/PictureStore.h"
#include "KVTagLib/TagApply.h"
#include "KVTagLib/TagText.h"
#include "types/Utf.h"

#include <taglib/apetag.h>

#include <initializer_list>

using namespace TagLib;

namespace KVTagLib
{
namespace
{
using Names = std::initializer_list<const char*>;

/// Null for an item that is not there.
const APE::Item* itemOf(const APE::Tag& tag, const String& key)
{
    const auto it = tag.itemListMap().find(key.upper());
    return it == tag.itemListMap().end() ? nullptr : &it->second;
}

/// Keys do not distinguish case; the spelling that the file has stays.
void setApe(APE::Tag& tag, const String& key, const StringList& texts)
{
    const APE::Item* old = itemOf(tag, key);
    const String spelled = old ? old->key() : key;
    if (texts.isEmpty())
        tag.removeItem(key.upper());
    else
        tag.setItem(spelled, APE::Item(spelled, texts));
}

void setApe(const TagChanges& changes, Field field, Names names, APE::Tag& tag)
{
    bool found = false;
    for (const char* name : names)
    {
        const APE::Item* old = itemOf(tag, name);
        if (!old || old->type() != APE::Item::Text)
            continue;
        found = true;
        setApe(tag, name, changes.changed(field, old->toStringList()));
    }
    if (!found)
        setApe(tag, *names.begin(), changes.changed(field, {}));
}

/// The usual form is "3/12" in one item; a file that keeps the total apart goes on doing so.
void setApeTrack(const TagChanges& changes, APE::Tag& tag)
{
    for (const char* totalKey : {"TRACKTOTAL", "TOTALTRACKS"})
    {
        if (!itemOf(tag, totalKey))
            continue;
        const String number = changes.trackNumber();
        const String total = changes.trackTotal();
        if (!total.isEmpty() || changes.removesTrackTotal())
            setApe(tag, totalKey, total.isEmpty() ? StringList() : total);
        setApe(tag, "Track", number.isEmpty() ? StringList() : number);
        return;
    }
    setApe(changes, Field::trackNumber, {"Track"}, tag);
}

void setApePicture(const ByteVector& content, APE::Tag& tag)
{
    // The shown picture need not be the front cover.
    constexpr auto front = "Cover Art (Front)";
    String key = front;
    if (!itemOf(tag, front))
    {
        for (const auto& [name, item] : tag.itemListMap())
        {
            if (name.startsWith("COVER ART") && item.type() == APE::Item::Binary)
            {
                key = item.key();
                break;
            }
        }
    }
    ByteVector value = qo::toUtf8(u"cover" + CString(pictureKindOf(content)->extension)).c_str();
    value.append(ByteVector(1, 0));
    value.append(content);
    tag.setData(key, value);
}

} // namespace

void apply(const TagChanges& changes, APE::Tag& tag)
{
    constexpr Field fields[] = {Field::artist, Field::album, Field::title, Field::genre};
    constexpr const char* names[] = {"Artist", "Album", "Title", "Genre"};
    for (int i = 0; i < 4; ++i)
    {
        if (changes.has(fields[i]))
            setApe(changes, fields[i], {names[i]}, tag);
    }
    if (changes.has(Field::year))
        setApe(changes, Field::year, {"Year", "Date"}, tag);
    if (changes.has(Field::lyrics))
        setApe(changes, Field::lyrics, {"Lyrics", "UnsyncedLyrics", "Unsynced Lyrics"}, tag);
    if (changes.has(Field::trackNumber))
        setApeTrack(changes, tag);
    if (changes.picture())
        setApePicture(*changes.picture(), tag);
}
} // namespace KVTagLib
