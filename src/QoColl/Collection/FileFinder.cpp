#include "QoColl/Collection/FileFinder.h"

#include "common/FileUtils.h"
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
    m_lister = options.lister;
    m_pendingDirs.clear();
    m_pendingLinks.clear();
    m_visited.clear();
    if (options.notEntered)
        m_visited = *options.notEntered;
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
    const int error =
        m_lister ? m_lister->list(folder, m_entries) : qo::fileSystem().list(folder, m_entries);
    // A listing that breaks off still delivers what it found.
    if (error != 0 && m_entries.empty())
        return false;
    for (const qo::DirEntry& entry : m_entries)
    {
        if (entry.info.kind != qo::FileKind::directory || isPassedOver(entry.name))
            continue;
        const Identity identity(entry.info.device, entry.info.inode);
        if (entry.info.isLink)
            m_pendingLinks.push_back({m_baseFolder + entry.name, identity});
        else if (m_visited.insert(identity).second)
            m_pendingDirs.push_back(m_baseFolder + entry.name);
    }
    return true;
}

bool CFileFinder::isPassedOver(const CString& name) const
{
    return qo::isPassedOver(m_ownFolders, m_baseFolder, name);
}

bool CFileFinder::findNext()
{
    do
    {
        while (m_next < m_entries.size())
        {
            if (m_filter.takes(m_entries[m_next++]))
                return true;
        }
    } while (listNext());
    return false;
}

bool CFileFinder::listNext()
{
    while (m_recursive)
    {
        while (!m_pendingDirs.empty())
        {
            const CString folder = std::move(m_pendingDirs.front());
            m_pendingDirs.pop_front();
            if (listFolder(folder))
                return true;
        }
        if (m_pendingLinks.empty())
            return false;
        const Link link = std::move(m_pendingLinks.front());
        m_pendingLinks.pop_front();
        if (m_visited.insert(link.target).second)
            m_pendingDirs.push_back(link.path);
    }
    return false;
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
