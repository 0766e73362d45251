#pragma once

#include "Physical/HDObject.h"
#include "QoColl/Db/Records/Forward.h"
#include "types/String.h"

/// A file that is known only from its record, such as one on a device that is away: it is not part
/// of the tree, and its class does not depend on its extension.
class QO_API CHDOfflineFile final : public CHDObject
{
public:
    static boost::shared_ptr<CHDOfflineFile>
    createHDOfflineFile(const boost::shared_ptr<QoFileDbItem>& item);
    CHDOfflineFile(Key, const boost::shared_ptr<QoFileDbItem>& item);
    ~CHDOfflineFile() override;

    /// The path.
    CString toString(bool full) const override;
    /// Both do nothing: there are no logical objects, and nothing is held beside the record.
    virtual void clearLTObjects();
    virtual void setFileInfo();

    const CString& getFileTitle() const noexcept { return m_fileTitle; }
    const boost::shared_ptr<QoFileDbItem>& getDbItem() const noexcept { return m_dbItem; }
    bool isVideo() const noexcept;

private:
    CString m_fileTitle;
    boost::shared_ptr<QoFileDbItem> m_dbItem;
};
