#pragma once

#include "Physical/HDMusicFile.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "UserView/Forward.h"

/// The music files whose tags have changes that are not written yet, so that a view can tell which
/// of its items hold such a file. It keeps its files however their collection changes, until they
/// are removed here. No locks: the host keeps calls apart.
class QO_API CQoChangedTagFilesInfo final : public CQoCollSubset
{
public:
    using MusicFile = boost::shared_ptr<CHDMusicFile>;
    using MusicFiles = CPtrListT<CHDMusicFile>;

    CQoChangedTagFilesInfo();
    ~CQoChangedTagFilesInfo() override;

    void clear();
    /// Counts all files again, under the artists, albums and genres that they have now.
    void refresh();
    /// Does nothing for a file that is there.
    void addMusicFile(const MusicFile& file);
    /// Does nothing for a file that is not there.
    void removeMusicFile(const MusicFile& file);
    void removeMusicFiles(const MusicFiles& files);
    void setMusicFiles(const MusicFiles& files);
    int getMusicFileCount() const;
    /// Replaces the content of the list.
    void getMusicFiles(MusicFiles& files) const;
    using CQoCollSubset::hasFile;
    bool hasFile(const MusicFile& file) const;
    /// Whether a file of the set stands behind the item; parents is what other panes have selected.
    bool hasInfo(const CUVViewItem* item, const CQoUtils::ParentItemsInfo& parents) const;

private:
    CQoSortedPtrList<CHDMusicFile> m_musicFiles; ///< by address
};
