#include "core/view/PaneModel.h"

#include "core/base/HostFiles.h"
#include "core/query/FoldedText.h"

#include <QoKernel/Physical.h>

#include <algorithm>

namespace qo::host
{
namespace
{
using Helper = CUVViewHelper;

/// "pop/abba" after "pop": "abba". False if the path does not begin with that name.
bool takeName(std::u16string_view& path, std::u16string_view name)
{
    if (name.empty() || !path.starts_with(name) ||
        (path.size() > name.size() && path[name.size()] != u'/'))
        return false;
    path.remove_prefix(std::min(path.size(), name.size() + 1));
    return true;
}

/// Null for what is no folder.
boost::shared_ptr<CHDDirectory> folderOf(const CUVViewItem& item)
{
    return item.isDir() ? boost::dynamic_pointer_cast<CHDDirectory>(item.getLinkObj()) : nullptr;
}

/// The path of a folder as people know it; "" for all that is no folder.
CString folderPath(const CUVViewItem& item)
{
    const auto dir = folderOf(item);
    return dir ? fromUtf8(shownPath(dir->getPath().toString())) : CString();
}

/// The same for a root folder, which is known by its path; "" for all others.
CString rootPath(const CUVViewItem& item)
{
    const auto dir = item.getParent() ? nullptr : folderOf(item);
    return dir && !dir->getParentDir() ? folderPath(item) : CString();
}

/// The drive that is all of a friend's root folder; the item itself for all others.
template <class Item>
Item* driveOf(Item* item)
{
    if (!item || item->getSubItems().GetSize() != 1)
        return item;
    CUVViewItem* const only = item->getSubItems()[0];
    const bool isDrive =
        only->isDir() && !rootPath(*item).IsEmpty() && folderPath(*only) == rootPath(*item);
    return isDrive ? only : item;
}

CUVViewItem* findBelow(const CUVViewItemList& items, std::u16string_view path)
{
    for (CUVViewItem* const item : items)
    {
        std::u16string_view rest = path;
        if (!takeName(rest, folded(item->getName().view())) &&
            !takeName(rest, folded(rootPath(*item).view())))
            continue;
        if (rest.empty())
            return item;
        if (CUVViewItem* const found = findBelow(PaneModel::shownBelow(*item), rest))
            return found;
    }
    return nullptr;
}
} // namespace

PaneModel::PaneModel(View left, View right, const Filter& filter)
    : m_leftView(left), m_rightView(right)
{
    setFilter(filter);
}

PaneModel::~PaneModel() = default;

void PaneModel::show(View left, View right)
{
    m_leftView = left;
    m_rightView = right;
    m_leftItem = m_middleItem = nullptr;
    buildAll();
}

void PaneModel::setFilter(const Filter& filter)
{
    tellAll(); // what is built here has the changes that still wait
    CQoCollSubset::setFilterInfo(filter.text, filter.field, filter.shown);
    buildAnew();
}

void PaneModel::buildAll(AddFileInfo* add)
{
    Helper::getLeftViewItems(m_leftView, subset(), m_left, add);
    buildMiddle(add);
}

void PaneModel::buildMiddle(AddFileInfo* add)
{
    Helper::getMiddleViewItems(m_leftItem, m_leftView, m_middleView, subset(), m_middle, add);
    buildRight(add);
}

void PaneModel::buildRight(AddFileInfo* add)
{
    Helper::getRightViewItems(m_leftItem, m_middleItem, m_rightView, subset(), m_right, add);
}

PaneModel::Path PaneModel::pathOf(const Item* item)
{
    Path path;
    for (; item; item = item->getParent())
        path.emplace_back(item->getType(), item->getLinkObj());
    std::ranges::reverse(path);
    return path;
}

PaneModel::Item* PaneModel::follow(const Items& items, const Path& path)
{
    const Items* level = &items;
    Item* found = nullptr;
    for (const auto& [type, link] : path)
    {
        const auto at =
            std::ranges::find_if(*level,
                                 [&type = type, &link = link](const Item* item)
                                 { return item->getType() == type && item->getLinkObj() == link; });
        if (at == level->end())
            return nullptr;
        found = *at;
        level = &found->getSubItems();
    }
    return found;
}

void PaneModel::buildAnew()
{
    const Path left = pathOf(m_leftItem);
    const Path middle = pathOf(m_middleItem);
    m_leftItem = m_middleItem = nullptr;
    buildAll();
    selectLeft(follow(m_left, left));
    if (m_leftItem)
        selectMiddle(follow(m_middle, middle));
}

void PaneModel::selectLeft(Item* item)
{
    m_leftItem = driveOf(item);
    m_middleItem = nullptr;
    buildMiddle();
}

void PaneModel::selectMiddle(Item* item)
{
    m_middleItem = item;
    buildRight();
}

const PaneModel::Items& PaneModel::shownBelow(const Item& item)
{
    return driveOf(&item)->getSubItems();
}

PaneModel::Item* PaneModel::selectedLeft() const
{
    Item* const above = m_leftItem ? m_leftItem->getParent() : nullptr;
    return above && driveOf(above) == m_leftItem ? above : m_leftItem;
}

PaneModel::Item* PaneModel::find(const Items& items, const std::string& path)
{
    return findBelow(items, folded(fromUtf8(path).view()));
}

CQoUtils::ParentItemsInfo PaneModel::ofLeft() const
{
    CQoUtils::ParentItemsInfo parents;
    CUVUtils::getParentItemsInfoCheckParent(m_leftItem, parents);
    return parents;
}

CQoUtils::ParentItemsInfo PaneModel::ofBoth() const
{
    CQoUtils::ParentItemsInfo parents;
    Helper::getViewsParentItemsInfo(m_leftItem, m_middleItem, parents);
    return parents;
}

void PaneModel::setMark(Item& item, bool isChecked)
{
    const auto isIn = [&item](const Items& items)
    {
        const Item* top = &item;
        while (top->getParent())
            top = top->getParent();
        return items.find(top) != -1;
    };
    const CQoUtils::ParentItemsInfo outside = isIn(m_left)     ? CQoUtils::ParentItemsInfo()
                                              : isIn(m_middle) ? ofLeft()
                                                               : ofBoth();
    Helper::setCheckState(item,
                          isChecked ? CQoCheckState::CS_Checked : CQoCheckState::CS_NotChecked,
                          outside,
                          subset());
    Helper::updateViewItemsCheckState(subset(), m_left, {});
    Helper::updateViewItemsCheckState(subset(), m_middle, ofLeft());
    Helper::updateViewItemsCheckState(subset(), m_right, ofBoth());
}

void PaneModel::remove(const CQoUtils::File& file)
{
    RemoveFileInfo info(file);
    Helper::removeItems(subset(), m_leftItem, m_middleItem, &m_left, &m_middle, &m_right, info);
    const auto isGone = [&info](const Item* item)
    { return item && info.m_removedItems.find(item) != -1; };
    const bool isLeftGone = isGone(m_leftItem);
    const bool isMiddleGone = isGone(m_middleItem);
    if (isLeftGone)
        m_leftItem = nullptr;
    if (isLeftGone || isMiddleGone)
        m_middleItem = nullptr;
    if (isLeftGone)
        buildMiddle();
    else if (isMiddleGone)
        buildRight();
}

void PaneModel::filesChanged(const Files& removed, const Files& added)
{
    for (const CQoUtils::File& file : removed)
        remove(file);
    for (const CQoUtils::File& file : added)
    {
        AddFileInfo info(file);
        buildAll(&info);
    }
}
} // namespace qo::host
