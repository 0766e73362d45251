#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"
#include "Physical/HDMusicFile.h"
#include "Physical/HDPictureFile.h"
#include "QoColl/Collection/LinkedFiles.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/ListT.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "types/CharClass.h"

namespace
{
using Parents = CQoUtils::ParentItemsInfo;

/// The number of files of the object that belong to the parents.
int countFiles(const CQoUtils::CheckObject& object, const Parents& parents)
{
    int count = 0;
    qo::visitLinkedFiles(object,
                         [&](const CQoUtils::File& file)
                         {
                             count += qo::belongsTo(*file, parents);
                             return true;
                         });
    return count;
}

/// The sum over a list of objects.
template <class X>
int countFilesOf(const CPtrListT<X>& objects, const Parents& parents)
{
    int count = 0;
    for (const auto& object : objects)
        count += countFiles(object, parents);
    return count;
}

/// The flag is needed since a cell that is set may hold no object.
template <class X>
void copyMissing(bool& isSet, X& cell, bool sourceIsSet, const X& source)
{
    if (isSet || !sourceIsSet)
        return;
    isSet = true;
    cell = source;
}

/// Objects that look the same are ordered by address, which makes the order total.
template <class X>
int compareNames(const boost::shared_ptr<X>& a, const boost::shared_ptr<X>& b, int kindA, int kindB)
{
    if (kindA != kindB)
        return kindA < kindB ? -1 : 1;
    if (const int order = a->toString(true).CompareNoCase(b->toString(true)))
        return order;
    return CListT<const CQoCheckObject>::comparePointers(a.get(), b.get());
}

/// Directories first.
int kindOf(const CHDObject& object)
{
    return object.isFile() ? 1 : 0;
}
} // namespace

int CQoUtils::compareHDObjectsByType(const boost::shared_ptr<CHDObject>& a,
                                     const boost::shared_ptr<CHDObject>& b)
{
    return compareNames(a, b, kindOf(*a), kindOf(*b));
}

int CQoUtils::compareLTObjectsByType(const boost::shared_ptr<CLTObject>& a,
                                     const boost::shared_ptr<CLTObject>& b)
{
    return compareNames(a, b, a->getType(), b->getType());
}

int CQoUtils::compareCheckObjectByType(const CheckObject& a, const CheckObject& b)
{
    // Objects of the same tree have a finer order.
    const CQoCheckObject::ECheckObjectType type = a->getObjectType();
    if (type == b->getObjectType() && type == CQoCheckObject::OT_Physical)
        return compareHDObjectsByType(boost::static_pointer_cast<CHDObject>(a),
                                      boost::static_pointer_cast<CHDObject>(b));
    if (type == b->getObjectType() && type == CQoCheckObject::OT_Logical)
        return compareLTObjectsByType(boost::static_pointer_cast<CLTObject>(a),
                                      boost::static_pointer_cast<CLTObject>(b));
    return compareNames(a, b, type, b->getObjectType());
}

void CQoUtils::getLinkedFiles(const CheckObject& object, Files& files)
{
    qo::visitLinkedFiles(object,
                         [&](const File& file)
                         {
                             files.addUnique(file);
                             return true;
                         });
}

void CQoUtils::getTrackFiles(const Track& track, Files& files)
{
    getLinkedFiles(track, files);
}

void CQoUtils::getAlbumFiles(const Album& album, Files& files)
{
    getLinkedFiles(album, files);
}

void CQoUtils::getArtistFiles(const Artist& artist, Files& files)
{
    getLinkedFiles(artist, files);
}

void CQoUtils::getGenreFiles(const Genre& genre, Files& files)
{
    getLinkedFiles(genre, files);
}

void CQoUtils::getLyricsFiles(const boost::shared_ptr<CLTLyrics>& lyrics, Files& files)
{
    getLinkedFiles(lyrics, files);
}

void CQoUtils::getPictureFiles(const boost::shared_ptr<CLTPicture>& picture, Files& files)
{
    getLinkedFiles(picture, files);
}

void CQoUtils::getDraggedFiles(const CPtrListT<CQoCheckObject>& objects, Files& files)
{
    for (const CheckObject& object : objects)
        getLinkedFiles(object, files);
}

void CQoUtils::getDraggedMusicFiles(const CPtrListT<CQoCheckObject>& objects,
                                    CPtrListT<CHDMusicFile>& files)
{
    Files all;
    getDraggedFiles(objects, all);
    getMusicFiles(all, files);
}

int CQoUtils::getTrackFileCount(const Track& track, const Parents& parents)
{
    return countFiles(track, parents);
}

int CQoUtils::getAlbumFileCount(const Album& album, const Parents& parents)
{
    return countFiles(album, parents);
}

int CQoUtils::getArtistFileCount(const Artist& artist, const Parents& parents)
{
    return countFiles(artist, parents);
}

int CQoUtils::getGenreFileCount(const Genre& genre, const Parents& parents)
{
    return countFiles(genre, parents);
}

int CQoUtils::getTracksFileCount(const CPtrListT<CLTTrack>& tracks, const Parents& parents)
{
    return countFilesOf(tracks, parents);
}

int CQoUtils::getAlbumsFileCount(const CPtrListT<CLTAlbum>& albums, const Parents& parents)
{
    return countFilesOf(albums, parents);
}

int CQoUtils::getArtistsFileCount(const CPtrListT<CLTArtist>& artists, const Parents& parents)
{
    return countFilesOf(artists, parents);
}

int CQoUtils::getGenresFileCount(const CPtrListT<CLTGenre>& genres, const Parents& parents)
{
    return countFilesOf(genres, parents);
}

void CQoUtils::copyMissingParentItemsInfo(Parents& target, const Parents& source)
{
    copyMissing(target.m_hasGenre, target.m_genre, source.m_hasGenre, source.m_genre);
    copyMissing(target.m_hasArtist, target.m_artist, source.m_hasArtist, source.m_artist);
    copyMissing(target.m_hasAlbum, target.m_album, source.m_hasAlbum, source.m_album);
    if (!target.m_dir)
        target.m_dir = source.m_dir;
}

int CQoUtils::getAlbumYear(const Album& album)
{
    for (const auto& track : album->getTracks())
    {
        // A date begins with its year.
        const int year = qo::textToInt(track->getYear().view());
        if (year > 0)
            return year;
    }
    return 0;
}

eItemSource CQoUtils::getArtistNonMusicFilesSource(const Artist& artist)
{
    eItemSource source = IPostProcessingQueue::sourceNone;
    bool isFirst = true;
    // Pictures and texts are not music either, but say nothing about the artist.
    const auto isSame = [&](const File& file)
    {
        if (file->getFileType() != CHDFile::FT_Music ||
            getFileIsMusicType(file) == ShowFilterInfo::ST_Music)
            return true;
        if (isFirst)
            source = file->getDbItem()->source;
        isFirst = false;
        return source == file->getDbItem()->source;
    };
    return qo::visitLinkedFiles(artist, isSame) ? source : IPostProcessingQueue::sourceSeveral;
}

CString CQoUtils::getTagPictureTempPath(const File& file)
{
    const CString& path = file->getDbItem()->picturePath;
    return !path.IsEmpty() && qo::fileSystem().exists(path) ? path : CString();
}

CString CQoUtils::getAlbumCoverPath(const Album& album)
{
    CString lastTried;
    CString cover;
    // Tracks are visited before picture files.
    const auto isNoCover = [&](const File& file)
    {
        const bool isPicture = file->getFileType() == CHDFile::FT_Picture;
        const CString path =
            isPicture ? getRealPath(file->getPath()) : file->getDbItem()->picturePath;
        // Usually all tracks of an album have the same picture.
        if (path.IsEmpty() || path == lastTried)
            return true;
        lastTried = path;
        if (qo::fileSystem().exists(path))
            cover = path;
        return cover.IsEmpty();
    };
    qo::visitLinkedFiles(album, isNoCover);
    return cover;
}
