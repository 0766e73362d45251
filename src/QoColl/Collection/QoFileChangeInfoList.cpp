#include "QoColl/Collection/QoFileChangeInfoList.h"

#include "common/CollPath.h"
#include "common/FilePathParts.h"
#include "common/MakeObject.h"

#include <memory>

namespace
{
using Info = CQoFileChangeInfo;

/// A form in which equal paths have equal texts, but for case.
CString normalForm(const CString& path)
{
    const bool isNormal = path.GetLength() > 2 && path[2] == u'\\' &&
                          CQoCollPath::typeOf(path) == CQoCollPath::drive &&
                          !qo::plainFileName(path.view()).empty();
    return isNormal ? path : CQoCollPath(path).toString();
}

[[noreturn]] void throwEntryNotMade()
{
    constexpr int line = 106; // hosts know this position from their logs
    qo::throwOutOfMemory({u".\\QoColl\\QoCollUtils", line});
}

std::unique_ptr<Info> newEntry(Info::EAction action, const CString& path)
try
{
    auto info = std::make_unique<Info>();
    info->m_action = action;
    info->m_path = path;
    return info;
}
catch (const std::bad_alloc&)
{
    throwEntryNotMade();
}
} // namespace

CQoFileChangeInfoList::CQoFileChangeInfoList() = default;
CQoFileChangeInfoList::~CQoFileChangeInfoList() = default;

Info* CQoFileChangeInfoList::addVelmoraFile(const CString& path, const QoFileDbItemPtr& item)
{
    auto info = newEntry(Info::addVelmoraFile, path);
    info->m_dbItem = item;
    return addChangeInfo(info.release(), false);
}

Info* CQoFileChangeInfoList::addFileToScan(const CString& path,
                                           Info::EScanFileType type,
                                           Info::ESetImportedAction importedAction)
{
    auto info = newEntry(Info::scan, path);
    info->m_scanFileType = type;
    info->m_importedAction = importedAction;
    return addChangeInfo(info.release(), false);
}

Info* CQoFileChangeInfoList::addFileToMove(const CString& path, const CString& newPath, bool rescan)
{
    auto info = newEntry(Info::move, path);
    info->m_newPath = newPath;
    info->m_rescan = rescan;
    return addChangeInfo(info.release(), false);
}

Info* CQoFileChangeInfoList::addFileToDelete(const CString& path)
{
    return addChangeInfo(newEntry(Info::remove, path).release(), false);
}

Info* CQoFileChangeInfoList::addChangeInfo(Info* info, bool copy)
try
{
    std::unique_ptr<Info> owned(copy ? nullptr : info);
    const int index = indexOf(info->m_path);
    if (index >= 0)
    {
        Info* const known = GetAt(index);
        // A caller passes an entry that is in the list already: it must not be deleted.
        if (known == info)
        {
            owned.release();
            return known;
        }
        *known = *info;
        return known;
    }
    if (copy)
        owned = std::make_unique<Info>(*info);
    // The index is extended at the next look-up, so a list that is only filled never builds it.
    Base::Add(owned.get());
    return owned.release();
}
catch (const std::bad_alloc&)
{
    throwEntryNotMade();
}

int CQoFileChangeInfoList::indexOf(const CString& path) const
{
    // A caller through the base class may have shortened the list.
    if (m_indexed > GetSize())
        dropIndexes();
    while (m_indexed < GetSize())
    {
        m_indexes.emplace(normalForm(GetAt(m_indexed)->m_path), m_indexed);
        ++m_indexed;
    }
    const auto found = m_indexes.find(normalForm(path));
    return found == m_indexes.end() ? -1 : found->second;
}

void CQoFileChangeInfoList::dropIndexes() const noexcept
{
    m_indexes.clear();
    m_indexed = 0;
}

Info* CQoFileChangeInfoList::findChangeInfo(const CString& path) const
{
    const int index = indexOf(path);
    return index < 0 ? nullptr : GetAt(index);
}

Info::EAction CQoFileChangeInfoList::getAction(const CString& path) const
{
    const Info* const info = findChangeInfo(path);
    return info ? info->m_action : Info::noAction;
}

int CQoFileChangeInfoList::Add(Info* info)
{
    return indexOf(addChangeInfo(info, false)->m_path);
}

int CQoFileChangeInfoList::Append(const CQoFileChangeInfoList& other)
{
    const int first = GetSize();
    for (Info* info : other)
        addChangeInfo(info, true);
    return first;
}

void CQoFileChangeInfoList::Copy(const CQoFileChangeInfoList& other)
{
    if (this == &other)
        return;
    clear();
    Append(other);
}

int CQoFileChangeInfoList::addSorted(Info* info, Compare cmp, bool unique)
{
    const int index = indexOf(info->m_path);
    if (index >= 0)
    {
        addChangeInfo(info, false);
        return index;
    }
    dropIndexes();
    return Base::addSorted(info, cmp, unique);
}

bool CQoFileChangeInfoList::removeBinary(const Info* info, Compare cmp)
{
    dropIndexes();
    return Base::removeBinary(info, cmp);
}

bool CQoFileChangeInfoList::remove(const Info* info)
{
    dropIndexes();
    return Base::remove(info);
}

void CQoFileChangeInfoList::clear()
{
    dropIndexes();
    Base::clear();
}

void CQoFileChangeInfoList::sort(SortCompare cmp, void* context)
{
    dropIndexes();
    Base::sort(cmp, context);
}

void CQoFileChangeInfoList::RemoveAt(int index)
{
    dropIndexes();
    Base::RemoveAt(index);
}
