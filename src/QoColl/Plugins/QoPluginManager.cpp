#include "QoColl/Plugins/QoPluginManager.h"

#include "Physical/HDSearchResult.h"
#include "QoColl/Devices/DeviceUtils.h"
#include "QoColl/Plugins/Plugin.h"
#include "QoColl/Plugins/PluginResults.h"
#include "QoColl/Plugins/PluginWrappers.h"
#include "common/Log.h"

#include <algorithm>

boost::shared_ptr<IPluginsManager> CQoPluginManager::m_pPluginsManager;

namespace
{
template <class Func>
bool getFunctionality(const CString& id,
                      boost::shared_ptr<Func> (IPlugin::*get)(),
                      boost::shared_ptr<Func>& func)
{
    boost::shared_ptr<IPlugin> plugin;
    func.reset();
    if (CQoPluginManager::getPlugin(id, plugin))
        func = (plugin.get()->*get)();
    return func != nullptr;
}
} // namespace

void CQoPluginManager::setPluginsManager(const boost::shared_ptr<IPluginsManager>& manager)
{
    m_pPluginsManager = manager;
    CHDSearchResult::setTrackSource(&getTrackWebSource);
}

CQoCollPath CQoPluginManager::createPath(const CString& id, const char16_t* path)
{
    CQoCollPath::EDeviceType type = CQoCollPath::invalid;
    if (isPhysicalBrowsePlugin(id))
        type = CQoCollPath::physicalPlugin;
    else if (isLogicalBrowsePlugin(id))
        type = CQoCollPath::logicalPlugin;
    if (type == CQoCollPath::invalid)
    {
        qo::log(qo::level::error,
                u"CQoPluginManager::createPath : plugin '%s' is not physical or logical",
                id);
        return {};
    }
    return qo::deviceFullPath({type, id}, path);
}

bool CQoPluginManager::getPlugin(const CString& id, boost::shared_ptr<IPlugin>& plugin)
{
    plugin.reset();
    if (m_pPluginsManager)
        plugin = m_pPluginsManager->GetPlugin(id);
    if (!plugin)
        qo::log(qo::level::error, u"CQoPluginManager::getPlugin : plugin '%s' not found", id);
    return plugin != nullptr;
}

bool CQoPluginManager::existPlugin(const CString& id)
{
    return m_pPluginsManager && m_pPluginsManager->GetPlugin(id);
}

void CQoPluginManager::getBrowsePlugins(CStringArray& ids)
{
    ids.RemoveAll();
    if (m_pPluginsManager)
        m_pPluginsManager->GetBrowsePlugins(ids);
}

void CQoPluginManager::getConfiguredBrowsePlugins(CStringArray& ids, bool /*flag*/)
{
    CStringArray all;
    getBrowsePlugins(all);
    ids.RemoveAll();
    for (const CString& id : all)
    {
        if (isPluginConfigured(id))
            ids.Add(id);
    }
}

bool CQoPluginManager::isLogicalBrowsePlugin(const CString& id)
{
    boost::shared_ptr<ILogicalBrowseWrapper> func;
    return getLogicalBrowseFuncFromPlugin(id, func);
}

bool CQoPluginManager::isPhysicalBrowsePlugin(const CString& id)
{
    boost::shared_ptr<IPhysicalBrowseWrapper> func;
    return getPhysicalBrowseFuncFromPlugin(id, func);
}

bool CQoPluginManager::canDownloadFromPlugin(const CString& id)
{
    boost::shared_ptr<IDownloadWrapper> func;
    return getDownloadFuncFromPlugin(id, func);
}

bool CQoPluginManager::canUploadToPlugin(const CString& id)
{
    boost::shared_ptr<IPhysicalUploadWrapper> physical;
    boost::shared_ptr<ILogicalUploadWrapper> logical;
    return getPhysicalUploadFuncFromPlugin(id, physical) ||
           getLogicalUploadFuncFromPlugin(id, logical);
}

bool CQoPluginManager::getPhysicalBrowseFuncFromPlugin(
    const CString& id, boost::shared_ptr<IPhysicalBrowseWrapper>& func)
{
    return getFunctionality(id, &IPlugin::GetPhysicalBrowse, func);
}

bool CQoPluginManager::getPhysicalBrowseDownloadpathFuncFromPlugin(
    const CString& id, boost::shared_ptr<IPhysicalBrowseDownloadpathWrapper>& func)
{
    return getFunctionality(id, &IPlugin::GetPhysicalBrowseDownloadpath, func);
}

bool CQoPluginManager::getLogicalBrowseFuncFromPlugin(
    const CString& id, boost::shared_ptr<ILogicalBrowseWrapper>& func)
{
    return getFunctionality(id, &IPlugin::GetLogicalBrowse, func);
}

bool CQoPluginManager::getDownloadFuncFromPlugin(const CString& id,
                                                 boost::shared_ptr<IDownloadWrapper>& func)
{
    return getFunctionality(id, &IPlugin::GetDownload, func);
}

bool CQoPluginManager::getPhysicalUploadFuncFromPlugin(
    const CString& id, boost::shared_ptr<IPhysicalUploadWrapper>& func)
{
    return getFunctionality(id, &IPlugin::GetPhysicalUpload, func);
}

bool CQoPluginManager::getLogicalUploadFuncFromPlugin(
    const CString& id, boost::shared_ptr<ILogicalUploadWrapper>& func)
{
    return getFunctionality(id, &IPlugin::GetLogicalUpload, func);
}

boost::shared_ptr<ILoginWrapper> CQoPluginManager::getLoginFunctionality(const CString& id)
{
    boost::shared_ptr<ILoginWrapper> login;
    getFunctionality(id, &IPlugin::GetLogin, login);
    return login;
}

bool CQoPluginManager::isAmazonCloudDrive(const CString& id)
{
    return id.CompareNoCase(u"Amazon Cloud Drive") == 0;
}

bool CQoPluginManager::isWebDAV(const CString& id)
{
    return id.CompareNoCase(u"WebDAV") == 0;
}

bool CQoPluginManager::isGoogleMusic(const CString& id)
{
    return id.CompareNoCase(u"GoogleMusic") == 0;
}

CString CQoPluginManager::getStratoHiDriveID()
{
    return u"STRATO HiDrive";
}

bool CQoPluginManager::isStratoHiDriveID(const CString& id)
{
    return id.CompareNoCase(getStratoHiDriveID()) == 0;
}

bool CQoPluginManager::isStratoHiDriveConfigured()
{
    return isPluginConfigured(getStratoHiDriveID());
}

void CQoPluginManager::removeNonStratoPluginSettings()
{
    CStringArray ids;
    getBrowsePlugins(ids);
    for (const CString& id : ids)
    {
        if (!isStratoHiDriveID(id))
            removePluginSettings(id);
    }
}

CString CQoPluginManager::getDropboxID()
{
    return u"Dropbox";
}

bool CQoPluginManager::isDropbox(const CString& id)
{
    return id.CompareNoCase(getDropboxID()) == 0;
}

bool CQoPluginManager::isDropboxInstalled()
{
    boost::shared_ptr<IPhysicalBrowseWrapper> browse;
    PhysicalResultPtr root;
    return existPlugin(getDropboxID()) && getPhysicalBrowseFuncFromPlugin(getDropboxID(), browse) &&
           getRootPathResultFromPhysicalPlugin(browse, nullptr, root);
}

bool CQoPluginManager::shouldShowPhysicalPluginWarning(const CString& id)
{
    return isPhysicalBrowsePlugin(id) && !isDropbox(id) && !canSetDownloadRanges(id);
}

CString CQoPluginManager::getPluginUserRegistrationUrl(const CString& id)
{
    boost::shared_ptr<IPlugin> plugin;
    return getPlugin(id, plugin) ? plugin->GetUserRegistrationUrl() : CString();
}

bool CQoPluginManager::pluginHasCustomConfigDlg(const CString& id)
{
    boost::shared_ptr<IPlugin> plugin;
    return getPlugin(id, plugin) && plugin->HasCustomConfigDialog();
}

bool CQoPluginManager::pluginOpenCustomConfigDlg(const CString& id)
{
    boost::shared_ptr<IPlugin> plugin;
    return getPlugin(id, plugin) && plugin->OpenCustomConfigDialog();
}

CString CQoPluginManager::getPluginIconPath(const CString& id)
{
    boost::shared_ptr<IPlugin> plugin;
    return getPlugin(id, plugin) ? plugin->GetIconPath() : CString();
}

CString CQoPluginManager::getTrackWebSource(const CString& id)
{
    CString pluginId = id;
    CString ownText;
    splitTrackText(id, pluginId, ownText);
    // No line in the log: a list of search results asks this for each of its rows.
    const boost::shared_ptr<IPlugin> plugin =
        m_pPluginsManager ? m_pPluginsManager->GetPlugin(pluginId) : boost::shared_ptr<IPlugin>();
    return plugin ? plugin->GetTrackWebSource() : CString();
}

CString CQoPluginManager::trackText(const CString& id, const ITrackResult& track)
{
    CStringArray components;
    components.Add(track.GetText());
    return CQoCollPath(CQoCollPath::logicalPlugin, id, components).toString();
}

bool CQoPluginManager::splitTrackText(const CString& text, CString& id, CString& ownText)
{
    const CQoCollPath path(text);
    if (!path.isLogicalPlugin() || path.getCount() != 1)
        return false;
    id = path.getDevice();
    ownText = path.getLast();
    return true;
}
