#include "Physical/HDDirectory.h"
#include "QoColl/Collection/FolderOfFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoScanHost.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Collection/ScanLookup.h"
#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Devices/QoWPDManager.h"
#include "QoColl/Plugins/QoPluginManager.h"
#include "QoColl/Sharing/QoShareManager.h"
#include "common/CountedObject.h"
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

/// Looks files that a plug-in lists up among the records, and asks the host about known ones.
class PluginScan final : public IPluginScan
{
public:
    PluginScan(const QoFileDbItemArray& records, IQoScanHost& host)
        : m_records(records), m_host(host)
    {
    }
    bool isToBeRead(const QoFileDbItem& listed, bool& isKnown) override
    {
        int index = 0;
        isKnown = CQoCollDbUtils::findQoDbFileItem(listed.path, m_records, index);
        if (!isKnown)
            return true;
        const QoFileDbItem& known = *m_records[index];
        qo::FileInfo seen;
        // A plug-in says no times, and not always a size.
        seen.size = listed.size > 0 ? listed.size : known.size;
        seen.created = known.createTime;
        seen.modified = known.modifTime;
        return qo::isToBeRead(known, seen, m_host);
    }
    void notRead(const CString& path) override
    {
        m_host.failed(IQoScanHost::ETrouble::readTag, path, u"it could not be fetched");
    }

private:
    const QoFileDbItemArray& m_records;
    IQoScanHost& m_host;
};

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
    {
        PluginScan scan(m_fileDbItems, *m_scanHost);
        return CQoPluginManager::getFilesFromPlugin(CQoPluginManager::PI_Files,
                                                    rootDir,
                                                    CQoWPDManager::wholeDepth,
                                                    progress,
                                                    listed,
                                                    &scan);
    }
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
    qo::FolderOfFile folder;
    bool isBelow = false;
    for (const QoFileDbItemPtr& item : offered)
    {
        if (folder.moveTo(item->path))
            isBelow = folder.path().isSubPathOrSame(rootDir);
        if (!isBelow)
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
        // A device that does not say the time of a track could not read its tags either.
        seen.modified =
            CQoCollDbUtils::IsNullFILETIME(now.modifTime) ? item->modifTime : now.modifTime;
        if (!qo::isToBeRead(*item, seen, *m_scanHost))
            return false;
        log(level::flow,
            u"CQoCollection::checkWpdFilePhysicalChanges : file modified : %s",
            item->path);
        item->dbState = dbState::modified;
    }
    const bool isSilent = CQoCollDbUtils::IsNullFILETIME(now.modifTime) &&
                          !CQoCollDbUtils::IsNullFILETIME(now.createTime);
    if (isSilent && item->dbState == dbState::modified)
    {
        // Its tags may come with the next scan, and until then the known ones stay.
        item->size = now.size;
        item->modifTime = now.modifTime;
    }
    else if (&now != item.get())
        takeDeviceFields(now, *item);
    if (isSilent)
        m_scanHost->failed(
            IQoScanHost::ETrouble::readTag, item->path, u"the device does not say what is in it");
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

/// Files of a physical plug-in are examined once, when they are listed first; a later listing has
/// the tags of those that the host wanted read again.
bool CQoCollection::checkPhysicalPluginFilePhysicalChanges(QoFileDbItemPtr& item,
                                                           bool readTag,
                                                           const QoFileDbItem* listed)
{
    if (!readTag || !listed || listed == item.get() || listed->dbState != dbState::modified)
        return false;
    log(level::flow,
        u"CQoCollection::checkPhysicalPluginFilePhysicalChanges : file modified : %s",
        item->path);
    const bool hasTags = !listed->artist.IsEmpty() || !listed->album.IsEmpty() ||
                         !listed->title.IsEmpty() || !listed->genre.IsEmpty();
    // A file that has no tag at the source any more keeps the known one, as a file on a disk does.
    if (hasTags)
        CQoCollDbUtils::copyTags(qo::makeCounted<QoFileDbItem>(*listed), item);
    item->size = listed->size;
    item->dbState = dbState::modified;
    return true;
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
