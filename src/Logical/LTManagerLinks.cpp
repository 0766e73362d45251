#include "Logical/LTLists.h"
#include "Logical/LTManager.h"

// Both sides of each link. The order of the two steps does not matter to a caller: nothing looks at
// the tree in between.

void CLTManager::setArtistToTrackLink(const boost::shared_ptr<CLTArtist>& artist,
                                      const boost::shared_ptr<CLTTrack>& track)
{
    track->setArtist(artist);
    artist->addTrack(track);
}

void CLTManager::clearArtistToTrackLink(boost::shared_ptr<CLTArtist> artist,
                                        boost::shared_ptr<CLTTrack> track)
{
    lists().strayTracks += track->getArtist() != nullptr;
    artist->removeTrack(track);
    track->setArtist({});
}

void CLTManager::setAlbumToTrackLink(const boost::shared_ptr<CLTAlbum>& album,
                                     const boost::shared_ptr<CLTTrack>& track)
{
    track->setAlbum(album);
    album->addTrack(track);
}

void CLTManager::clearAlbumToTrackLink(boost::shared_ptr<CLTAlbum> album,
                                       boost::shared_ptr<CLTTrack> track)
{
    album->removeTrack(track);
    track->setAlbum({});
}

void CLTManager::setTrackToGenreLink(const boost::shared_ptr<CLTTrack>& track,
                                     const boost::shared_ptr<CLTGenre>& genre)
{
    track->setGenre(genre);
    genre->addTrack(track);
}

void CLTManager::clearTrackToGenreLink(boost::shared_ptr<CLTTrack> track,
                                       boost::shared_ptr<CLTGenre> genre)
{
    if (!genre)
        return;
    genre->removeTrack(track);
    track->setGenre({});
}

void CLTManager::setArtistToAlbumLink(const boost::shared_ptr<CLTArtist>& artist,
                                      const boost::shared_ptr<CLTAlbum>& album)
{
    // Called for every file of the album; without this check each call would search all albums of
    // the artist.
    if (artist && album->getArtist() == artist)
        return;
    lists().isLastAlbumSure = false;
    album->setArtist(artist);
    artist->addAlbum(album);
}

void CLTManager::clearArtistToAlbumLink(boost::shared_ptr<CLTArtist> artist,
                                        boost::shared_ptr<CLTAlbum> album)
{
    lists().isLastAlbumSure = false;
    artist->removeAlbum(album);
    album->setArtist({});
}

void CLTManager::setAlbumToPictureLink(const boost::shared_ptr<CLTAlbum>& album,
                                       const boost::shared_ptr<CLTPicture>& picture)
{
    picture->setAlbum(album);
    album->addPicture(picture);
}

void CLTManager::clearAlbumToPictureLink(boost::shared_ptr<CLTAlbum> album,
                                         boost::shared_ptr<CLTPicture> picture)
{
    album->removePicture(picture);
    picture->setAlbum({});
}

void CLTManager::setArtistToPictureLink(const boost::shared_ptr<CLTArtist>& artist,
                                        const boost::shared_ptr<CLTPicture>& picture)
{
    picture->setArtist(artist);
    artist->addPicture(picture);
}

void CLTManager::clearArtistToPictureLink(boost::shared_ptr<CLTArtist> artist,
                                          boost::shared_ptr<CLTPicture> picture)
{
    artist->removePicture(picture);
    picture->setArtist({});
}

void CLTManager::setTrackToLyricsLink(const boost::shared_ptr<CLTTrack>& track,
                                      const boost::shared_ptr<CLTLyrics>& lyrics)
{
    track->setLyrics(lyrics);
    lyrics->setTrack(track);
}

void CLTManager::clearTrackToLyricsLink(boost::shared_ptr<CLTTrack> track,
                                        boost::shared_ptr<CLTLyrics> lyrics)
{
    track->setLyrics({});
    lyrics->setTrack({});
}

void CLTManager::setAlbumToLyricsLink(const boost::shared_ptr<CLTAlbum>& album,
                                      const boost::shared_ptr<CLTLyrics>& lyrics)
{
    lyrics->setAlbum(album);
    album->addLyrics(lyrics);
}

void CLTManager::clearAlbumToLyricsLink(boost::shared_ptr<CLTAlbum> album,
                                        boost::shared_ptr<CLTLyrics> lyrics)
{
    album->removeLyrics(lyrics);
    lyrics->setAlbum({});
}
