#pragma once

#include "Physical/HDObject.h"
#include "QoColl/Db/Forward.h"
#include "types/String.h"

/// A file known only from its record, outside the tree and without a class by its extension.
class QO_API CHDOfflineFile final : public CHDObject
{
public:
    static boost::shared_ptr<CHDOfflineFile>
    createHDOfflineFile(const boost::shared_ptr<QoFileDbItem>& item);
    CHDOfflineFile(Key, const boost::shared_ptr<QoFileDbItem>& item);
    ~CHDOfflineFile() override;

    /// The path.
    CString toString(bool full) const override;
    /// No logical objects hang on it and nothing is held apart from the record.
    virtual void clearLTObjects();
    virtual void setFileInfo();

    const CString& getFileTitle() const noexcept { return m_fileTitle; }
    const boost::shared_ptr<QoFileDbItem>& getDbItem() const noexcept { return m_dbItem; }
    bool isVideo() const noexcept;

private:
    CString m_fileTitle;
    boost::shared_ptr<QoFileDbItem> m_dbItem;
};
