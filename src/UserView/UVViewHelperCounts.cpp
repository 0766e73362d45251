#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/subsets/QoCheckHelper.h"
#include "UserView/UVUtils.h"
#include "UserView/UVViewHelper.h"

#include <vector>

// What items show beside their names: numbers of files, check marks, and the collection.

namespace
{
using View = CUVViewHelper;

/// What is selected above the item, in its own tree and outside.
View::Parents aboveOf(const CUVViewItem& item, const View::Parents& outside)
{
    View::Parents parents;
    CUVUtils::getParentItemsInfoCheckParent(item.getParent(), parents);
    CQoUtils::copyMissingParentItemsInfo(parents, outside);
    return parents;
}

template <class X>
boost::shared_ptr<X> linkAs(const CUVViewItem& item)
{
    return boost::static_pointer_cast<X>(item.getLinkObj());
}

void countFiles(CUVViewItem& item, const View::Parents& above, const View::Subset& subset)
{
    int own = 0;
    int foreign = 0;
    if (item.isGenre())
        subset.getGenreFileCount(linkAs<CLTGenre>(item), own, foreign);
    else if (item.isArtist() && above.m_hasAlbum)
    {
        // The artist above a selected album in the tree of the right pane.
        View::Parents parents = above;
        CUVUtils::getParentItemsInfo(&item, parents);
        subset.getAlbumFileCount(above.m_album, own, foreign, parents);
    }
    else if (item.isArtist())
        subset.getArtistFileCount(linkAs<CLTArtist>(item), own, foreign, above);
    else if (item.isAlbum())
        subset.getAlbumFileCount(linkAs<CLTAlbum>(item), own, foreign, above);
    else if (item.isDir())
        subset.getDirFileCount(linkAs<CHDDirectory>(item), own, foreign);
    else if (item.isFile())
    {
        foreign = subset.hasForeignFile(linkAs<CHDFile>(item)) ? 1 : 0;
        own = 1 - foreign;
    }
    item.setFileCounts(own, foreign);
}

/// Visits all items and those below with what is selected above each.
template <class Visit>
void forAll(View::Items& items, const View::Parents& outside, Visit visit)
{
    std::vector<std::pair<View::Items*, View::Parents>> waiting;
    waiting.emplace_back(&items, outside);
    while (!waiting.empty())
    {
        const auto [list, above] = std::move(waiting.back());
        waiting.pop_back();
        for (CUVViewItem* item : *list)
        {
            visit(*item, above);
            if (item->getSubItems().IsEmpty())
                continue;
            View::Parents below;
            CUVUtils::getParentItemsInfo(item, below);
            CQoUtils::copyMissingParentItemsInfo(below, above);
            waiting.emplace_back(&item->getSubItems(), std::move(below));
        }
    }
}

/// Whether the item stands for all files of its link, so that the link's own mark is the item's.
bool coversLink(const CUVViewItem& item, const View::Parents& above, const View::Subset& subset)
{
    if (!item.getLinkObj())
        return false;
    if (!item.isGenre() && !item.isArtist() && !item.isAlbum() && !item.isDir())
        return true;
    const bool isNarrowed = above.m_hasGenre || (item.isArtist() && above.m_hasAlbum);
    return &subset == &CQoCollSubset::getFullSubset() && (item.isDir() || !isNarrowed);
}

CQoCheckState::ECheckState
stateOf(const CUVViewItem& item, const View::Parents& above, const View::Subset& subset)
{
    if (!CQoCheckObject::wasAnyChecked())
        return CQoCheckState::CS_NotChecked;
    if (coversLink(item, above, subset))
        return item.getLinkObj()->getCheckState();
    CQoCheckState::ECheckState state = CQoCheckState::CS_None;
    CUVUtils::visitFiles(&item,
                         above,
                         subset,
                         [&state](const CQoUtils::File& file)
                         {
                             state = CQoCheckHelper::getCombinedCheckState(state,
                                                                           file->getCheckState());
                             return state != CQoCheckState::CS_Mixed;
                         });
    return state == CQoCheckState::CS_None ? CQoCheckState::CS_NotChecked : state;
}
} // namespace

void CUVViewHelper::getFileCount(
    const CUVViewItem& item, const Parents& outside, const Subset& subset, int& own, int& foreign)
{
    CUVViewItem counted(item.getType(), item.getLinkObj(), nullptr);
    countFiles(counted, aboveOf(item, outside), subset);
    own = counted.getOwnFileCount();
    foreign = counted.getForeignFileCount();
}

void CUVViewHelper::computeFileCount(const Subset& subset, Items& items, const Parents& outside)
{
    forAll(items,
           outside,
           [&](CUVViewItem& item, const Parents& above) { countFiles(item, above, subset); });
}

void CUVViewHelper::updateParentViewItemsFileCount(const Subset& subset,
                                                   CUVViewItem* item,
                                                   const Parents& outside)
{
    for (; item; item = item->getParent())
        countFiles(*item, aboveOf(*item, outside), subset);
}

void CUVViewHelper::getCheckTargets(const CUVViewItem& item,
                                    const Parents& outside,
                                    const Subset& subset,
                                    CheckObjects& targets)
{
    if (coversLink(item, aboveOf(item, outside), subset))
    {
        targets.add(item.getLinkObj());
        return;
    }
    CUVUtils::visitFiles(&item,
                         outside,
                         subset,
                         [&](const CQoUtils::File& file)
                         {
                             targets.add(file);
                             return true;
                         });
}

void CUVViewHelper::updateViewItemCheckState(CUVViewItem& item,
                                             const Parents& outside,
                                             const Subset& subset)
{
    item.setCheckState(stateOf(item, aboveOf(item, outside), subset));
}

void CUVViewHelper::updateViewItemsCheckState(const Subset& subset,
                                              Items& items,
                                              const Parents& outside)
{
    forAll(items,
           outside,
           [&](CUVViewItem& item, const Parents& above)
           { item.setCheckState(stateOf(item, above, subset)); });
}

void CUVViewHelper::updateParentViewItemsCheckState(const Subset& subset,
                                                    CUVViewItem* item,
                                                    const Parents& outside)
{
    for (; item; item = item->getParent())
        updateViewItemCheckState(*item, outside, subset);
}

void CUVViewHelper::setCheckState(CUVViewItem& item,
                                  ECheckState state,
                                  const Parents& outside,
                                  const Subset& subset)
{
    CheckObjects targets;
    getCheckTargets(item, outside, subset, targets);
    CQoCheckHelper::setCheckState(targets, state);
    Parents below;
    CUVUtils::getParentItemsInfoCheckParent(&item, below);
    CQoUtils::copyMissingParentItemsInfo(below, outside);
    updateViewItemsCheckState(subset, item.getSubItems(), below);
    updateParentViewItemsCheckState(subset, &item, outside);
}

void CUVViewHelper::toggleCheckState(CUVViewItem& item,
                                     const Parents& outside,
                                     const Subset& subset)
{
    const bool isChecked = item.getCheckState() == CQoCheckState::CS_Checked;
    setCheckState(item,
                  isChecked ? CQoCheckState::CS_NotChecked : CQoCheckState::CS_Checked,
                  outside,
                  subset);
}

CUVViewHelper::Type CUVViewHelper::getCollectionMO(const CUVViewItem& item,
                                                   const CUVViewItem* parent,
                                                   const Subset& subset)
{
    Parents outside;
    CUVUtils::getParentItemsInfoCheckParent(parent, outside);
    CheckObjects targets;
    getCheckTargets(item, outside, subset, targets);
    if (targets.GetSize() == 1)
        return CQoUtils::getCollection(targets[0]);
    CQoUtils::Files files;
    for (const auto& target : targets)
    {
        if (const auto file = boost::dynamic_pointer_cast<CHDFile>(target))
            files.add(file);
    }
    return CQoUtils::getCollection(files);
}

CUVViewHelper::Type CUVViewHelper::getCollectionMOFast(const CUVViewItem& item)
{
    if (item.isDir() || item.isFile())
        return CQoUtils::getCollection(item.getLinkObj());
    const bool isCounted = item.isGenre() || item.isArtist() || item.isAlbum() || item.isText();
    if (!isCounted || item.getForeignFileCount() == 0)
        return CQoUtils::CT_Own;
    return item.getOwnFileCount() > 0 ? CQoUtils::CT_Both : CQoUtils::CT_Foreign;
}

CUVViewHelper::Type CUVViewHelper::getCollectionMP(const CUVViewItem& item)
{
    if (item.isFile() || item.isInplaceFile() || item.isSearchResult())
        return CQoUtils::getCollection(item.getLinkObj());
    return item.isOfflineFile() ? CQoUtils::CT_Foreign : CQoUtils::CT_Own;
}
