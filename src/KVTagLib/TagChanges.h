#pragma once

#include "KVTagLib/Forward.h"
#include "KVTagLib/TagValues.h"

#include <taglib/tstringlist.h>

#include <array>
#include <optional>

namespace KVTagLib
{
/// The difference between what is wanted and what a file's tags say: all that a writer has to
/// change.
class TagChanges
{
public:
    /// Compares the wanted values with those in the file. Values that are equal in the form a
    /// reader shows are no change.
    ///
    ///   File: artists Ann, Bob; track 3/12; date 2001-05-03.
    ///     wanted artist "Ann", year "2001"   nothing to change
    ///     wanted track "4"                   text "4/12": the total stays
    ///     wanted track "4/"                  text "4", removesTrackTotal()
    ///     wanted artist "Eve"                changed() gives Eve, Bob: the shown one is replaced
    TagChanges(const CTags& wanted, const TagValues& present);

    bool empty() const;
    bool has(Field field) const { return text(field).has_value(); }
    bool removes(Field field) const { return has(field) && text(field)->IsEmpty(); }
    /// The new text; "" to remove the field; no value where nothing changes. A track number has its
    /// total.
    const std::optional<CString>& text(Field field) const
    {
        return m_texts[static_cast<int>(field)];
    }
    /// The new rating in half stars; 0 to remove it.
    int rating() const;
    /// The picture that replaces the first front cover, or is added where there is none.
    const std::optional<TagLib::ByteVector>& picture() const { return m_picture; }
    /// Whether a picture of that type is taken out.
    bool removesPicture(int type) const
    {
        return m_removal == PictureRemoval::all ||
               (m_removal == PictureRemoval::frontCovers && type == pictureType::frontCover);
    }
    bool removesPictures() const { return m_removal != PictureRemoval::none; }

    /// The list of values of a field after the change: the value that readers show is replaced and
    /// the others stay. Several wanted artists replace all. An empty list removes the field.
    TagLib::StringList changed(Field field, const TagLib::StringList& old) const;
    /// The two parts of the new track number, "" for a part that is missing: "/12" has a total
    /// only.
    TagLib::String trackNumber() const;
    TagLib::String trackTotal() const;
    /// Whether a total that the file has in a field of its own is removed: "3/" says so, "3" does
    /// not.
    bool removesTrackTotal() const { return m_removesTrackTotal || removes(Field::trackNumber); }

    /// Whether a file that is read again has the wanted values, and all others as before.
    bool fulfilledBy(const TagValues& before, const TagValues& after) const;

private:
    void compareArtists(const CTags& wanted, const TagValues& present);
    void compare(Field field, const CString& wanted, const TagValues& present);
    void comparePictures(const CTags& wanted, const TagValues& present);
    bool picturesFulfilledBy(const TagValues& before, const TagValues& after) const;
    void compareTrack(const CString& wanted, const CString& present);

    std::array<std::optional<CString>, fieldCount> m_texts;
    bool m_removesTrackTotal = false;
    std::optional<TagLib::ByteVector> m_picture;
    PictureRemoval m_removal = PictureRemoval::none;
    TagLib::StringList m_allArtists; ///< filled when more than one artist is wanted
};
} // namespace KVTagLib
