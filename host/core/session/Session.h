#pragma once

#include "core/load/DatabaseMigration.h"
#include "core/session/FileKinds.h"
#include "core/session/InstanceLock.h"
#include "core/session/KernelThread.h"
#include "core/session/KeyValueConfig.h"
#include "core/session/ProgressReporter.h"
#include "core/session/ScanHost.h"

#include <boost/smart_ptr/shared_ptr.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class CKVModule;
class IPluginsManager;
class IVelmoraShareManager;

namespace qo
{
class IPortableDevices;
} // namespace qo

namespace qo::host
{
class UsageFile;

/// A running kernel over one data folder, from its start to its end. At most one in a process. All
/// kernel calls, and the calls here that say so, go to the kernel's thread.
class Session
{
public:
    struct Options
    {
        std::string dataFolder; ///< absolute system path; "" for the user's own
        bool withLock = true;   ///< without it nothing is changed, not even the settings
        std::string doing;      ///< what a process that waits for the lock is told of this one
        bool saveSettings = true;
        /// The process ends with this session, by std::_Exit(), so that the collection stays as it
        /// is: the system takes its memory back as a whole.
        bool endsProcess = false;
        std::function<void(const std::string&)>
            note; ///< takes sentences for the user; may be empty
        /// Makes the plug-ins of the session, on the kernel's thread; may be empty.
        std::function<boost::shared_ptr<IPluginsManager>(Session&)> plugins;
        /// Likewise the way to portable devices; may be empty.
        std::function<std::unique_ptr<IPortableDevices>(Session&)> portables;
        /// Makes what fetches from friends, likewise.
        std::function<std::unique_ptr<IVelmoraShareManager>()> shares;
    };

    /// Takes the lock and starts the kernel. Throws HostError.
    explicit Session(Options options);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    KernelThread& kernel() { return m_kernel; }
    /// Whether this one may change what is in the data folder.
    bool hasLock() const { return m_lock.has_value(); }
    /// Whether its settings are to be kept.
    bool savesSettings() const { return hasLock() && m_options.saveSettings; }
    /// For the kernel's thread.
    KeyValueConfig& settings() { return *m_settings; }
    /// Likewise: what the own collection asks and tells.
    ScanHost& scanHost() { return m_scanHost; }
    /// Likewise: the names that a scan leaves out, as IgnoreRules take them.
    CString ignoredNames() const;
    /// Likewise: which further extensions count as music and pictures. The kernel goes by them.
    const FileKinds& fileKinds() const { return m_fileKinds; }
    /// Whether usage is counted: only where the user has asked for it.
    bool countsUsage() const { return m_usage != nullptr; }
    void saveSettings();
    void note(const std::string& sentence) const;

    // The rest is for the kernel's thread.

    /// Where the lock, the database and the host's own store stand; made when absent.
    static CString folder();
    static CString databasePath();

    /// Makes sure that there is a database that may be opened, carried over from another version if
    /// need be, before a scan that all of it is sound, and with the lock of the host's own store
    /// too. Throws HostError.
    void prepareDatabase(const CString& database, bool isScanned = false);
    /// For whoever only reads: false when there is no collection yet. Changes nothing, but for a
    /// database of another version: that is carried over, with the lock for that time, unless
    /// nothing may be saved. Throws HostError.
    bool checkDatabase() const;
    /// How a database of another version is carried over as the settings say.
    MigrationOptions migrationOptions() const;
    /// The store alone; with the lock. Throws HostError.
    void prepareStore() const;

private:
    void openDataFolder() const;
    void restoreLostRoots();
    void startKernel();
    FileKinds storedFileKinds(KVConfig::Section* section) const;

    Options m_options;
    std::unique_ptr<CKVModule> m_module;
    std::optional<InstanceLock> m_lock;
    std::unique_ptr<KeyValueConfig> m_settings;
    ScanHost m_scanHost;
    KVConfig::Key* m_ignoredNames = nullptr;
    KVConfig::Key* m_longestJingle = nullptr; ///< in seconds
    FileKinds m_fileKinds;
    std::unique_ptr<UsageFile> m_usage;
    std::unique_ptr<IPortableDevices> m_portables;
    std::unique_ptr<IVelmoraShareManager> m_shares;
    KernelThread m_kernel;
};
} // namespace qo::host
