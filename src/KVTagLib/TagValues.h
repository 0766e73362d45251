#pragma once

#include "types/String.h"

#include <taglib/tbytevector.h>
#include <taglib/tstringlist.h>

#include <array>
#include <cstdint>
#include <vector>

namespace TagLib
{
namespace APE
{
class Tag;
}
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
class AsfHeader;

enum class Field : std::uint8_t
{
    artist,
    album,
    title,
    genre,
    trackNumber,
    year,
    lyrics
};
constexpr int fieldCount = 7;

struct EmbeddedPicture
{
    TagLib::ByteVector content;
    bool frontCover;
};

/// What the tags of one file say together. The first tag that offers a text which is not blank
/// settles a field; the tags are therefore offered best first.
class TagValues
{
public:
    explicit TagValues(bool withPictures) : m_withPictures(withPictures) {}

    bool has(Field field) const { return !value(field).IsEmpty(); }
    const CString& value(Field field) const { return m_values[static_cast<int>(field)]; }
    /// The whole date of which the year is shown.
    const CString& date() const { return m_date; }
    /// Artists behind the first one.
    const std::vector<CString>& furtherArtists() const { return m_furtherArtists; }
    /// In the order of the file.
    const std::vector<EmbeddedPicture>& pictures() const { return m_pictures; }
    /// The first front cover, else the first picture; null without any.
    const EmbeddedPicture* chosenPicture() const;
    bool wantsPictures() const { return m_withPictures; }

    /// Blank texts count for nothing. The text is brought into the form that the house shows.
    void offer(Field field, const TagLib::String& text) { offerText(field, text); }
    /// The first text of the list that is not blank; for artists, all of them.
    void offer(Field field, const TagLib::StringList& texts);
    void offerTrack(const TagLib::String& number, const TagLib::String& total);
    void offerPicture(const TagLib::ByteVector& content, bool frontCover);

private:
    bool offerText(Field field, const TagLib::String& text);

    std::array<CString, fieldCount> m_values;
    CString m_date;
    std::vector<CString> m_furtherArtists;
    std::vector<EmbeddedPicture> m_pictures;
    bool m_withPictures;
};

/// The form in which a reader gives this text, which is what a writer compares with.
CString shownText(Field field, const CString& text);

void collect(const TagLib::ID3v2::Tag& tag, TagValues& values);
void collect(const TagLib::ID3v1::Tag& tag, TagValues& values);
void collect(const TagLib::APE::Tag& tag, TagValues& values);
void collect(TagLib::Ogg::XiphComment& tag, TagValues& values);
void collect(const TagLib::MP4::Tag& tag, TagValues& values);
void collect(const AsfHeader& header, TagValues& values);
void collect(const TagLib::RIFF::Info::Tag& tag, TagValues& values);
void collect(const TagLib::FLAC::Picture& picture, TagValues& values);
} // namespace KVTagLib
