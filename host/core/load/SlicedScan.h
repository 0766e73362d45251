#pragma once

#include <QoKernel/Collection.h>

#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

namespace qo::host
{
class ProgressReporter;
class UnreadFiles;

/// Looks through the root folders some thousand files at a time, each slice saved before the next
/// begins: what an interruption leaves is kept, and a later scan goes on from there. In the end the
/// database holds what a scan in one piece would have put there. On the kernel's thread.
class SlicedScan
{
public:
    /// As many files as are read in a moment: the least that is worth a save of its own.
    static constexpr int defaultSlice = 2000;

    struct Report
    {
        int added = 0; ///< saved
        int changed = 0;
        int gone = 0;
        int vanished = 0;       ///< new files that were gone before they could be read
        int files = 0;          ///< that the collection has with the last saved slice
        bool hasSaved = false;  ///< a slice at least
        bool isStopped = false; ///< by the user, or because saving failed
        bool isSaved = true;    ///< false: the last slice could not be saved
        bool hasMoved = false; ///< names were found that the logical tree shows after the next load
    };

    /// The collection is loaded and has its root folders, all of the local disk; of the fresh ones
    /// nothing was analysed yet. isTrusted is asked behind the walk, and again for files that
    /// could not be read: false means that nothing is to be made of what is not there. With
    /// onlyFresh the other root folders are left alone.
    SlicedScan(CQoCollection& collection,
               ProgressReporter& progress,
               int filesInSlice,
               const CStringArray& freshRoots,
               UnreadFiles& unread,
               std::function<bool()> isTrusted,
               bool onlyFresh = false);

    /// Reads what is new below the root folders or has changed; what has gone leaves.
    Report read();
    /// Analyses the names below the root folders and saves what that found. Once all was read.
    void analyze(Report& report);

private:
    struct Change
    {
        CQoFileChangeInfo::EAction action;
        CString path;
        CString newPath;
        bool isNew;
        QoFileDbItemPtr toReadAgain; ///< whatever its write time
    };
    struct FoundFile
    {
        CString path;
        FILETIME modified;
        std::int64_t size = 0;
    };

    /// In the order of the records.
    std::vector<FoundFile> walk();
    static const FoundFile& takeOne(std::vector<FoundFile>::const_iterator& next,
                                    const std::vector<FoundFile>& found,
                                    const CString& known);
    std::vector<Change> changesOnDisk();
    void
    addChange(std::vector<Change>& changes, const QoFileDbItemPtr& known, const FoundFile* found);
    bool apply(const std::vector<Change>& changes, std::size_t from, std::size_t to);
    bool isBelowFresh(const CString& path) const;
    bool isOfThisScan(const CString& path) const;
    /// The root folders that are looked through.
    CollPathArray walkedRoots() const;

    CQoCollection& m_collection;
    ProgressReporter& m_progress;
    std::size_t m_filesInSlice;
    std::vector<std::u16string> m_freshRoots;  ///< keys with closing backslashes
    std::unordered_set<std::u16string> m_read; ///< keys of what was read below the other roots
    UnreadFiles& m_unread;
    std::function<bool()> m_isTrusted;
    bool m_onlyFresh;
};
} // namespace qo::host
