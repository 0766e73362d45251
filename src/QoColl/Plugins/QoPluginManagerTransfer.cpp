#include "KVTagLib/Tags.h"
#include "QoColl/Plugins/PluginDownloadItem.h"
#include "QoColl/Plugins/PluginSupport.h"
#include "QoColl/Plugins/PluginWrappers.h"
#include "QoColl/Plugins/QoPluginManager.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "common/FileUtils.h"
#include "platform/Clock.h"
#include "platform/Platform.h"

namespace
{
constexpr int downloadWaiting = 1;           // counts as running
constexpr std::uint32_t pauseOfDownload = 1; // milliseconds between two looks at a download
constexpr int trackDepth = 3;

/// Makes one folder that is missing.
PhysicalResultPtr createFarFolder(IPhysicalUploadWrapper& upload,
                                  const PhysicalResultPtr& parent,
                                  const CString& name,
                                  IQoProgress* progress)
{
    PluginResultArray results;
    if (!CQoPluginManager::getResultsSync(upload.CreateFolder(parent, name), results, progress))
    {
        qo::logUnlessStopped(progress,
                             u"CQoPluginManager::checkCreateDir : CreateFolder(%s, %s) failed",
                             qo::forLog(parent->GetPath()),
                             name);
        return {};
    }
    const auto folder = qo::firstResult<IPhysicalResult>(results);
    if (!folder)
        qo::log(qo::level::error,
                u"CreateFolder(%s, %s) returned no result",
                qo::forLog(parent->GetPath()),
                name);
    return folder;
}

/// Writes artist, album and title of a track's path into its file, each that the path holds.
void writeTrackTag(const CQoCollPath& track, const CString& target)
{
    KVTagLib::CTags tags;
    if (!track.getFirst().IsEmpty())
        tags.AddArtist(qo::farNameOf(track.getFirst()), false);
    if (!track.getSecond().IsEmpty())
        tags.SetAlbum(qo::farNameOf(track.getSecond()));
    const CString title = qo::farNameOf(track.getFileTitle()).Trim();
    if (!title.IsEmpty())
        tags.SetTitle(title);
    CMusicTagEx::writeTag(target, tags);
}

/// Makes the folders of the path that are missing. The path gets the names that the service has for
/// them, which may be others than were asked for.
bool makeFarFolders(const boost::shared_ptr<IPhysicalBrowseWrapper>& browse,
                    const boost::shared_ptr<IPhysicalUploadWrapper>& upload,
                    CQoCollPath& path,
                    IQoProgress* progress,
                    PhysicalResultPtr& result)
{
    PhysicalResultPtr folder;
    if (!upload || !CQoPluginManager::getRootPathResultFromPhysicalPlugin(browse, progress, folder))
        return false;
    CQoCollPath place(path.getType(), path.getDevice());
    for (const CString& component : path.getComponents())
    {
        if (qo::isStopped(progress))
            return false;
        PhysicalResultPtr next;
        if (!CQoPluginManager::getPathResultFromPhysicalPlugin(
                browse, place.child(component), folder, progress, next) &&
            !qo::isStopped(progress))
            next = createFarFolder(*upload, folder, component, progress);
        if (!next || !next->IsFolder())
            return false;
        const CString name = qo::farEntryName(next->GetName());
        place = place.child(name.IsEmpty() ? component : name);
        folder = next;
    }
    path = place;
    result = folder;
    return true;
}

bool uploadPhysical(const CString& source,
                    CQoCollPath& target,
                    std::int64_t size,
                    bool replace,
                    IQoProgress* progress)
{
    boost::shared_ptr<IPhysicalBrowseWrapper> browse;
    boost::shared_ptr<IPhysicalUploadWrapper> upload;
    const CString& id = target.getDevice();
    if (target.isEmpty() || !CQoPluginManager::getPhysicalBrowseFuncFromPlugin(id, browse) ||
        !CQoPluginManager::getPhysicalUploadFuncFromPlugin(id, upload))
        return false;
    CQoCollPath folder = target.getParent();
    PhysicalResultPtr parent;
    if (!makeFarFolders(browse, upload, folder, progress, parent))
    {
        qo::logUnlessStopped(progress,
                             u"CQoPluginManager::uploadFile : failed to create destination path %s",
                             folder.toString());
        return false;
    }
    PluginResultArray results;
    if (!CQoPluginManager::getResultsSync(
            upload->UploadFile(source, parent, target.getLast(), replace),
            results,
            progress,
            true,
            size))
    {
        qo::logUnlessStopped(progress,
                             u"CQoPluginManager::uploadFile : UploadFile(%s, %s, %s) failed",
                             source,
                             qo::forLog(parent->GetPath()),
                             target.getLast());
        return false;
    }
    const auto file = qo::firstResult<IPhysicalResult>(results);
    if (!file)
    {
        qo::log(qo::level::error,
                u"CQoPluginManager::uploadFile : UploadFile(%s, %s, %s) returned no result",
                source,
                qo::forLog(parent->GetPath()),
                target.getLast());
        return false;
    }
    const CString name = qo::farEntryName(file->GetName());
    target = folder.child(name.IsEmpty() ? target.getLast() : name);
    return true;
}

bool uploadLogical(const CString& source, const CQoCollPath& target, IQoProgress* progress)
{
    boost::shared_ptr<ILogicalUploadWrapper> upload;
    if (!CQoPluginManager::getLogicalUploadFuncFromPlugin(target.getDevice(), upload))
        return false;
    const CString title = target.getCount() < trackDepth ? CString() : target.getFileTitle();
    PluginResultArray results;
    if (CQoPluginManager::getResultsSync(
            upload->UploadTrack(source, target.getFirst(), target.getSecond(), title),
            results,
            progress,
            true))
        return true;
    qo::logUnlessStopped(progress,
                         u"UploadTrack(%s, %s, %s, %s) failed",
                         source,
                         target.getFirst(),
                         target.getSecond(),
                         title);
    return false;
}

bool deletePhysical(const CQoCollPath& path, IQoProgress* progress)
{
    boost::shared_ptr<IPhysicalUploadWrapper> upload;
    if (!CQoPluginManager::getPhysicalUploadFuncFromPlugin(path.getDevice(), upload))
        return false;
    PhysicalResultPtr item;
    // The root itself is never meant.
    if (path.isEmpty() || !qo::findPhysicalEntry(path, qo::Spelling::exact, progress, item))
    {
        qo::logUnlessStopped(progress,
                             u"CQoPluginManager::deleteFile : cannot get path result for file %s",
                             path.toString());
        return false;
    }
    PluginResultArray items;
    items.Add(item);
    PluginResultArray results;
    if (CQoPluginManager::getResultsSync(upload->RemoveItems(items), results, progress))
        return true;
    qo::logUnlessStopped(
        progress, u"CQoPluginManager::deleteFile : RemoveItems(%s) failed", path.toString());
    return false;
}

bool deleteLogical(const CQoCollPath& path, IQoProgress* progress)
{
    boost::shared_ptr<ILogicalBrowseWrapper> browse;
    boost::shared_ptr<ILogicalUploadWrapper> upload;
    PluginResultPtr track;
    if (path.getCount() != trackDepth ||
        !CQoPluginManager::getLogicalBrowseFuncFromPlugin(path.getDevice(), browse) ||
        !CQoPluginManager::getLogicalUploadFuncFromPlugin(path.getDevice(), upload) ||
        !qo::findLogicalEntry(browse, path, qo::Spelling::exact, progress, track))
        return false;
    PluginResultArray results;
    if (CQoPluginManager::getResultsSync(upload->RemoveTrack(track), results, progress))
        return true;
    qo::logUnlessStopped(progress,
                         u"CQoPluginManager::deleteFile : RemoveTrack(%s, %s, %s) failed",
                         path.getFirst(),
                         path.getSecond(),
                         path.getThird());
    return false;
}
} // namespace

bool CQoPluginManager::checkCanSetDownloadRanges(const CString& id,
                                                 boost::shared_ptr<IDownloadWrapper>& download)
{
    if (!getDownloadFuncFromPlugin(id, download))
    {
        qo::log(qo::level::flow,
                u"CQoPluginManager::checkCanSetDownloadRanges : can't get IDownloadWrapperPtr from "
                u"plugin %s",
                id);
        return false;
    }
    bool can = false;
    if (download->CanSetRanges(can) && can)
        return true;
    qo::log(qo::level::flow,
            u"CQoPluginManager::checkCanSetDownloadRanges : cannot set ranges to plugin %s",
            id);
    download.reset();
    return false;
}

bool CQoPluginManager::canSetDownloadRanges(const CString& id)
{
    boost::shared_ptr<IDownloadWrapper> download;
    return checkCanSetDownloadRanges(id, download);
}

bool CQoPluginManager::checkCreateDir(const boost::shared_ptr<IPhysicalBrowseWrapper>& browse,
                                      const boost::shared_ptr<IPhysicalUploadWrapper>& upload,
                                      const CQoCollPath& path,
                                      IQoProgress* progress,
                                      PhysicalResultPtr& result)
{
    CQoCollPath place = path;
    return makeFarFolders(browse, upload, place, progress, result);
}

bool CQoPluginManager::createDir(const CQoCollPath& path, IQoProgress* progress)
{
    boost::shared_ptr<IPhysicalBrowseWrapper> browse;
    boost::shared_ptr<IPhysicalUploadWrapper> upload;
    PhysicalResultPtr folder;
    return path.isPhysicalPlugin() && getPhysicalBrowseFuncFromPlugin(path.getDevice(), browse) &&
           getPhysicalUploadFuncFromPlugin(path.getDevice(), upload) &&
           checkCreateDir(browse, upload, path, progress, folder);
}

boost::shared_ptr<IDownloadItem> CQoPluginManager::getDownloadItem(const CQoCollPath& path,
                                                                   const CString& target,
                                                                   bool direct,
                                                                   IQoProgress* progress)
{
    if (!path.isPlugin() || !canDownloadFromPlugin(path.getDevice()))
        return {};
    PluginResultPtr source;
    PhysicalResultPtr listed;
    if (direct || path.isLogicalPlugin())
        getOneFilePathResultFromPlugin(path, progress, source);
    else if (getPathResultFromPhysicalPlugin(path, progress, listed))
        source = listed;
    const bool isFile =
        source && (path.isLogicalPlugin() ? path.getCount() == trackDepth
                                          : source->GetKind() == IGenericResult::RK_File);
    return isFile ? getDownloadItem(path, target, source) : boost::shared_ptr<IDownloadItem>();
}

boost::shared_ptr<IDownloadItem> CQoPluginManager::getDownloadItem(const CQoCollPath& path,
                                                                   const CString& target,
                                                                   const PluginResultPtr& source)
{
    boost::shared_ptr<IDownloadWrapper> download;
    if (!source || !getDownloadFuncFromPlugin(path.getDevice(), download))
        return {};
    return IQoDownloadItem::make<CQoPluginDownloadItem>(
        path.toString(), target, path.getDevice(), download, source);
}

boost::shared_ptr<IDownloadItem> CQoPluginManager::getPlayDownloadItem(const CQoCollPath& path)
{
    const CString target = qo::uniqueTempPath(CFileUtils::tempLivePlay, path.getLast());
    return getDownloadItem(path, target, true, nullptr);
}

bool CQoPluginManager::runDownload(IDownloadItem& item, IQoProgress* progress)
{
    item.Start();
    int state = item.GetState();
    while (state == IDownloadItem::DS_Running || state == downloadWaiting)
    {
        if (qo::isStopped(progress))
        {
            item.Cancel(); // or its thread would write on
            if (item.GetState() == IDownloadItem::DS_Done)
                qo::fileSystem().removeFile(item.GetTargetPath()); // it had come before
            return false;
        }
        int done = 0;
        int total = 0;
        item.GetProgress(done, total);
        const auto bytes = static_cast<std::uint32_t>(total);
        qo::showTransfer(progress, static_cast<std::uint32_t>(done), bytes, bytes);
        qo::systemClock().sleep(pauseOfDownload);
        state = item.GetState();
    }
    if (state == IDownloadItem::DS_Done)
        return true;
    qo::log(
        qo::level::error, u"CQoPluginManager::downloadFile : download failed with state %d", state);
    qo::fileSystem().removeFile(item.GetTargetPath());
    return false;
}

bool CQoPluginManager::downloadFile(const CQoCollPath& path,
                                    const CString& target,
                                    bool direct,
                                    IQoProgress* progress)
{
    const boost::shared_ptr<IDownloadItem> item = getDownloadItem(path, target, direct, progress);
    if (!item)
    {
        qo::logUnlessStopped(progress,
                             u"CQoPluginManager::downloadFile : getDownloadItem(%s, %s) failed",
                             path.toString(),
                             target);
        return false;
    }
    if (!runDownload(*item, progress))
        return false;
    if (path.isLogicalPlugin())
        writeTrackTag(path, target);
    return true;
}

bool CQoPluginManager::isFileFormatAccepted(const CQoCollPath& path)
{
    return !isGoogleMusic(path.getDevice()) || path.getFileExt().CompareNoCase(u"mp3") == 0;
}

bool CQoPluginManager::uploadFile(const CString& source,
                                  CQoCollPath& target,
                                  std::int64_t size,
                                  bool replace,
                                  IQoProgress* progress)
{
    if (target.isPhysicalPlugin())
        return uploadPhysical(source, target, size, replace, progress);
    return target.isLogicalPlugin() && uploadLogical(source, target, progress);
}

bool CQoPluginManager::deleteFile(const CQoCollPath& path, IQoProgress* progress)
{
    if (path.isPhysicalPlugin())
        return deletePhysical(path, progress);
    return !path.isLogicalPlugin() || deleteLogical(path, progress);
}
