#pragma once

#include "UserView/Forward.h"
#include "UserView/UVViewItemType.h"
#include "types/String.h"

/// What a host wants to know about a selected item, copied, so that it stays valid when the item
/// does not.
class QO_API CUVViewItemInfo
{
public:
    void reset();
    /// The names of the item's genre, artist and album come from the item and those above it, and
    /// for a file from its tag. Null empties.
    void init(const CUVViewItem* item);
    /// For the file or directory of that path, whose names are not known.
    void init(const CString& path);

    CUVViewItemType::EType m_type{}; ///< 0 when empty or made from a path
    CString m_name;
    CString m_genre;
    CString m_artist;
    CString m_album;
    CString m_title;
    CString m_path; ///< of a file or directory
    int m_ownFileCount = 0;
    int m_foreignFileCount = 0;
};
