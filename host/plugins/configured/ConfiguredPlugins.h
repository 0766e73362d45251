#pragma once

#include "core/load/FarScan.h"
#include "core/session/Session.h"
#include "plugins/base/StoredPlugin.h"

#include <string>
#include <vector>

/// The plug-ins that the user has logged in to, as the settings name them: "[Plugins] NAME=folder
/// C:\mnt\nas". All functions are for the kernel's thread.
namespace qo::host
{
/// What is known of a plug-in without asking its service.
struct PluginEntry
{
    CString name;
    CString kind;  ///< "folder", "webdav" or "subsonic"
    CString place; ///< the folder in collection form, or the address
    /// The file with the authorities that a WebDAV server's certificate is checked by, in
    /// collection form; "" for those of the system.
    CString authorities = {};
};

/// In the order of the settings.
std::vector<PluginEntry> pluginEntries(const KeyValueConfig& settings);

/// The plug-in of an entry. Throws HostError for a kind that there is not, and for a place that
/// cannot be one of the kind.
boost::shared_ptr<StoredPlugin>
makePlugin(const PluginEntry& entry,
           KVConfig* store,
           const std::optional<PasswordStore>& passwords = std::nullopt);

/// All plug-ins of the session's settings, which are made when one is first asked for; an entry
/// that makes no plug-in costs a note then.
boost::shared_ptr<IPluginsManager> configuredPlugins(Session& session);

/// What a password that is kept or removed needs to know. The desktop may ask the user to unlock
/// its store, which isCanceled ends; it may be empty.
struct PasswordUse
{
    PasswordPlace place = PasswordPlace::best;
    PasswordStore::IsCanceled isCanceled = {};
};

/// Enters a plug-in that has been tried, with its credentials, or in place of the former one of
/// that name. Throws HostError when the password cannot be kept.
void enterPlugin(Session& session,
                 const PluginEntry& entry,
                 IPlugin& tried,
                 const PasswordUse& use);
/// The files of its folders for music and movies, or of all of it.
FarCollection pluginCollection(const CString& name);
/// Takes what is known of its files out of the database, whatever its kind is or was. Throws
/// HostError.
void dropPluginCollections(const CString& name);
/// Takes it out, with its settings and its password. Its files stay. Throws HostError, and changes
/// nothing, when the store of its password is locked.
void removePlugin(Session& session, const CString& name, const PasswordUse& use);
} // namespace qo::host
