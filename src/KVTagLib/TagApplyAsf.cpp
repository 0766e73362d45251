#include "KVTagLib/PictureStore.h"
#include "KVTagLib/TagApply.h"
#include "KVTagLib/TagText.h"

#include <taglib/asfpicture.h>
#include <taglib/asftag.h>

using namespace TagLib;

namespace KVTagLib
{
namespace
{
ASF::AttributeList attributes(const StringList& texts)
{
    ASF::AttributeList list;
    for (const String& text : texts)
        list.append(ASF::Attribute(text));
    return list;
}

void setAsf(ASF::Tag& tag, const String& name, const StringList& texts)
{
    if (texts.isEmpty())
        tag.removeItem(name);
    else
        tag.setAttribute(name, attributes(texts));
}

/// The values that are texts; numbers are replaced, not kept beside one.
StringList asfTexts(ASF::Tag& tag, const String& name)
{
    StringList texts;
    for (const ASF::Attribute& attribute : tag.attribute(name))
    {
        if (attribute.type() == ASF::Attribute::UnicodeType)
            texts.append(attribute.toString());
    }
    return texts;
}

/// Replaces the picture that a reader shows, in its place; the others stay.
void setAsfPicture(const ByteVector& content, ASF::Tag& tag)
{
    ASF::AttributeList list = tag.attribute("WM/Picture");
    auto shown = list.end();
    for (auto it = list.begin(); it != list.end(); ++it)
    {
        const ASF::Picture picture = it->toPicture();
        if (!picture.isValid() || !pictureKindOf(picture.picture()))
            continue;
        const bool front = picture.type() == ASF::Picture::FrontCover;
        if (front || shown == list.end())
            shown = it;
        if (front)
            break;
    }
    ASF::Picture picture;
    picture.setType(ASF::Picture::FrontCover);
    picture.setMimeType(tagTextOf(pictureKindOf(content)->mimeType));
    picture.setPicture(content);
    if (shown == list.end())
        list.append(ASF::Attribute(picture));
    else
        *shown = ASF::Attribute(picture);
    tag.setAttribute("WM/Picture", list);
}

/// These two stand in a part of their own with room for one text. Some writers repeat that text
/// among the attributes, others put the further ones there.
void setNamed(const TagChanges& changes, Field field, const String& name, ASF::Tag& tag)
{
    const String old = field == Field::artist ? tag.artist() : tag.title();
    const StringList further = asfTexts(tag, name);
    const bool repeated = old.isEmpty() || (!further.isEmpty() && further.front() == old);
    const StringList texts = changes.changed(field, old);
    const String first = texts.isEmpty() ? String() : texts.front();
    if (field == Field::artist)
        tag.setArtist(first);
    else
        tag.setTitle(first);
    if (texts.isEmpty() || (repeated && !further.isEmpty()))
        setAsf(tag, name, changes.changed(field, further));
    else if (texts.size() > 1)
    {
        StringList rest = texts;
        rest.erase(rest.begin());
        setAsf(tag, name, rest);
    }
}
} // namespace

void apply(const TagChanges& changes, ASF::Tag& tag)
{
    constexpr std::pair<Field, const char*> names[] = {
        {Field::album, "WM/AlbumTitle"},
        {Field::genre, "WM/Genre"},
        {Field::year, "WM/Year"},
        {Field::lyrics, "WM/Lyrics"},
    };
    if (changes.has(Field::artist))
        setNamed(changes, Field::artist, "Author", tag);
    if (changes.has(Field::title))
        setNamed(changes, Field::title, "Title", tag);
    for (const auto& [field, name] : names)
    {
        if (changes.has(field))
            setAsf(tag, name, changes.changed(field, asfTexts(tag, name)));
    }
    // A number becomes a text here, which holds a total as well and every reader takes.
    if (changes.has(Field::trackNumber))
    {
        const bool apart = tag.contains("TotalTracks");
        const String number =
            apart ? changes.trackNumber() : tagTextOf(*changes.text(Field::trackNumber));
        setAsf(tag, "WM/TrackNumber", number.isEmpty() ? StringList() : number);
        const String total = changes.trackTotal();
        if (apart && (!total.isEmpty() || changes.removesTrackTotal()))
            setAsf(tag, "TotalTracks", total.isEmpty() ? StringList() : total);
    }
    if (changes.picture())
        setAsfPicture(*changes.picture(), tag);
}
} // namespace KVTagLib
