#include "core/collection/CollectionFiles.h"

#include "core/collection/CollectionListener.h"
#include "core/roots/RootLister.h"

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

std::vector<CString> filesAt(const CString& path, RootLister& lister)
{
    FileInfo info;
    if (fileSystem().info(path, Spelling::exact, info) != 0)
        return {};
    std::vector<CString> files;
    if (info.kind == FileKind::regular && !lister.isPassedOver(path))
        files.push_back(path);
    if (info.kind == FileKind::directory)
        lister.forEachFile(path,
                           [&files](const CString& file, const FileInfo&)
                           {
                               files.push_back(file);
                               return true;
                           });
    return files;
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

void releaseGone(CQoCollection& collection)
{
    // What left is found by its links, which are cut afterwards; that may move others.
    CollectionListener::tellAll();
    collection.releaseZombieObjects();
    CollectionListener::tellAll();
}

void forgetGone(CQoCollection& collection)
{
    releaseGone(collection);
    CLTManager::cleanUp(false);
}
} // namespace qo::host
