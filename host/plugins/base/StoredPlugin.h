#pragma once

#include "plugins/base/Login.h"
#include "plugins/base/PasswordStore.h"

#include <QoKernel/Devices.h>
#include <QoKernel/Kernel.h>

#include <optional>

namespace qo::host
{
/// The settings that every plug-in has.
struct PluginValues
{
    CString user;
    CString musicPath;
    CString moviesPath;
    CString musicRule;
    CString moviesRule;
    CStringArray extraPaths;
    CQoPathsInfoMap extraTypes;
};

/// A plug-in that keeps its settings in the host's store, in a section "Plugin NAME". Its password
/// comes out of a store of its own when the service is first asked something; who enters the
/// plug-in puts it there.
class StoredPlugin : public IPlugin
{
public:
    /// The store outlives the plug-in's use. What has none is not kept for longer than the run.
    StoredPlugin(const CString& id,
                 KVConfig* store,
                 const std::optional<PasswordStore>& passwords = std::nullopt);
    ~StoredPlugin() override;
    StoredPlugin(const StoredPlugin&) = delete;
    StoredPlugin& operator=(const StoredPlugin&) = delete;

    /// False if they cannot be kept.
    virtual bool saveSettings();
    virtual bool removeSettings();

    CString GetId() const override { return m_id; }
    /// The password is "" unless it was set in this run.
    void GetCredentials(CString& user, CString& password) override;
    void SetCredentials(const CString& user, const CString& password) override;
    CString GetMusicPath() override { return m_values.musicPath; }
    void SetMusicPath(const CString& path) override { m_values.musicPath = path; }
    CString GetMoviesPath() override { return m_values.moviesPath; }
    void SetMoviesPath(const CString& path) override { m_values.moviesPath = path; }
    CString GetMusicUploadRule() override { return m_values.musicRule; }
    void SetMusicUploadRule(const CString& rule) override { m_values.musicRule = rule; }
    CString GetMoviesUploadRule() override { return m_values.moviesRule; }
    void SetMoviesUploadRule(const CString& rule) override { m_values.moviesRule = rule; }
    void GetExtraPaths(CStringArray& paths, CQoPathsInfoMap& info) override;
    void SetExtraPaths(const CStringArray& paths, const CQoPathsInfoMap& info) override;

protected:
    const Login& login() const { return m_login; }

private:
    KVConfig::Key* key(const char16_t* name) const;

    const CString m_id;
    KVConfig* const m_store;
    PluginValues m_values;
    Login m_login;
};

/// The plug-ins that this host has.
class PluginList final : public IPluginsManager
{
public:
    void add(const boost::shared_ptr<StoredPlugin>& plugin) { m_plugins.Add(plugin); }

    boost::shared_ptr<IPlugin> GetPlugin(const CString& id) override { return find(id); }
    void GetBrowsePlugins(CStringArray& ids) override;
    bool SavePluginSettings(const CString& id) override;
    bool RemovePluginSettings(const CString& id) override;

private:
    boost::shared_ptr<StoredPlugin> find(const CString& id) const;

    CArray<boost::shared_ptr<StoredPlugin>> m_plugins;
};
} // namespace qo::host
