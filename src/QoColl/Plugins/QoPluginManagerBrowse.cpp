#include "QoColl/Plugins/Plugin.h"
#include "QoColl/Plugins/PluginOperation.h"
#include "QoColl/Plugins/PluginSupport.h"
#include "QoColl/Plugins/PluginWrappers.h"
#include "QoColl/Plugins/QoPluginManager.h"
#include "common/QoException.h"
#include "platform/Clock.h"
#include "platform/Platform.h"

#include <algorithm>
#include <cstdint>
#include <exception>

namespace
{
constexpr std::uint32_t waitForPlugin = 42; // milliseconds between two looks at a request

bool isRunningState(int state)
{
    return state >= IPluginOperation::OS_Created && state <= IPluginOperation::OS_Running;
}

void showBytes(IQoProgress& progress,
               void (IQoProgress::*show)(std::uintptr_t, std::uintptr_t),
               std::int64_t bytes)
{
    constexpr int wordBits = 32;
    const auto number = static_cast<std::uint64_t>(bytes);
    (progress.*show)(static_cast<std::uint32_t>(number),
                     static_cast<std::uintptr_t>(number >> wordBits));
}

/// Waits for a request that gives one file or folder.
bool takeOne(PluginOperationPtr operation,
             const char16_t* failure,
             const char16_t* absence,
             IQoProgress* progress,
             PhysicalResultPtr& result)
{
    PluginResultArray results;
    if (!CQoPluginManager::getResultsSync(std::move(operation), results, progress))
    {
        qo::logUnlessStopped(progress, failure);
        return false;
    }
    result = qo::firstResult<IPhysicalResult>(results);
    if (!result)
        qo::log(qo::level::error, absence);
    return result != nullptr;
}

bool findInFolder(IPhysicalBrowseWrapper& browse,
                  const PhysicalResultPtr& folder,
                  const CString& component,
                  qo::Spelling spelling,
                  IQoProgress* progress,
                  PhysicalResultPtr& result)
{
    std::vector<PhysicalResultPtr> entries;
    if (!qo::listFarFolder(browse,
                           folder,
                           u"CQoPluginManager::getPathResultFromPhysicalPlugin : "
                           u"GetSubFoldersAndFiles(%s, %s) failed",
                           progress,
                           entries))
        return false;
    result = qo::findByName(
        entries, component, spelling, [](const IPhysicalResult& entry) { return entry.GetName(); });
    return result != nullptr;
}

/// The result of that name among those of a request for artists, albums or tracks.
PluginResultPtr findNamed(const PluginResultArray& results,
                          const CString& component,
                          qo::Spelling spelling,
                          CString (*nameOf)(const IGenericResult&))
{
    return qo::findByName(qo::resultsOf<IGenericResult>(results), component, spelling, nameOf);
}

CString artistOf(const IGenericResult& result)
{
    return result.GetArtist();
}

CString albumOf(const IGenericResult& result)
{
    return result.GetAlbum();
}

/// The name of a track's file, as CQoCollPath::makeTrack() forms it.
CString trackFileOf(const IGenericResult& result)
{
    const CQoCollPath none(CQoCollPath::logicalPlugin, u"x");
    return CQoCollPath::makeTrack(none, {}, {}, result.GetTitle(), result.GetExtension())
        .getThird();
}
} // namespace

CString qo::forLog(const CString& name)
{
    constexpr int longest = 1000;
    CString text = name.Left(longest);
    for (int i = 0; i < text.GetLength(); ++i)
    {
        if (text[i] < u' ')
            text.SetAt(i, u' ');
    }
    return text;
}

void qo::showTransfer(IQoProgress* progress,
                      std::int64_t done,
                      std::int64_t all,
                      std::int64_t totalBytes)
{
    constexpr int percent = 100;
    if (!progress || all <= 0)
        return;
    const double share =
        static_cast<double>(std::clamp<std::int64_t>(done, 0, all)) / static_cast<double>(all);
    progress->setPosition(static_cast<std::uintptr_t>(share * percent));
    if (totalBytes <= 0)
        return;
    const double doneBytes = share * static_cast<double>(totalBytes);
    showBytes(*progress, &IQoProgress::setTotalSize, totalBytes);
    showBytes(*progress, &IQoProgress::setDoneSize, static_cast<std::int64_t>(doneBytes));
}

namespace
{
/// Waits until the request has ended or progress says that it shall; whether it ended well.
bool waitFor(IPluginOperation& operation,
             IQoProgress* progress,
             bool showProgress,
             std::int64_t total)
{
    while (true)
    {
        if (qo::isStopped(progress))
        {
            qo::log(qo::level::flow, u"getResultsSync : op canceled");
            return false;
        }
        qo::systemClock().sleep(waitForPlugin);
        const int state = operation.GetState();
        if (state == IPluginOperation::OS_Finished)
            return true;
        if (!isRunningState(state))
        {
            qo::log(qo::level::flow, u"getResultsSync : op didn't succeed : state = %d", state);
            return false;
        }
        std::int64_t done = 0;
        std::int64_t all = 0;
        if (showProgress && operation.GetProgress(done, all))
            qo::showTransfer(progress, done, all, total);
        operation.Poll();
    }
}
} // namespace

bool CQoPluginManager::getResultsSync(PluginOperationPtr operation,
                                      PluginResultArray& results,
                                      IQoProgress* progress,
                                      bool showProgress,
                                      std::int64_t total)
{
    if (!operation)
        return false;
    bool succeeded = false;
    try
    {
        succeeded = waitFor(*operation, progress, showProgress, total);
        operation->GetResults(results);
    }
    catch (const std::exception& exception)
    {
        // A plug-in's own failure, whatever it is: to the kernel it is a request that failed.
        qo::logException(u"getResultsSync", exception.what());
        succeeded = false;
    }
    operation.reset();
    return succeeded;
}

bool CQoPluginManager::getRootPathResultFromPhysicalPlugin(
    const boost::shared_ptr<IPhysicalBrowseWrapper>& browse,
    IQoProgress* progress,
    PhysicalResultPtr& result)
{
#define QO_STEP(text) u"CQoPluginManager::getRootPathResultFromPhysicalPlugin : " text
    return browse && takeOne(browse->GetRootFolder(),
                             QO_STEP(u"GetRootFolder failed"),
                             QO_STEP(u"GetRootFolder returned no result"),
                             progress,
                             result);
#undef QO_STEP
}

bool CQoPluginManager::getPathResultFromPhysicalPlugin(
    const boost::shared_ptr<IPhysicalBrowseWrapper>& browse,
    const CQoCollPath& path,
    const PhysicalResultPtr& parent,
    IQoProgress* progress,
    PhysicalResultPtr& result)
{
    return browse &&
           findInFolder(*browse, parent, path.getLast(), qo::Spelling::anyCase, progress, result);
}

bool CQoPluginManager::getPathResultFromPhysicalPlugin(const CQoCollPath& path,
                                                       IQoProgress* progress,
                                                       PhysicalResultPtr& result)
{
    return qo::findPhysicalEntry(path, qo::Spelling::anyCase, progress, result);
}

bool qo::listFarFolder(IPhysicalBrowseWrapper& browse,
                       const PhysicalResultPtr& folder,
                       const char16_t* failure,
                       IQoProgress* progress,
                       std::vector<PhysicalResultPtr>& entries)
{
    PluginResultArray results;
    if (!folder ||
        !CQoPluginManager::getResultsSync(browse.GetSubFoldersAndFiles(folder), results, progress))
    {
        logUnlessStopped(progress,
                         failure,
                         folder ? forLog(folder->GetName()) : CString(),
                         folder ? forLog(folder->GetPath()) : CString());
        return false;
    }
    entries = resultsOf<IPhysicalResult>(results);
    const auto isNoEntry = [](const PhysicalResultPtr& entry)
    { return farEntryName(entry->GetName()).IsEmpty(); };
    entries.erase(std::remove_if(entries.begin(), entries.end(), isNoEntry), entries.end());
    return true;
}

bool qo::findPhysicalEntry(const CQoCollPath& path,
                           Spelling spelling,
                           IQoProgress* progress,
                           PhysicalResultPtr& result)
{
    boost::shared_ptr<IPhysicalBrowseWrapper> browse;
    PhysicalResultPtr found;
    if (!path.isPhysicalPlugin() ||
        !CQoPluginManager::getPhysicalBrowseFuncFromPlugin(path.getDevice(), browse) ||
        !CQoPluginManager::getRootPathResultFromPhysicalPlugin(browse, progress, found))
        return false;
    for (const CString& component : path.getComponents())
    {
        const PhysicalResultPtr folder = found;
        if (!findInFolder(*browse, folder, component, spelling, progress, found))
            return false;
    }
    result = found;
    return true;
}

bool CQoPluginManager::getOneFilePathResultFromPhysicalPlugin(const CQoCollPath& path,
                                                              IQoProgress* progress,
                                                              PhysicalResultPtr& result)
{
    if (!getPathResultFromPhysicalPlugin(path, progress, result))
        return false;
    boost::shared_ptr<IPhysicalBrowseDownloadpathWrapper> addresses;
    if (!getPhysicalBrowseDownloadpathFuncFromPlugin(path.getDevice(), addresses))
        return true;
#define QO_STEP(text) u"CQoPluginManager::getPathResultFromPhysicalPlugin : " text
    return takeOne(addresses->GetDownloadUrl(result),
                   QO_STEP(u"GetDownloadUrl failed"),
                   QO_STEP(u"GetDownloadUrl returned no result"),
                   progress,
                   result);
#undef QO_STEP
}

PluginOperationPtr
qo::listLogicalLevel(ILogicalBrowseWrapper& browse, int level, const PluginResultPtr& above)
{
    if (level == 0)
        return browse.GetArtists();
    return level == 1 ? browse.GetAlbums(above) : browse.GetTracksForAlbum(above);
}

bool CQoPluginManager::getPathResultFromLogicalPlugin(
    const boost::shared_ptr<ILogicalBrowseWrapper>& browse,
    const CQoCollPath& path,
    IQoProgress* progress,
    PluginResultPtr& result)
{
    return qo::findLogicalEntry(browse, path, qo::Spelling::anyCase, progress, result);
}

bool qo::findLogicalEntry(const boost::shared_ptr<ILogicalBrowseWrapper>& browse,
                          const CQoCollPath& path,
                          Spelling spelling,
                          IQoProgress* progress,
                          PluginResultPtr& result)
{
    constexpr int trackDepth = 3;
    if (!browse || path.isEmpty() || path.getCount() > trackDepth)
        return false;
    struct Step
    {
        CString name;
        CString (*nameOf)(const IGenericResult&);
        const char16_t* failure;
        const char16_t* absence;
    };
#define QO_STEP(text) u"CQoPluginManager::getPathResultFromLogicalPlugin : " text
    const Step steps[trackDepth] = {{path.getFirst(),
                                     artistOf,
                                     QO_STEP(u"GetArtists failed"),
                                     QO_STEP(u"artistName %s not found")},
                                    {path.getSecond(),
                                     albumOf,
                                     QO_STEP(u"GetAlbums(%s) failed"),
                                     QO_STEP(u"album %s not found")},
                                    {path.getThird(),
                                     trackFileOf,
                                     QO_STEP(u"GetTracksForAlbum(%s)"),
                                     QO_STEP(u"track %s not found")}};
#undef QO_STEP
    PluginResultPtr found;
    for (int i = 0; i < path.getCount(); ++i)
    {
        const Step& step = steps[i];
        PluginResultArray results;
        if (!CQoPluginManager::getResultsSync(
                listLogicalLevel(*browse, i, found), results, progress))
        {
            qo::logUnlessStopped(progress, step.failure, path.getComponent(i - 1));
            return false;
        }
        found = findNamed(results, step.name, spelling, step.nameOf);
        if (!found)
        {
            qo::log(qo::level::error, step.absence, step.name);
            return false;
        }
    }
    result = found;
    return true;
}

bool CQoPluginManager::getPathResultFromLogicalPlugin(const CQoCollPath& path,
                                                      IQoProgress* progress,
                                                      PluginResultPtr& result)
{
    boost::shared_ptr<ILogicalBrowseWrapper> browse;
    return path.isLogicalPlugin() && getLogicalBrowseFuncFromPlugin(path.getDevice(), browse) &&
           getPathResultFromLogicalPlugin(browse, path, progress, result);
}

bool CQoPluginManager::getOneFilePathResultFromPlugin(const CQoCollPath& path,
                                                      IQoProgress* progress,
                                                      PluginResultPtr& result)
{
    if (!path.isPhysicalPlugin())
        return getPathResultFromLogicalPlugin(path, progress, result);
    PhysicalResultPtr physical;
    if (!getOneFilePathResultFromPhysicalPlugin(path, progress, physical))
        return false;
    result = physical;
    return true;
}

bool CQoPluginManager::searchTracks(const CString& id,
                                    const CString& text,
                                    IQoProgress* progress,
                                    CArray<boost::shared_ptr<ITrackResult>>& tracks)
{
    boost::shared_ptr<IPlugin> plugin;
    tracks.RemoveAll();
    const boost::shared_ptr<ISearchWrapper> search =
        getPlugin(id, plugin) ? plugin->GetSearch() : boost::shared_ptr<ISearchWrapper>();
    if (!search)
        return false;
    PluginResultArray results;
    if (!getResultsSync(search->Search(text), results, progress))
    {
        qo::logUnlessStopped(
            progress, u"CQoPluginManager::searchTracks : Search(%s) failed on plugin %s", text, id);
        return false;
    }
    for (const auto& track : qo::resultsOf<ITrackResult>(results))
        tracks.Add(track);
    return true;
}
