#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Devices/DeviceUtils.h"
#include "QoColl/Plugins/Plugin.h"
#include "QoColl/Plugins/PluginOperation.h"
#include "QoColl/Plugins/PluginSupport.h"
#include "QoColl/Plugins/PluginWrappers.h"
#include "QoColl/Plugins/QoPluginManager.h"
#include "types/PassingSecret.h"

namespace
{
constexpr int deepestPath = 260;
/// How many levels of folders are looked at for names that mean music or movies.
constexpr int detectDepth = 2;

/// Whether there is the plug-in, with which the call is made then.
template <class Call>
bool withPlugin(const CString& id, Call call)
{
    boost::shared_ptr<IPlugin> plugin;
    if (!CQoPluginManager::getPlugin(id, plugin))
        return false;
    call(*plugin);
    return true;
}

qo::DeviceFolders foldersOf(IPlugin& plugin)
{
    qo::DeviceFolders folders;
    folders.music = plugin.GetMusicPath();
    folders.movies = plugin.GetMoviesPath();
    plugin.GetExtraPaths(folders.extra, folders.extraTypes);
    return folders;
}

/// The root and the folders of a plug-in; false if it cannot be browsed.
bool getRootAndFolders(const CString& id,
                       CQoCollPath& root,
                       qo::DeviceFolders& folders,
                       bool& rootIfEmpty)
{
    boost::shared_ptr<IPlugin> plugin;
    if (!CQoPluginManager::getPlugin(id, plugin))
        return false;
    root = CQoPluginManager::createPath(id);
    if (root.isPhysicalPlugin())
        folders = foldersOf(*plugin);
    else
        rootIfEmpty = true; // artists and albums have no folders to choose from
    return root.isValid();
}

/// The folder if it is still there, else "".
CString ifStillThere(const CString& id, const CString& folder)
{
    if (folder.IsEmpty())
        return folder;
    PhysicalResultPtr result;
    const CQoCollPath path = CQoPluginManager::createPath(id, folder);
    const bool found = CQoPluginManager::getPathResultFromPhysicalPlugin(path, nullptr, result);
    return found && result->IsFolder() ? folder : CString();
}

CString startFolder(const CString& id)
{
    if (!CQoPluginManager::isStratoHiDriveID(id))
        return {};
    CString user;
    CString password;
    const qo::PassingSecret secret(password);
    CQoPluginManager::getPluginCredentials(id, user, password);
    return u"users\\" + user;
}
} // namespace

bool CQoPluginManager::pluginHasLogin(const CString& id)
{
    return getLoginFunctionality(id) != nullptr;
}

bool CQoPluginManager::getPluginCredentials(const CString& id, CString& user, CString& password)
{
    return withPlugin(id, [&](IPlugin& plugin) { plugin.GetCredentials(user, password); });
}

bool CQoPluginManager::setPluginCredentials(const CString& id,
                                            const CString& user,
                                            const CString& password)
{
    return withPlugin(id, [&](IPlugin& plugin) { plugin.SetCredentials(user, password); });
}

bool CQoPluginManager::isPluginConfigured(const CString& id)
{
    if (!existPlugin(id))
        return false;
    if (getPluginMusicPath(id).IsEmpty() && getPluginMoviesPath(id).IsEmpty())
        return false;
    if (!pluginHasLogin(id))
        return true;
    CString user;
    CString password;
    const qo::PassingSecret secret(password);
    return getPluginCredentials(id, user, password) && !user.IsEmpty();
}

CQoPluginManager::ELoginCheckResult CQoPluginManager::checkPluginCredentials(const CString& id)
{
    CString user;
    CString password;
    const qo::PassingSecret secret(password);
    getPluginCredentials(id, user, password);
    return checkPluginCredentials(id, user, password, false);
}

CQoPluginManager::ELoginCheckResult CQoPluginManager::checkPluginCredentials(const CString& id,
                                                                             CString user,
                                                                             CString password,
                                                                             bool /*flag*/)
{
    const qo::PassingSecret secret(password);
    const boost::shared_ptr<ILoginWrapper> login = getLoginFunctionality(id);
    if (!login)
        return LC_Ok;
    if (!user.IsEmpty() && !login->CanTryCredentials(user, password))
        return LC_Failed;
    const PluginOperationPtr operation = login->CheckCredentials(user, password);
    PluginResultArray results;
    if (getResultsSync(operation, results, nullptr))
        return LC_Ok;
    qo::log(qo::level::error,
            u"CQoPluginManager::checkPluginCredentials : CheckCredentials failed for plugin %s",
            id);
    const CString cause = operation ? operation->GetErrorText() : CString();
    if (cause == u"Account expired")
    {
        qo::log(qo::level::error, u"CQoPluginManager::checkPluginCredentials : Account expired");
        return LC_AccountExpired;
    }
    return cause == u"Wrong server path" ? LC_WrongServerPath : LC_Failed;
}

bool CQoPluginManager::savePluginSettings(const CString& id)
{
    return existPlugin(id) && m_pPluginsManager->SavePluginSettings(id);
}

bool CQoPluginManager::removePluginSettings(const CString& id)
{
    if (!existPlugin(id))
        return false;
    const bool removed = m_pPluginsManager->RemovePluginSettings(id);
    setPluginCredentials(id, {}, {});
    return removed;
}

void CQoPluginManager::getPluginPathDepthLimits(const CString& id, int& min, int& max)
{
    min = 0;
    max = deepestPath;
    boost::shared_ptr<IPhysicalUploadWrapper> upload;
    if (!getPhysicalUploadFuncFromPlugin(id, upload))
        return;
    bool canUploadToRoot = true;
    if (upload->CanUploadToRoot(canUploadToRoot))
        min = canUploadToRoot ? 0 : 1;
    if (!upload->GetMaxPathDepth(max))
        max = deepestPath;
}

CString CQoPluginManager::getPluginMusicPath(const CString& id)
{
    CString path;
    withPlugin(id,
               [&](IPlugin& plugin)
               {
                   const bool isLogical = !plugin.GetPhysicalBrowse() && plugin.GetLogicalBrowse();
                   path = isLogical ? createPath(id).toString() : plugin.GetMusicPath();
               });
    return path;
}

bool CQoPluginManager::setPluginMusicPath(const CString& id, const CString& path)
{
    return withPlugin(id, [&](IPlugin& plugin) { plugin.SetMusicPath(path); });
}

CString CQoPluginManager::getPluginMoviesPath(const CString& id)
{
    CString path;
    withPlugin(id, [&](IPlugin& plugin) { path = plugin.GetMoviesPath(); });
    return path;
}

bool CQoPluginManager::setPluginMoviesPath(const CString& id, const CString& path)
{
    return withPlugin(id, [&](IPlugin& plugin) { plugin.SetMoviesPath(path); });
}

void CQoPluginManager::detectMusicAndMoviesDirs(
    const CString& id, CString& music, CString& movies, bool& foundMusic, bool& foundMovies)
{
    foundMusic = false;
    foundMovies = false;
    music = ifStillThere(id, getPluginMusicPath(id));
    movies = ifStillThere(id, getPluginMoviesPath(id));
    if (!music.IsEmpty() && !movies.IsEmpty())
        return;
    const CString start = startFolder(id);
    QoFileDbItemArray records;
    getFilesFromPhysicalPlugin(PI_Folders, createPath(id, start), detectDepth, nullptr, records);
    const CQoCollPath root = createPath(id);
    CStringArray folders;
    for (const QoFileDbItemPtr& record : records)
        folders.Add(qo::deviceRelativePath(root, CQoCollPath(record->path)));
    CQoDeviceUtils::chooseMusicAndMoviesDirs(
        folders, start, music, movies, foundMusic, foundMovies);
}

bool CQoPluginManager::getPluginExtraInputPaths(const CString& id,
                                                CStringArray& paths,
                                                CQoPathsInfoMap& info)
{
    paths.RemoveAll();
    info.RemoveAll();
    return withPlugin(id, [&](IPlugin& plugin) { plugin.GetExtraPaths(paths, info); });
}

bool CQoPluginManager::setPluginExtraInputPaths(const CString& id,
                                                const CStringArray& paths,
                                                const CQoPathsInfoMap& info)
{
    return withPlugin(id, [&](IPlugin& plugin) { plugin.SetExtraPaths(paths, info); });
}

void CQoPluginManager::getPluginFullPaths(const CString& id,
                                          bool rootIfEmpty,
                                          CArray<CQoCollPath>& paths)
{
    CQoCollPath root;
    qo::DeviceFolders folders;
    if (getRootAndFolders(id, root, folders, rootIfEmpty))
        qo::deviceFullPaths(root, folders, rootIfEmpty, paths);
}

void CQoPluginManager::getPluginQoPathsInfoMap(const CString& id,
                                               bool rootIfEmpty,
                                               CQoPathsInfoMap& info)
{
    CQoCollPath root;
    qo::DeviceFolders folders;
    if (getRootAndFolders(id, root, folders, rootIfEmpty))
        qo::devicePathsInfo(root, folders, rootIfEmpty, info);
}

void CQoPluginManager::getPluginTargetDirs(const CString& id,
                                           bool rootIfEmpty,
                                           CString& music,
                                           CString& movies)
{
    music.Empty();
    movies.Empty();
    CQoCollPath root;
    qo::DeviceFolders folders;
    if (getRootAndFolders(id, root, folders, rootIfEmpty))
        qo::deviceTargetDirs(root, folders, rootIfEmpty, music, movies);
}

CString CQoPluginManager::getPluginMusicUploadRule(const CString& id)
{
    CString music;
    CString movies;
    getPluginUploadRules(id, music, movies);
    return music;
}

bool CQoPluginManager::setPluginMusicUploadRule(const CString& id, const CString& rule)
{
    return withPlugin(id, [&](IPlugin& plugin) { plugin.SetMusicUploadRule(rule); });
}

CString CQoPluginManager::getPluginMoviesUploadRule(const CString& id)
{
    CString music;
    CString movies;
    getPluginUploadRules(id, music, movies);
    return movies;
}

bool CQoPluginManager::setPluginMoviesUploadRule(const CString& id, const CString& rule)
{
    return withPlugin(id, [&](IPlugin& plugin) { plugin.SetMoviesUploadRule(rule); });
}

bool CQoPluginManager::getPluginUploadRules(const CString& id, CString& music, CString& movies)
{
    return withPlugin(id,
                      [&](IPlugin& plugin)
                      {
                          music = plugin.GetMusicUploadRule();
                          movies = plugin.GetMoviesUploadRule();
                      });
}

bool CQoPluginManager::getPluginFillStateInfo(const CString& id,
                                              std::int64_t& total,
                                              std::int64_t& free,
                                              bool& unlimited)
{
    boost::shared_ptr<IPhysicalBrowseWrapper> browse;
    if (!getPhysicalBrowseFuncFromPlugin(id, browse))
        return false;
    PluginResultArray results;
    if (!getResultsSync(browse->GetFillState(), results, nullptr))
    {
        qo::log(qo::level::error,
                u"CQoPluginManager::getPluginFillStateInfo : GetFillState() failed");
        return false;
    }
    const auto state = qo::firstResult<IFillStateResult>(results);
    if (!state)
    {
        qo::log(qo::level::error,
                u"CQoPluginManager::getPluginFillStateInfo : GetFillState() returned no result");
        return false;
    }
    total = state->GetTotal();
    free = state->GetFree();
    unlimited = state->IsUnlimited();
    return true;
}
