#include "core/load/SlicedScan.h"

#include "core/collection/CollectionFiles.h"
#include "core/load/UnreadFiles.h"
#include "core/session/ProgressReporter.h"
#include "core/session/ScanHost.h"

#include <QoKernel/Physical.h>
#include <QoKernel/Tags.h>

#include <algorithm>
#include <functional>

namespace qo::host
{
namespace
{
/// A large collection grows by a quarter with each slice.
constexpr std::size_t shareOfSlice = 4;

/// What the analysis of names may change in a record.
struct Names
{
    explicit Names(const QoFileDbItemPtr& record)
        : item(record)
        , artist(record->artist)
        , album(record->album)
        , title(record->title)
        , genre(record->genre)
    {
    }
    bool haveChanged() const
    {
        return item->artist != artist || item->album != album || item->title != title ||
               item->genre != genre;
    }

    QoFileDbItemPtr item;
    CString artist;
    CString album;
    CString title;
    CString genre;
};
} // namespace

/// Shows the many stages of the slices as one. What is being saved is saved to its end.
class SlicedScan::SliceProgress final : public IQoProgress
{
public:
    explicit SliceProgress(ProgressReporter& whole) : m_whole(whole) {}

    void setStage(int stage) override
    {
        // The first time the files are read, the second time both trees are built.
        m_builds += stage == stageBuild ? 1 : 0;
        m_isSaving = stage == stageSave;
    }
    void setCurrentItem(const char16_t* text, int kind) override
    {
        m_whole.setCurrentItem(text, kind);
    }
    void setRange(int, int) override {}
    void step(int count) override
    {
        if (m_builds == 1 && !m_isSaving)
            m_whole.step(count);
    }
    bool isCanceled() override { return !m_isSaving && m_whole.isCanceled(); }

private:
    ProgressReporter& m_whole;
    int m_builds = 0;
    bool m_isSaving = false;
};

/// The analysis of names spreads values over folders, and does not mark the records for the save
/// that it changes by that. This one marks those that the scan has read, as a scan in one piece
/// would save them.
class SlicedScan::NamesOfThisScan final : public ScanHost::INames
{
public:
    explicit NamesOfThisScan(const SlicedScan& scan) : m_scan(scan)
    {
        m_scan.m_host.setNames(this);
    }
    ~NamesOfThisScan() override { m_scan.m_host.setNames(nullptr); }
    NamesOfThisScan(const NamesOfThisScan&) = delete;
    NamesOfThisScan& operator=(const NamesOfThisScan&) = delete;

    /// Whether a record changed whose place in the logical tree is the old one.
    bool haveMoved() const { return m_haveMoved; }

    void beforeNames(const QoFileDbItemArray& records) override
    {
        m_before.reserve(static_cast<std::size_t>(records.GetSize()));
        for (const QoFileDbItemPtr& item : records)
        {
            if (item->dbState == dbState::unchanged)
                m_before.emplace_back(item);
        }
    }
    void beforeSave() override
    {
        for (const Names& names : m_before)
        {
            if (!names.haveChanged())
                continue;
            m_haveMoved = true;
            if (names.item->dbState == dbState::unchanged && m_scan.isOfThisScan(names.item->path))
                names.item->dbState = dbState::modified;
        }
    }

private:
    const SlicedScan& m_scan;
    std::vector<Names> m_before;
    bool m_haveMoved = false;
};

/// The files of all slices, so that reading goes on while a slice is saved.
class SlicedScan::FilesAhead
{
public:
    FilesAhead(const SlicedScan& scan, const std::vector<DiskChange>& changes)
        : m_host(scan.m_host)
        , m_ahead(filesOf(changes),
                  CQoPaths::getPictureTempDir(),
                  [&progress = scan.m_progress] { return progress.isCanceled(); },
                  {.threads = scan.m_tagThreads})
    {
        m_host.setTagsAhead(&m_ahead);
    }
    ~FilesAhead() { m_host.setTagsAhead(nullptr); }
    FilesAhead(const FilesAhead&) = delete;
    FilesAhead& operator=(const FilesAhead&) = delete;

private:
    static std::vector<CString> filesOf(const std::vector<DiskChange>& changes)
    {
        std::vector<CString> files;
        for (const DiskChange& change : changes)
        {
            // What moved has not changed as a rule, and is not read then.
            if (change.action == CQoFileChangeInfo::scan)
                files.push_back(CQoUtils::getRealPath(change.lastPath()));
        }
        return files;
    }

    ScanHost& m_host;
    KVTagLib::TagsAhead m_ahead;
};

SlicedScan::SlicedScan(CQoCollection& collection,
                       ScanHost& host,
                       ProgressReporter& progress,
                       const Effort& effort,
                       const CStringArray& freshRoots,
                       const CStringArray& filesReadBefore)
    : m_collection(collection)
    , m_host(host)
    , m_progress(progress)
    , m_filesInSlice(static_cast<std::size_t>(std::max(effort.filesInSlice, 1)))
    , m_tagThreads(effort.tagThreads)
{
    for (const CString& root : freshRoots)
        m_freshRoots.push_back(addBackslash(root));
    for (const CString& file : filesReadBefore)
        m_read.insert(pathKey(file));
}

SlicedScan::Report SlicedScan::read(const std::vector<DiskChange>& changes, const End& end)
{
    Report report;
    report.files = m_collection.getFileCount();
    m_progress.setStage(IQoProgress::stageCheck);
    m_progress.setRange(IQoProgress::rangeKnown, static_cast<int>(changes.size()));
    const FilesAhead ahead(*this, changes);
    bool isLast = false;
    for (std::size_t from = 0; !isLast && report.isSaved && !m_progress.isCanceled();)
    {
        // Saving costs more the more there is: a slice that grows with it keeps the share the same.
        const auto known = static_cast<std::size_t>(m_collection.getFileCount());
        const std::size_t slice = std::max(m_filesInSlice, known / shareOfSlice);
        const std::size_t to = std::min(from + slice, changes.size());
        isLast = to == changes.size();
        report.isSaved =
            isLast ? applyLast(changes, from, end, report) : applyOne(changes, from, to, end);
        if (!report.isSaved)
            break;
        report.hasSaved = report.hasSaved || from < to;
        for (; from < to; ++from)
        {
            report.added += changes[from].isNew ? 1 : 0;
            report.gone += changes[from].action == CQoFileChangeInfo::remove ? 1 : 0;
        }
        report.files = m_collection.getFileCount();
        report.changed = static_cast<int>(to) - report.added - report.gone;
    }
    // What the user stopped has not failed.
    const bool isWhole = isLast && report.isSaved;
    report.isStopped = !isWhole;
    report.isSaved = isWhole || m_progress.isCanceled();
    if (report.gone > 0)
        forgetGone(m_collection);
    return report;
}

bool SlicedScan::applyOne(const std::vector<DiskChange>& changes,
                          std::size_t from,
                          std::size_t to,
                          const End& end)
{
    CStringArray files;
    for (std::size_t i = from; i < to; ++i)
    {
        const CString& path = changes[i].lastPath();
        if (changes[i].action != CQoFileChangeInfo::remove && !isBelowFresh(path))
            files.Add(path);
    }
    if (end.beforeOther && !files.IsEmpty())
        end.beforeOther(files);
    SliceProgress progress(m_progress);
    return apply(changes, from, to, {}, progress);
}

bool SlicedScan::applyLast(const std::vector<DiskChange>& changes,
                           std::size_t from,
                           const End& end,
                           Report& report)
{
    if (end.beforeLast)
        end.beforeLast();
    if (end.isWhole)
        m_collection.setScanned();
    // Without a change all names are as they were found before.
    const bool hasNews = !changes.empty() || !m_freshRoots.empty() || !m_read.empty();
    SliceProgress progress(m_progress);
    const NamesOfThisScan names(*this);
    const bool isSaved = apply(
        changes, from, changes.size(), hasNews ? end.foldersToAnalyze : CStringArray(), progress);
    report.hasMoved = names.haveMoved();
    return isSaved;
}

int SlicedScan::dropVanished(const std::function<bool()>& arePresent)
{
    CQoFileChangeInfoList gone;
    for (const CString& path : m_host.unreadFiles())
    {
        if (m_collection.getFileByPath(path) && isKnownToBeGone(path))
            gone.addFileToDelete(path)->m_keepEmptyDirs = true;
    }
    // In this order: with a folder that goes away all in it seems to have gone.
    if (gone.IsEmpty() || !arePresent())
        return 0;
    CDummyProgress progress; // what has begun comes to its end
    m_collection.applyQoFileChanges(gone, {}, &progress);
    for (const CQoFileChangeInfo* change : gone)
        m_host.forgetFile(change->m_path);
    forgetGone(m_collection);
    return gone.GetSize();
}

bool SlicedScan::apply(const std::vector<DiskChange>& changes,
                       std::size_t from,
                       std::size_t to,
                       const CStringArray& foldersToAnalyze,
                       SliceProgress& progress)
{
    CQoFileChangeInfoList list;
    for (std::size_t i = from; i < to; ++i)
    {
        const DiskChange& change = changes[i];
        CQoFileChangeInfo* entry = nullptr;
        if (change.action == CQoFileChangeInfo::remove)
            entry = list.addFileToDelete(change.path);
        else if (change.action == CQoFileChangeInfo::move)
            entry = list.addFileToMove(change.path, change.newPath, true);
        else
            entry = list.addFileToScan(
                change.path, CQoFileChangeInfo::ordinaryFile, CQoFileChangeInfo::setImportedIfNew);
        entry->m_keepEmptyDirs = true;
        entry->m_seen = change.seen;
        if (change.action != CQoFileChangeInfo::remove && !isBelowFresh(change.lastPath()))
            m_read.insert(pathKey(change.lastPath()));
    }
    m_collection.applyQoFileChanges(list, foldersToAnalyze, &progress);
    releaseGone(m_collection);
    return m_collection.loadedSuccesfully() && (from == to || isSaved(changes[from])) &&
           m_host.lastFailure().empty();
}

/// One transaction stores a slice, so one record speaks for all of them.
bool SlicedScan::isSaved(const DiskChange& first) const
{
    if (!first.isNew)
        return !hasUnsaved(m_collection);
    // A record gets its id with the transaction that stores it.
    const auto file = m_collection.getFileByPath(first.path);
    return file && file->getDbItem()->id != 0;
}

/// Whether a scan in one piece would save what the analysis makes of the record: that saves what
/// it has read.
bool SlicedScan::isOfThisScan(const CString& path) const
{
    return isBelowFresh(path) || m_read.contains(pathKey(path));
}

bool SlicedScan::isBelowFresh(const CString& path) const
{
    return std::any_of(m_freshRoots.begin(),
                       m_freshRoots.end(),
                       [&path](const CString& root)
                       { return startsNoCase(path.view(), root.view()); });
}
} // namespace qo::host
