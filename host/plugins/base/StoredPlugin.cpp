#include "plugins/base/StoredPlugin.h"

#include <algorithm>

namespace qo::host
{
namespace
{
constexpr const char16_t* extraPathsKey = u"ExtraPaths";

struct TextSetting
{
    const char16_t* key;
    CString PluginValues::*value;
};
constexpr TextSetting textSettings[] = {{u"User", &PluginValues::user},
                                        {u"MusicPath", &PluginValues::musicPath},
                                        {u"MoviesPath", &PluginValues::moviesPath},
                                        {u"MusicUploadRule", &PluginValues::musicRule},
                                        {u"MoviesUploadRule", &PluginValues::moviesRule}};

/// Folders and types in turn, a line each.
CString extraPathsText(const PluginValues& values)
{
    CStringArray lines;
    for (const CString& path : values.extraPaths)
    {
        CString type;
        type.Format(u"%d", static_cast<int>(values.extraTypes.getType(path)));
        lines.Add(path);
        lines.Add(type);
    }
    return lines.join(u"\n");
}

void readExtraPaths(const CString& text, PluginValues& values)
{
    const CStringArray lines = CStringArray::split(text, u'\n');
    for (int i = 0; i + 1 < lines.GetSize(); i += 2)
    {
        const int type = textToInt(lines[i + 1].view());
        if (!CQoPathInfo::isType(type))
            continue;
        values.extraPaths.Add(lines[i]);
        values.extraTypes.SetAt(lines[i], static_cast<CQoPathInfo::EType>(type));
    }
}
} // namespace

StoredPlugin::StoredPlugin(const CString& id,
                           KVConfig* store,
                           const std::optional<PasswordStore>& passwords)
    : m_id(id), m_store(store)
{
    if (!m_store)
        return;
    for (const TextSetting& setting : textSettings)
        m_values.*setting.value = m_store->getValue(key(setting.key));
    readExtraPaths(m_store->getValue(key(extraPathsKey)), m_values);
    if (passwords && !m_values.user.IsEmpty())
        m_login = Login(m_values.user,
                        [store = *passwords, id](const Login::IsCanceled& isCanceled)
                        { return store.read(id, isCanceled); });
}

StoredPlugin::~StoredPlugin() = default;

KVConfig::Key* StoredPlugin::key(const char16_t* name) const
{
    KVConfig::Section* const section =
        m_store->addSection(KVConfig::ordinarySection, u"Plugin " + m_id);
    return m_store->addKey(section, name, u"");
}

bool StoredPlugin::saveSettings()
{
    if (!m_store)
        return true;
    for (const TextSetting& setting : textSettings)
        m_store->setValue(key(setting.key), m_values.*setting.value);
    m_store->setValue(key(extraPathsKey), extraPathsText(m_values));
    return true;
}

bool StoredPlugin::removeSettings()
{
    m_values = PluginValues();
    m_login = Login();
    return saveSettings();
}

void StoredPlugin::GetCredentials(CString& user, CString& password)
{
    user = m_values.user;
    password = m_login.known().text();
}

void StoredPlugin::SetCredentials(const CString& user, const CString& password)
{
    m_values.user = user;
    m_login.change(user, password);
}

void StoredPlugin::GetExtraPaths(CStringArray& paths, CQoPathsInfoMap& info)
{
    paths = m_values.extraPaths;
    info = m_values.extraTypes;
}

void StoredPlugin::SetExtraPaths(const CStringArray& paths, const CQoPathsInfoMap& info)
{
    m_values.extraPaths = paths;
    m_values.extraTypes = info;
}

boost::shared_ptr<StoredPlugin> PluginList::find(const CString& id) const
{
    const auto found = std::find_if(m_plugins.begin(),
                                    m_plugins.end(),
                                    [&](const boost::shared_ptr<StoredPlugin>& plugin)
                                    { return plugin->GetId().CompareNoCase(id) == 0; });
    return found == m_plugins.end() ? boost::shared_ptr<StoredPlugin>() : *found;
}

void PluginList::GetBrowsePlugins(CStringArray& ids)
{
    for (const auto& plugin : m_plugins)
    {
        if (plugin->GetPhysicalBrowse() || plugin->GetLogicalBrowse())
            ids.Add(plugin->GetId());
    }
}

bool PluginList::SavePluginSettings(const CString& id)
{
    const boost::shared_ptr<StoredPlugin> plugin = find(id);
    return plugin && plugin->saveSettings();
}

bool PluginList::RemovePluginSettings(const CString& id)
{
    const boost::shared_ptr<StoredPlugin> plugin = find(id);
    return plugin && plugin->removeSettings();
}
} // namespace qo::host
