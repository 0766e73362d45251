#pragma once

#include "Logical/Forward.h"
#include "Physical/Forward.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "UserView/UVViewItemList.h"

#include <boost/shared_ptr.hpp>

namespace qo
{
/// A file and what it belongs to, by which its items are found in views.
struct FileInView
{
    CQoUtils::File m_file;
    CQoUtils::Genre m_genre;
    CQoUtils::Artist m_artist;
    CQoUtils::Album m_album;

    void reset(const CQoUtils::File& file);
    bool belongsTo(const CQoUtils::ParentItemsInfo& parents) const;
};
} // namespace qo

/// One file that has joined the subset, for views that show it without being built anew.
struct QO_API AddFileInfo : qo::FileInView
{
    AddFileInfo() = default;
    explicit AddFileInfo(const CQoUtils::File& file) { reset(file); }
    void reset() { *this = AddFileInfo(); }
    void reset(const CQoUtils::File& file);

    CUVViewItem* m_item = nullptr; ///< the lowest item of the file in the last view; null if none
};

/// One file that has left the subset. To be made while the file is still linked to its logical
/// objects, which is until the zombies of its collection are released. Items that leave views with
/// it are kept until cleanup(), since a host may have selected them.
struct QO_API RemoveFileInfo : qo::FileInView
{
    RemoveFileInfo() = default;
    explicit RemoveFileInfo(const CQoUtils::File& file) { reset(file); }
    void reset();
    void reset(const CQoUtils::File& file);
    /// Deletes the items that left.
    void cleanup() { m_removedItems.clear(); }

    CUVViewItemList m_removedItems;
};
