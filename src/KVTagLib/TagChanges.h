#pragma once

#include "KVTagLib/Forward.h"
#include "KVTagLib/TagValues.h"

#include <taglib/tstringlist.h>

#include <array>
#include <optional>

namespace KVTagLib
{
/// What a writer has to change in a file, and nothing more.
class TagChanges
{
public:
    /// Compares what is wanted with what the file says.
    TagChanges(const CTags& wanted, const TagValues& present);

    bool empty() const;
    bool has(Field field) const { return text(field).has_value(); }
    bool removes(Field field) const { return has(field) && text(field)->IsEmpty(); }
    /// The new text, empty to remove the field; a track number with its total.
    const std::optional<CString>& text(Field field) const
    {
        return m_texts[static_cast<int>(field)];
    }
    const std::optional<TagLib::ByteVector>& picture() const { return m_picture; }

    /// A field's list of values after the change: the one that was shown is replaced, the others
    /// stay. Several artists handed over replace them all. Empty: remove the field.
    TagLib::StringList changed(Field field, const TagLib::StringList& old) const;
    /// The track number's two parts, empty for one that there is not: "/12" has only a total.
    TagLib::String trackNumber() const;
    TagLib::String trackTotal() const;
    /// Whether a total that the file keeps by itself goes: "3/" says so, "3" does not.
    bool removesTrackTotal() const { return m_removesTrackTotal || removes(Field::trackNumber); }

    /// Whether the file, read again, says what was wanted and else what it said before.
    bool fulfilledBy(const TagValues& before, const TagValues& after) const;

private:
    void compareArtists(const CTags& wanted, const TagValues& present);
    void compare(Field field, const CString& wanted, const TagValues& present);
    void compareTrack(const CString& wanted, const CString& present);

    std::array<std::optional<CString>, fieldCount> m_texts;
    bool m_removesTrackTotal = false;
    std::optional<TagLib::ByteVector> m_picture;
    TagLib::StringList m_allArtists; ///< when several were handed over
};
} // namespace KVTagLib
