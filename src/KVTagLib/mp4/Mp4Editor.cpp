#include "KVTagLib/mp4/Mp4Editor.h"

#include "KVTagLib/PictureStore.h"
#include "KVTagLib/TagText.h"
#include "KVTagLib/mp4/Mp4Atoms.h"

#include <taglib/mp4file.h>

#include <optional>
#include <string_view>
#include <vector>

// findItemList() and split() read the list of items, ItemList changes it, makeRoom() lets TagLib
// adjust the file to its new size, and editMp4() runs these steps.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr unsigned dataHeader = 16; ///< atom header, type and locale
constexpr unsigned textType = 1;
constexpr long maxItemBytes = 128L << 20;

struct Place
{
    long start = 0; ///< after the header
    long length = 0;
};

/// Finds the named atom among those in that place, and gives the place of its content.
std::optional<Place> findAtom(FileStream& file, const Place& within, const char* name)
{
    long at = within.start;
    const long end = within.start + within.length;
    while (at + long(atomHeaderBytes) <= end)
    {
        file.seek(at, IOStream::Beginning);
        const auto atom = atomOf(file.readBlock(longAtomHeaderBytes), at, end);
        if (!atom || !atom->isWhole)
            return {};
        if (atom->name == name)
            return Place{static_cast<long>(atom->start),
                         static_cast<long>(atom->end - atom->start)};
        at = static_cast<long>(atom->end);
    }
    return {};
}

std::optional<Place> findItemList(FileStream& file)
{
    std::optional<Place> place = Place{0, file.length()};
    for (const char* name : {"moov", "udta", "meta"})
    {
        place = findAtom(file, *place, name);
        if (!place)
            return {};
    }
    // The content of "meta" starts with version and flags, which some writers leave out.
    file.seek(place->start + 4, IOStream::Beginning);
    const long skip = file.readBlock(4) == "hdlr" ? 0 : 4;
    return findAtom(file, {place->start + skip, place->length - skip}, "ilst");
}

/// Whether the sound is in fragments, whose positions TagLib does not adjust.
bool isFragmented(FileStream& file)
{
    const Place whole{0, file.length()};
    const std::optional<Place> movie = findAtom(file, whole, "moov");
    return findAtom(file, whole, "moof") || (movie && findAtom(file, *movie, "mvex"));
}

ByteVector atom(const ByteVector& name, const ByteVector& content)
{
    ByteVector bytes = ByteVector::fromUInt(content.size() + atomHeaderBytes);
    bytes.append(name);
    bytes.append(content);
    return bytes;
}

/// The atom of one value: type, locale and the value.
ByteVector dataAtom(unsigned type, const ByteVector& value)
{
    ByteVector content = ByteVector::fromUInt(type);
    content.append(ByteVector(4, 0));
    content.append(value);
    return atom("data", content);
}

struct Item
{
    ByteVector name;
    ByteVector content; ///< its atoms
};

/// Splits bytes into atoms; false if they are not a row of atoms.
bool split(const ByteVector& bytes, std::vector<Item>& items)
{
    unsigned at = 0;
    while (at + atomHeaderBytes <= bytes.size())
    {
        const unsigned length = bytes.toUInt(at, true);
        if (length < atomHeaderBytes || length > bytes.size() - at)
            return false;
        items.push_back(
            {bytes.mid(at + 4, 4), bytes.mid(at + atomHeaderBytes, length - atomHeaderBytes)});
        at += length;
    }
    return at == bytes.size();
}

class ItemList
{
public:
    bool load(const ByteVector& bytes) { return split(bytes, m_items); }

    ByteVector render() const
    {
        ByteVector bytes;
        for (const Item& item : m_items)
            bytes.append(atom(item.name, item.content));
        return bytes;
    }

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
        for (const Item& item : m_items)
        {
            std::vector<Item> parts;
            if (item.name != name || !split(item.content, parts))
                continue;
            for (const Item& part : parts)
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
        std::vector<Item> items;
        for (const Item& item : m_items)
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
        m_items = std::move(items);
    }

private:
    std::vector<Item> m_items;
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
        content.append(atom("data", old[i]));
    list.set("covr", content);
}

/// Lets TagLib write an item list of exactly that size, and adjust all sizes and positions in the
/// file to it.
bool makeRoom(FileStream& stream, unsigned size)
{
    MP4::File file(&stream, false);
    if (!file.isValid() || !file.tag())
        return false;
    MP4::Tag& tag = *file.tag();
    const MP4::ItemMap old = tag.itemMap();
    for (const auto& [name, item] : old)
        tag.removeItem(name);
    // One text item of the right length takes the place of the whole list.
    constexpr unsigned overhead = atomHeaderBytes + dataHeader;
    if (size > overhead)
        tag.setItem("\251cmt", StringList(String(std::string(size - overhead, ' '))));
    return file.save();
}
} // namespace

bool editMp4(FileStream& file, const TagChanges& changes)
{
    if (isFragmented(file))
        return false;
    ItemList list;
    const std::optional<Place> old = findItemList(file);
    if (old && old->length > maxItemBytes)
        return false;
    if (old)
    {
        file.seek(old->start, IOStream::Beginning);
        if (!list.load(file.readBlock(static_cast<unsigned long>(old->length))))
            return false;
    }
    applyTexts(changes, list);
    applyTrack(changes, list);
    applyPictures(changes, list);
    const ByteVector bytes = list.render();
    if (!makeRoom(file, bytes.size()))
        return false;
    if (bytes.isEmpty())
        return true;
    // The list that TagLib wrote must be exactly as large as the one that replaces it now.
    const std::optional<Place> place = findItemList(file);
    if (!place || place->length != static_cast<long>(bytes.size()))
        return false;
    file.seek(place->start, IOStream::Beginning);
    file.writeBlock(bytes);
    return true;
}
} // namespace KVTagLib
