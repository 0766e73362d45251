#pragma once

#include <QoKernel/Collection.h>

namespace qo::host
{
/// Whether the file is another one than the record knows: what has another size or another write
/// time is, be the time an older one.
inline bool isOtherFile(const QoFileDbItem& record, const FileInfo& info)
{
    return info.size != record.size ||
           !CQoCollDbUtils::FILETIMEsAreEqual(info.modified, record.modifTime);
}
} // namespace qo::host
