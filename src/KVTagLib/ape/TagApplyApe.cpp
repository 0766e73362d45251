#include "KVTagLib/PictureStore.h"
#include "KVTagLib/TagApply.h"
#include "KVTagLib/TagText.h"
#include "types/Utf.h"

#include <taglib/apetag.h>

#include <initializer_list>

// Changes APE tags (Monkey's Audio, WavPack, Musepack, some MP3). An item is a key and a list of
// texts, or bytes; TagLib writes these without loss.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
using Names = std::initializer_list<const char*>;

/// Null for an item that is missing.
const APE::Item* itemOf(const APE::Tag& tag, const String& key)
{
    const auto it = tag.itemListMap().find(key.upper());
    return it == tag.itemListMap().end() ? nullptr : &it->second;
}

/// Sets or removes an item. Keys are compared without regard to case; the spelling in the file
/// stays.
void setApe(APE::Tag& tag, const String& key, const StringList& texts)
{
    const APE::Item* old = itemOf(tag, key);
    const String spelled = old ? old->key() : key;
    if (texts.isEmpty())
        tag.removeItem(key.upper());
    else
        tag.setItem(spelled, APE::Item(spelled, texts));
}

/// Changes each of the items that are present, or makes the first.
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

/// Usually "3/12" is one item; a file with the total in an item of its own keeps it there.
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

/// The value of a cover is a file name, a zero and the picture.
void setApePicture(const ByteVector& content, APE::Tag& tag)
{
    // The picture that a reader shows is the front cover or, without one, any other cover.
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
