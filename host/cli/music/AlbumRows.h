#pragma once

#include "cli/music/MusicCommand.h"
#include "core/collection/KnownNotes.h"

#include <QoKernel/Logical.h>

#include <string>
#include <vector>

namespace qo::cli
{
struct AlbumRow
{
    std::vector<boost::shared_ptr<CLTAlbum>> albums; ///< those of the collection that are one here
    CString albumArtist;                             ///< that a tag names
    CString artist;                                  ///< "" for none, and for several
    bool isOfSeveral = false;
    MusicSum sum;

    CString name() const { return nameOf(albums.front().get()); }
};

/// The collection keeps an album for each artist of one, and one for each track without an album or
/// artist. Here they are one album if they have one name and, by the tags of the files, one album
/// artist, who is the artist where no tag names another. The tracks of one folder and album name
/// are also one album, unless their tags name several album artists.
///
///   Kino/01  Zvezda   Night              by their folder one album, of several artists
///   Kino/02  Vanda    Night
///   A/01     Ann      Gold   (Various)   one album of "Various"
///   B/02     Bob      Gold   (Various)
///
/// On the kernel's thread.
class AlbumRows
{
public:
    void add(const TrackFile& file);
    /// By artist and name.
    std::vector<AlbumRow> sorted();

private:
    struct Track
    {
        TrackFile file;
        CString albumArtist; ///< as the tag names it
        std::u16string folder;
        std::size_t group = 0;
    };

    static CString artistOf(const Track& track);
    static AlbumRow rowOf(const std::vector<const Track*>& tracks);
    void join();
    bool haveOneAlbumArtist(const std::vector<std::size_t>& tracks) const;
    std::size_t groupOf(std::size_t group);

    host::KnownNotes m_notes;
    std::vector<Track> m_tracks;
    /// Groups are numbers that lead to another one of the same album, and at last to their own.
    std::vector<std::size_t> m_groups;
};

/// In small letters.
std::u16string folded(CString name);
} // namespace qo::cli
