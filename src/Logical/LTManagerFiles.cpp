#include "Logical/LTLists.h"
#include "Logical/LTManager.h"
#include "Physical/HDMusicFile.h"
#include "Physical/HDPictureFile.h"
#include "Physical/HDTextFile.h"
#include "common/MakeObject.h"

// How files become logical objects and how these are released.
//
//   Song "Waterloo" by ABBA from the album Gold: a new track; album, artist and genre are found or
//   made; then the links artist-track, album-track, track-genre and artist-album are set, and last
//   the file itself is linked to the track. A cover of that album gets a picture object of the
//   album; lyrics that name the song join its track. Release takes the same links away when nothing
//   else uses the track.

namespace
{
// Each clears the links of one kind of object. The handles of the other ends are copied first,
// since clearing a link empties the one in the object.

void releaseAlbum(const boost::shared_ptr<CLTAlbum>& album)
{
    if (const auto artist = album->getArtist())
        CLTManager::clearArtistToAlbumLink(artist, album);
}

void releaseLyrics(const boost::shared_ptr<CLTLyrics>& lyrics)
{
    if (const auto track = lyrics->getTrack())
        CLTManager::clearTrackToLyricsLink(track, lyrics);
    if (const auto album = lyrics->getAlbum())
        CLTManager::clearAlbumToLyricsLink(album, lyrics);
}

void releasePicture(const boost::shared_ptr<CLTPicture>& picture)
{
    if (const auto album = picture->getAlbum())
        CLTManager::clearAlbumToPictureLink(album, picture);
    if (const auto artist = picture->getArtist())
        CLTManager::clearArtistToPictureLink(artist, picture);
}

void releaseTrack(const boost::shared_ptr<CLTTrack>& track)
{
    if (const auto album = track->getAlbum())
        CLTManager::clearAlbumToTrackLink(album, track);
    CLTManager::clearTrackToGenreLink(track, boost::shared_ptr<CLTGenre>(track->getGenre()));
    if (const auto artist = track->getArtist())
        CLTManager::clearArtistToTrackLink(artist, track);
}
} // namespace

void CLTManager::createMusicLTObjects(const boost::shared_ptr<CHDMusicFile>& file)
{
    // What was done before memory ran out stays.
    qo::orOutOfMemory(QO_HERE(u".\\Logical\\LTManager"),
                      [&file]
                      {
                          SimpleMusicTag& tag = lists().tag;
                          file->getSimpleTag(tag);
                          const auto track = createLTTrack(tag);
                          const boost::shared_ptr<CLTAlbum>& album = albumOf(tag);
                          const boost::shared_ptr<CLTArtist>& artist = artistOf(tag);
                          const boost::shared_ptr<CLTGenre>& genre = genreOf(tag);
                          setArtistToTrackLink(artist, track);
                          --lists().strayTracks; // createLTTrack() counted it
                          setAlbumToTrackLink(album, track);
                          setTrackToGenreLink(track, genre);
                          setArtistToAlbumLink(artist, album);
                          file->setTrack(track);
                          track->addMusicFile(file);
                      });
}

void CLTManager::releaseMusicLTObjects(boost::shared_ptr<CHDMusicFile> file)
{
    const auto track = file->getTrack();
    if (!track)
        return;
    const auto album = track->getAlbum();
    const auto artist = track->getArtist();
    const auto genre = track->getGenre();
    file->setTrack({});
    track->removeMusicFile(file);
    if (!track->isUsed())
    {
        if (artist)
            clearArtistToTrackLink(artist, track);
        if (album)
            clearAlbumToTrackLink(album, track);
        clearTrackToGenreLink(track, genre);
    }
    if (artist && album && (!artist->isUsed() || !album->isUsed()))
        clearArtistToAlbumLink(artist, album);
}

void CLTManager::createPictureLTObjects(const boost::shared_ptr<CHDPictureFile>& file)
{
    SimpleMusicTag tag;
    file->getSimpleTag(tag);
    int position = 0;
    boost::shared_ptr<CLTObject> owner = findLTAlbum(tag, position);
    if (!owner)
        owner = findLTArtist(tag, position);
    if (owner)
        createPictureLTObjects(file, owner);
}

void CLTManager::createPictureLTObjects(const boost::shared_ptr<CHDPictureFile>& file,
                                        const boost::shared_ptr<CLTObject>& owner)
{
    // What was done before memory ran out stays.
    qo::orOutOfMemory(
        QO_HERE(u".\\Logical\\LTManager"),
        [&file, &owner]
        {
            const auto picture = qo::makeObject<CLTPicture>(QO_HERE(u".\\Logical\\LTManager"));
            m_pictures.add(picture);
            qo::UnusedNotes::instance().add(picture.get(), CLTObjectType::Picture);
            if (owner->getType() == CLTObjectType::Album)
                setAlbumToPictureLink(boost::static_pointer_cast<CLTAlbum>(owner), picture);
            else if (owner->getType() == CLTObjectType::Artist)
                setArtistToPictureLink(boost::static_pointer_cast<CLTArtist>(owner), picture);
            file->setPicture(picture);
            picture->addFile(file);
        });
}

void CLTManager::releasePictureLTObjects(boost::shared_ptr<CHDPictureFile> file)
{
    const auto picture = file->getPicture();
    if (!picture)
        return;
    picture->removeFile(file);
    file->setPicture({});
    checkReleaseObject(picture);
}

void CLTManager::createLyricsLTObjects(const boost::shared_ptr<CHDTextFile>& file)
{
    SimpleMusicTag tag;
    file->getSimpleTag(tag);
    int position = 0;
    boost::shared_ptr<CLTObject> owner = findLTTrack(tag, position);
    if (!owner)
        owner = findLTAlbum(tag, position);
    if (owner)
        createLyricsLTObjects(file, owner);
}

void CLTManager::createLyricsLTObjects(const boost::shared_ptr<CHDTextFile>& file,
                                       const boost::shared_ptr<CLTObject>& owner)
{
    // What was done before memory ran out stays.
    qo::orOutOfMemory(
        QO_HERE(u".\\Logical\\LTManager"),
        [&file, &owner]
        {
            const bool isTrack = owner->getType() == CLTObjectType::Track;
            boost::shared_ptr<CLTLyrics> lyrics;
            if (isTrack)
                lyrics = static_cast<const CLTTrack&>(*owner).getLyrics();
            if (!lyrics)
            {
                lyrics = qo::makeObject<CLTLyrics>(QO_HERE(u".\\Logical\\LTManager"));
                m_lyrics.add(lyrics);
                qo::UnusedNotes::instance().add(lyrics.get(), CLTObjectType::Lyrics);
                if (isTrack)
                    setTrackToLyricsLink(boost::static_pointer_cast<CLTTrack>(owner), lyrics);
                else if (owner->getType() == CLTObjectType::Album)
                    setAlbumToLyricsLink(boost::static_pointer_cast<CLTAlbum>(owner), lyrics);
            }
            file->setLyrics(lyrics);
            lyrics->addFile(file);
        });
}

void CLTManager::releaseLyricsLTObjects(boost::shared_ptr<CHDTextFile> file)
{
    const auto lyrics = file->getLyrics();
    if (!lyrics)
        return;
    lyrics->removeFile(file);
    file->setLyrics({});
    checkReleaseObject(lyrics);
}

void CLTManager::checkReleaseObject(boost::shared_ptr<CLTObject> object)
{
    if (object->isUsed())
        return;
    switch (object->getType())
    {
    case CLTObjectType::Album:
        return releaseAlbum(boost::static_pointer_cast<CLTAlbum>(object));
    case CLTObjectType::Lyrics:
        return releaseLyrics(boost::static_pointer_cast<CLTLyrics>(object));
    case CLTObjectType::Picture:
        return releasePicture(boost::static_pointer_cast<CLTPicture>(object));
    case CLTObjectType::Track:
        return releaseTrack(boost::static_pointer_cast<CLTTrack>(object));
    case CLTObjectType::Artist:
    case CLTObjectType::Genre:
        return;
    }
}
