#pragma once

#include "KVTagLib/PictureTag.h"
#include "KVTagLib/TagField.h"
#include "types/String.h"

#include <taglib/tbytevector.h>
#include <taglib/tstringlist.h>

#include <array>
#include <cstdint>
#include <vector>

namespace TagLib
{
namespace FLAC
{
class Picture;
}
namespace ID3v1
{
class Tag;
}
namespace ID3v2
{
class Tag;
}
namespace MP4
{
class Tag;
}
namespace Ogg
{
class XiphComment;
}
namespace RIFF::Info
{
class Tag;
}
} // namespace TagLib

namespace KVTagLib
{
class ApeTag;
class AsfHeader;

/// A picture inside a tag.
struct EmbeddedPicture
{
    TagLib::ByteVector content;
    int type; ///< see pictureType
    TagLib::String description;
    bool isShown; ///< of a known kind and not too large
};

/// What the tags of one file say together. Tags are offered best first, and the first text for a
/// field that is not blank decides.
///
///   MP3 with an ID3v2 tag (title "Low Tide", no year) and an ID3v1 tag (title "Low Ti", year
///   1999): title "Low Tide", year "1999".
class TagValues
{
public:
    explicit TagValues(TagExtent extent) : m_extent(extent) {}

    bool has(Field field) const { return !value(field).IsEmpty(); }
    const CString& value(Field field) const { return m_values[static_cast<int>(field)]; }
    /// The complete date ("2001-05-03") of which value() gives the year.
    const CString& date() const { return m_date; }
    /// The values of the field after the first one, as the same tag has them.
    const std::vector<CString>& further(Field field) const
    {
        return m_further[static_cast<int>(field)];
    }
    /// All pictures in the order of the file; unless everything is read, those that can be shown.
    const std::vector<EmbeddedPicture>& pictures() const { return m_pictures; }
    /// The picture that a reader shows: the first front cover, else the first picture; null without
    /// any.
    const EmbeddedPicture* chosenPicture() const;
    bool wantsPictures() const { return m_extent != TagExtent::texts; }

    /// Offers a text for a field. Blank texts are ignored. The text is converted to the form that
    /// is shown: a genre as a name, a date as a year.
    void offer(Field field, const TagLib::String& text) { offerText(field, text); }
    /// Offers a list: its first text that is not blank counts, and the others come after it.
    void offer(Field field, const TagLib::StringList& texts);
    /// Offers numbers of a track or disc, and a total from another field.
    void offerNumbered(Field field, const TagLib::StringList& numbers, const TagLib::String& total);
    /// Offers a rating or play count; 0 is none.
    void offerCount(Field field, int count);
    void offerPicture(const TagLib::ByteVector& content,
                      int type,
                      const TagLib::String& description = TagLib::String());

private:
    void offerText(Field field, const TagLib::String& text);
    CString wholeText(Field field, const TagLib::String& text) const;

    std::array<CString, fieldCount> m_values;
    CString m_date;
    std::array<std::vector<CString>, fieldCount> m_further;
    std::vector<EmbeddedPicture> m_pictures;
    TagExtent m_extent;
};

/// The form in which a reader shows this text; a writer compares in this form.
CString shownText(Field field, const CString& text);

/// Each offers everything that one kind of tag holds.
void collect(const TagLib::ID3v2::Tag& tag, TagValues& values);
void collect(const TagLib::ID3v1::Tag& tag, TagValues& values);
void collect(const ApeTag& tag, TagValues& values);
void collect(TagLib::Ogg::XiphComment& tag, TagValues& values);
void collect(const TagLib::MP4::Tag& tag, TagValues& values);
void collect(const AsfHeader& header, TagValues& values);
void collect(const TagLib::RIFF::Info::Tag& tag, TagValues& values);
void collect(const TagLib::FLAC::Picture& picture, TagValues& values);
} // namespace KVTagLib
