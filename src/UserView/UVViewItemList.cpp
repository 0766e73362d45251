#include "UserView/UVViewItemList.h"

#include "Logical/LTObject.h"
#include "UserView/UVViewItem.h"
#include "common/MakeObject.h"

#include <memory>
#include <utility>
#include <vector>

CUVViewItem* CUVViewItemList::NullItem = nullptr;

CUVViewItemList::~CUVViewItemList()
{
    CUVViewItemList::clear();
}

void CUVViewItemList::clear()
{
    std::vector<CUVViewItem*> waiting(begin(), end());
    RemoveAll();
    while (!waiting.empty())
    {
        const std::unique_ptr<CUVViewItem> item(waiting.back());
        waiting.pop_back();
        CUVViewItemList& below = item->getSubItems();
        waiting.insert(waiting.end(), below.begin(), below.end());
        below.RemoveAll();
    }
}

void CUVViewItemList::clone(const CUVViewItemList& other)
{
    if (this == &other)
        return;
    clear();
    std::vector<std::pair<const CUVViewItemList*, CUVViewItemList*>> waiting{{&other, this}};
    while (!waiting.empty())
    {
        const auto [from, to] = waiting.back();
        waiting.pop_back();
        for (const CUVViewItem* item : *from)
        {
            CUVViewItem* const copy = to->addNewItem(
                item->getType(), item->getName(), item->getLinkObj(), false, NullItem);
            copy->setCheckState(item->getCheckState());
            copy->setFileCounts(item->getOwnFileCount(), item->getForeignFileCount());
            if (!item->getSubItems().IsEmpty())
                waiting.emplace_back(&item->getSubItems(), &copy->getSubItems());
        }
    }
}

int CUVViewItemList::sortedEnd() const
{
    int end = GetSize();
    while (end > 0 && GetAt(end - 1)->isGroup())
        --end;
    return end;
}

int CUVViewItemList::placeOf(const CUVViewItem& item) const
{
    const int end = item.isGroup() ? GetSize() : sortedEnd();
    // Genres, artists, albums and directories among themselves are ordered strictly, and mostly
    // come in their order.
    const bool isStrict = end > 0 && !item.isFile() && GetAt(end - 1)->getType() == item.getType();
    if (isStrict && CUVViewItem::compareItems(&item, GetAt(end - 1)) > 0)
        return end;
    int index = 0;
    const bool isEqual = findBinary(&item, 0, end, CUVViewItem::compareItems, index);
    return isEqual ? index + 1 : index;
}

void CUVViewItemList::addItem(CUVViewItem* item, bool sorted, CUVViewItem*& previous)
{
    const int index = sorted ? placeOf(*item) : GetSize();
    InsertAt(index, item);
    previous = index > 0 ? GetAt(index - 1) : nullptr;
}

CUVViewItem* CUVViewItemList::addNewItem(
    EType type, const CString& name, const Link& link, bool sorted, CUVViewItem*& previous)
{
    return qo::orOutOfMemory(QO_HERE(u".\\UserView\\UVViewItem"),
                             [&]
                             {
                                 auto item = std::make_unique<CUVViewItem>(type, link, m_ownerItem);
                                 item->setName(name);
                                 addItem(item.get(), sorted, previous);
                                 return item.release();
                             });
}

CUVViewItem* CUVViewItemList::checkAddItem(
    EType type, const CString& name, const Link& link, bool sorted, CUVViewItem*& previous)
{
    CUVViewItem* const known = findItem(type, link, false);
    return known ? known : addNewItem(type, name, link, sorted, previous);
}

CUVViewItem* CUVViewItemList::findItem(EType type, const Link& link, bool recursive) const
{
    // Where names are the order, the place of the name is mostly the answer.
    if (link && (type == CUVViewItemType::Genre || type == CUVViewItemType::Artist))
    {
        CUVViewItem key(type, link, nullptr);
        key.setName(static_cast<const CLTObject&>(*link).getName());
        int index = 0;
        if (findBinary(&key, 0, sortedEnd(), CUVViewItem::compareItems, index) &&
            GetAt(index)->isEqual(&key))
            return GetAt(index);
    }
    std::vector<const CUVViewItemList*> waiting{this};
    while (!waiting.empty())
    {
        const CUVViewItemList& list = *waiting.back();
        waiting.pop_back();
        for (CUVViewItem* item : list)
        {
            if (item->getType() == type && item->getLinkObj() == link)
                return item;
        }
        for (int i = list.GetSize(); recursive && i-- > 0;)
        {
            if (!list[i]->getSubItems().IsEmpty())
                waiting.push_back(&list[i]->getSubItems());
        }
    }
    return nullptr;
}

void CUVViewItemList::keepSorted(CUVViewItem* item)
{
    const int index = find(item);
    if (index == -1 || item->isGroup())
        return;
    const bool isAfter = index == 0 || CUVViewItem::compareItems(GetAt(index - 1), item) <= 0;
    const bool isBefore =
        index + 1 >= sortedEnd() || CUVViewItem::compareItems(item, GetAt(index + 1)) <= 0;
    if (isAfter && isBefore)
        return;
    RemoveAt(index);
    addItem(item, true, NullItem);
}

bool CUVViewItemList::takeOut(const CUVViewItem* item)
{
    const int index = find(item);
    if (index != -1)
        RemoveAt(index);
    return index != -1;
}

CUVViewItem* CUVViewItemList::getItem(EType type, int index, Link* link) const
{
    for (CUVViewItem* item : *this)
    {
        if (item->getType() != type || index-- > 0)
            continue;
        if (link)
            *link = item->getLinkObj();
        return item;
    }
    return nullptr;
}

CUVViewItemList::Link CUVViewItemList::getItemLinkObj(EType type, int index) const
{
    const CUVViewItem* const item = getItem(type, index);
    return item ? item->getLinkObj() : Link();
}

bool CUVViewItemList::hasItem(EType type, int index) const
{
    return getItem(type, index) != nullptr;
}

bool CUVViewItemList::hasItem(const EType* types, int count) const
{
    for (int i = 0; i < count; ++i)
    {
        if (hasItem(types[i], 0))
            return true;
    }
    return false;
}
