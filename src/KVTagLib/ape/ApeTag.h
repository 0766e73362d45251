#pragma once

#include "KVTagLib/TagChanges.h"

#include <taglib/tbytevector.h>
#include <taglib/tstringlist.h>

#include <cstdint>
#include <vector>

namespace KVTagLib
{
struct ApeKeys;
class FileParts;

/// An APE tag (of Monkey's Audio, WavPack, Musepack and some MP3), taken apart into items that keep
/// their bytes. TagLib drops items that it cannot read when it writes such a tag: texts that are
/// not UTF-8, keys that the standard forbids, a second item of one key. Here the items that do not
/// change stay as they are, in their order.
///
///   header | <3> <flags> "Title" 00 "Low" | <9> <flags> "Cover Art (Front)" 00 ... | footer
///   After a change of the title: the same with <8> <flags> "Title" 00 "Low Tide". The key keeps
///   its spelling and the item its flags, of which two bits say whether the value is text, bytes or
///   an address. A text may be several, with a zero between two of them.
class ApeTag
{
public:
    struct Place
    {
        std::int64_t start = 0; ///< of the tag; where one would begin if size is 0
        std::int64_t size = 0;  ///< bytes, with header and footer
    };
    /// So many of the last bytes of a file say where its tag is.
    static constexpr unsigned tailBytes = 160;
    /// Where a file has its tag: at its end, but for an ID3v1 tag. The start is negative if the tag
    /// claims more than the file has.
    static Place find(const TagLib::ByteVector& tail, std::int64_t fileBytes);
    /// The same for a file or stream of TagLib.
    template <class File>
    static Place find(File& file)
    {
        return find(bytesOf(file, file.length() - static_cast<long>(tailBytes), tailBytes),
                    file.length());
    }

    /// False if the bytes are not whole items between a footer and, if there is one, a header: then
    /// the items ahead of the damage can be read, and the tag must not be written.
    bool load(const TagLib::ByteVector& tag);
    /// The same from a file or stream of TagLib; an empty tag where it has none.
    template <class File>
    bool load(File& file)
    {
        const Place place = find(file);
        return place.size == 0 || (place.start >= 0 && place.size <= mostBytes &&
                                   load(bytesOf(file, place.start, place.size)));
    }

    /// The texts of a field. Where several keys are in use for it, the first that is there counts.
    TagLib::StringList texts(Field field) const;
    /// The texts of all items with that key; case does not count.
    TagLib::StringList textsOf(const char* key) const;
    /// The total of the track number, if it stands in an item of its own.
    TagLib::String trackTotal() const;
    struct Picture
    {
        TagLib::ByteVector content;
        int type; ///< see pictureType
    };
    std::vector<Picture> pictures() const;

    /// Adds every item of the tag, which has so many bytes; see FilePart.
    void addParts(int depth, std::int64_t size, FileParts& parts) const;
    void apply(const TagChanges& changes);
    /// The bytes of the tag; empty without items.
    TagLib::ByteVector render() const;
    /// Whether the other tag has all items that the changes do not name, alike and in the same
    /// order.
    bool keptBy(const ApeTag& other, const TagChanges& changes) const;

private:
    struct Item
    {
        TagLib::ByteVector key;
        std::uint32_t flags;
        TagLib::ByteVector value;

        bool isText(const char* name) const;
        bool isPicture() const;
        /// See pictureType, by the key.
        int pictureType() const;
        bool isFrontCover() const;
        bool operator==(const Item& other) const
        {
            return key == other.key && flags == other.flags && value == other.value;
        }
    };
    static constexpr std::int64_t mostBytes = 128 << 20;
    static constexpr std::uint32_t hasHeader = 1U << 31; ///< a flag of the tag

    template <class File>
    static TagLib::ByteVector bytesOf(File& file, long start, long size)
    {
        file.seek(start > 0 ? start : 0);
        return file.readBlock(static_cast<unsigned long>(size));
    }
    bool loadItems(const TagLib::ByteVector& bytes, std::uint32_t count);
    /// Changes the texts of each of the keys that are there, or adds an item of the first.
    void set(const TagChanges& changes, const ApeKeys& keys);
    /// Sets the texts of a key, in its first item; the others of the key go.
    void set(const char* key, const TagLib::StringList& texts);
    void setTrack(const TagChanges& changes, const ApeKeys& keys);
    void setRating(const TagChanges& changes);
    void setPicture(const TagLib::ByteVector& content);
    /// The first front cover; null without any.
    const Item* frontCover() const;
    std::vector<Item> itemsBeside(const TagChanges& changes) const;

    std::vector<Item> m_items;
    std::uint32_t m_version = 2000;
    std::uint32_t m_flags = hasHeader;
};
} // namespace KVTagLib
