#include "Physical/HDDirectory.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoScanHost.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Collection/ScanLookup.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Devices/QoWPDManager.h"
#include "QoColl/Plugins/QoPluginManager.h"
#include "QoColl/Sharing/QoShareManager.h"
#include "common/FilePathParts.h"
#include "common/Log.h"
#include "common/QoProgress.h"

#include <memory>

// What lies elsewhere than on a disk: each source lists its files itself, as records. A source that
// fails in the middle, or is away, must not cost the collection the records of what it left out, so
// its folder is noted as unlisted.

namespace
{
using qo::log;
namespace level = qo::level;
namespace dbState = qo::dbState;

/// What a portable device says of a file, without what only the collection knows.
void takeDeviceFields(const QoFileDbItem& from, QoFileDbItem& to)
{
    to.createTime = from.createTime;
    to.modifTime = from.modifTime;
    to.artist = from.artist;
    to.album = from.album;
    to.title = from.title;
    to.genre = from.genre;
    to.trackNumber = from.trackNumber;
    to.year = from.year;
    to.lyrics = from.lyrics;
    to.lyricsLoaded = from.lyricsLoaded;
    to.size = from.size;
    to.duration = from.duration;
    to.bitrate = from.bitrate;
}
/// Whether a source that has not listed all can be reached: it left something out, and would do so
/// again in the next walk.
bool isStillThere(const CQoCollPath& rootDir, IQoProgress* progress)
{
    if (!rootDir.isWPD())
        return false;
    CQoWPDManager::ObjectInfo info;
    std::unique_ptr<qo::IPortableDevice> device;
    return rootDir.isEmpty()
               ? CWPDUtils::openDevice(rootDir.getDevice(), device, true) == qo::deviceResult::ok
               : CQoWPDManager::getPathInfo(rootDir, progress, info);
}
} // namespace

void CQoCollection::listRootDir(const CQoCollPath& rootDir,
                                qo::FoundFiles& found,
                                QoFileDbItemArray& listed,
                                IQoProgress* progress)
{
    const bool isWhole = rootDir.isLocalDisk() ? getFilesFromDisk(rootDir, found, progress)
                                               : listFarDir(rootDir, listed, progress);
    if (isWhole || progress->isCanceled())
        return;
    m_hasVanished = m_hasVanished || !isStillThere(rootDir, progress);
    noteUnlisted(rootDir,
                 rootDir.isUSB() ? u"The device is not connected"
                                 : u"Not all of its folders could be listed");
}

void CQoCollection::noteUnlisted(const CQoCollPath& dir, const CString& cause)
{
    m_unlistedDirs.Add(dir);
    const CString path = dir.toString();
    log(level::warning,
        u"CQoCollection::addFilesFromRootDirs : not all was listed, known files stay: %s",
        path);
    m_scanHost->failed(IQoScanHost::ETrouble::unlisted, path, cause);
}

bool CQoCollection::listFarDir(const CQoCollPath& rootDir,
                               QoFileDbItemArray& listed,
                               IQoProgress* progress)
{
    switch (rootDir.getType())
    {
    case CQoCollPath::wpd:
        return CQoWPDManager::getFilesFromDevice(
            rootDir, CQoWPDManager::deviceFiles, true, progress, listed);
    case CQoCollPath::physicalPlugin:
    case CQoCollPath::logicalPlugin:
        return CQoPluginManager::getFilesFromPlugin(CQoPluginManager::PI_Files,
                                                    rootDir,
                                                    CQoWPDManager::wholeDepth,
                                                    progress,
                                                    listed,
                                                    &m_fileDbItems);
    case CQoCollPath::share:
        return listShare(rootDir, listed, progress);
    default:
        return true;
    }
}

/// An extract has all that the peer offers, and the root folder may be one of his folders.
bool CQoCollection::listShare(const CQoCollPath& rootDir,
                              QoFileDbItemArray& listed,
                              IQoProgress* progress)
{
    bool isWhole = true;
    QoFileDbItemArray offered;
    CQoShareManager::getFilesFromShare(rootDir, progress, offered, &isWhole);
    for (const QoFileDbItemPtr& item : offered)
    {
        if (!CQoCollPath(item->path).isSubPathOf(rootDir))
            continue;
        // The peer says anything of its files.
        if (!CQoUtils::isMusicExt(qo::fileExtOf(item->path)))
            item->flags &= ~qo::fileFlag::mediaMask;
        listed.Add(item);
    }
    return isWhole;
}

bool CQoCollection::checkWpdFilePhysicalChanges(QoFileDbItemPtr& item,
                                                IQoProgress* progress,
                                                const QoFileDbItem* listed)
{
    QoFileDbItem asked;
    if (!listed)
    {
        CQoWPDManager::ObjectInfo info;
        if (!CQoWPDManager::getPathInfo(CQoCollPath(item->path), progress, info))
            return false;
        CQoWPDManager::copyInfo(info, asked);
    }
    const QoFileDbItem& now = listed ? *listed : asked;
    if (item->dbState != dbState::added)
    {
        qo::FileInfo seen;
        seen.size = now.size;
        seen.created = now.createTime;
        seen.modified = now.modifTime;
        if (!qo::isToBeRead(*item, seen, *m_scanHost))
            return false;
        log(level::flow,
            u"CQoCollection::checkWpdFilePhysicalChanges : file modified : %s",
            item->path);
        item->dbState = dbState::modified;
    }
    if (&now != item.get())
        takeDeviceFields(now, *item);
    return true;
}

bool CQoCollection::checkLogicalPluginFilePhysicalChanges(QoFileDbItemPtr& item, bool readTag)
{
    if (!readTag)
        return false;
    const CQoCollPath path(item->path);
    bool changed = false;
    const auto takeFromPath = [&](CString& field, const CString& value)
    {
        changed = changed || field != value;
        field = value;
    };
    takeFromPath(item->artist, path.getFirst());
    takeFromPath(item->album, path.getSecond());
    takeFromPath(item->title, path.getThird());
    return changed;
}

bool CQoCollection::checkPhysicalPluginFilePhysicalChanges(QoFileDbItemPtr&, bool)
{
    // Files of a physical plug-in are examined once, when they are listed.
    return false;
}

boost::shared_ptr<CHDDirectory> CQoCollection::createNewDeviceDir(const CQoCollPath& path,
                                                                  IQoProgress* progress)
{
    // On a portable device or a plug-in the folder must be made first.
    CString objectId;
    if (path.isWPD() && !CQoWPDManager::createDir(path, progress, objectId))
        return CHDDirectory::NullDir;
    if (path.isPhysicalPlugin() && !CQoPluginManager::createDir(path, progress))
        return CHDDirectory::NullDir;
    return findCreateDir(path, false);
}

void CQoCollection::createCollDirs(const QoFileDbItemArray& files, IQoProgress*)
{
    for (const QoFileDbItemPtr& item : files)
        findCreateDir(CQoCollPath(item->path), false);
}

bool CQoCollection::loadDeviceDirs(const CString& deviceId,
                                   CQoCollPath::EDeviceType type,
                                   int depth,
                                   IQoProgress* progress)
{
    const CQoCollPath path(type, deviceId);
    QoFileDbItemArray found;
    if (path.isWPD())
    {
        log(level::flow, u"CQoCollection::loadDeviceDirs : getting dirs from wpd %s", deviceId);
        (void)CQoWPDManager::getFilesFromDevice(
            path, CQoWPDManager::deviceFolders, true, progress, found);
        log(level::flow, u"CQoCollection::loadDeviceDirs : creating data for wpd %s", deviceId);
    }
    else if (path.isPhysicalPlugin())
    {
        log(level::flow, u"CQoCollection::loadDeviceDirs : getting dirs from plugin %s", deviceId);
        (void)CQoPluginManager::getFilesFromPlugin(
            CQoPluginManager::PI_Folders, path, depth, progress, found);
        log(level::flow, u"CQoCollection::loadDeviceDirs : creating data for plugin %s", deviceId);
    }
    findCreateDir(path, true);
    createCollDirs(found, progress);
    return false;
}

bool CQoCollection::loadDeviceSubDirs(const CString& path, int depth, IQoProgress* progress)
{
    const CQoCollPath parsed(path);
    QoFileDbItemArray found;
    if (parsed.isPhysicalPlugin())
    {
        log(level::flow, u"CQoCollection::loadDeviceSubDirs : getting dirs from plugin %s", path);
        (void)CQoPluginManager::getFilesFromPlugin(
            CQoPluginManager::PI_Folders, parsed, depth, progress, found);
        log(level::flow, u"CQoCollection::loadDeviceSubDirs : creating data for plugin %s", path);
    }
    createCollDirs(found, progress);
    return false;
}
