#pragma once

#include "QoColl/Plugins/Forward.h"
#include "common/PathsInfoMap.h"
#include "types/Export.h"
#include "types/StringArray.h"

/// A storage service: a cloud, a music server, a mounted folder. Its id is its display name. It
/// offers some of the functionalities of PluginWrappers.h, the same ones as long as it lives; null
/// stands for one that it does not have. It keeps its settings in any way, and a password where
/// others cannot read it. Setters keep values for this run, and for good from
/// IPluginsManager::SavePluginSettings() on. Handles of functionalities may live longer than the
/// plug-in's own.
class QO_API IPlugin
{
public:
    virtual ~IPlugin();
    virtual CString GetId() const = 0;

    virtual boost::shared_ptr<IPhysicalBrowseWrapper> GetPhysicalBrowse();
    virtual boost::shared_ptr<IPhysicalBrowseDownloadpathWrapper> GetPhysicalBrowseDownloadpath();
    virtual boost::shared_ptr<IPhysicalUploadWrapper> GetPhysicalUpload();
    virtual boost::shared_ptr<IDownloadWrapper> GetDownload();
    virtual boost::shared_ptr<ILogicalBrowseWrapper> GetLogicalBrowse();
    virtual boost::shared_ptr<ILogicalUploadWrapper> GetLogicalUpload();
    virtual boost::shared_ptr<ILoginWrapper> GetLogin();
    virtual boost::shared_ptr<ISearchWrapper> GetSearch();

    virtual void GetCredentials(CString& user, CString& password) = 0;
    virtual void SetCredentials(const CString& user, const CString& password) = 0;

    // Folders are relative to the root, with backslashes between names: "Media\Music".
    virtual CString GetMusicPath() = 0;
    virtual void SetMusicPath(const CString& path) = 0;
    virtual CString GetMoviesPath() = 0;
    virtual void SetMoviesPath(const CString& path) = 0;
    virtual CString GetMusicUploadRule() = 0;
    virtual void SetMusicUploadRule(const CString& rule) = 0;
    virtual CString GetMoviesUploadRule() = 0;
    virtual void SetMoviesUploadRule(const CString& rule) = 0;
    /// Further input folders, with the type of each.
    virtual void GetExtraPaths(CStringArray& paths, CQoPathsInfoMap& info) = 0;
    virtual void SetExtraPaths(const CStringArray& paths, const CQoPathsInfoMap& info) = 0;

    virtual CString GetIconPath() { return {}; }
    virtual CString GetUserRegistrationUrl() { return {}; }
    virtual bool HasCustomConfigDialog() { return false; }
    /// False if there is none, or the user left it without a change.
    virtual bool OpenCustomConfigDialog() { return false; }
    /// Where its tracks come from, in the words that users know; "" for none.
    virtual CString GetTrackWebSource() { return {}; }
};

/// All plug-ins of the host. Ids are compared without regard to case.
class QO_API IPluginsManager
{
public:
    virtual ~IPluginsManager();
    /// Null if there is none.
    virtual boost::shared_ptr<IPlugin> GetPlugin(const CString& id) = 0;
    /// The ids of the plug-ins that can be browsed.
    virtual void GetBrowsePlugins(CStringArray& ids) = 0;
    /// False if there is no such plug-in, or the settings cannot be written.
    virtual bool SavePluginSettings(const CString& id) = 0;
    virtual bool RemovePluginSettings(const CString& id) = 0;
};
