#pragma once

#include "core/FailureMemory.h"
#include "core/InstanceLock.h"
#include "core/KernelThread.h"
#include "core/KeyValueConfig.h"
#include "core/ProgressReporter.h"
#include "core/SlicedScan.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

class CKVModule;

namespace qo::host
{
class RootFolders;
class RootSentinel;
struct RootProblem;
class UnfinishedScan;

/// A running kernel over one data folder, from its start to its end. At most one in a process. All
/// kernel calls, and the calls here that say so, go to the kernel's thread.
class Session
{
public:
    struct Options
    {
        std::string dataFolder; ///< absolute system path; "" for the user's own
        bool withLock = true;   ///< without it the settings are read-only
        bool saveSettings = true;
        std::function<void(const std::string&)>
            note; ///< takes sentences for the user; may be empty
    };

    struct LoadOptions
    {
        bool rescan = false;
        bool allowMissingRoot = false;
        CString database;    ///< "" for the collection's own; another one for a trial run
        bool isLast = false; ///< nobody looks at the logical tree afterwards: it may be out of date
        int filesInSlice =
            SlicedScan::defaultSlice; ///< of folders that are scanned for the first time
    };

    struct LoadReport
    {
        int files = 0;
        int added = 0;
        int changed = 0;
        int gone = 0;
        bool walked = false; ///< whether the root folders were looked through
        double seconds = 0;
    };

    /// Takes the lock and starts the kernel. Throws HostError.
    explicit Session(Options options);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    KernelThread& kernel() { return m_kernel; }
    FailureMemory& failures() { return *m_failures; }
    /// For the kernel's thread.
    KeyValueConfig& settings() { return *m_settings; }
    void saveSettings();
    void note(const std::string& sentence) const;

    // The rest is for the kernel's thread.

    /// Where the lock, the database and the pending edits stand; made when absent.
    static CString folder();
    static CString databasePath();
    static CString pendingTagsPath();

    /// Makes sure that there is a database that may be opened. Throws HostError.
    void prepareDatabase(const CString& database);
    /// Whether a plain load would look through the root folders.
    static bool wouldWalk(const CString& database, bool& wasNeverScanned);
    /// Whether the first scan of a root folder was interrupted: the next scan goes on with it.
    static bool hasUnfinishedScan();
    /// Loads the user's collection. A rescan reads root folders that are new in slices, and keeps
    /// each of them whatever comes after. Throws HostError: away when a root folder is not there,
    /// or is in the database but without the user's doing no longer in the settings, interrupted
    /// when it was stopped, failed when it could not be loaded or saved.
    LoadReport load(const LoadOptions& options, ProgressReporter& progress);

private:
    void openDataFolder() const;
    void restoreLostRoots();
    LoadReport
    loadGuarded(const LoadOptions& options, const CString& database, ProgressReporter& progress);
    /// The root folders that are away and whose files may leave the collection.
    static std::vector<RootProblem> guardRoots(bool allowMissingRoot, const CString& database);
    static std::string interruptedText(bool wasNeverScanned, bool walked);
    static void checkSaved(const CString& database, const std::string& cause);
    /// The collection as the database has it.
    void loadStored(const CString& database, RootSentinel& sentinel, ProgressReporter& progress);
    /// Lets the database know where files went when a move was cut short, before anything else
    /// looks at it.
    void followMoves(const RootFolders& roots, const CString& database, ProgressReporter& progress);
    /// The folders of a rescan that are to be read in slices.
    static CollPathArray
    firstScanned(const RootFolders& roots, const UnfinishedScan& mark, const CString& database);
    /// Scans in slices if there are such folders; false when a scan in one piece is needed.
    bool scanInSlices(const LoadOptions& options,
                      RootSentinel& sentinel,
                      ProgressReporter& progress,
                      LoadReport& report);
    void checkSlices(const SlicedScan::Report& slices, const UnfinishedScan& mark) const;
    CQoCollection::OpResultInfo loadOnce(const CString& database,
                                         const CStringArray& folders,
                                         const CQoPathsInfoMap& kinds,
                                         bool rescan,
                                         RootSentinel& sentinel,
                                         ProgressReporter& progress,
                                         const std::string& whenStopped);

    Options m_options;
    std::unique_ptr<CKVModule> m_module;
    std::optional<InstanceLock> m_lock;
    std::unique_ptr<KeyValueConfig> m_settings;
    KernelThread m_kernel;
    std::unique_ptr<FailureMemory> m_failures;
};
} // namespace qo::host
