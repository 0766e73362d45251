#pragma once

#include "QoColl/Db/Records/Forward.h"
#include "QoColl/Plugins/Forward.h"
#include "common/CollPath.h"
#include "common/PathsInfoMap.h"

#include <cstdint>

class IQoProgress;

/// The scan for which a plug-in is listed.
class QO_API IPluginScan
{
public:
    virtual ~IPluginScan();
    /// Whether the tag of a listed file is fetched; isKnown says whether it has a record already.
    virtual bool isToBeRead(const QoFileDbItem& listed, bool& isKnown) = 0;
    /// The tag of that file could not be fetched.
    virtual void notRead(const CString& path) = 0;
};

/// The kernel's view of the plug-ins that the host hands over: how they are set up, what is in
/// them, and the transfer of files. Plug-ins are named by their ids, without regard to case; for an
/// id that does not exist the answers are false, null and "". All functions may be called from one
/// thread at a time. Those that take a progress talk to the service and return when that is done;
/// they ask the progress, which may be null, whether they are cancelled, and answer false then
/// without a line in the log. A failure leaves one line. None throws except for lack of memory
/// (CQoException*).
class QO_API CQoPluginManager
{
public:
    enum ELoginCheckResult : int
    {
        LC_Ok = 0,             ///< accepted, or there is no login
        LC_Failed = 1,         ///< not accepted
        LC_AccountExpired = 2, ///< the service said "Account expired"
        LC_WrongServerPath = 3 ///< the plug-in said "Wrong server path"
    };
    enum EPluginItemType : int
    {
        PI_Folders = 1,
        PI_Files = 2
    };

    /// Set before any other call and removed with null; kept as long.
    static void setPluginsManager(const boost::shared_ptr<IPluginsManager>& manager);

    // Plug-ins and their functionalities.

    /// Without a path the root; else a folder or file relative to it ("Music\a.mp3"). An invalid
    /// path for a plug-in that cannot be browsed.
    static CQoCollPath createPath(const CString& id, const char16_t* path = nullptr);
    static bool getPlugin(const CString& id, boost::shared_ptr<IPlugin>& plugin);
    /// The same without a line in the log.
    static bool existPlugin(const CString& id);
    static void getBrowsePlugins(CStringArray& ids);
    /// Those that are configured. The flag has no effect here.
    static void getConfiguredBrowsePlugins(CStringArray& ids, bool flag);
    static bool isLogicalBrowsePlugin(const CString& id);
    static bool isPhysicalBrowsePlugin(const CString& id);
    static bool canDownloadFromPlugin(const CString& id);
    static bool canUploadToPlugin(const CString& id);
    // True if the functionality is there.
    static bool getPhysicalBrowseFuncFromPlugin(const CString& id,
                                                boost::shared_ptr<IPhysicalBrowseWrapper>& func);
    static bool getPhysicalBrowseDownloadpathFuncFromPlugin(
        const CString& id, boost::shared_ptr<IPhysicalBrowseDownloadpathWrapper>& func);
    static bool getLogicalBrowseFuncFromPlugin(const CString& id,
                                               boost::shared_ptr<ILogicalBrowseWrapper>& func);
    static bool getDownloadFuncFromPlugin(const CString& id,
                                          boost::shared_ptr<IDownloadWrapper>& func);
    static bool getPhysicalUploadFuncFromPlugin(const CString& id,
                                                boost::shared_ptr<IPhysicalUploadWrapper>& func);
    static bool getLogicalUploadFuncFromPlugin(const CString& id,
                                               boost::shared_ptr<ILogicalUploadWrapper>& func);
    static bool isAmazonCloudDrive(const CString& id);
    static bool isWebDAV(const CString& id);
    static bool isGoogleMusic(const CString& id);
    static CString getStratoHiDriveID();
    static bool isStratoHiDriveID(const CString& id);
    static bool isStratoHiDriveConfigured();
    static void removeNonStratoPluginSettings();
    static CString getDropboxID();
    static bool isDropbox(const CString& id);
    /// Whether it is there and answers.
    static bool isDropboxInstalled();
    /// Whether tags of its files cannot be read without fetching them whole.
    static bool shouldShowPhysicalPluginWarning(const CString& id);
    static CString getPluginUserRegistrationUrl(const CString& id);
    static bool pluginHasCustomConfigDlg(const CString& id);
    static bool pluginOpenCustomConfigDlg(const CString& id);
    static CString getPluginIconPath(const CString& id);
    /// What a plug-in calls the source of its tracks, for its id or for a text of one of its tracks
    /// (see trackText()).
    static CString getTrackWebSource(const CString& id);
    /// The text that names a track for good: the plug-in and the plug-in's own text.
    static CString trackText(const CString& id, const ITrackResult& track);
    /// The reverse; false for any other text.
    static bool splitTrackText(const CString& text, CString& id, CString& ownText);

    // Settings.

    static bool pluginHasLogin(const CString& id);
    static boost::shared_ptr<ILoginWrapper> getLoginFunctionality(const CString& id);
    static bool getPluginCredentials(const CString& id, CString& user, CString& password);
    static bool
    setPluginCredentials(const CString& id, const CString& user, const CString& password);
    /// Whether it has a folder for music or movies and, where it has a login, a user.
    static bool isPluginConfigured(const CString& id);
    /// Asks the service about the stored credentials.
    static ELoginCheckResult checkPluginCredentials(const CString& id);
    /// The flag has no effect here.
    static ELoginCheckResult
    checkPluginCredentials(const CString& id, CString user, CString password, bool flag);
    static bool savePluginSettings(const CString& id);
    /// The credentials are "" afterwards.
    static bool removePluginSettings(const CString& id);
    /// How many folders may stand between the root and a file: 0 to 260 where nothing is known.
    static void getPluginPathDepthLimits(const CString& id, int& min, int& max);
    /// Relative to the root. A plug-in of artists and albums has its root, as a full path.
    static CString getPluginMusicPath(const CString& id);
    static bool setPluginMusicPath(const CString& id, const CString& path);
    static CString getPluginMoviesPath(const CString& id);
    static bool setPluginMoviesPath(const CString& id, const CString& path);
    /// The stored folders that still exist, or else a guess by the names of folders (see
    /// CQoDeviceUtils); the flags say whether any name means music, or movies.
    static void detectMusicAndMoviesDirs(
        const CString& id, CString& music, CString& movies, bool& foundMusic, bool& foundMovies);
    static bool
    getPluginExtraInputPaths(const CString& id, CStringArray& paths, CQoPathsInfoMap& info);
    static bool setPluginExtraInputPaths(const CString& id,
                                         const CStringArray& paths,
                                         const CQoPathsInfoMap& info);
    // See qo::deviceFullPaths(), qo::devicePathsInfo() and qo::deviceTargetDirs().
    static void getPluginFullPaths(const CString& id, bool rootIfEmpty, CArray<CQoCollPath>& paths);
    static void getPluginQoPathsInfoMap(const CString& id, bool rootIfEmpty, CQoPathsInfoMap& info);
    static void
    getPluginTargetDirs(const CString& id, bool rootIfEmpty, CString& music, CString& movies);
    static CString getPluginMusicUploadRule(const CString& id);
    static bool setPluginMusicUploadRule(const CString& id, const CString& rule);
    static CString getPluginMoviesUploadRule(const CString& id);
    static bool setPluginMoviesUploadRule(const CString& id, const CString& rule);
    static bool getPluginUploadRules(const CString& id, CString& music, CString& movies);
    /// Bytes. With unlimited the numbers mean nothing.
    static bool getPluginFillStateInfo(const CString& id,
                                       std::int64_t& total,
                                       std::int64_t& free,
                                       bool& unlimited);

    // What is in a plug-in.

    /// Waits for a request and releases it; false when it failed or was cancelled. results get what
    /// it gave, whatever its end. With showProgress the progress gets the position in percent, and
    /// with a total in bytes also the bytes, as the low and the high 32 bits of each number.
    static bool getResultsSync(PluginOperationPtr operation,
                               PluginResultArray& results,
                               IQoProgress* progress,
                               bool showProgress = false,
                               std::int64_t total = 0);
    static bool
    getRootPathResultFromPhysicalPlugin(const boost::shared_ptr<IPhysicalBrowseWrapper>& browse,
                                        IQoProgress* progress,
                                        PhysicalResultPtr& result);
    /// The entry of the path's name in its folder. A name that differs in case alone will do if
    /// there is no exact one.
    static bool
    getPathResultFromPhysicalPlugin(const boost::shared_ptr<IPhysicalBrowseWrapper>& browse,
                                    const CQoCollPath& path,
                                    const PhysicalResultPtr& parent,
                                    IQoProgress* progress,
                                    PhysicalResultPtr& result);
    /// The same from the root on.
    static bool getPathResultFromPhysicalPlugin(const CQoCollPath& path,
                                                IQoProgress* progress,
                                                PhysicalResultPtr& result);
    /// The same, ready for a download.
    static bool getOneFilePathResultFromPhysicalPlugin(const CQoCollPath& path,
                                                       IQoProgress* progress,
                                                       PhysicalResultPtr& result);
    /// The artist, album or track, by the number of the path's components. The root has no result.
    static bool
    getPathResultFromLogicalPlugin(const boost::shared_ptr<ILogicalBrowseWrapper>& browse,
                                   const CQoCollPath& path,
                                   IQoProgress* progress,
                                   PluginResultPtr& result);
    static bool getPathResultFromLogicalPlugin(const CQoCollPath& path,
                                               IQoProgress* progress,
                                               PluginResultPtr& result);
    static bool getOneFilePathResultFromPlugin(const CQoCollPath& path,
                                               IQoProgress* progress,
                                               PluginResultPtr& result);

    /// The tracks that the service finds for a text, the best first. False also for a plug-in that
    /// cannot search.
    static bool searchTracks(const CString& id,
                             const CString& text,
                             IQoProgress* progress,
                             CArray<boost::shared_ptr<ITrackResult>>& tracks);

    // Append records with path and size of what is below the path, files with what their tags say.
    // type is a set of EPluginItemType; depth is the number of levels, 1 for the folder alone and
    // 0xffff for all. No more than 64 levels are walked, and each folder once. A scan
    // decides whose tags are fetched, so a second one costs one request for each folder; known
    // files that were read again have dbState::modified. True if all was listed: after a false,
    // what is missing from the files may still be there.

    static bool getFilesFromPhysicalPlugin(EPluginItemType type,
                                           const CQoCollPath& path,
                                           int depth,
                                           IQoProgress* progress,
                                           QoFileDbItemArray& files,
                                           IPluginScan* scan = nullptr);
    static bool getFilesFromPhysicalPlugin(EPluginItemType type,
                                           const boost::shared_ptr<IPhysicalBrowseWrapper>& browse,
                                           const boost::shared_ptr<IDownloadWrapper>& download,
                                           const CQoCollPath& path,
                                           const PhysicalResultPtr& result,
                                           int depth,
                                           IQoProgress* progress,
                                           QoFileDbItemArray& files,
                                           IPluginScan* scan = nullptr);
    static bool getFilesFromLogicalPlugin(const CQoCollPath& path,
                                          IQoProgress* progress,
                                          QoFileDbItemArray& files);
    /// The result is that of the path; null for the root.
    static bool getFilesFromLogicalPlugin(const boost::shared_ptr<ILogicalBrowseWrapper>& browse,
                                          const CQoCollPath& path,
                                          const PluginResultPtr& result,
                                          IQoProgress* progress,
                                          QoFileDbItemArray& files);
    static bool getFilesFromPlugin(EPluginItemType type,
                                   const CQoCollPath& path,
                                   int depth,
                                   IQoProgress* progress,
                                   QoFileDbItemArray& files,
                                   IPluginScan* scan = nullptr);
    /// Reads the tag at the start of a file with two small requests: 10 bytes, and the tag. False
    /// if they failed, so that another time they may not.
    static bool getFileInfoFromPhysicalPlugin(PhysicalResultPtr result,
                                              const boost::shared_ptr<IDownloadWrapper>& download,
                                              const QoFileDbItemPtr& item,
                                              IQoProgress* progress);

    // Transfer.

    /// The first bytes of a file into a local one.
    static bool simpleDownload(const PhysicalResultPtr& result,
                               int bytes,
                               const CString& target,
                               const boost::shared_ptr<IDownloadWrapper>& download,
                               IQoProgress* progress);
    /// The download functionality, or null where ranges cannot be set; whether it is set.
    static bool checkCanSetDownloadRanges(const CString& id,
                                          boost::shared_ptr<IDownloadWrapper>& download);
    static bool canSetDownloadRanges(const CString& id);
    /// Makes the folder with those above it; result is the folder.
    static bool checkCreateDir(const boost::shared_ptr<IPhysicalBrowseWrapper>& browse,
                               const boost::shared_ptr<IPhysicalUploadWrapper>& upload,
                               const CQoCollPath& path,
                               IQoProgress* progress,
                               PhysicalResultPtr& result);
    static bool createDir(const CQoCollPath& path, IQoProgress* progress);
    /// An item that fetches the file to the target and has not begun; null if there is no such
    /// file. With direct the plug-in is asked for the file's own address as well, where it has that
    /// functionality.
    static boost::shared_ptr<IDownloadItem> getDownloadItem(const CQoCollPath& path,
                                                            const CString& target,
                                                            bool direct,
                                                            IQoProgress* progress);
    /// The same for a file or track that a listing or a search gave. The path names it to people.
    static boost::shared_ptr<IDownloadItem>
    getDownloadItem(const CQoCollPath& path, const CString& target, const PluginResultPtr& source);
    /// The same to a path of its own in the temporary folder of the player.
    static boost::shared_ptr<IDownloadItem> getPlayDownloadItem(const CQoCollPath& path);
    /// Starts the item and waits. After a failure or a cancellation there is no target.
    static bool runDownload(IDownloadItem& item, IQoProgress* progress);
    /// Fetches a file and waits. A track of a logical plug-in gets the tag that its path says.
    /// After a failure there is no target.
    static bool downloadFile(const CQoCollPath& path,
                             const CString& target,
                             bool direct,
                             IQoProgress* progress);
    static bool isFileFormatAccepted(const CQoCollPath& path);
    /// Makes the folders of the target as well. The target becomes the path under which the service
    /// has the file; size is that of the source in bytes.
    static bool uploadFile(const CString& source,
                           CQoCollPath& target,
                           std::int64_t size,
                           bool replace,
                           IQoProgress* progress);
    /// Asks for exactly that file; nothing, and true, for a path that is not of a plug-in.
    static bool deleteFile(const CQoCollPath& path, IQoProgress* progress);

private:
    static boost::shared_ptr<IPluginsManager> m_pPluginsManager;
};
