#pragma once

#include "Logical/Forward.h"
#include "Logical/LTObjectType.h"
#include "Physical/Forward.h"
#include "QoColl/Tags/SimpleMusicTag.h"
#include "common/PtrListT.h"

namespace qo
{
class LTList;
struct LTLists;
} // namespace qo

/// Owns all logical objects of all collections: makes them from the tags of files, decides which
/// are the same, links them and lets them go. The lists of tracks, albums, artists and genres stand
/// in the order in which their binary search inserted; since a missing year or track number equals
/// every other, that order is part of the result. No locks: all collections share the lists, so the
/// host keeps calls apart. Failed allocations end in qo::throwOutOfMemory(), with the tree as far
/// as it had come.
class QO_API CLTManager
{
public:
    struct LTListInfo
    {
        CLTObjectType::EType type;
        const char16_t* name;
        qo::LTList* list; ///< the same operations whatever the type of its objects
    };

    /// Once, before any other call.
    static void init();
    /// Takes out the objects that nothing uses any more; at the end (final) all, with a complaint.
    static void cleanUp(bool final);
    static void logStatistics();
    static void resetCheckState();
    static void resetCheckState(CPtrListT<CLTObject>& list);

    // Comparisons: negative, 0 or positive. An empty year or number equals every other. An unknown
    // object sorts ahead of all named ones and equals nothing, itself included, but genres go by
    // their name alone. Tag forms compare the tag's fields with the object.
    static bool isNumber(const char16_t* text);
    static int compareLTNumbers(const char16_t* a, const char16_t* b);
    static int compareLTTrackNumbers(const char16_t* a, const char16_t* b);
    static int compareLTYears(const char16_t* a, const char16_t* b);
    static int compareLTNames(const char16_t* a, const char16_t* b);
    static int compareLTTracks(const SimpleMusicTag* tag, const boost::shared_ptr<CLTTrack>& track);
    static int compareLTTracks(const boost::shared_ptr<CLTTrack>& a,
                               const boost::shared_ptr<CLTTrack>& b);
    static int compareLTAlbums(const SimpleMusicTag* tag, const boost::shared_ptr<CLTAlbum>& album);
    static int compareLTAlbums(const boost::shared_ptr<CLTAlbum>& a,
                               const boost::shared_ptr<CLTAlbum>& b);
    static int compareLTArtists(const SimpleMusicTag* tag,
                                const boost::shared_ptr<CLTArtist>& artist);
    static int compareLTArtists(const boost::shared_ptr<CLTArtist>& a,
                                const boost::shared_ptr<CLTArtist>& b);
    static int compareLTGenres(const SimpleMusicTag* tag, const boost::shared_ptr<CLTGenre>& genre);
    static int compareLTGenres(const boost::shared_ptr<CLTGenre>& a,
                               const boost::shared_ptr<CLTGenre>& b);
    // True means the same.
    static bool isSameLTLyrics(const boost::shared_ptr<CHDTextFile>& file,
                               const boost::shared_ptr<CLTLyrics>& lyrics);
    static bool isSameLTPicture(const boost::shared_ptr<CHDPictureFile>& file,
                                const boost::shared_ptr<CLTPicture>& picture);
    static bool compareLTLyrics(const boost::shared_ptr<CLTLyrics>& a,
                                const boost::shared_ptr<CLTLyrics>& b);
    static bool compareLTPictures(const boost::shared_ptr<CLTPicture>& a,
                                  const boost::shared_ptr<CLTPicture>& b);
    static bool compareLTObjects(const boost::shared_ptr<CLTObject>& a,
                                 const boost::shared_ptr<CLTObject>& b);

    // Look-ups: null when nothing was found; position is then where the object would be inserted.
    static boost::shared_ptr<CLTTrack> findLTTrack(const SimpleMusicTag& tag, int& position);
    static boost::shared_ptr<CLTAlbum> findLTAlbum(const SimpleMusicTag& tag, int& position);
    static boost::shared_ptr<CLTArtist> findLTArtist(const SimpleMusicTag& tag, int& position);
    static boost::shared_ptr<CLTArtist> findLTArtist(const CString& name);
    static boost::shared_ptr<CLTGenre> findLTGenre(const SimpleMusicTag& tag, int& position);
    /// Linear, and the position is left alone.
    static boost::shared_ptr<CLTPicture>
    findLTPicture(const boost::shared_ptr<CHDPictureFile>& file, int& position);
    static boost::shared_ptr<CLTLyrics> findLTLyrics(const boost::shared_ptr<CHDTextFile>& file,
                                                     int& position);

    // Links: both sides at once. What is to be linked anew is unlinked first.
    static void setArtistToTrackLink(const boost::shared_ptr<CLTArtist>& artist,
                                     const boost::shared_ptr<CLTTrack>& track);
    static void clearArtistToTrackLink(const boost::shared_ptr<CLTArtist>& artist,
                                       const boost::shared_ptr<CLTTrack>& track);
    static void setAlbumToTrackLink(const boost::shared_ptr<CLTAlbum>& album,
                                    const boost::shared_ptr<CLTTrack>& track);
    static void clearAlbumToTrackLink(const boost::shared_ptr<CLTAlbum>& album,
                                      const boost::shared_ptr<CLTTrack>& track);
    static void setTrackToGenreLink(const boost::shared_ptr<CLTTrack>& track,
                                    const boost::shared_ptr<CLTGenre>& genre);
    /// Nothing without a genre.
    static void clearTrackToGenreLink(const boost::shared_ptr<CLTTrack>& track,
                                      const boost::shared_ptr<CLTGenre>& genre);
    static void setArtistToAlbumLink(const boost::shared_ptr<CLTArtist>& artist,
                                     const boost::shared_ptr<CLTAlbum>& album);
    static void clearArtistToAlbumLink(const boost::shared_ptr<CLTArtist>& artist,
                                       const boost::shared_ptr<CLTAlbum>& album);
    static void setAlbumToPictureLink(const boost::shared_ptr<CLTAlbum>& album,
                                      const boost::shared_ptr<CLTPicture>& picture);
    static void clearAlbumToPictureLink(const boost::shared_ptr<CLTAlbum>& album,
                                        const boost::shared_ptr<CLTPicture>& picture);
    static void setArtistToPictureLink(const boost::shared_ptr<CLTArtist>& artist,
                                       const boost::shared_ptr<CLTPicture>& picture);
    static void clearArtistToPictureLink(const boost::shared_ptr<CLTArtist>& artist,
                                         const boost::shared_ptr<CLTPicture>& picture);
    static void setTrackToLyricsLink(const boost::shared_ptr<CLTTrack>& track,
                                     const boost::shared_ptr<CLTLyrics>& lyrics);
    static void clearTrackToLyricsLink(const boost::shared_ptr<CLTTrack>& track,
                                       const boost::shared_ptr<CLTLyrics>& lyrics);
    static void setAlbumToLyricsLink(const boost::shared_ptr<CLTAlbum>& album,
                                     const boost::shared_ptr<CLTLyrics>& lyrics);
    static void clearAlbumToLyricsLink(const boost::shared_ptr<CLTAlbum>& album,
                                       const boost::shared_ptr<CLTLyrics>& lyrics);

    // Objects for the files that join a collection, and their release. A release leaves unused
    // objects in the lists until cleanUp().
    static boost::shared_ptr<CLTAlbum> createLTAlbum(const SimpleMusicTag& tag);
    static boost::shared_ptr<CLTArtist> createLTArtist(const SimpleMusicTag& tag);
    static boost::shared_ptr<CLTGenre> createLTGenre(const SimpleMusicTag& tag);
    static void createMusicLTObjects(const boost::shared_ptr<CHDMusicFile>& file);
    static void releaseMusicLTObjects(const boost::shared_ptr<CHDMusicFile>& file);
    /// Joins an album or artist that exists; otherwise nothing happens.
    static void createPictureLTObjects(const boost::shared_ptr<CHDPictureFile>& file);
    static void createPictureLTObjects(const boost::shared_ptr<CHDPictureFile>& file,
                                       const boost::shared_ptr<CLTObject>& owner);
    static void releasePictureLTObjects(const boost::shared_ptr<CHDPictureFile>& file);
    /// Joins a track or album that exists; otherwise nothing happens.
    static void createLyricsLTObjects(const boost::shared_ptr<CHDTextFile>& file);
    static void createLyricsLTObjects(const boost::shared_ptr<CHDTextFile>& file,
                                      const boost::shared_ptr<CLTObject>& owner);
    static void releaseLyricsLTObjects(const boost::shared_ptr<CHDTextFile>& file);

    // What there is, in the lists' own orders.
    static const CPtrListT<CLTAlbum>& getAlbums() noexcept { return m_albums; }
    static const CPtrListT<CLTArtist>& getArtists() noexcept { return m_artists; }
    static const CPtrListT<CLTGenre>& getGenres() noexcept { return m_genres; }
    static const CPtrListT<CLTLyrics>& getLyrics() noexcept { return m_lyrics; }
    static const CPtrListT<CLTPicture>& getPictures() noexcept { return m_pictures; }
    static const CPtrListT<CLTTrack>& getTracks() noexcept { return m_tracks; }

protected:
    CLTManager() = default;
    static void checkReleaseObject(const boost::shared_ptr<CLTObject>& object);

private:
    /// The means to search and change the lists, see there.
    static qo::LTLists& lists();
    /// For a track whose title is known to equal the tag's.
    static int compareLTTracksOfTitle(const SimpleMusicTag* tag,
                                      const boost::shared_ptr<CLTTrack>& track);
    static boost::shared_ptr<CLTTrack> createLTTrack(const SimpleMusicTag& tag);
    // What is found or made for a tag, valid until the next call of the same kind.
    static const boost::shared_ptr<CLTAlbum>& albumOf(const SimpleMusicTag& tag);
    static const boost::shared_ptr<CLTArtist>& artistOf(const SimpleMusicTag& tag);
    static const boost::shared_ptr<CLTGenre>& genreOf(const SimpleMusicTag& tag);
    /// Whether there was anything to release.
    static bool checkReleaseObjects(const LTListInfo& info);
    static void removeUnused(const LTListInfo& info);
    static void endLTList(const LTListInfo& info);
    static void logLTList(const LTListInfo& info);

    static CArray<LTListInfo> m_ltListInfoList; ///< empty until init()
    static CPtrListT<CLTAlbum> m_albums;
    static CPtrListT<CLTArtist> m_artists;
    static CPtrListT<CLTGenre> m_genres;
    static CPtrListT<CLTLyrics> m_lyrics;
    static CPtrListT<CLTPicture> m_pictures;
    static CPtrListT<CLTTrack> m_tracks;
};
