#include "QoColl/Collection/FileFinder.h"

#include "common/FileUtils.h"
#include "platform/FolderAhead.h"
#include "platform/FolderErrors.h"
#include "platform/FolderNames.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"

#include <utility>

namespace QoKernel
{
namespace
{
/// Whether a time is within the limits that the flags switch on.
bool isWithin(const FILETIME& time,
              int flags,
              int minFlag,
              const FILETIME& min,
              int maxFlag,
              const FILETIME& max)
{
    return !((flags & minFlag) && qo::toTicks(time) < qo::toTicks(min)) &&
           !((flags & maxFlag) && qo::toTicks(time) > qo::toTicks(max));
}

/// Without the dot; "" for a name without one.
CString extensionOf(const CString& name)
{
    const int dot = name.ReverseFind(u'.');
    return dot < 0 ? CString() : name.Mid(dot + 1);
}

bool isDots(const CString& name)
{
    return name == u"." || name == u"..";
}

/// The bit of CFileFilter::ETypes for an entry; 0 for devices and the like, which no filter by type
/// accepts.
int typeBits(const qo::DirEntry& entry)
{
    if (isDots(entry.name))
        return CFileFilter::dotEntries;
    switch (entry.info.kind)
    {
    case qo::FileKind::regular:
        return CFileFilter::plainFiles;
    case qo::FileKind::directory:
        return CFileFilter::directories;
    default:
        return 0;
    }
}
} // namespace

bool CFileFilter::takes(const qo::DirEntry& entry) const
{
    if (m_flags == everything)
        return true;
    if (m_flags == everythingButDots)
        return !isDots(entry.name);
    const qo::FileInfo& info = entry.info;
    if ((m_flags & testType) && m_typeMask != anyType && !(m_typeMask & typeBits(entry)))
        return false;
    if ((m_flags & testExtension) && extensionOf(entry.name).CompareNoCase(m_extension) != 0)
        return false;
    if ((m_flags & testAttributes) && !(info.attributes & m_attributes))
        return false;
    if (((m_flags & testMinSize) && info.size < m_minSize) ||
        ((m_flags & testMaxSize) && info.size > m_maxSize))
        return false;
    return isWithin(
               info.created, m_flags, testMinCreated, m_minCreated, testMaxCreated, m_maxCreated) &&
           isWithin(info.accessed,
                    m_flags,
                    testMinAccessed,
                    m_minAccessed,
                    testMaxAccessed,
                    m_maxAccessed) &&
           isWithin(info.modified,
                    m_flags,
                    testMinModified,
                    m_minModified,
                    testMaxModified,
                    m_maxModified);
}

bool CFileFinder::findFirst(const ScanOptions& options, const CFileFilter& filter)
{
    m_filter = filter;
    m_recursive = options.recursive;
    m_pendingDirs.RemoveAll();
    m_nextPending = 0;
    m_visited.clear();
    m_ownFolders = qo::specialFolders().ownFolders();
    m_entries.clear();
    m_next = 0;
    qo::FileInfo start;
    if (qo::fileSystem().info(options.folder, qo::Spelling::anyCase, start) == 0)
        m_visited.emplace(start.device, start.inode);
    return listFolder(options.folder) && findNext();
}

bool CFileFinder::listFolder(const CString& folder)
{
    m_baseFolder = qo::addBackslash(folder);
    m_next = 0;
    qo::FolderAhead* const ahead = qo::folderAhead();
    const int error =
        ahead ? ahead->list(folder, m_entries) : qo::fileSystem().list(folder, m_entries);
    if (qo::FolderErrors* const errors = error != 0 ? qo::folderErrors() : nullptr)
        errors->byFolder.insert_or_assign(folder, error);
    // A listing that fails half-way still gives what it found.
    if (error != 0 && m_entries.empty())
        return false;
    // Real folders come before links, whatever their names: a file then has the path that remains
    // when the link is removed.
    m_isNew.assign(m_entries.size(), false);
    for (const bool links : {false, true})
    {
        for (std::size_t i = 0; i < m_entries.size(); ++i)
        {
            const qo::FileInfo& info = m_entries[i].info;
            if (info.kind == qo::FileKind::directory && info.isLink == links &&
                !isPassedOver(m_entries[i].name))
                m_isNew[i] = m_visited.emplace(info.device, info.inode).second;
        }
    }
    return true;
}

bool CFileFinder::isPassedOver(const CString& name) const
{
    return qo::isPassedOver(m_ownFolders, m_baseFolder, name);
}

bool CFileFinder::findNext()
{
    for (;;)
    {
        while (m_next < m_entries.size())
        {
            const bool isNewFolder = m_isNew[m_next];
            const qo::DirEntry& entry = m_entries[m_next++];
            if (isNewFolder)
                m_pendingDirs.Add(m_baseFolder + entry.name);
            if (m_filter.takes(entry))
                return true;
        }
        do
        {
            if (!m_recursive || m_nextPending >= m_pendingDirs.GetSize())
                return false;
        } while (!listFolder(std::exchange(m_pendingDirs[m_nextPending++], CString())));
    }
}

CString CFileFinder::getFilePath() const
{
    return m_baseFolder + current().name;
}

CString CFileFinder::getFileExt() const
{
    return extensionOf(current().name);
}
} // namespace QoKernel
