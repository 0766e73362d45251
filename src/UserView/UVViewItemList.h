#pragma once

#include "Physical/QoCheckObject.h"
#include "UserView/Forward.h"
#include "UserView/UVViewItemType.h"
#include "common/ListT.h"
#include "types/String.h"

#include <boost/shared_ptr.hpp>

/// A list of view items, which it owns: clear() and the destructor delete them with everything
/// below. An item that is taken out by an array operation belongs to the caller. Lists of an item's
/// children know that item as their owner. No recursion, so trees may have any depth.
class QO_API CUVViewItemList : public CListT<CUVViewItem>
{
public:
    using EType = CUVViewItemType::EType;
    using Link = boost::shared_ptr<CQoCheckObject>;

    /// For callers of add... that do not ask for the previous item; its value means nothing.
    static CUVViewItem* NullItem;

    explicit CUVViewItemList(CUVViewItem* owner = nullptr) noexcept : m_ownerItem(owner) {}
    CUVViewItemList(const CUVViewItemList&) = delete;
    CUVViewItemList& operator=(const CUVViewItemList&) = delete;
    ~CUVViewItemList() override;

    void clear() override;
    /// Replaces the content by copies of the items and of everything below them.
    void clone(const CUVViewItemList& other);

    /// Takes the item. sorted: at its place by CUVViewItem::compareItems, after an equal item if
    /// the search meets one, and before the group item. Otherwise at the end. previous becomes the
    /// item before it, or null.
    void addItem(CUVViewItem* item, bool sorted, CUVViewItem*& previous);
    /// Makes an item whose parent is the owner, and adds it. Never null.
    CUVViewItem* addNewItem(
        EType type, const CString& name, const Link& link, bool sorted, CUVViewItem*& previous);
    /// The item of that type and link if it is there, else as addNewItem().
    CUVViewItem* checkAddItem(
        EType type, const CString& name, const Link& link, bool sorted, CUVViewItem*& previous);
    /// The first item of that type and link, also below if recursive; null if there is none.
    CUVViewItem* findItem(EType type, const Link& link, bool recursive) const;
    /// Moves the item to its place if it is no longer sorted there.
    void keepSorted(CUVViewItem* item);
    /// Takes the item out without deleting it; false if it is not in this list.
    bool takeOut(const CUVViewItem* item);

    /// The item with that number among those of the type in this list, and its link; null if there
    /// are fewer.
    CUVViewItem* getItem(EType type, int index, Link* link = nullptr) const;
    Link getItemLinkObj(EType type, int index) const;
    bool hasItem(EType type, int index) const;
    /// Whether there is an item of one of the types.
    bool hasItem(const EType* types, int count) const;

    CUVViewItem* getOwnerItem() const noexcept { return m_ownerItem; }

private:
    /// Where sorted items end and the group item stands.
    int sortedEnd() const;
    int placeOf(const CUVViewItem& item) const;

    CUVViewItem* m_ownerItem;
};
