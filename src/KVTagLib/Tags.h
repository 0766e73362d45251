#pragma once

#include "KVTagLib/Forward.h"
#include "KVTagLib/PictureTag.h"
#include "KVTagLib/TagField.h"
#include "types/Array.h"
#include "types/StringArray.h"

#include <cstdint>

namespace KVTagLib
{
/// What a tag holds, or what a writer shall put into one: each item is either absent or a text,
/// which may be empty. A getter returns false and leaves its output unchanged for an absent item.
/// Must not be used by several threads at once.
///
/// A reader sets the items that the file has, long texts cut (see TagExtent). A writer takes every
/// item that is set as the wanted value ("" removes it) and leaves absent items as they are in the
/// file.
class QO_API CTags
{
public:
    CTags() = default;
    /// A reader that fills this object extracts embedded pictures as files into that folder, which
    /// must exist. Without a folder pictures are neither extracted nor listed.
    explicit CTags(const CString& pictureDir)
        : m_extent(pictureDir.IsEmpty() ? TagExtent::texts : TagExtent::pictures)
        , m_pictureDir(pictureDir)
    {
    }
    /// The same with all that a reader finds, for people to look at: whole texts, and pictures of
    /// any kind.
    CTags(const CString& pictureDir, TagExtent extent) : m_extent(extent), m_pictureDir(pictureDir)
    {
    }

    /// The first artist whose name is not empty; "" if all names are; false without any artist.
    bool GetFirstValidArtist(CString& artist) const;
    bool GetAlbum(CString& album) const { return get(Field::album, album); }
    bool GetTitle(CString& title) const { return get(Field::title, title); }
    /// Always a name: numeric genres are translated by the reader.
    bool GetGenre(CString& genre) const { return get(Field::genre, genre); }
    /// "3", or "3/12" when the file names a total.
    bool GetTrackNumber(CString& number) const { return get(Field::trackNumber, number); }
    /// The year part of the date as the file has it: the part left of the first '-'.
    bool GetYear(CString& year) const { return get(Field::year, year); }
    bool GetLyrics(CString& lyrics) const { return get(Field::lyrics, lyrics); }
    bool GetAlbumArtist(CString& artist) const { return get(Field::albumArtist, artist); }
    /// "1", or "1/2" when the file names a total.
    bool GetDisc(CString& disc) const { return get(Field::disc, disc); }
    bool GetComment(CString& comment) const { return get(Field::comment, comment); }
    /// In half stars, from 1 to 10.
    bool GetRating(int& halfStars) const { return getNumber(Field::rating, halfStars); }
    bool GetPlayCount(int& count) const { return getNumber(Field::playCount, count); }
    const CStringArray& GetArtists() const { return m_artists; }
    /// All values of a field as a reader found them, in the order of the file, the one that the
    /// getters above give first; empty for an absent field. Writers take artists alone from it.
    CStringArray GetValues(Field field) const;
    /// The text of any field but the artist, as it is kept.
    bool GetText(Field field, CString& text) const { return get(field, text); }
    /// For a reader, which sets whatever it finds.
    void SetFound(Field field, const CString& value) { set(field, value); }
    /// Appends a value to those of a field that is set.
    void AddFurther(Field field, const CString& value);

    /// Appends the artist, or inserts it before the others.
    void AddArtist(const CString& artist, bool first);
    void SetAlbum(const CString& album) { set(Field::album, album); }
    void SetTitle(const CString& title) { set(Field::title, title); }
    void SetGenre(const CString& genre) { set(Field::genre, genre); }
    void SetTrackNumber(const CString& number) { set(Field::trackNumber, number); }
    void SetYear(const CString& year) { set(Field::year, year); }
    void SetLyrics(const CString& lyrics) { set(Field::lyrics, lyrics); }

    /// Half stars from 1 to 10; 0 removes the rating.
    void SetRating(int halfStars);

    /// Attaches the picture that the file holds: JPEG, PNG, GIF, BMP or WebP of at most 32 MiB.
    /// False, and nothing attached, if the file is absent, unreadable or no such picture; an empty
    /// path thus attaches nothing, and a writer leaves the file's pictures alone.
    bool AddPicture(const CString& path);
    void AddPicture(const CPictureTag& picture) { m_pictures.Add(picture); }
    /// For a writer: which pictures to take out. Where a picture is attached it replaces the first
    /// front cover, and this does not count.
    void RemovePictures(PictureRemoval removal) { m_removal = removal; }
    PictureRemoval GetPictureRemoval() const { return m_removal; }
    int GetPictureCount() const { return m_pictures.GetSize(); }
    /// False for an index out of range. A front cover comes first.
    bool GetPicture(int index, CPictureTag& picture) const;
    /// Replaces the array's content; false if there is no picture.
    bool GetPictures(CArray<CPictureTag>& pictures) const;

    /// The play time in milliseconds; false when it is not known.
    bool GetTime(int& time) const;
    /// The bit rate in kilobits per second; false when it is not known.
    bool GetBitrate(int& bitrate) const;
    void SetTime(int time) { m_time = time; }
    void SetBitrate(int bitrate) { m_bitrate = bitrate; }

    TagExtent GetExtent() const { return m_extent; }
    const CString& GetPictureDir() const { return m_pictureDir; }

private:
    bool get(Field field, CString& text) const;
    bool getNumber(Field field, int& number) const;
    void set(Field field, const CString& text);

    CString m_items[fieldCount]; ///< all but the artist
    std::uint16_t m_present = 0; ///< one bit for each item
    CStringArray m_artists;
    CStringArray m_further[fieldCount]; ///< values after the first; none of the artist
    CArray<CPictureTag> m_pictures;
    PictureRemoval m_removal = PictureRemoval::none;
    int m_time = -1;
    int m_bitrate = -1;
    TagExtent m_extent = TagExtent::texts;
    CString m_pictureDir;
};
} // namespace KVTagLib
