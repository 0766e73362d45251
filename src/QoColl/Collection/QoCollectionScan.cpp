#include "KVTagLib/Tags.h"
#include "KVTagLib/TagsAhead.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/FileFinder.h"
#include "QoColl/Collection/FolderOfFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoScanHost.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Collection/RecordAhead.h"
#include "QoColl/Collection/ScanLookup.h"
#include "QoColl/Collection/VelmoraId.h"
#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Devices/QoUSBManager.h"
#include "QoColl/Sharing/QoDbExtract.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "common/FileUtils.h"
#include "common/Log.h"
#include "common/MakeObject.h"
#include "common/Paths.h"
#include "common/QoProgress.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "types/CharClass.h"

#include <algorithm>
#include <cerrno>
#include <tuple>

// The walk of the root folders, and the comparison of what it found with the records.
//
// Change detection: a known file is read again when its write time is later than the stored one;
// size and creation time are not compared. Stored 12:00:
//
//   on the disk 12:00, larger     not read (the content changed without a new write time)
//   on the disk 11:00             not read (an older copy was put back)
//   on the disk 12:01             read, and the record is modified

namespace
{
using qo::log;
namespace level = qo::level;
namespace dbState = qo::dbState;

/// Whether the stored file still exists beside a found one whose name differs in case alone.
bool isTwin(const QoFileDbItemPtr& stored, const CString& found)
{
    qo::FileInfo info;
    return stored->path != found &&
           qo::fileSystem().info(CQoUtils::getRealPath(stored->path), qo::Spelling::exact, info) ==
               0;
}

/// Notes the folders that could not be listed to their end. One that went meanwhile hides nothing.
class NotingLister final : public qo::IFolderLister
{
public:
    explicit NotingLister(qo::IFolderLister& inner) : m_inner(inner) {}
    int list(const CString& folder, std::vector<qo::DirEntry>& entries) override
    {
        const int error = m_inner.list(folder, entries);
        if (error != 0 && error != ENOENT && error != ENOTDIR)
            failed.emplace_back(folder, error);
        return error;
    }

    std::vector<std::pair<CString, int>> failed;

private:
    qo::IFolderLister& m_inner;
};
/// A stick on which more folders fail counts as unlisted altogether, which is quicker to look up.
constexpr std::size_t mostFailedFolders = 100;

/// The path of a device contains its id instead of its present drive.
CQoCollPath onDevice(const CQoCollPath& rootDir, const CString& real)
{
    return {CQoCollPath::usb, rootDir.getDevice(), CQoCollPath(real).getComponents()};
}

/// A record with a path and nothing else.
QoFileDbItemPtr makeRecord(const CString& path)
{
    auto item = qo::makeObject<QoFileDbItem>(QO_HERE(u".\\QoColl\\Collection\\QoCollection"));
    item->path = path;
    return item;
}

/// Uses the stored record for a file that was found. If the file was renamed in case alone, the
/// record gets the spelling of the disk, since that is the one that can be opened; if its write
/// time is different too, it is another file under that name and must be read.
QoFileDbItemPtr takeOver(const QoFileDbItemPtr& stored, const qo::FoundFile& found)
{
    const bool sameSpelling = stored->path == found.path;
    // Another holder of the record must still see it as deleted, so it gets a copy.
    const bool isShared = stored.use_count() > 1;
    const QoFileDbItemPtr item =
        sameSpelling && !isShared ? stored
                                  : qo::makeObject<QoFileDbItem>(
                                        QO_HERE(u".\\QoColl\\Collection\\QoCollection"), *stored);
    item->dbState = sameSpelling ? dbState::unchanged : dbState::modified;
    if (sameSpelling)
        return item;
    item->path = found.path;
    if (!CQoCollDbUtils::FILETIMEsAreEqual(found.info.modified, item->modifTime))
        CQoCollDbUtils::SetNullFILETIME(item->modifTime);
    return item;
}

bool hasSameShareTags(const QoFileDbItem& a, const QoFileDbItem& b)
{
    const auto fields = [](const QoFileDbItem& record)
    {
        return std::tuple(record.clipUid,
                          record.artist,
                          record.title,
                          record.album,
                          record.genre,
                          record.trackNumber,
                          record.year,
                          record.size,
                          record.duration,
                          record.flags,
                          record.bitrate,
                          qo::toTicks(record.createTime));
    };
    return fields(a) == fields(b);
}

/// Whether a known file is still there. Files that are not on a disk count as present: their source
/// lists them itself.
bool existsOnDisk(const CQoCollPath::EDeviceType type, const CString& path)
{
    switch (type)
    {
    case CQoCollPath::drive:
    case CQoCollPath::network:
    case CQoCollPath::usb:
    {
        const CString real = CQoUtils::getRealPath(path);
        return !real.IsEmpty() && qo::fileSystem().exists(real);
    }
    case CQoCollPath::wpd:
    case CQoCollPath::physicalPlugin:
    case CQoCollPath::logicalPlugin:
    case CQoCollPath::share:
        return true;
    default:
        return false;
    }
}
} // namespace

struct CQoCollection::TakeIn
{
    CQoFileChangeInfo::ESetImportedAction action;
    qo::ScanLookup known;
    qo::ScanLookup inFiles;
    QoFileDbItemArray& files;
    IQoProgress* progress;
};

bool CQoCollection::getFilesFromDisk(const CQoCollPath& rootDir,
                                     qo::FoundFiles& found,
                                     IQoProgress* progress)
{
    const CString rootReal = CQoUtils::getRealPath(rootDir);
    if (rootReal.IsEmpty() || (rootDir.isUSB() && !theQoUSBManager.isConnected(rootDir)))
        return false;
    QoKernel::CFileFilter filter;
    filter.m_flags = QoKernel::CFileFilter::testType;
    filter.m_typeMask = QoKernel::CFileFilter::plainFiles;
    QoKernel::CFileFinder finder;
    NotingLister lister(*m_scanHost);
    for (bool any = finder.findFirst({rootReal, true, &lister}, filter); any;
         any = finder.findNext())
    {
        if (progress->isCanceled())
            return true;
        CString path = finder.getFilePath();
        if (rootDir.isUSB())
            path = onDevice(rootDir, path).toString();
        found.push_back({std::move(path), finder.getFileInfo()});
    }
    if (!rootDir.isUSB())
        return true;
    // A stick that was pulled out in the middle has shown a part of its files.
    if (!theQoUSBManager.isConnected(rootDir))
        return false;
    if (lister.failed.size() > mostFailedFolders)
        lister.failed = {{rootReal, lister.failed.front().second}};
    for (const auto& [folder, error] : lister.failed)
        noteUnlisted(onDevice(rootDir, folder), qo::errorText(error));
    return true;
}

void CQoCollection::checkPhysicalChanges(QoFileDbItemArray& files,
                                         CQoFileChangeInfo::ESetImportedAction action,
                                         IQoProgress* progress,
                                         bool knownWereMarked)
{
    log(level::flow, u"CQoCollection::checkPhysicalChanges : begin");
    progress->setStage(IQoProgress::stageScan);
    progress->setRange(IQoProgress::rangeUnknown, 0);
    qo::CollPathArray dirs;
    getRootDirs(dirs);
    addFilesFromRootDirs(dirs, action, files, progress);
    // What was never scanned to its end is scanned by the next load.
    if (!m_hasVanished || !CQoCollDbUtils::IsNullFILETIME(m_collInfo.scanTime))
        setScanned();
    progress->setStage(IQoProgress::stageCheck);
    progress->setRange(IQoProgress::rangeKnown, m_fileDbItems.GetSize());
    qo::FolderOfFile folder;
    bool isInCollection = false;
    const qo::RecordAhead ahead(m_fileDbItems);
    int index = 0;
    for (QoFileDbItemPtr& item : m_fileDbItems)
    {
        ahead.announce(index++);
        if (progress->isCanceled())
            break;
        progress->step(1);
        progress->setCurrentItem(item->path.text(), IQoProgress::itemFilePath);
        if (folder.moveTo(item->path))
            isInCollection = isDirInCollection(folder.path());
        if (!isInCollection)
            markGone(item,
                     files,
                     u"CQoCollection::checkPhysicalChanges : file not in root dirs, will be "
                     u"deleted from db: %s");
        // If every record was marked before the walk, one that is no longer marked was examined by
        // it.
        else if (item->dbState == dbState::unchanged && !knownWereMarked)
            checkKnownFile(item, files, progress);
    }
    log(level::flow, u"CQoCollection::checkPhysicalChanges : end");
}

void CQoCollection::setScanned()
{
    m_collInfo.scanTime = qo::systemClock().now();
}

/// Marks the records that lie below no root folder as deleted.
void CQoCollection::dropStrangers(const QoFileDbItemArray& files)
{
    qo::FolderOfFile folder;
    bool isInCollection = false;
    for (const QoFileDbItemPtr& item : files)
    {
        if (folder.moveTo(item->path))
            isInCollection = isDirInCollection(folder.path());
        if (!isInCollection)
            item->dbState = dbState::deleted;
    }
}

/// Every record that the walk did not meet is marked as deleted by then.
void CQoCollection::keepUnmetFiles()
{
    const auto isUnlisted = [&](const QoFileDbItem& item)
    {
        const CQoCollPath path(item.path);
        return std::any_of(m_unlistedDirs.begin(),
                           m_unlistedDirs.end(),
                           [&](const CQoCollPath& dir) { return path.isSubPathOf(dir); });
    };
    for (const QoFileDbItemPtr& item : m_fileDbItems)
    {
        if (item->dbState == dbState::deleted &&
            ((!m_unlistedDirs.IsEmpty() && isUnlisted(*item)) || !m_scanHost->isGone(*item)))
            item->dbState = dbState::unchanged;
    }
}

void CQoCollection::markGone(QoFileDbItemPtr& item,
                             QoFileDbItemArray& files,
                             const char16_t* message)
{
    log(level::flow, message, item->path);
    item->dbState = dbState::deleted;
    CQoCollDbUtils::addQoDbFileItem(item, files, true);
}

void CQoCollection::checkKnownFile(QoFileDbItemPtr& item,
                                   QoFileDbItemArray& files,
                                   IQoProgress* progress)
{
    if (!existsOnDisk(CQoCollPath::typeOf(item->path), item->path))
        markGone(item,
                 files,
                 u"CQoCollection::checkPhysicalChanges : file not found on disk, will be deleted "
                 u"from db: %s");
    else if (checkUpdateFileInfo(item, progress, true, nullptr))
        CQoCollDbUtils::addQoDbFileItem(item, files, true);
}

void CQoCollection::addFilesFromRootDirs(const qo::CollPathArray& dirs,
                                         CQoFileChangeInfo::ESetImportedAction action,
                                         QoFileDbItemArray& files,
                                         IQoProgress* progress)
{
    progress->setRange(IQoProgress::rangeUnknown, 0);
    m_unlistedDirs.RemoveAll();
    m_hasVanished = false;
    qo::FoundFiles found;
    QoFileDbItemArray listed;
    for (const CQoCollPath& dir : dirs)
    {
        if (progress->isCanceled())
            break;
        listRootDir(dir, found, listed, progress);
    }
    progress->setStage(IQoProgress::stageCheck);
    progress->setRange(IQoProgress::rangeKnown, static_cast<int>(found.size()) + listed.GetSize());
    TakeIn to{action, qo::ScanLookup(m_fileDbItems), qo::ScanLookup(files), files, progress};
    for (const qo::FoundFile& file : found)
    {
        if (progress->isCanceled())
            return;
        takeFound(file, {}, to);
    }
    for (const QoFileDbItemPtr& item : listed)
    {
        if (progress->isCanceled())
            return;
        qo::FoundFile file{item->path, {}};
        file.info.modified = item->modifTime;
        takeFound(file, item, to);
    }
}

void CQoCollection::takeFound(const qo::FoundFile& file, const QoFileDbItemPtr& listed, TakeIn& to)
{
    to.progress->step(1);
    to.progress->setCurrentItem(file.path.text(), IQoProgress::itemFilePath);
    int index = 0;
    const bool isKnown = to.known.find(file.path, index);
    QoFileDbItemPtr item = isKnown ? recordOfKnown(file, listed, index)
                                   : addRecord(file.path, listed, to.action, index);
    if (!item)
        return;
    checkUpdateFileInfo(item, to.progress, true, &file.info, listed.get());
    if (!to.inFiles.find(item->path, index))
        to.files.InsertAt(index, item);
}

QoFileDbItemPtr CQoCollection::makeNewRecord(const CString& path,
                                             const QoFileDbItemPtr& listed,
                                             CQoFileChangeInfo::ESetImportedAction action) const
{
    QoFileDbItemPtr item = listed ? listed : makeRecord(path);
    item->dbState = dbState::added;
    setMusicAndVideoFlags(item);
    setImported(item, action);
    return item;
}

QoFileDbItemPtr CQoCollection::addRecord(const CString& path,
                                         const QoFileDbItemPtr& listed,
                                         CQoFileChangeInfo::ESetImportedAction action,
                                         int index)
{
    log(level::flow, u"CQoCollection::addFilesFromRootDirs : new file found : %s", path);
    QoFileDbItemPtr item = makeNewRecord(path, listed, action);
    m_fileDbItems.InsertAt(index, item);
    return item;
}

/// The stored record if it was marked as deleted before the walk, else a new one in no list, with
/// nothing but the path.
QoFileDbItemPtr
CQoCollection::recordOfKnown(const qo::FoundFile& file, const QoFileDbItemPtr& listed, int index)
{
    const QoFileDbItemPtr& stored = m_fileDbItems[index];
    if (isTwin(stored, file.path))
    {
        // The known file keeps its record; a second one of that name cannot have its own.
        log(level::error, u"found duplicated db file: %s", file.path);
        m_scanHost->failed(IQoScanHost::ETrouble::twin, file.path, CString());
        return {};
    }
    if (stored->dbState != dbState::deleted)
        return makeRecord(file.path);
    QoFileDbItemPtr item = takeOver(stored, file);
    if (item != stored)
        m_fileDbItems.SetAt(index, item);
    // A plug-in's files keep the tags that were read when they were new. A friend's are what he
    // says now, his row of the file included, since he is asked for files by their rows.
    if (listed && CQoCollPath::typeOf(file.path) == CQoCollPath::share)
    {
        const QoFileDbItem before = *item;
        CQoDbExtract::CopyShareTags(listed, item);
        setMusicAndVideoFlags(item);
        if (!hasSameShareTags(before, *item))
            item->dbState = dbState::modified;
    }
    return item;
}

bool CQoCollection::checkUpdateFileInfo(QoFileDbItemPtr& item,
                                        IQoProgress* progress,
                                        bool readTag,
                                        const qo::FileInfo* seen,
                                        const QoFileDbItem* listed)
{
    if (item->velmoraId.IsEmpty())
        item->velmoraId = qo::makeVelmoraId();
    switch (CQoCollPath::typeOf(item->path))
    {
    case CQoCollPath::drive:
    case CQoCollPath::network:
    case CQoCollPath::usb:
        return checkDiskFilePhysicalChanges(item, readTag, seen);
    case CQoCollPath::wpd:
        return checkWpdFilePhysicalChanges(item, progress, listed);
    case CQoCollPath::physicalPlugin:
        return checkPhysicalPluginFilePhysicalChanges(item, readTag, listed);
    case CQoCollPath::logicalPlugin:
        return checkLogicalPluginFilePhysicalChanges(item, readTag);
    case CQoCollPath::share:
        return true;
    default:
        return false;
    }
}

bool CQoCollection::checkDiskFilePhysicalChanges(QoFileDbItemPtr& item,
                                                 bool readTag,
                                                 const qo::FileInfo* seen)
{
    if (seen && item->dbState != dbState::added && !qo::isToBeRead(*item, *seen, *m_scanHost))
        return false;
    const CString real = CQoUtils::getRealPath(item->path);
    qo::FileInfo info;
    const int error = seen ? 0 : qo::fileSystem().info(real, qo::Spelling::anyCase, info);
    if (error != 0)
    {
        log(level::error,
            u"CQoCollection::checkDiskFilePhysicalChanges : GetFileAttributesEx failed for file %s "
            u": %s",
            real,
            qo::errorText(error));
        m_scanHost->failed(IQoScanHost::ETrouble::absent, item->path, qo::errorText(error));
        return false;
    }
    if (seen)
        info = *seen;
    if (item->dbState != dbState::added)
    {
        if (!qo::isToBeRead(*item, info, *m_scanHost))
            return false;
        log(level::flow,
            u"CQoCollection::checkDiskFilePhysicalChanges : file modified : %s",
            item->path);
        item->dbState = dbState::modified;
        followFurtherExt(item);
    }
    bool isUnsettled = false;
    if (readTag)
    {
        KVTagLib::CTags tags(CQoPaths::getPictureTempDir());
        KVTagLib::TagsAhead* const ahead = m_scanHost->tagsAhead();
        CMusicTagEx tag;
        CString cause;
        const bool hasTags = CMusicTagEx::readTag(real, tags, &cause, ahead);
        if (hasTags)
        {
            tag.setFileTags(tags);
            tag.getTag(item);
        }
        const bool isGivenUp = !hasTags && ahead && ahead->hasGivenUp();
        if (!hasTags && !cause.IsEmpty())
            m_scanHost->failed(isGivenUp ? IQoScanHost::ETrouble::givenUp
                                         : IQoScanHost::ETrouble::readTag,
                               item->path,
                               cause);
        m_scanHost->fileRead(*item, hasTags ? &tags : nullptr);
        const bool hasLeft = !hasTags && CQoCollPath::typeOf(item->path) == CQoCollPath::usb &&
                             !theQoUSBManager.isConnected(CQoCollPath(item->path));
        isUnsettled = isGivenUp || hasLeft;
    }
    item->createTime = info.created;
    // What could not be read since the stick was pulled out, or a server does not answer, is read
    // by the next scan.
    item->modifTime = isUnsettled ? FILETIME() : info.modified;
    item->size = info.size;
    return true;
}

void CQoCollection::markDeletedAllFiles(IQoProgress*)
{
    const qo::RecordAhead ahead(m_fileDbItems);
    int index = 0;
    for (const QoFileDbItemPtr& item : m_fileDbItems)
    {
        ahead.announce(index++);
        item->dbState = dbState::deleted;
    }
}

void CQoCollection::markFilesAsDeletedRec(const boost::shared_ptr<CHDDirectory>& dir)
{
    CPtrListT<CHDFile> files;
    dir->getAllFiles(files);
    for (const auto& file : files)
        file->getDbItem()->dbState = dbState::deleted;
}

void CQoCollection::markDeletedFilesFromDirs(const qo::CollPathArray& dirs)
{
    for (const CQoCollPath& path : dirs)
    {
        if (const auto dir = getDir(path))
            markFilesAsDeletedRec(dir);
    }
}

CQoPathInfo::EType CQoCollection::getSubDirPathInfo(const CString& path) const
{
    // The path mostly begins as that of its root folder does, and need not be parsed then.
    for (const auto& each : m_rootDirs)
    {
        const CString rootPath = each->getPath().toString();
        const CString start = qo::addBackslash(rootPath);
        const int length = start.GetLength();
        if (path.GetLength() > length && path[length] != u'\\' &&
            qo::startsNoCase(path.view(), start.view()))
            return m_pathsInfoMap.getType(rootPath);
    }
    const auto root = getRootDir(CQoCollPath(path));
    return root ? m_pathsInfoMap.getType(root->getPath().toString()) : CQoPathInfo::audioIsMusic;
}

void CQoCollection::setMusicAndVideoFlags(const QoFileDbItemPtr& item) const
{
    const CString ext = qo::fileExtOf(item->path);
    const bool isAudio = CQoUtils::isAudioExt(ext);
    const bool isVideo = CQoUtils::isVideoExt(ext);
    const bool isMedia = isAudio || isVideo;
    // allIsMusic makes audio and video music, audioIsMusic only audio.
    const CQoPathInfo::EType type = getSubDirPathInfo(item->path);
    const bool isMusic = (type == CQoPathInfo::allIsMusic && isMedia) ||
                         (type == CQoPathInfo::audioIsMusic && isAudio);
    item->flags = (item->flags & ~qo::fileFlag::musicMask) |
                  (isMusic ? qo::fileFlag::music : qo::fileFlag::notMusic);
    if (isMedia)
        item->flags = (item->flags & ~qo::fileFlag::mediaMask) |
                      (isVideo ? qo::fileFlag::video : qo::fileFlag::audio);
}

/// A host may have added the extension since the record was made, or have taken it back.
void CQoCollection::followFurtherExt(const QoFileDbItemPtr& item) const
{
    const CString ext = qo::fileExtOf(item->path);
    const bool isMedia = CQoUtils::isMusicExt(ext);
    const bool wasMedia = (item->flags & qo::fileFlag::mediaMask) != 0;
    const bool isKnown = isMedia && CQoUtils::getFurtherExtKind(ext) == CQoUtils::EK_Other;
    if (isMedia == wasMedia || isKnown)
        return;
    item->flags &= ~qo::fileFlag::mediaMask;
    setMusicAndVideoFlags(item);
}

void CQoCollection::setImported(const QoFileDbItemPtr& item,
                                CQoFileChangeInfo::ESetImportedAction action) const
{
    if (action == CQoFileChangeInfo::setImported ||
        (action == CQoFileChangeInfo::setImportedIfNew && item->dbState == dbState::added))
        item->imported = true;
    else if (action == CQoFileChangeInfo::clearImported)
        item->imported = false;
}
