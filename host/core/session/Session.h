#pragma once

#include "core/load/SlicedScan.h"
#include "core/session/FailureMemory.h"
#include "core/session/InstanceLock.h"
#include "core/session/KernelThread.h"
#include "core/session/KeyValueConfig.h"
#include "core/session/ProgressReporter.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

class CKVModule;

namespace qo::host
{
class RootChanges;
class RootFolders;
class RootSentinel;
struct RootProblem;
class UnfinishedScan;
class UnreadFiles;

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
        int vanished = 0;    ///< before they could be read
        bool walked = false; ///< whether root folders were looked through
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

    /// Where the lock, the database and the host's own store stand; made when absent.
    static CString folder();
    static CString databasePath();

    /// Makes sure that there is a database that may be opened, and with the lock of the host's own
    /// store too. Throws HostError.
    void prepareDatabase(const CString& database);
    /// The store alone; with the lock. Throws HostError.
    void prepareStore() const;
    /// Whether the first scan of a root folder was interrupted: the next scan goes on with it.
    static bool hasUnfinishedScan();
    /// Loads the user's collection. Root folders that are new are read in slices, each of which is
    /// kept whatever comes after; the files of those that are no longer leave. Throws HostError:
    /// away when a root folder is not there, or is in the database but without the user's doing no
    /// longer in the settings, interrupted when it was stopped, failed when it could not be loaded
    /// or saved.
    LoadReport load(const LoadOptions& options, ProgressReporter& progress);

private:
    void openDataFolder() const;
    void restoreLostRoots();
    LoadReport
    loadGuarded(const LoadOptions& options, const CString& database, ProgressReporter& progress);
    /// Whether the root folders are others than at the last scan.
    static bool wouldWalk(const CString& database);
    /// Those of the root folders that are away and whose files may leave the collection.
    static std::vector<RootProblem>
    guardRoots(const CStringArray& folders, bool allowMissingRoot, const CString& database);
    static std::string interruptedText(bool wasNeverScanned, bool walked);
    static void checkSaved(const CString& database, const std::string& cause);
    /// The collection as the database has it.
    void loadStored(const CString& database, RootSentinel& sentinel, ProgressReporter& progress);
    /// Lets the database know where files went when a move was cut short, before anything else
    /// looks at it.
    void followMoves(const RootFolders& roots, const CString& database, ProgressReporter& progress);
    /// Takes out the files of root folders that are no longer, and reads those of new ones: only
    /// that, unless all are to be scanned.
    void followRoots(const LoadOptions& options,
                     const RootChanges& changes,
                     RootSentinel& sentinel,
                     ProgressReporter& progress,
                     LoadReport& report);
    void scanInSlices(const LoadOptions& options,
                      const CStringArray& fresh,
                      RootSentinel& sentinel,
                      ProgressReporter& progress,
                      LoadReport& report);
    /// A load, or with report.walked a scan.
    void loadInOnePiece(const CString& database,
                        RootSentinel& sentinel,
                        ProgressReporter& progress,
                        LoadReport& report);
    void settleUnfinishedScan(const CString& database) const;
    void tellUnread(const UnreadFiles& unread, const LoadReport& report) const;
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
