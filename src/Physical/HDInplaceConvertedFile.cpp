#include "Physical/HDInplaceConvertedFile.h"

#include "QoColl/Db/Records/QoInplaceFileDbItem.h"
#include "QoColl/Tags/SimpleMusicTag.h"
#include "common/FilePathParts.h"
#include "common/MakeObject.h"

boost::shared_ptr<CHDInplaceConvertedFile> CHDInplaceConvertedFile::createInplaceConvertedFile(
    const boost::shared_ptr<QoInplaceFileDbItem>& item)
{
    return qo::makeObject<CHDInplaceConvertedFile>(
        QO_HERE(u".\\Physical\\HDInplaceConvertedFile"), Key(), item);
}

CHDInplaceConvertedFile::CHDInplaceConvertedFile(Key,
                                                 const boost::shared_ptr<QoInplaceFileDbItem>& item)
    : CQoCheckObject(OT_InplaceConverted), m_dbItem(item)
{
}

CHDInplaceConvertedFile::~CHDInplaceConvertedFile() = default;

CString CHDInplaceConvertedFile::toString(bool /*full*/) const
{
    return m_dbItem->path;
}

const CString& CHDInplaceConvertedFile::getPath() const noexcept
{
    return m_dbItem->path;
}

CString CHDInplaceConvertedFile::getFileName() const
{
    return qo::fileNameOf(m_dbItem->path);
}

const CString& CHDInplaceConvertedFile::getTitle() const noexcept
{
    return m_dbItem->title;
}

CString CHDInplaceConvertedFile::getExt() const
{
    return qo::fileExtOf(m_dbItem->path);
}

std::int64_t CHDInplaceConvertedFile::getSize() const noexcept
{
    return m_dbItem->size;
}

void CHDInplaceConvertedFile::getSimpleTag(SimpleMusicTag& tag) const
{
    qo::fillSimpleTag(*m_dbItem, tag);
}
