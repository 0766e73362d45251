#pragma once

#include "Logical/Forward.h"
#include "Logical/LTObjectType.h"
#include "Physical/Forward.h"
#include "QoColl/Tags/SimpleMusicTag.h"
#include "common/PtrListT.h"

#include <vector>

namespace qo
{
class LTList;
struct LTLists;
} // namespace qo

/// Owns the logical tree (LT): all artists, albums, genres, tracks, lyrics and pictures of all
/// collections. It makes them from the tags of files, decides which are the same, links them and
/// releases them. There is one for the process, with static functions only.
///
/// The lists of tracks, albums, artists and genres are sorted by binary insertion. A missing year
/// or track number equals every other one, so the comparison is not transitive, and the order of
/// insertion is part of the result:
///
///   Tracks of one title, artist and album, by year, in the order of adding:
///     1990, 2000, "": the search compares "" with 1990 first, finds them equal and inserts there,
///     so the list is "", 1990, 2000.
///     Added as "", 1990, 2000 the same tracks end as 1990, 2000, "".
///
/// No locks: the host keeps calls apart, for all collections together. Failed allocations end in
/// qo::throwOutOfMemory(); what was linked until then stays linked.
class QO_API CLTManager
{
public:
    struct LTListInfo
    {
        CLTObjectType::EType type;
        const char16_t* name;
        qo::LTList* list; ///< the same operations whatever the type of its objects
    };

    /// Must be called once before anything else; further calls do nothing.
    static void init();
    /// Removes the objects that nothing uses any more. final, at the end of the program, removes
    /// all and logs an error for each kind of which some are left.
    static void cleanUp(bool final);
    /// Logs how many objects there are of each kind, how many are unknown and how many unused.
    static void logStatistics();
    /// Sets the check marks of all objects, or of those in the list, to "not checked".
    static void resetCheckState();
    static void resetCheckState(CPtrListT<CLTObject>& list);

    // Comparisons: negative, 0 or positive, names without regard to case. An empty year or number
    // equals every other. An unknown object (no name) is ordered before all named ones and equals
    // nothing, not even itself; genres are the exception and are compared by name alone. The forms
    // with a tag compare its fields with the object.
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
    // These are equalities, not orders: true means the same. Lyrics and pictures have no names and
    // are the same when they have equally many files and share one.
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

    // Look-ups by binary search: null when nothing was found; position is then the index at which
    // the object must be inserted.
    static boost::shared_ptr<CLTTrack> findLTTrack(const SimpleMusicTag& tag, int& position);
    static boost::shared_ptr<CLTAlbum> findLTAlbum(const SimpleMusicTag& tag, int& position);
    static boost::shared_ptr<CLTArtist> findLTArtist(const SimpleMusicTag& tag, int& position);
    static boost::shared_ptr<CLTArtist> findLTArtist(const CString& name);
    static boost::shared_ptr<CLTGenre> findLTGenre(const SimpleMusicTag& tag, int& position);
    /// Searches the whole list; position is left as it is.
    static boost::shared_ptr<CLTPicture>
    findLTPicture(const boost::shared_ptr<CHDPictureFile>& file, int& position);
    static boost::shared_ptr<CLTLyrics> findLTLyrics(const boost::shared_ptr<CHDTextFile>& file,
                                                     int& position);

    // Links: each function sets or clears both sides. A link that leads to another object must be
    // cleared before it is set anew. Clearing takes its handles by value, since those of the caller
    // may be references into the objects themselves, which it empties.
    static void setArtistToTrackLink(const boost::shared_ptr<CLTArtist>& artist,
                                     const boost::shared_ptr<CLTTrack>& track);
    static void clearArtistToTrackLink(boost::shared_ptr<CLTArtist> artist,
                                       boost::shared_ptr<CLTTrack> track);
    static void setAlbumToTrackLink(const boost::shared_ptr<CLTAlbum>& album,
                                    const boost::shared_ptr<CLTTrack>& track);
    static void clearAlbumToTrackLink(boost::shared_ptr<CLTAlbum> album,
                                      boost::shared_ptr<CLTTrack> track);
    static void setTrackToGenreLink(const boost::shared_ptr<CLTTrack>& track,
                                    const boost::shared_ptr<CLTGenre>& genre);
    /// Does nothing when the genre is null.
    static void clearTrackToGenreLink(boost::shared_ptr<CLTTrack> track,
                                      boost::shared_ptr<CLTGenre> genre);
    static void setArtistToAlbumLink(const boost::shared_ptr<CLTArtist>& artist,
                                     const boost::shared_ptr<CLTAlbum>& album);
    static void clearArtistToAlbumLink(boost::shared_ptr<CLTArtist> artist,
                                       boost::shared_ptr<CLTAlbum> album);
    static void setAlbumToPictureLink(const boost::shared_ptr<CLTAlbum>& album,
                                      const boost::shared_ptr<CLTPicture>& picture);
    static void clearAlbumToPictureLink(boost::shared_ptr<CLTAlbum> album,
                                        boost::shared_ptr<CLTPicture> picture);
    static void setArtistToPictureLink(const boost::shared_ptr<CLTArtist>& artist,
                                       const boost::shared_ptr<CLTPicture>& picture);
    static void clearArtistToPictureLink(boost::shared_ptr<CLTArtist> artist,
                                         boost::shared_ptr<CLTPicture> picture);
    static void setTrackToLyricsLink(const boost::shared_ptr<CLTTrack>& track,
                                     const boost::shared_ptr<CLTLyrics>& lyrics);
    static void clearTrackToLyricsLink(boost::shared_ptr<CLTTrack> track,
                                       boost::shared_ptr<CLTLyrics> lyrics);
    static void setAlbumToLyricsLink(const boost::shared_ptr<CLTAlbum>& album,
                                     const boost::shared_ptr<CLTLyrics>& lyrics);
    static void clearAlbumToLyricsLink(boost::shared_ptr<CLTAlbum> album,
                                       boost::shared_ptr<CLTLyrics> lyrics);

    // Objects for the files that join a collection, and their release. create... finds or makes the
    // objects of a tag and links them; release... clears the links of the file's objects as far as
    // nothing else uses these, and takes the file by value, as clearing a link does. Unused objects
    // stay in the lists until cleanUp().
    static boost::shared_ptr<CLTAlbum> createLTAlbum(const SimpleMusicTag& tag);
    static boost::shared_ptr<CLTArtist> createLTArtist(const SimpleMusicTag& tag);
    static boost::shared_ptr<CLTGenre> createLTGenre(const SimpleMusicTag& tag);
    static void createMusicLTObjects(const boost::shared_ptr<CHDMusicFile>& file);
    static void releaseMusicLTObjects(boost::shared_ptr<CHDMusicFile> file);
    /// Joins an album, else an artist, that exists; when neither does, the file gets no picture
    /// object.
    static void createPictureLTObjects(const boost::shared_ptr<CHDPictureFile>& file);
    static void createPictureLTObjects(const boost::shared_ptr<CHDPictureFile>& file,
                                       const boost::shared_ptr<CLTObject>& owner);
    static void releasePictureLTObjects(boost::shared_ptr<CHDPictureFile> file);
    /// Joins a track, else an album, that exists; when neither does, the file gets no lyrics
    /// object.
    static void createLyricsLTObjects(const boost::shared_ptr<CHDTextFile>& file);
    static void createLyricsLTObjects(const boost::shared_ptr<CHDTextFile>& file,
                                      const boost::shared_ptr<CLTObject>& owner);
    static void releaseLyricsLTObjects(boost::shared_ptr<CHDTextFile> file);

    // All objects, in the order of the lists.
    static const CPtrListT<CLTAlbum>& getAlbums() noexcept { return m_albums; }
    static const CPtrListT<CLTArtist>& getArtists() noexcept { return m_artists; }
    static const CPtrListT<CLTGenre>& getGenres() noexcept { return m_genres; }
    static const CPtrListT<CLTLyrics>& getLyrics() noexcept { return m_lyrics; }
    static const CPtrListT<CLTPicture>& getPictures() noexcept { return m_pictures; }
    static const CPtrListT<CLTTrack>& getTracks() noexcept { return m_tracks; }

protected:
    CLTManager() = default;
    /// The list of a type, and what log lines call it unless name is null; null before init() and
    /// for a value that is no type.
    static qo::LTList* getLTList(CLTObjectType::EType type, const char16_t** name);
    /// Removes the unused objects and, at the end (final), all. The name is for the log and may be
    /// null. For a list of the caller's; those of this class are kept in step by cleanUp().
    static void cleanUpLTList(CPtrListT<CLTObject>& list, bool final, const char16_t* name);
    /// Clears the links of an object that is not used; it stays in its list until cleanUp().
    static void checkReleaseObject(boost::shared_ptr<CLTObject> object);
    static void checkReleaseObjects(CPtrListT<CLTObject>& list);
    static void logLTList(const char16_t* name, CPtrListT<CLTObject>& list);

private:
    /// The searchable side of the lists; see LTLists.h.
    static qo::LTLists& lists();
    /// Compares all but the title; for a track whose title is known to equal the tag's.
    static int compareLTTracksOfTitle(const SimpleMusicTag* tag,
                                      const boost::shared_ptr<CLTTrack>& track);
    static boost::shared_ptr<CLTTrack> createLTTrack(const SimpleMusicTag& tag);
    // Find the object for a tag or make it. The reference is valid until the next call of the same
    // function.
    static const boost::shared_ptr<CLTAlbum>& albumOf(const SimpleMusicTag& tag);
    static const boost::shared_ptr<CLTArtist>& artistOf(const SimpleMusicTag& tag);
    static const boost::shared_ptr<CLTGenre>& genreOf(const SimpleMusicTag& tag);
    /// Releases the links of the list's unused objects; true if there were any.
    static bool releaseUnused(const LTListInfo& info);
    static void
    cleanUpList(qo::LTList& list, const std::vector<int>& unused, bool final, const char16_t* name);
    static void logList(const char16_t* name, const qo::LTList& list);

    static CArray<LTListInfo> m_ltListInfoList; ///< empty until init()
    static CPtrListT<CLTAlbum> m_albums;
    static CPtrListT<CLTArtist> m_artists;
    static CPtrListT<CLTGenre> m_genres;
    static CPtrListT<CLTLyrics> m_lyrics;
    static CPtrListT<CLTPicture> m_pictures;
    static CPtrListT<CLTTrack> m_tracks;
};
