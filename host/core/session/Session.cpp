#include "core/session/Session.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/load/DatabaseGuard.h"
#include "core/roots/IgnoreRules.h"
#include "core/roots/RootFolders.h"
#include "core/roots/StoredRoots.h"
#include "core/session/UsageFile.h"
#include "core/store/HostStore.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Devices.h>
#include <QoKernel/Sharing.h>

#include <algorithm>

namespace qo::host
{
namespace
{
class Module final : public CKVModule
{
};

/// Nothing leaves this machine unless its user says so.
void keepStatisticsHome(KeyValueConfig& settings)
{
    const char16_t* const section = u"Common";
    const char16_t* const key = CQoSettings::getName(CQoSettings::SendUsageStatistics);
    if (settings.isStored(section, key))
        return;
    KVConfig::Section* const common = settings.addSection(KVConfig::ordinarySection, section);
    settings.setValue(settings.addKey(common, key, u"0"), u"0");
}
} // namespace

Session::Session(Options options)
    : m_options(std::move(options)), m_module(std::make_unique<Module>())
{
    openDataFolder();
    const CString settingsFile = specialFolders().data() + u"\\settings";
    if (m_options.withLock)
        m_lock.emplace(toSystemPath(folder() + u"\\lock"), m_options.doing);
    m_settings = std::make_unique<KeyValueConfig>(settingsFile, !savesSettings());
    if (!m_settings->complaint().empty())
        note(m_settings->complaint());
    keepStatisticsHome(*m_settings);
    m_kernel.run([this] { startKernel(); });
    if (m_settings->mayLackSettings())
        restoreLostRoots();
    m_kernel.run([this] { m_settings->save(); });
}

Session::~Session()
{
    m_kernel.run(
        [this]
        {
            m_usage.reset();
            CQoPluginManager::setPluginsManager({});
            setPortableDevices(nullptr);
            m_portables.reset();
            CQoShareManager::SetVelmoraShareManager(nullptr);
            if (!m_options.endsProcess)
                CQoCollection::cleanUpGlobal();
            CQoCollection::m_ownCollection.setScanHost(nullptr);
            // Nothing asks for a setting of a file that is closed.
            initQoKernel(nullptr, nullptr);
            m_settings.reset();
        });
}

void Session::startKernel()
{
    initQoKernel(m_settings.get(), m_module.get());
    CQoCollection::initGlobal();
    CQoCollection::m_ownCollection.setScanHost(&m_scanHost);
    KVConfig::Section* const section = m_settings->addSection(KVConfig::ordinarySection, u"Scan");
    m_ignoredNames = m_settings->addKey(section, u"IgnoredNames", IgnoreRules::defaultNames);
    m_longestJingle = m_settings->addKey(section, u"LongestJingle", u"60");
    m_fileKinds = storedFileKinds(section);
    m_fileKinds.apply();
    if (m_options.plugins)
        CQoPluginManager::setPluginsManager(m_options.plugins(*this));
    if (m_options.portables)
    {
        m_portables = m_options.portables(*this);
        setPortableDevices(m_portables.get());
    }
    if (m_options.shares)
        m_shares = m_options.shares();
    CQoShareManager::SetVelmoraShareManager(m_shares.get());
    if (CQoSettings::getBool(CQoSettings::SendUsageStatistics) && savesSettings())
        m_usage = std::make_unique<UsageFile>(folder() + u"\\usage.json");
}

FileKinds Session::storedFileKinds(KVConfig::Section* section) const
{
    const KVConfig::Key* const key =
        m_settings->addKey(section, FileKinds::setting, FileKinds::defaultList);
    try
    {
        return FileKinds(toUtf8(m_settings->getValue(key)));
    }
    catch (const HostError& error)
    {
        note(std::string("the setting FileKinds is not used: ") + error.what());
        return FileKinds(toUtf8(CString(FileKinds::defaultList)));
    }
}

CString Session::ignoredNames() const
{
    return m_settings->getValue(m_ignoredNames);
}

void Session::note(const std::string& sentence) const
{
    if (m_options.note)
        m_options.note(sentence);
}

void Session::openDataFolder() const
{
    specialFolders().setBase(m_options.dataFolder.empty() ? CString()
                                                          : fromSystemPath(m_options.dataFolder));
    if (!m_options.withLock)
        return;
    const CString wanted = specialFolders().data() + u"\\Qorganizer";
    if (const int error = fileSystem().makeDirectories(wanted))
        throw HostError(ExitCode::failed,
                        "the data folder " + shownPath(wanted) +
                            " cannot be made: " + errorWords(error));
}

void Session::restoreLostRoots()
{
    try
    {
        m_kernel.run(
            [this]
            {
                RootFolders roots;
                const std::string sentence =
                    restoreRoots(unlistedRoots(storedRoots(databasePath()), roots), roots);
                if (sentence.empty())
                    return;
                note(sentence);
                roots.store();
            });
    }
    catch (const HostError& error)
    {
        // Nothing is lost by going on: no load passes over a root folder that has vanished.
        note(std::string("the root folders cannot be looked up: ") + error.what());
    }
}

void Session::saveSettings()
{
    const CString folder = specialFolders().data();
    if (const int error = m_options.saveSettings ? 0 : fileSystem().mayChange(folder))
        throw HostError(ExitCode::failed,
                        "the settings file in " + shownPath(folder) +
                            " cannot be written: " + errorWords(error));
    m_kernel.run([this] { m_settings->save(); });
}

CString Session::folder()
{
    return CQoPaths::getQoDataDir();
}

CString Session::databasePath()
{
    return CQoPaths::getQoDbFilePath();
}

void Session::prepareDatabase(const CString& database, bool isScanned)
{
    DatabaseGuard guard(database);
    MigrationOptions migration = migrationOptions();
    migration.isTrial = database != databasePath();
    for (const std::string& sentence : guard.prepare(migration))
        note(sentence);
    if (isScanned)
        guard.checkPages();
    if (m_options.withLock)
        prepareStore();
    if (!m_options.saveSettings || database != databasePath())
        return;
    const std::string complaint = guard.keepDay();
    if (!complaint.empty())
        note(complaint);
}

bool Session::checkDatabase() const
{
    const CString database = databasePath();
    const DatabaseGuard guard(database);
    if (guard.isSound())
        return true;
    if (m_options.saveSettings && DatabaseMigration::otherVersion(database))
    {
        std::optional<InstanceLock> lock;
        if (!hasLock())
            lock.emplace(toSystemPath(folder() + u"\\lock"), m_options.doing);
        if (const auto report = guard.migrate(migrationOptions()))
            note(report->sentence(database));
    }
    return guard.check();
}

MigrationOptions Session::migrationOptions() const
{
    constexpr int millisecondsPerSecond = 1000;
    constexpr int longest = 86400;
    const int seconds = textToInt(m_settings->getValue(m_longestJingle).view());
    MigrationOptions options;
    options.config.maxJingleDuration =
        static_cast<unsigned>(std::clamp(seconds, 0, longest) * millisecondsPerSecond);
    return options;
}

void Session::prepareStore() const
{
    for (const std::string& sentence : HostStore(folder()).prepare())
        note(sentence);
}

} // namespace qo::host
