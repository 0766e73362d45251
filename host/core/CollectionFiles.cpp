#include "core/CollectionFiles.h"

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

bool isOtherFile(const QoFileDbItem& record, const FileInfo& info)
{
    return info.size != record.size ||
           !CQoCollDbUtils::FILETIMEsAreEqual(info.modified, record.modifTime);
}
} // namespace qo::host
