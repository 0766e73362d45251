#pragma once

#include "KVTagLib/asf/AsfValue.h"

#include <taglib/tbytevector.h>
#include <taglib/tstringlist.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace TagLib
{
class File;
}

namespace KVTagLib
{
class FileParts;
class TagChanges;

/// The largest count or size that a field of 16 bits can hold.
constexpr unsigned maxAsfWord = 0xFFFF;

class AsfCursor;

/// The header of a Windows Media (ASF) file, taken apart into objects that keep their bytes. A name
/// with several values has them in three kinds of objects: the first value in the extended content
/// description, those of single streams in the metadata object, further ones in the metadata
/// library. Their order is that of these three, wherever the objects stand. TagLib orders by
/// position and distributes the values again when it writes, so values change places with each
/// write; here everything that does not change stays where it is.
///
///   Header object
///     file properties            (kept as bytes; its file size is adjusted)
///     content description        title, author: one text each
///     extended description       WM/AlbumTitle = "Gold", WM/Genre = "Pop"
///     header extension
///       metadata library         WM/Genre = "Disco", WM/Picture (larger than 64 KiB)
///   values("WM/Genre") is Pop, Disco.
class AsfHeader
{
public:
    /// The texts of the plain content description that this class reads and writes.
    enum class Named : std::uint8_t
    {
        title = 0,
        artist = 1,
        comment = 3
    };

    /// False if the header cannot be taken apart completely; it can then not be saved. What stands
    /// before the damage, or before the end of a file that was cut short, can still be read.
    bool load(TagLib::File& file);
    /// Writes the header in the place of the loaded one. False if that was not loaded completely or
    /// an object cannot hold what was set. The file size that the header states is adjusted if it
    /// was right.
    bool save(TagLib::File& file);

    /// Adds every object and attribute; see FilePart.
    void addParts(int depth, FileParts& parts) const;
    /// What people call the object that begins with these bytes.
    static TagLib::String nameOf(const TagLib::ByteVector& guid);

    /// The text of the plain description; of several descriptions that of the last one.
    TagLib::String named(Named place) const;
    void setNamed(Named place, const TagLib::String& text);

    /// All values of the name, of whatever type, in their order. Case counts only where a name
    /// stands in several spellings: then the values of the one that is asked for, else of the
    /// first.
    std::vector<AsfValue> values(const TagLib::String& name) const;
    /// The texts of those values that a reader shows; see isShown().
    TagLib::StringList texts(const TagLib::String& name) const;
    /// Sets the values of a name, index by index. An empty element, or a missing one at the end,
    /// removes the old value; further elements are appended. Values of other spellings of the name
    /// go: to other programs they would be the old ones.
    void setValues(const TagLib::String& name, const std::vector<std::optional<AsfValue>>& values);

private:
    /// What an object holds. The order of those with attributes is the order of their values.
    enum class Kind : std::uint8_t
    {
        extended,
        metadata,
        library,
        description,
        extension,
        other
    };
    static constexpr Kind withAttributes[] = {Kind::extended, Kind::metadata, Kind::library};

    struct Attribute
    {
        TagLib::ByteVector name;
        AsfValue value;
        bool isRemoved = false; ///< used only within setValues()
    };
    struct Object
    {
        TagLib::ByteVector guid;
        Kind kind = Kind::other;
        bool isInner = false;                       ///< belongs to the header extension before it
        std::vector<TagLib::ByteVector> texts = {}; ///< of a description
        std::vector<Attribute> attributes = {};
        TagLib::ByteVector head = {}; ///< of an extension
        TagLib::ByteVector rest = {}; ///< the bytes after what was taken apart
    };
    struct Place
    {
        std::size_t object;
        std::size_t attribute;
    };

    static Kind kindOf(const TagLib::ByteVector& guid);
    static unsigned largestValue(Kind kind);
    bool takeApart(const TagLib::ByteVector& content, Object& object);
    static bool takeAttribute(AsfCursor& cursor, Kind kind, Attribute& attribute);
    bool render(TagLib::ByteVector& header) const;
    bool renderObjects(TagLib::ByteVector& objects, unsigned& count) const;
    static bool render(const Object& object, TagLib::ByteVector& content);
    static void render(const Attribute& attribute, Kind kind, TagLib::ByteVector& content);

    bool loadObject(AsfCursor& cursor, bool isInner);
    bool loadExtension(const TagLib::ByteVector& content);
    /// Calls work(place, name) for all attributes in the order of their values.
    template <class Work>
    void forAttributes(Work work) const;
    /// The spelling of the name that counts.
    TagLib::ByteVector spellingOf(const TagLib::ByteVector& name) const;
    std::vector<Place> placesOf(const TagLib::ByteVector& spelling) const;
    /// The last object of that kind; null if there is none.
    const Object* find(Kind kind) const;
    Object& findOrMake(Kind kind);
    /// Appends values of one name. isNew: there are no other values of this name, so the first may
    /// go to the extended description.
    void add(std::vector<Attribute> attributes, bool isNew);
    std::int64_t extensionSize(const Object& extension) const;
    bool setFileSize(long long old, long long size);

    std::vector<Object> m_objects; ///< in the order of the file
    TagLib::ByteVector m_reserved; ///< the last two bytes of the header object itself
    TagLib::ByteVector m_rest;     ///< bytes after the last object
    std::size_t m_attributes = 0;  ///< in all objects, when it was loaded
    unsigned m_size = 0;           ///< in the file; 0: cannot be saved
};

/// Changes the values of the header; saving it is up to the caller.
void apply(const TagChanges& changes, AsfHeader& header);
} // namespace KVTagLib
