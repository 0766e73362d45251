#include "QoColl/Collection/LinkedFiles.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDMusicFile.h"
#include "Physical/HDPictureFile.h"
#include "Physical/HDTextFile.h"

#include <vector>

namespace qo
{
namespace
{
template <class X>
bool visitEach(const CPtrListT<X>& files, const FileVisitor& visit)
{
    for (const auto& file : files)
    {
        if (!visit(file))
            return false;
    }
    return true;
}

template <class X>
bool visitFilesOf(const CPtrListT<X>& objects, const FileVisitor& visit)
{
    for (const auto& object : objects)
    {
        if (!visitEach(object->getFiles(), visit))
            return false;
    }
    return true;
}

/// The music files of tracks.
bool visitMusic(const CPtrListT<CLTTrack>& tracks, const FileVisitor& visit)
{
    for (const auto& track : tracks)
    {
        if (!visitEach(track->getMusicFiles(), visit))
            return false;
    }
    return true;
}

// Which files belong to a kind of object follows from CHDFile::getLTAssoc(): the lyrics of a track
// have its genre but no album or artist, and a picture of an album has the album's artist.

bool visitTrack(const CLTTrack& track, const FileVisitor& visit)
{
    return visitEach(track.getMusicFiles(), visit) &&
           (!track.getLyrics() || visitEach(track.getLyrics()->getFiles(), visit));
}

bool visitAlbum(const CLTAlbum& album, const FileVisitor& visit)
{
    return visitMusic(album.getTracks(), visit) && visitFilesOf(album.getPictures(), visit) &&
           visitFilesOf(album.getLyrics(), visit);
}

/// Also pictures and lyrics of the artist's albums, since these name the artist too.
bool visitArtist(const CLTArtist& artist, const FileVisitor& visit)
{
    if (!visitMusic(artist.getTracks(), visit) || !visitFilesOf(artist.getPictures(), visit))
        return false;
    for (const auto& album : artist.getAlbums())
    {
        if (!visitFilesOf(album->getPictures(), visit) || !visitFilesOf(album->getLyrics(), visit))
            return false;
    }
    return true;
}

bool visitGenre(const CLTGenre& genre, const FileVisitor& visit)
{
    for (const auto& track : genre.getTracks())
    {
        if (!visitTrack(*track, visit))
            return false;
    }
    return true;
}

bool visitLogical(const CLTObject& object, const FileVisitor& visit)
{
    switch (object.getType())
    {
    case CLTObjectType::Album:
        return visitAlbum(static_cast<const CLTAlbum&>(object), visit);
    case CLTObjectType::Artist:
        return visitArtist(static_cast<const CLTArtist&>(object), visit);
    case CLTObjectType::Genre:
        return visitGenre(static_cast<const CLTGenre&>(object), visit);
    case CLTObjectType::Lyrics:
        return visitEach(static_cast<const CLTLyrics&>(object).getFiles(), visit);
    case CLTObjectType::Picture:
        return visitEach(static_cast<const CLTPicture&>(object).getFiles(), visit);
    case CLTObjectType::Track:
        return visitTrack(static_cast<const CLTTrack&>(object), visit);
    }
    return true;
}

/// Visits the files of the directory first, then those of its sub-directories in order. Not
/// recursive.
bool visitBelow(const CHDDirectory& start, const FileVisitor& visit)
{
    std::vector<const CHDDirectory*> waiting{&start};
    while (!waiting.empty())
    {
        const CHDDirectory* dir = waiting.back();
        waiting.pop_back();
        if (!visitEach(dir->getFiles(), visit))
            return false;
        const CPtrListT<CHDDirectory>& subDirs = dir->getSubDirs();
        for (int i = subDirs.GetSize(); i-- > 0;)
            waiting.push_back(subDirs[i].get());
    }
    return true;
}

/// Whether the file has the object of the cell. A cell without a name fits every file with an
/// unknown object, but none without any: a picture has no genre, and so no unknown one either.
template <class X>
bool fits(const CHDFile& file,
          CLTObjectType::EType type,
          bool isSet,
          const boost::shared_ptr<X>& cell)
{
    if (!isSet)
        return true;
    const boost::shared_ptr<CLTObject> own = file.getLTAssoc(type);
    if (!cell || cell->isUnknown())
        return own && own->isUnknown();
    return own == cell;
}
} // namespace

bool visitLinkedFiles(const boost::shared_ptr<CQoCheckObject>& object, const FileVisitor& visit)
{
    // Objects outside of the trees, such as search results, have no files.
    if (const auto* logical = dynamic_cast<const CLTObject*>(object.get()))
        return visitLogical(*logical, visit);
    if (const auto* dir = dynamic_cast<const CHDDirectory*>(object.get()))
        return visitBelow(*dir, visit);
    const auto file = boost::dynamic_pointer_cast<CHDFile>(object);
    return !file || visit(file);
}

bool belongsTo(const CHDFile& file, const QoUtilsTypes::ParentItemsInfo& parents)
{
    return fits(file, CLTObjectType::Genre, parents.m_hasGenre, parents.m_genre) &&
           fits(file, CLTObjectType::Artist, parents.m_hasArtist, parents.m_artist) &&
           fits(file, CLTObjectType::Album, parents.m_hasAlbum, parents.m_album);
}
} // namespace qo
