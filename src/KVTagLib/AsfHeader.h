#pragma once

#include "KVTagLib/AsfValue.h"

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
/// The most that a count or size of 16 bits can say.
constexpr unsigned maxAsfWord = 0xFFFF;

class AsfCursor;

/// The header of a Windows Media file as its bytes. A name with several values has them in three
/// parts of the header: the first in the extended description, those of single streams among the
/// metadata, the further ones in the library; that is their order, wherever the parts stand. TagLib
/// takes the order of the parts and deals the values out anew when it writes, so that they change
/// places with each write. Here all that does not change stays where it is.
class AsfHeader
{
public:
    /// The places in the plain description, with room for one text each.
    enum class Named : std::uint8_t
    {
        title,
        artist
    };

    /// False if the header cannot be taken apart whole: it cannot be saved then. What lies ahead of
    /// the damage, or of the end of a file that was cut short, can be read.
    bool load(TagLib::File& file);
    /// In the place of the loaded one. False if it was not loaded whole or a part cannot hold what
    /// was set. The size of the file that the header names goes with it, if it was right.
    bool save(TagLib::File& file);

    /// Of several plain descriptions the last one counts.
    TagLib::String named(Named place) const;
    void setNamed(Named place, const TagLib::String& text);

    /// All values of the name, of whatever type, in their order. Names are compared exactly.
    std::vector<AsfValue> values(const TagLib::String& name) const;
    /// Those of them that are shown.
    TagLib::StringList texts(const TagLib::String& name) const;
    /// Each takes the place of the value with its index; an empty one removes that value, and so
    /// does the lack of one. Further ones come behind.
    void setValues(const TagLib::String& name, const std::vector<std::optional<AsfValue>>& values);

private:
    /// The order of those with attributes is the order of their values.
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
        bool isRemoved = false; ///< while values are set
    };
    struct Object
    {
        TagLib::ByteVector guid;
        Kind kind = Kind::other;
        bool isInner = false; ///< a part of the extension that stands ahead of it
        std::vector<TagLib::ByteVector> texts = {}; ///< of a description
        std::vector<Attribute> attributes = {};
        TagLib::ByteVector head = {}; ///< of an extension
        TagLib::ByteVector rest = {}; ///< behind what was taken apart
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
    std::vector<Place> placesOf(const TagLib::String& name) const;
    /// The last of several.
    const Object* find(Kind kind) const;
    Object& findOrMake(Kind kind);
    /// As the last values of one name, which with isNew has no other.
    void add(std::vector<Attribute> attributes, bool isNew);
    bool setFileSize(long long old, long long size);

    std::vector<Object> m_objects; ///< in the order of the file
    TagLib::ByteVector m_reserved; ///< the last bytes of the header's own
    TagLib::ByteVector m_rest;     ///< behind the objects
    std::size_t m_attributes = 0;  ///< in all objects, when it was loaded
    unsigned m_size = 0;           ///< in the file; 0: cannot be saved
};
} // namespace KVTagLib
