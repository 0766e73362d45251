#pragma once

#include "Physical/QoCheckObject.h"
#include "QoColl/Db/Records/Forward.h"
#include "QoColl/Tags/Forward.h"

#include <cstdint>

/// A file that was converted in its own folder ("in place"), with its record; not part of a tree.
class QO_API CHDInplaceConvertedFile final : public CQoCheckObject
{
    struct Key
    {
        explicit Key() = default;
    };

public:
    static boost::shared_ptr<CHDInplaceConvertedFile>
    createInplaceConvertedFile(const boost::shared_ptr<QoInplaceFileDbItem>& item);
    CHDInplaceConvertedFile(Key, const boost::shared_ptr<QoInplaceFileDbItem>& item);
    ~CHDInplaceConvertedFile() override;

    /// The path.
    CString toString(bool full) const override;

    const CString& getPath() const noexcept;
    /// The last component of the path, with extension.
    CString getFileName() const;
    /// The record's title.
    const CString& getTitle() const noexcept;
    /// Without dot.
    CString getExt() const;
    std::int64_t getSize() const noexcept;
    void getSimpleTag(SimpleMusicTag& tag) const;
    const boost::shared_ptr<QoInplaceFileDbItem>& getDbItem() const noexcept { return m_dbItem; }

private:
    boost::shared_ptr<QoInplaceFileDbItem> m_dbItem;
};
