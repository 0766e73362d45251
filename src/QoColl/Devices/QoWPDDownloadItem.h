#pragma once

#include "QoColl/Plugins/QoDownloadItem.h"

/// Fetches a file from a portable device. The source is its path in the collection.
class QO_API CQoWPDDownloadItem : public IQoDownloadItem
{
public:
    CQoWPDDownloadItem(Key key, const CString& sourcePath, const CString& targetPath);

protected:
    bool getFileInfo(std::int64_t& size) override;
    bool download(IQoProgress* progress) override;
};
