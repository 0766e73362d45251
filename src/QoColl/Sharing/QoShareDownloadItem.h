#pragma once

#include "QoColl/Plugins/QoDownloadItem.h"
#include "common/CollPath.h"

/// Fetches a file of a peer. What the collection knows of the file is looked up by whoever makes
/// the item, since the trees must not be read on the item's thread.
class QO_API CQoShareDownloadItem : public IQoDownloadItem
{
public:
    /// fileId is the peer's row, "" for a file that no collection has; size is -1 then.
    CQoShareDownloadItem(Key key,
                         const CQoCollPath& sharePath,
                         const CString& targetPath,
                         const CString& fileId,
                         std::int64_t size);

protected:
    bool getFileInfo(std::int64_t& size) override;
    bool download(IQoProgress* progress) override;

private:
    const CQoCollPath m_sharePath;
    const CString m_fileId;
    const std::int64_t m_size;
};
