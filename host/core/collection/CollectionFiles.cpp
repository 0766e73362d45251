#include "core/collection/CollectionFiles.h"

#include <QoKernel/Logical.h>

#include <algorithm>

namespace qo::host
{
std::u16string pathKey(const CString& path)
{
    CString text = path;
    text.MakeLower();
    return std::u16string(text.view());
}

CString rebased(const CString& path, const CString& from, const CString& to)
{
    CQoCollPath moved(to);
    for (const CString& name : CQoCollPath(path).relativeTo(CQoCollPath(from)))
        moved = moved.child(name);
    return moved.toString();
}

bool hasUnsaved(const CQoCollection& collection)
{
    QoFileDbItemArray records;
    collection.copyFiles(records);
    return std::any_of(records.begin(),
                       records.end(),
                       [](const QoFileDbItemPtr& item)
                       { return item->dbState != dbState::unchanged; });
}

void forgetGone(CQoCollection& collection)
{
    collection.releaseZombieObjects();
    CLTManager::cleanUp(false);
}
} // namespace qo::host
