#pragma once

#include "core/load/DiskChanges.h"

#include <QoKernel/Collection.h>

#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

namespace qo::host
{
class ProgressReporter;
class ScanHost;

/// Takes what changed on the disk into a loaded collection, some thousand files at a time, each
/// slice saved before the next begins: what an interruption leaves is kept, and a later scan goes
/// on from there. In the end the database holds what a scan in one piece would have put there. On
/// the kernel's thread.
class SlicedScan
{
public:
    /// As many files as are read in a moment: the least that is worth a save of its own.
    static constexpr int defaultSlice = 2000;

    struct Effort
    {
        int filesInSlice = defaultSlice;
        int tagThreads = 0; ///< that read tags; 0: as the machine and the files have it
    };

    struct Report
    {
        int added = 0; ///< saved
        int changed = 0;
        int gone = 0;
        int vanished = 0;       ///< files that were gone before they could be read
        int files = 0;          ///< that the collection has with the last saved slice
        bool hasSaved = false;  ///< a slice at least
        bool isStopped = false; ///< by the user, or because saving failed
        bool isSaved = true;    ///< false: the last slice could not be saved
        bool hasMoved = false; ///< names were found that the logical tree shows after the next load
    };

    /// What the last slice brings with it, so that both are saved or neither is.
    struct End
    {
        CStringArray foldersToAnalyze;    ///< below which names are analysed
        bool isWhole = false;             ///< the scan looked through all root folders
        std::function<void()> beforeLast; ///< called before the last slice begins
        /// Called before each other slice begins, with those of its files that lie below no fresh
        /// root folder.
        std::function<void(const CStringArray& files)> beforeOther;
    };

    /// Of the fresh root folders nothing was analysed yet, nor of the files, which lie elsewhere.
    SlicedScan(CQoCollection& collection,
               ScanHost& host,
               ProgressReporter& progress,
               const Effort& effort,
               const CStringArray& freshRoots,
               const CStringArray& filesReadBefore);

    /// Reads what is new or has changed; what has gone leaves. Names are analysed once, with the
    /// last slice, which is an empty one if nothing changed.
    Report read(const std::vector<DiskChange>& changes, const End& end);
    /// Takes out the files that vanished between the walk and the moment when they were to be read;
    /// arePresent is asked whether all that was walked is still there. How many they were.
    int dropVanished(const std::function<bool()>& arePresent);

private:
    class SliceProgress;
    class NamesOfThisScan;
    class FilesAhead;

    bool apply(const std::vector<DiskChange>& changes,
               std::size_t from,
               std::size_t to,
               const CStringArray& foldersToAnalyze,
               SliceProgress& progress);
    bool applyOne(const std::vector<DiskChange>& changes,
                  std::size_t from,
                  std::size_t to,
                  const End& end);
    bool applyLast(const std::vector<DiskChange>& changes,
                   std::size_t from,
                   const End& end,
                   Report& report);
    bool isSaved(const DiskChange& first) const;
    bool isBelowFresh(const CString& path) const;
    bool isOfThisScan(const CString& path) const;

    CQoCollection& m_collection;
    ScanHost& m_host;
    ProgressReporter& m_progress;
    std::size_t m_filesInSlice;
    int m_tagThreads;
    std::vector<CString> m_freshRoots;         ///< with closing backslash
    std::unordered_set<std::u16string> m_read; ///< keys of what was read elsewhere
};
} // namespace qo::host
