#include "KVTagLib/Rating.h"
#include "KVTagLib/TagChanges.h"
#include "KVTagLib/TagText.h"
#include "KVTagLib/asf/AsfHeader.h"
#include "KVTagLib/pictures/PictureStore.h"

#include <taglib/asfpicture.h>

#include <optional>
#include <vector>

// Changes the values of Windows Media headers: which attribute holds which field, and how a new
// list of texts is distributed over the old values.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
/// Puts the texts in the place of the values that a reader shows, which may have been numbers;
/// pictures and other values under that name stay.
void setAsf(AsfHeader& header, const String& name, const StringList& texts)
{
    std::vector<std::optional<AsfValue>> values;
    auto next = texts.begin();
    for (const AsfValue& value : header.values(name))
    {
        std::optional<AsfValue>& place = values.emplace_back(value);
        if (value.type == AsfValue::truth || (isShown(value) && next == texts.end()))
            place.reset();
        else if (isShown(value))
        {
            const String& text = *next++;
            if (shownText(value) != text)
                *place = {AsfValue::text, value.language, value.stream, asfBytes(text)};
        }
    }
    for (; next != texts.end(); ++next)
        values.push_back(AsfValue{.bytes = asfBytes(*next)});
    header.setValues(name, values);
}

/// Replaces the first front cover, in its place, or adds one; or removes pictures.
void setAsfPictures(const TagChanges& changes, AsfHeader& header)
{
    const std::vector<AsfValue> old = header.values("WM/Picture");
    std::vector<std::optional<AsfValue>> values(old.begin(), old.end());
    auto front = values.end();
    for (auto value = values.begin(); value != values.end(); ++value)
    {
        const ASF::Picture picture = pictureOf(**value);
        const int type = picture.isValid() ? picture.type() : pictureType::none;
        if (changes.removesPicture(type))
            value->reset();
        else if (type == pictureType::frontCover && front == values.end())
            front = value;
    }
    if (changes.picture())
    {
        const ByteVector& content = *changes.picture();
        ASF::Picture picture;
        picture.setType(ASF::Picture::FrontCover);
        picture.setMimeType(tagTextOf(pictureKindOf(content)->mimeType));
        picture.setPicture(content);
        if (front == values.end())
            front = values.insert(values.end(), AsfValue{.type = AsfValue::binary});
        (*front)->bytes = picture.render();
    }
    header.setValues("WM/Picture", values);
}

/// Title and artist stand in the plain description, with room for one text each. Some writers
/// repeat that text among the attributes, others put only the further texts there.
void setNamed(const TagChanges& changes, Field field, const String& name, AsfHeader& header)
{
    const auto place = field == Field::artist ? AsfHeader::Named::artist : AsfHeader::Named::title;
    const String old = header.named(place);
    const StringList further = header.texts(name);
    const bool repeated = old.isEmpty() || (!further.isEmpty() && further.front() == old);
    const StringList texts = changes.changed(field, old);
    header.setNamed(place, texts.isEmpty() ? String() : texts.front());
    if (texts.isEmpty() || (repeated && !further.isEmpty()))
        setAsf(header, name, changes.changed(field, further));
    else if (texts.size() > 1)
    {
        StringList rest = texts;
        rest.erase(rest.begin());
        setAsf(header, name, rest);
    }
}
} // namespace

void apply(const TagChanges& changes, AsfHeader& header)
{
    constexpr std::pair<Field, const char*> names[] = {
        {Field::album, "WM/AlbumTitle"},
        {Field::genre, "WM/Genre"},
        {Field::year, "WM/Year"},
        {Field::lyrics, "WM/Lyrics"},
    };
    if (changes.has(Field::artist))
        setNamed(changes, Field::artist, "Author", header);
    if (changes.has(Field::title))
        setNamed(changes, Field::title, "Title", header);
    for (const auto& [field, name] : names)
    {
        if (changes.has(field))
            setAsf(header, name, changes.changed(field, header.texts(name)));
    }
    // A number is written as a text, which can hold a total too and which every reader accepts.
    if (changes.has(Field::trackNumber))
    {
        const bool apart = !header.texts("TotalTracks").isEmpty();
        const String number =
            apart ? changes.trackNumber() : tagTextOf(*changes.text(Field::trackNumber));
        setAsf(header, "WM/TrackNumber", number.isEmpty() ? StringList() : number);
        const String total = changes.trackTotal();
        if (apart && (!total.isEmpty() || changes.removesTrackTotal()))
            setAsf(header, "TotalTracks", total.isEmpty() ? StringList() : total);
    }
    if (changes.has(Field::rating))
    {
        const int rating = changes.rating();
        setAsf(header,
               "FMPS/Rating",
               rating > 0 ? StringList(fractionOfRating(rating)) : StringList());
        if (!header.texts("WM/SharedUserRating").isEmpty())
            setAsf(header,
                   "WM/SharedUserRating",
                   rating > 0 ? StringList(percentOfRating(rating)) : StringList());
    }
    if (changes.picture() || changes.removesPictures())
        setAsfPictures(changes, header);
}
} // namespace KVTagLib
