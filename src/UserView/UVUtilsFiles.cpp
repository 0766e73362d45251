#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDMusicFile.h"
#include "QoColl/Collection/LinkedFiles.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "UserView/UVUtils.h"
#include "UserView/UVViewItem.h"
#include "types/StringArray.h"

#include <unordered_set>

// The files behind items. Whatever is asked of them goes through a FileVisit, which shows each file
// once.

namespace
{
using File = CQoUtils::File;
using Type = CQoUtils::ECollectionType;
using Visit = std::function<bool(const File&)>;

/// Visits the files of items that belong to a collection, until a visit returns false.
class FileVisit
{
public:
    FileVisit(Type type, const CQoCollSubset& subset, Visit visit)
        : m_type(type), m_subset(subset), m_visit(std::move(visit))
    {
    }
    void of(const CUVViewItem* item)
    {
        CUVUtils::visitFiles(item,
                             {},
                             m_subset,
                             [this](const File& file)
                             {
                                 if (m_known.insert(file.get()).second &&
                                     CQoUtils::matchesCollection(file, m_type))
                                     m_goesOn = m_visit(file);
                                 return m_goesOn;
                             });
    }
    void of(const CUVViewItemList& items)
    {
        for (int i = 0; i < items.GetSize() && m_goesOn; ++i)
            of(items[i]);
    }

private:
    Type m_type;
    const CQoCollSubset& m_subset;
    Visit m_visit;
    std::unordered_set<const CHDFile*> m_known;
    bool m_goesOn = true;
};

bool isMusic(const File& file)
{
    return file->getFileType() == CHDFile::FT_Music;
}

template <class Items, class List>
void collect(
    const Items& items, Type type, const CQoCollSubset& subset, bool musicOnly, List& files)
{
    std::unordered_set<const CHDFile*> known;
    for (const auto& file : files)
        known.insert(file.get());
    using Element = typename List::Handle::element_type;
    FileVisit(type,
              subset,
              [&](const File& file)
              {
                  if ((!musicOnly || isMusic(file)) && known.insert(file.get()).second)
                      files.add(boost::static_pointer_cast<Element>(file));
                  return true;
              })
        .of(items);
}

template <class Items>
bool hasAny(const Items& items, Type type, const CQoCollSubset& subset, bool musicOnly)
{
    bool found = false;
    FileVisit(type,
              subset,
              [&](const File& file)
              {
                  found = !musicOnly || isMusic(file);
                  return !found;
              })
        .of(items);
    return found;
}

template <class Items>
void countFilesBehind(const Items& items,
                      Type type,
                      const CQoCollSubset& subset,
                      int& fileCount,
                      int& musicCount,
                      std::int64_t* size)
{
    FileVisit(type,
              subset,
              [&](const File& file)
              {
                  ++fileCount;
                  musicCount += isMusic(file);
                  if (size)
                      *size += file->getSize();
                  return true;
              })
        .of(items);
}

template <class Items>
void collectArtists(const Items& items, const CQoCollSubset& subset, CStringArray& artists)
{
    std::unordered_set<const CLTObject*> known;
    FileVisit(CQoUtils::CT_Both,
              subset,
              [&](const File& file)
              {
                  const auto artist = file->getLTAssoc(CLTObjectType::Artist);
                  if (artist && !artist->isUnknown() && known.insert(artist.get()).second)
                      artists.Add(artist->getName());
                  return true;
              })
        .of(items);
}

template <class Items>
void collectTracks(const Items& items,
                   const CQoCollSubset& subset,
                   std::vector<CUVUtils::Track>& tracks)
{
    FileVisit(CQoUtils::CT_Both,
              subset,
              [&](const File& file)
              {
                  if (!isMusic(file))
                      return true;
                  const QoFileDbItem& item = *file->getDbItem();
                  tracks.push_back({item.artist,
                                    item.title,
                                    item.album,
                                    item.genre,
                                    item.trackNumber,
                                    item.year,
                                    item.path});
                  return true;
              })
        .of(items);
}

template <class X>
bool isKnown(bool isSet, const boost::shared_ptr<X>& object)
{
    return isSet && object && !object->isUnknown();
}
} // namespace

void CUVUtils::visitFiles(const CUVViewItem* item,
                          const Parents& outside,
                          const CQoCollSubset& subset,
                          const Visit& visit)
{
    if (!item)
        return;
    const auto ifIn = [&](const File& file) { return !subset.hasFile(file) || visit(file); };
    if (item->isFile() || item->isDir())
    {
        qo::visitLinkedFiles(item->getLinkObj(), ifIn);
        return;
    }
    if (!item->isGenre() && !item->isArtist() && !item->isAlbum())
        return;
    Parents parents;
    getParentItemsInfoCheckParent(item, parents);
    CQoUtils::copyMissingParentItemsInfo(parents, outside);
    visitFiles(parents, subset, visit);
}

void CUVUtils::visitFiles(const Parents& parents, const CQoCollSubset& subset, const Visit& visit)
{
    const auto ifIn = [&](const File& file)
    { return !qo::belongsTo(*file, parents) || !subset.hasFile(file) || visit(file); };
    // The files of an album or artist are few; for the others the subset is looked through.
    if (isKnown(parents.m_hasAlbum, parents.m_album))
        qo::visitLinkedFiles(parents.m_album, ifIn);
    else if (isKnown(parents.m_hasArtist, parents.m_artist))
        qo::visitLinkedFiles(parents.m_artist, ifIn);
    else
        subset.visitFiles(parents, visit);
}

void CUVUtils::getLinkedObjects(const CUVViewItem* item,
                                CPtrListT<CQoCheckObject>& objects,
                                const CQoCollSubset& subset)
{
    if (item && item->getLinkObj())
        objects.addUnique(item->getLinkObj());
    else
        visitFiles(item,
                   {},
                   subset,
                   [&](const File& file)
                   {
                       objects.addUnique(file);
                       return true;
                   });
}

void CUVUtils::getLinkedObjects(const CUVViewItemList& items,
                                CPtrListT<CQoCheckObject>& objects,
                                const CQoCollSubset& subset)
{
    for (const CUVViewItem* item : items)
        getLinkedObjects(item, objects, subset);
}

void CUVUtils::getMusicFiles(const CUVViewItem* item,
                             Type type,
                             MusicFiles& files,
                             const CQoCollSubset& subset)
{
    collect(item, type, subset, true, files);
}

void CUVUtils::getMusicFiles(const CUVViewItemList& items,
                             Type type,
                             MusicFiles& files,
                             const CQoCollSubset& subset)
{
    collect(items, type, subset, true, files);
}

bool CUVUtils::hasMusicFiles(const CUVViewItem* item, Type type, const CQoCollSubset& subset)
{
    return hasAny(item, type, subset, true);
}

bool CUVUtils::hasMusicFiles(const CUVViewItemList& items, Type type, const CQoCollSubset& subset)
{
    return hasAny(items, type, subset, true);
}

void CUVUtils::getHDFilesInfo(const CUVViewItem* item,
                              Type type,
                              int& fileCount,
                              int& musicCount,
                              std::int64_t* size,
                              const CQoCollSubset& subset)
{
    countFilesBehind(item, type, subset, fileCount, musicCount, size);
}

void CUVUtils::getHDFilesInfo(const CUVViewItemList& items,
                              Type type,
                              int& fileCount,
                              int& musicCount,
                              std::int64_t* size,
                              const CQoCollSubset& subset)
{
    countFilesBehind(items, type, subset, fileCount, musicCount, size);
}

void CUVUtils::getHDFiles(const CUVViewItem* item,
                          Type type,
                          Files& files,
                          const CQoCollSubset& subset)
{
    collect(item, type, subset, false, files);
}

void CUVUtils::getHDFiles(const CUVViewItemList& items,
                          Type type,
                          Files& files,
                          const CQoCollSubset& subset)
{
    collect(items, type, subset, false, files);
}

bool CUVUtils::hasHDFiles(const CUVViewItem* item, Type type, const CQoCollSubset& subset)
{
    return hasAny(item, type, subset, false);
}

bool CUVUtils::hasHDFiles(const CUVViewItemList& items, Type type, const CQoCollSubset& subset)
{
    return hasAny(items, type, subset, false);
}

void CUVUtils::getArtists(const CUVViewItem* item,
                          CStringArray& artists,
                          const CQoCollSubset& subset)
{
    collectArtists(item, subset, artists);
}

void CUVUtils::getArtists(const CUVViewItemList& items,
                          CStringArray& artists,
                          const CQoCollSubset& subset)
{
    collectArtists(items, subset, artists);
}

void CUVUtils::getTracks(const CUVViewItem* item,
                         std::vector<Track>& tracks,
                         const CQoCollSubset& subset)
{
    collectTracks(item, subset, tracks);
}

void CUVUtils::getTracks(const CUVViewItemList& items,
                         std::vector<Track>& tracks,
                         const CQoCollSubset& subset)
{
    collectTracks(items, subset, tracks);
}
