#include "plugins/configured/ConfiguredPlugins.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/search/SearchResults.h"
#include "far/FarEnds.h"
#include "plugins/base/PasswordStore.h"
#include "plugins/folder/FolderPlugin.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <optional>

namespace qo::host
{
namespace
{
constexpr const char16_t* pluginsSection = u"Plugins";

constexpr const char16_t* authoritiesKey = u"Authorities";

CString sectionOf(const CString& plugin)
{
    return u"Plugin " + plugin;
}

/// The plug-ins, made when one is first asked for.
class ConfiguredPlugins final : public IPluginsManager
{
public:
    explicit ConfiguredPlugins(Session& session) : m_session(session) {}

    boost::shared_ptr<IPlugin> GetPlugin(const CString& id) override
    {
        return list().GetPlugin(id);
    }
    void GetBrowsePlugins(CStringArray& ids) override { list().GetBrowsePlugins(ids); }
    bool SavePluginSettings(const CString& id) override { return list().SavePluginSettings(id); }
    bool RemovePluginSettings(const CString& id) override
    {
        return list().RemovePluginSettings(id);
    }

private:
    PluginList& list()
    {
        if (m_list)
            return *m_list;
        m_list.emplace();
        for (const PluginEntry& entry : pluginEntries(m_session.settings()))
            add(entry);
        return *m_list;
    }
    void add(const PluginEntry& entry)
    {
        try
        {
            m_list->add(makePlugin(
                entry, &m_session.settings(), PasswordStore(!m_session.savesSettings())));
        }
        catch (const HostError& error)
        {
            m_session.note("the plug-in " + toUtf8(entry.name) + " is left out: " + error.what());
        }
    }

    Session& m_session;
    std::optional<PluginList> m_list;
};

/// The user as whom the plug-in logged in last; "" for one that cannot be made any more.
CString userOf(const PluginEntry& entry, KeyValueConfig& settings)
{
    CString user;
    CString password;
    try
    {
        makePlugin(entry, &settings)->GetCredentials(user, password);
    }
    catch (const HostError&)
    {
        return {};
    }
    return user;
}

/// Removes a key of a store, but not those of the same name in other sections.
void unsetAll(KeyValueConfig& store, const CString& section, const CString& onlyKey = CString())
{
    for (const KeyValueConfig::Entry& entry : store.entries())
    {
        const bool isMeant = entry.section == section &&
                             (onlyKey.IsEmpty() || entry.key.CompareNoCase(onlyKey) == 0);
        if (isMeant)
            store.unset(
                store.addKey(store.addSection(KVConfig::ordinarySection, section), entry.key, u""));
    }
}
} // namespace

std::vector<PluginEntry> pluginEntries(const KeyValueConfig& settings)
{
    std::vector<PluginEntry> list;
    for (const KeyValueConfig::Entry& entry : settings.entries())
    {
        const int blank = entry.value.Find(u' ');
        if (entry.section == pluginsSection && entry.isStored)
            list.push_back({entry.key,
                            blank < 0 ? entry.value : entry.value.Left(blank),
                            blank < 0 ? CString() : entry.value.Mid(blank + 1)});
    }
    for (const KeyValueConfig::Entry& entry : settings.entries())
    {
        for (PluginEntry& plugin : list)
        {
            if (entry.key == authoritiesKey && entry.section == sectionOf(plugin.name))
                plugin.authorities = entry.value;
        }
    }
    return list;
}

boost::shared_ptr<StoredPlugin>
makePlugin(const PluginEntry& entry, KVConfig* store, const std::optional<PasswordStore>& passwords)
{
    if (entry.place.IsEmpty())
        throw HostError(ExitCode::usage, "it has no place");
    if (entry.kind == u"folder")
        return boost::make_shared<FolderPlugin>(entry.name, entry.place, store);
    if (const auto plugin = farEnds().plugin(entry, store, passwords))
        return plugin;
    throw HostError(ExitCode::usage, "there is no kind of plug-ins \"" + toUtf8(entry.kind) + "\"");
}

boost::shared_ptr<IPluginsManager> configuredPlugins(Session& session)
{
    return boost::make_shared<ConfiguredPlugins>(session);
}

void enterPlugin(Session& session, const PluginEntry& entry, IPlugin& tried, const PasswordUse& use)
{
    KeyValueConfig& settings = session.settings();
    PasswordStore::needPrivateFile();
    CString user;
    CString password;
    const PassingSecret secret(password);
    tried.GetCredentials(user, password);
    for (const PluginEntry& former : pluginEntries(settings))
    {
        if (former.name.CompareNoCase(entry.name) != 0)
            continue;
        // What is known of another service would be taken for this one's. Another user of the same
        // service may get other tracks, or none, by the ids that were found.
        if (former.kind != entry.kind || former.place != entry.place)
            dropPluginCollections(former.name);
        else if (userOf(former, settings) != user)
            SearchResults().forgetUnusedOf(former.name);
    }
    if (!password.IsEmpty())
        PasswordStore(!session.savesSettings())
            .write(entry.name, Secret(password), use.place, use.isCanceled);
    settings.setValue(
        settings.addKey(
            settings.addSection(KVConfig::ordinarySection, pluginsSection), entry.name, u""),
        entry.kind + u" " + entry.place);
    unsetAll(settings, sectionOf(entry.name), authoritiesKey);
    if (!entry.authorities.IsEmpty())
    {
        KVConfig::Section* const section =
            settings.addSection(KVConfig::ordinarySection, sectionOf(entry.name));
        settings.setValue(settings.addKey(section, authoritiesKey, u""), entry.authorities);
    }
    CQoPluginManager::setPluginsManager(configuredPlugins(session));
    CQoPluginManager::setPluginCredentials(entry.name, user, password);
    CQoPluginManager::setPluginMusicPath(entry.name, tried.GetMusicPath());
    CQoPluginManager::setPluginMoviesPath(entry.name, tried.GetMoviesPath());
    if (!CQoPluginManager::savePluginSettings(entry.name))
        throw HostError(ExitCode::failed,
                        "the settings of " + toUtf8(entry.name) + " cannot be saved");
}

void dropPluginCollections(const CString& name)
{
    for (const auto type : {CQoCollPath::physicalPlugin, CQoCollPath::logicalPlugin})
        dropFar(CQoCollPath(type, name).toString());
    SearchResults().forgetUnusedOf(name);
}

FarCollection pluginCollection(const CString& name)
{
    const CQoCollPath root = CQoPluginManager::createPath(name);
    FarCollection collection;
    collection.name = toUtf8(name);
    collection.id = root.toString();
    const bool areAll = CQoPluginManager::getPluginMusicPath(name).IsEmpty() &&
                        CQoPluginManager::getPluginMoviesPath(name).IsEmpty();
    CArray<CQoCollPath> paths;
    CQoPluginManager::getPluginFullPaths(name, areAll, paths);
    for (const CQoCollPath& path : paths)
        collection.folders.Add(path.toString());
    CQoPluginManager::getPluginQoPathsInfoMap(name, areAll, collection.kinds);
    return collection;
}

void removePlugin(Session& session, const CString& name, const PasswordUse& use)
{
    KeyValueConfig& settings = session.settings();
    const bool isPasswordGone =
        PasswordStore(!session.savesSettings()).remove(name, use.isCanceled);
    CString user;
    CString password;
    CQoPluginManager::getPluginCredentials(name, user, password);
    if (!isPasswordGone && !user.IsEmpty())
        session.note("the password of " + toUtf8(name) +
                     " may be left in the desktop's store of passwords, which does not run now");
    CQoPluginManager::removePluginSettings(name);
    CQoPluginManager::setPluginsManager({});
    unsetAll(settings, pluginsSection, name);
    unsetAll(settings, sectionOf(name));
    CQoPluginManager::setPluginsManager(configuredPlugins(session));
}
} // namespace qo::host
