#include "UserView/UVUtils.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTTrack.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDInplaceConvertedFile.h"
#include "Physical/HDMusicFile.h"
#include "Physical/HDOfflineFile.h"
#include "Physical/HDSearchResult.h"
#include "QoColl/Tags/SimpleMusicTag.h"
#include "UserView/UVViewItem.h"

// What single items stand for. Files behind items are in UVUtilsFiles.cpp.

namespace
{
using ItemType = CUVViewItemType;

template <class X>
void setCell(bool& isSet, boost::shared_ptr<X>& cell, const CUVViewItem& item)
{
    if (isSet)
        return;
    isSet = true;
    cell = boost::dynamic_pointer_cast<X>(item.getLinkObj());
}

template <class X>
boost::shared_ptr<X> linkOf(const CUVViewItem* item, CUVViewItemType::EType type)
{
    return item ? boost::dynamic_pointer_cast<X>(item->getLinkObj(type)) : boost::shared_ptr<X>();
}

template <class X>
void takeName(const boost::shared_ptr<X>& object, CString& name)
{
    if (object)
        name = object->getName();
}
} // namespace

void CUVUtils::getParentItemsInfo(const CUVViewItem* item, Parents& parents)
{
    if (!item)
        return;
    if (item->isGenre())
        setCell(parents.m_hasGenre, parents.m_genre, *item);
    else if (item->isArtist())
        setCell(parents.m_hasArtist, parents.m_artist, *item);
    else if (item->isAlbum())
        setCell(parents.m_hasAlbum, parents.m_album, *item);
    else if (item->isDir() && !parents.m_dir)
        parents.m_dir = boost::dynamic_pointer_cast<CHDDirectory>(item->getLinkObj());
}

void CUVUtils::getParentItemsInfoCheckParent(const CUVViewItem* item, Parents& parents)
{
    for (; item; item = item->getParent())
        getParentItemsInfo(item, parents);
}

void CUVUtils::getViewDataParentItemsInfo(const CUVViewItem* leftItem,
                                          const CUVViewItem* middleItem,
                                          Parents& parents)
{
    getParentItemsInfoCheckParent(middleItem, parents);
    Parents left;
    getParentItemsInfoCheckParent(leftItem, left);
    CQoUtils::copyMissingParentItemsInfo(parents, left);
}

void CUVUtils::getTagInfo(const CUVViewItem* item, SimpleMusicTag& tag, CString& path)
{
    tag = {};
    path.Empty();
    if (!item)
        return;
    if (const CQoUtils::File file = getItemFile(item))
    {
        file->getSimpleTag(tag);
        path = file->getPath();
        return;
    }
    Parents parents;
    getParentItemsInfoCheckParent(item, parents);
    takeName(parents.m_genre, tag.genre);
    takeName(parents.m_artist, tag.artist);
    takeName(parents.m_album, tag.album);
    if (item->isDir() && parents.m_dir)
        path = parents.m_dir->getPath().toString();
    if (const auto result = getItemSearchResult(item))
    {
        result->getSimpleTag(tag);
        path = result->getPath();
    }
    else if (const auto converted = getItemInplaceConvertedFile(item))
    {
        converted->getSimpleTag(tag);
        path = converted->getPath();
    }
    else if (const auto offline = getItemOfflineFile(item))
        path = offline->toString(true);
}

CUVViewItem* CUVUtils::findFileItem(const CUVViewItemList& items, const CQoUtils::File& file)
{
    return items.findItem(ItemType::File, file, true);
}

CUVViewItem* CUVUtils::findSearchResultItem(const CUVViewItemList& items,
                                            const boost::shared_ptr<CHDSearchResult>& result)
{
    return items.findItem(ItemType::SearchResult, result, true);
}

CQoUtils::File CUVUtils::getItemFile(const CUVViewItem* item, bool musicOnly)
{
    const auto file = linkOf<CHDFile>(item, ItemType::File);
    const bool isWanted = file && (!musicOnly || file->getFileType() == CHDFile::FT_Music);
    return isWanted ? file : CQoUtils::File();
}

boost::shared_ptr<CHDMusicFile> CUVUtils::getItemMusicFile(const CUVViewItem* item)
{
    return linkOf<CHDMusicFile>(item, ItemType::File);
}

const CHDMusicFile* CUVUtils::musicFileOf(const CUVViewItem& item)
{
    if (!item.isFile() || !item.getLinkObj())
        return nullptr;
    const auto& file = static_cast<const CHDFile&>(*item.getLinkObj());
    return file.getFileType() == CHDFile::FT_Music ? static_cast<const CHDMusicFile*>(&file)
                                                   : nullptr;
}

boost::shared_ptr<CHDOfflineFile> CUVUtils::getItemOfflineFile(const CUVViewItem* item)
{
    return linkOf<CHDOfflineFile>(item, ItemType::OfflineFile);
}

boost::shared_ptr<CHDInplaceConvertedFile>
CUVUtils::getItemInplaceConvertedFile(const CUVViewItem* item)
{
    return linkOf<CHDInplaceConvertedFile>(item, ItemType::InplaceFile);
}

boost::shared_ptr<CHDSearchResult> CUVUtils::getItemSearchResult(const CUVViewItem* item)
{
    return linkOf<CHDSearchResult>(item, ItemType::SearchResult);
}

void CUVUtils::getHDSearchResults(const CUVViewItem* item, SearchResults& results)
{
    if (const auto result = getItemSearchResult(item))
        results.addUnique(result);
}

void CUVUtils::getHDSearchResults(const CUVViewItemList& items, SearchResults& results)
{
    for (const CUVViewItem* item : items)
        getHDSearchResults(item, results);
}

bool CUVUtils::hasHDSearchResults(const CUVViewItem* item)
{
    return getItemSearchResult(item) != nullptr;
}

bool CUVUtils::hasHDSearchResults(const CUVViewItemList& items)
{
    return items.hasItem(ItemType::SearchResult, 0);
}

void CUVUtils::getHDOfflineFiles(const CUVViewItem* item, OfflineFiles& files)
{
    if (const auto file = getItemOfflineFile(item))
        files.addUnique(file);
}

void CUVUtils::getHDOfflineFiles(const CUVViewItemList& items, OfflineFiles& files)
{
    for (const CUVViewItem* item : items)
        getHDOfflineFiles(item, files);
}

bool CUVUtils::hasHDOfflineFiles(const CUVViewItem* item)
{
    return getItemOfflineFile(item) != nullptr;
}

bool CUVUtils::hasHDOfflineFiles(const CUVViewItemList& items)
{
    return items.hasItem(ItemType::OfflineFile, 0);
}

void CUVUtils::getLinks(const CUVViewItem* item,
                        LTObject& logical,
                        boost::shared_ptr<CHDObject>& physical)
{
    logical = getLTLink(item);
    physical = item ? boost::dynamic_pointer_cast<CHDObject>(item->getLinkObj())
                    : boost::shared_ptr<CHDObject>();
}

CUVUtils::LTObject CUVUtils::getLTLink(const CUVViewItem* item)
{
    if (!item)
        return {};
    const CQoUtils::File file = getItemFile(item);
    if (!file)
        return boost::dynamic_pointer_cast<CLTObject>(item->getLinkObj());
    for (const auto type : {CLTObjectType::Track, CLTObjectType::Picture, CLTObjectType::Lyrics})
    {
        if (LTObject object = file->getLTAssoc(type))
            return object;
    }
    return {};
}

CUVUtils::LTObject CUVUtils::getLTLink(const CUVViewItem* item, CLTObjectType::EType type)
{
    const LTObject object = getLTLink(item);
    if (!object)
        return {};
    const CLTObjectType::EType own = object->getType();
    const bool isOther = own == CLTObjectType::Lyrics || own == CLTObjectType::Picture;
    if (own == type && !isOther)
        return object;
    if (own == CLTObjectType::Album && type == CLTObjectType::Artist)
        return static_cast<const CLTAlbum&>(*object).getArtist();
    if (own == CLTObjectType::Track && type == CLTObjectType::Artist)
        return static_cast<const CLTTrack&>(*object).getArtist();
    if (own == CLTObjectType::Track && type == CLTObjectType::Genre)
        return static_cast<const CLTTrack&>(*object).getGenre();
    return {};
}

bool CUVUtils::hasLTLink(const CUVViewItem* item, CLTObjectType::EType type)
{
    return getLTLink(item, type) != nullptr;
}

int CUVUtils::compareAlbumsYears(const CQoUtils::Album& a, const CQoUtils::Album& b)
{
    const CUVViewItem itemA(ItemType::Album, a, nullptr);
    const CUVViewItem itemB(ItemType::Album, b, nullptr);
    return CUVViewItem::compareAlbums(&itemA, &itemB);
}
