#include "KVTagLib/mp4/Mp4Editor.h"

#include "KVTagLib/Rating.h"
#include "KVTagLib/TagRefusal.h"
#include "KVTagLib/TagText.h"
#include "KVTagLib/mp4/Mp4Atoms.h"
#include "KVTagLib/mp4/Mp4Room.h"
#include "KVTagLib/pictures/PictureStore.h"

#include <optional>
#include <string_view>
#include <vector>

// ItemList changes the list of tags, editItemList() finds room for it in the file.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr unsigned dataHeader = 16; ///< atom header, type and locale
constexpr unsigned textType = 1;
/// Items that have no name of four letters, but one in writing beside what it means.
constexpr auto ownKind = "----";
constexpr auto ownMeaning = "com.apple.iTunes";

String ownName(const Mp4Item& item)
{
    constexpr unsigned flagBytes = 4;
    std::optional<Mp4Row> row =
        item.name == ownKind ? Mp4Row::of(item.content) : std::optional<Mp4Row>();
    Mp4Item* const meaning = row ? row->find("mean") : nullptr;
    Mp4Item* const name = row ? row->find("name") : nullptr;
    return meaning && name && meaning->content.mid(flagBytes) == ownMeaning
               ? String(name->content.mid(flagBytes), String::UTF8)
               : String();
}

/// The atom of one value: type, locale and the value.
ByteVector dataAtom(unsigned type, const ByteVector& value)
{
    ByteVector content = ByteVector::fromUInt(type);
    content.append(ByteVector(4, 0));
    content.append(value);
    return Mp4Item{"data", content}.render();
}

class ItemList
{
public:
    bool load(const ByteVector& bytes)
    {
        const std::optional<Mp4Row> row = Mp4Row::of(bytes);
        m_row = row.value_or(Mp4Row());
        return row.has_value();
    }

    ByteVector render() const { return m_row.render(); }

    StringList texts(const ByteVector& name) const
    {
        StringList texts;
        for (const ByteVector& value : values(name))
            texts.append(String(value.mid(dataHeader - atomHeaderBytes), String::UTF8));
        return texts;
    }

    /// The contents of the data atoms of all items with that name, each with type and locale at its
    /// start.
    std::vector<ByteVector> values(const ByteVector& name) const
    {
        std::vector<ByteVector> found;
        for (const Mp4Item& item : m_row.items)
        {
            if (item.name != name)
                continue;
            for (const Mp4Item& part : Mp4Row::of(item.content).value_or(Mp4Row()).items)
            {
                if (part.name == "data" && part.content.size() >= dataHeader - atomHeaderBytes)
                    found.push_back(part.content);
            }
        }
        return found;
    }

    /// Puts the content in the place of the first item with that name and removes the others;
    /// appends it if there is none. Empty content removes all.
    void set(const ByteVector& name, const ByteVector& content)
    {
        bool placed = content.isEmpty();
        std::vector<Mp4Item> items;
        for (const Mp4Item& item : m_row.items)
        {
            if (item.name != name)
                items.push_back(item);
            else if (!placed)
            {
                items.push_back({name, content});
                placed = true;
            }
        }
        if (!placed)
            items.push_back({name, content});
        m_row.items = std::move(items);
    }

    /// Removes the items that have this name in writing, whatever its case.
    void removeOwn(const String& name)
    {
        std::erase_if(m_row.items,
                      [&name](const Mp4Item& item)
                      { return ownName(item).upper() == name.upper(); });
    }

    /// Adds one.
    void addOwn(const String& name, const String& value)
    {
        const ByteVector flags(4, 0);
        ByteVector content = Mp4Item{"mean", flags + ByteVector(ownMeaning)}.render();
        content.append(Mp4Item{"name", flags + name.data(String::UTF8)}.render());
        content.append(dataAtom(textType, value.data(String::UTF8)));
        m_row.items.push_back({ownKind, content});
    }

private:
    Mp4Row m_row;
};

/// Texts are items whose names begin with the copyright sign; a genre may also be a number in
/// "gnre".
void applyTexts(const TagChanges& changes, ItemList& list)
{
    constexpr std::pair<Field, const char*> names[] = {
        {Field::artist, "\251ART"},
        {Field::album, "\251alb"},
        {Field::title, "\251nam"},
        {Field::genre, "\251gen"},
        {Field::year, "\251day"},
        {Field::lyrics, "\251lyr"},
    };
    for (const auto& [field, name] : names)
    {
        if (!changes.has(field))
            continue;
        ByteVector content;
        for (const String& text : changes.changed(field, list.texts(name)))
            content.append(dataAtom(textType, text.data(String::UTF8)));
        list.set(name, content);
        if (field == Field::genre)
            list.set("gnre", {}); // the genre as a number
    }
}

void applyTrack(const TagChanges& changes, ItemList& list)
{
    if (!changes.has(Field::trackNumber))
        return;
    const int number = changes.trackNumber().toInt();
    const int total = changes.trackTotal().toInt();
    if (changes.removes(Field::trackNumber) || number <= 0 || number > 0xFFFF || total > 0xFFFF)
    {
        list.set("trkn", {});
        return;
    }
    // Two unused bytes, number, total, and two unused bytes.
    ByteVector value(2, 0);
    value.append(ByteVector::fromShort(static_cast<short>(number)));
    value.append(ByteVector::fromShort(static_cast<short>(total)));
    value.append(ByteVector(2, 0));
    list.set("trkn", dataAtom(0, value));
}

/// The format has no rating; programs write it under names of their own. What another one wrote as
/// a number goes, as its scale is not known here.
void applyRating(const TagChanges& changes, ItemList& list)
{
    if (!changes.has(Field::rating))
        return;
    list.removeOwn("FMPS_Rating");
    list.removeOwn("RATING");
    if (changes.rating() > 0)
        list.addOwn("FMPS_Rating", fractionOfRating(changes.rating()));
}

/// The number by which the format marks the kind of a picture.
unsigned coverType(const ByteVector& picture)
{
    const std::u16string_view extension = pictureKindOf(picture)->extension;
    return extension == u".jpg" ? 13 : extension == u".gif" ? 12 : extension == u".bmp" ? 27 : 14;
}

/// Replaces or removes the first cover and keeps the others, or removes all.
void applyPictures(const TagChanges& changes, ItemList& list)
{
    if (!changes.picture() && !changes.removesPictures())
        return;
    ByteVector content;
    if (changes.picture())
        content = dataAtom(coverType(*changes.picture()), *changes.picture());
    const std::vector<ByteVector> old = list.values("covr");
    for (std::size_t i = 1; i < old.size() && !changes.removesPicture(pictureType::none); ++i)
        content.append(Mp4Item{"data", old[i]}.render());
    list.set("covr", content);
}
} // namespace

void editMp4(FileStream& file, const TagChanges& changes)
{
    const auto edit = [&](const ByteVector& old)
    {
        ItemList list;
        if (!list.load(old))
            throw TagRefusal(withCopyAdvice(u"the sizes in its list of tags are wrong"));
        applyTexts(changes, list);
        applyTrack(changes, list);
        applyRating(changes, list);
        applyPictures(changes, list);
        return list.render();
    };
    editItemList(file, edit);
}
} // namespace KVTagLib
