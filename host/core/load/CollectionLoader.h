#pragma once

#include "core/load/SlicedScan.h"

#include <string>
#include <vector>

namespace qo::host
{
class LossGuard;
class RootFolders;
class RootPresence;
class ProgressReporter;
class Session;
class UnfinishedScan;
class UnreadFiles;
struct DiskChange;
struct RootProblem;

struct LoadOptions
{
    bool rescan = false; ///< look through all root folders, not only through those that are new
    bool deep = false;   ///< of a rescan: read every file again
    bool allowMissingRoot = false;
    CString database;    ///< "" for the collection's own; another one for a trial run
    bool isLast = false; ///< nobody looks at the logical tree afterwards: it may be out of date
    int filesInSlice = SlicedScan::defaultSlice;
    int tagThreads = 0; ///< that read tags; 0: as the machine and the files have it
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

/// Loads the user's collection, and looks through root folders where that is wanted: the one way of
/// both. In this order:
///
/// 1. What a crash left half-done is brought to an end: the records follow files that moved.
/// 2. A thread begins to walk the root folders in question: all for a rescan, else those that are
///    new since the last scan, or of which the first scan was cut short.
/// 3. Meanwhile the kernel reads the database and builds its trees for the root folders of the
///    settings; records below folders that are no longer among them leave.
/// 4. Records and files are compared (DiskChanges). Should a disk seem to be away (LossGuard) or a
///    root folder have gone (RootPresence), nothing is done.
/// 5. The differences are read and saved in slices (SlicedScan), then the names are analysed, once.
///
/// On the kernel's thread.
class CollectionLoader
{
public:
    CollectionLoader(Session& session, const LoadOptions& options, ProgressReporter& progress);

    /// Throws HostError: away when a root folder or a disk in it is not there, or a root folder is
    /// in the database but without the user's doing no longer in the settings; interrupted when it
    /// was stopped; failed when the collection could not be loaded or saved.
    LoadReport load();

    /// Whether a scan was interrupted and kept what it had read: the next one goes on with it.
    static bool hasUnfinishedScan();

private:
    void loadGuarded();
    bool hasOtherRoots(const RootFolders& roots) const;
    CStringArray freshRoots(const RootFolders& roots, const UnfinishedScan& mark) const;
    std::vector<RootProblem> guardRoots(const CStringArray& folders) const;
    void keepSnapshot() const;
    void followMoves();
    /// A load without a walk; with the folders of the database nothing leaves.
    void readDatabase(const CStringArray& folders, const CQoPathsInfoMap& kinds);
    CStringArray rootsBefore(const RootFolders& roots, const CStringArray& fresh) const;
    void scan(const RootFolders& roots,
              const CStringArray& walked,
              const CStringArray& fresh,
              const std::vector<RootProblem>& givenUp);
    std::vector<DiskChange> differences(QoFileDbItemArray& records,
                                        RootWalk& walk,
                                        UnreadFiles& unread,
                                        const CStringArray& fresh);
    void guardLosses(const LossGuard& guard) const;
    void rememberFarFolders(const CStringArray& walked, const RootLister& lister) const;
    void takeIn(const CStringArray& walked,
                const CStringArray& fresh,
                const std::vector<DiskChange>& changes,
                RootPresence& presence);
    void rememberFileKinds() const;
    void rememberUnread() const;
    void checkSlices(const SlicedScan::Report& slices, const UnfinishedScan& mark) const;
    void checkSaved() const;
    void tell(const UnreadFiles& unread) const;
    void tellOnce(const UnreadFiles& unread) const;
    void settleUnfinishedScan() const;
    void forgetRemovedRoots(RootFolders& roots) const;
    std::string interruptedText() const;

    Session& m_session;
    LoadOptions m_options;
    ProgressReporter& m_progress;
    CString m_database;
    bool m_isOwn;           ///< and not that of a trial
    bool m_isFirst = false; ///< the collection was never scanned
    LoadReport m_report;
};

/// Loads with all guards; see CollectionLoader::load(). What the kernel throws comes as HostError.
LoadReport loadCollection(Session& session, const LoadOptions& options, ProgressReporter& progress);
} // namespace qo::host
