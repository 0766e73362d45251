#pragma once

#include "Physical/QoCheckState.h"
#include "UserView/UVViewItemList.h"
#include "common/ListT.h"

/// A line of what a host shows: a genre, artist, album, directory or file, with its children. It
/// holds a handle to the object behind it, so items must be gone before the collections are.
class QO_API CUVViewItem
{
public:
    using EType = CUVViewItemType::EType;
    using Link = CUVViewItemList::Link;
    using ECheckState = CQoCheckState::ECheckState;

    /// The link is null for group items. The name is empty.
    CUVViewItem(EType type, const Link& link, CUVViewItem* parent);
    CUVViewItem(const CUVViewItem&) = delete;
    CUVViewItem& operator=(const CUVViewItem&) = delete;
    virtual ~CUVViewItem();

    /// A copy with copies of everything below and without a parent; belongs to the caller.
    CUVViewItem* clone() const;

    // Group items count as well.
    bool isGenre() const noexcept
    {
        return is(CUVViewItemType::Genre, CUVViewItemType::OtherGenres);
    }
    bool isArtist() const noexcept
    {
        return is(CUVViewItemType::Artist, CUVViewItemType::OtherArtists);
    }
    bool isAlbum() const noexcept
    {
        return is(CUVViewItemType::Album, CUVViewItemType::OtherAlbums);
    }
    bool isGroup() const noexcept;
    bool isDir() const noexcept { return m_type == CUVViewItemType::Dir; }
    bool isFile() const noexcept { return m_type == CUVViewItemType::File; }
    bool isText() const noexcept { return m_type == CUVViewItemType::Text; }
    bool isInplaceFile() const noexcept { return m_type == CUVViewItemType::InplaceFile; }
    bool isSearchResult() const noexcept { return m_type == CUVViewItemType::SearchResult; }
    bool isOfflineFile() const noexcept { return m_type == CUVViewItemType::OfflineFile; }

    /// The same type and the same link; false for null.
    bool isEqual(const CUVViewItem* other) const;
    const Link& getLinkObj() const noexcept { return m_linkObj; }
    /// Null for an item of another type.
    Link getLinkObj(EType type) const;
    /// The mark that is shown; the object's own does not change.
    void setCheckState(ECheckState state) noexcept { m_checkState = state; }
    ECheckState getCheckState() const noexcept { return m_checkState; }

    EType getType() const noexcept { return m_type; }
    const CString& getName() const noexcept { return m_name; }
    void setName(const CString& name) { m_name = name; }
    CUVViewItem* getParent() const noexcept { return m_parent; }
    void setParent(CUVViewItem* parent) noexcept { m_parent = parent; }
    CUVViewItemList& getSubItems() noexcept { return m_subItems; }
    const CUVViewItemList& getSubItems() const noexcept { return m_subItems; }
    int getOwnFileCount() const noexcept { return m_ownFileCount; }
    int getForeignFileCount() const noexcept { return m_foreignFileCount; }
    int getFileCount() const noexcept { return m_ownFileCount + m_foreignFileCount; }
    void setFileCounts(int own, int foreign) noexcept;

    // Orders: negative, 0 or positive. Each gives 0 for items that it says nothing about, so
    // compareItems() is not transitive in lists of music and other files.

    /// A directory before a file.
    static int compareTypes(const CUVViewItem* a, const CUVViewItem* b);
    /// Albums by year, those without one last.
    static int compareAlbums(const CUVViewItem* a, const CUVViewItem* b);
    /// Music files by album and track number, those without number last.
    static int compareTracks(const CUVViewItem* a, const CUVViewItem* b);
    /// These three in this order, and then the names without regard to case.
    static int compareItems(const CUVViewItem* a, const CUVViewItem* b);

private:
    bool is(EType one, EType other) const noexcept { return m_type == one || m_type == other; }

    EType m_type;
    CString m_name;
    Link m_linkObj;
    CUVViewItem* m_parent;
    CUVViewItemList m_subItems;
    ECheckState m_checkState = CQoCheckState::CS_NotChecked;
    int m_ownFileCount = 0;
    int m_foreignFileCount = 0;
};
