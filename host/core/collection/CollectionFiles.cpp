#include "core/collection/CollectionFiles.h"

#include "core/load/UnreadFiles.h"

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

void forEachFile(const CString& folder,
                 const std::function<bool(const CString& path, const FileInfo& info)>& visit)
{
    QoKernel::CFileFilter filter;
    filter.m_flags = QoKernel::CFileFilter::testType;
    filter.m_typeMask = QoKernel::CFileFilter::plainFiles;
    QoKernel::CFileFinder finder;
    for (bool any = finder.findFirst({folder, true}, filter); any; any = finder.findNext())
    {
        if (!visit(finder.getFilePath(), finder.getFileInfo()))
            return;
    }
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

int dropVanished(CQoCollection& collection,
                 const std::function<bool(const CString&)>& wasWalked,
                 const std::function<bool()>& isTrusted)
{
    QoFileDbItemArray records;
    collection.copyFiles(records);
    CQoFileChangeInfoList gone;
    for (const QoFileDbItemPtr& record : records)
    {
        // A file that was looked at has a write time.
        if (CQoCollDbUtils::IsNullFILETIME(record->modifTime) &&
            CQoCollPath(record->path).isLocalDisk() && wasWalked(record->path) &&
            isKnownToBeGone(record->path))
            gone.addFileToDelete(record->path)->m_keepEmptyDirs = true;
    }
    // In this order: with a folder that goes away all in it seems to have gone.
    if (gone.IsEmpty() || !isTrusted())
        return 0;
    CDummyProgress progress; // what has begun comes to its end
    collection.applyQoFileChanges(gone, {}, &progress);
    forgetGone(collection);
    return gone.GetSize();
}

bool isOtherFile(const QoFileDbItem& record, const FileInfo& info)
{
    return info.size != record.size ||
           !CQoCollDbUtils::FILETIMEsAreEqual(info.modified, record.modifTime);
}

void readIfOther(const QoFileDbItemPtr& record, const CString& path)
{
    FileInfo info;
    if (record && fileSystem().info(path, Spelling::exact, info) == 0 && isOtherFile(*record, info))
        CQoCollDbUtils::SetNullFILETIME(record->modifTime);
}
} // namespace qo::host
