#include "core/load/SlicedScan.h"

#include "core/collection/CollectionFiles.h"
#include "core/load/UnreadFiles.h"
#include "core/session/ProgressReporter.h"

#include <QoKernel/Physical.h>

#include <algorithm>
#include <functional>

namespace qo::host
{
namespace
{
/// A large collection grows by a quarter with each slice.
constexpr std::size_t shareOfSlice = 4;

/// Shows the many stages of the slices as one. What is being saved is saved to its end.
class SliceProgress final : public IQoProgress
{
public:
    /// beforeSave may change what is going to be saved.
    explicit SliceProgress(ProgressReporter& whole, std::function<void()> beforeSave = {})
        : m_whole(whole), m_beforeSave(std::move(beforeSave))
    {
    }

    void setStage(int stage) override
    {
        m_builds += stage == stageBuild ? 1 : 0;
        m_isSaving = stage == stageSave;
        if (m_isSaving && m_beforeSave)
            m_beforeSave();
    }
    void setCurrentItem(const char16_t* text, int kind) override
    {
        m_whole.setCurrentItem(text, kind);
    }
    void setRange(int, int) override {}
    void step(int count) override
    {
        // The files are read in the first stage; the others only go through the slice again.
        if (m_builds == 1 && !m_isSaving)
            m_whole.step(count);
    }
    bool isCanceled() override { return !m_isSaving && m_whole.isCanceled(); }

private:
    ProgressReporter& m_whole;
    std::function<void()> m_beforeSave;
    int m_builds = 0;
    bool m_isSaving = false;
};

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

SlicedScan::SlicedScan(CQoCollection& collection,
                       ProgressReporter& progress,
                       int filesInSlice,
                       const CStringArray& freshRoots,
                       UnreadFiles& unread,
                       std::function<bool()> isTrusted,
                       bool onlyFresh)
    : m_collection(collection)
    , m_progress(progress)
    , m_filesInSlice(static_cast<std::size_t>(std::max(filesInSlice, 1)))
    , m_unread(unread)
    , m_isTrusted(std::move(isTrusted))
    , m_onlyFresh(onlyFresh)
{
    for (const CString& root : freshRoots)
        m_freshRoots.push_back(pathKey(addBackslash(root)));
}

std::vector<SlicedScan::FoundFile> SlicedScan::walk()
{
    std::vector<FoundFile> found;
    const auto visit = [&](const CString& path, const FileInfo& info)
    {
        found.push_back({path, info.modified, info.size});
        return !m_progress.isCanceled();
    };
    for (const CQoCollPath& root : walkedRoots())
        forEachFile(CQoUtils::getRealPath(root), visit);
    // The order of the records.
    std::stable_sort(found.begin(),
                     found.end(),
                     [](const FoundFile& a, const FoundFile& b)
                     { return a.path.CompareNoCase(b.path) < 0; });
    return found;
}

/// Of names that differ in case alone the known one counts, else the first; next goes behind them.
const SlicedScan::FoundFile& SlicedScan::takeOne(std::vector<FoundFile>::const_iterator& next,
                                                 const std::vector<FoundFile>& found,
                                                 const CString& known)
{
    const auto first = next;
    auto chosen = first;
    while (++next != found.end() && next->path.CompareNoCase(first->path) == 0)
        chosen = next->path == known ? next : chosen;
    for (auto twin = first; next - first > 1 && twin != next; ++twin)
    {
        if (twin != chosen)
            log(level::error, u"found duplicated db file: %s", twin->path);
    }
    return *chosen;
}

void SlicedScan::addChange(std::vector<Change>& changes,
                           const QoFileDbItemPtr& known,
                           const FoundFile* found)
{
    if (!known)
        return changes.push_back({CQoFileChangeInfo::scan, found->path, {}, true, {}});
    if (!found)
    {
        if (m_unread.isGone(known->path))
            changes.push_back({CQoFileChangeInfo::remove, known->path, {}, false, {}});
        return;
    }
    const bool isSameName = known->path == found->path;
    const bool isRenamed = !isSameName && isKnownToBeGone(known->path);
    FileInfo info;
    info.modified = found->modified;
    info.size = found->size;
    // Of two names that differ in case alone the known one keeps its place.
    if (!isSameName && !isRenamed && fileSystem().info(known->path, Spelling::exact, info) != 0)
        return;
    const bool isOther = isOtherFile(*known, info);
    const QoFileDbItemPtr toReadAgain = isOther ? known : QoFileDbItemPtr();
    if (isRenamed)
        changes.push_back({CQoFileChangeInfo::move, known->path, found->path, false, toReadAgain});
    else if (isOther)
        changes.push_back({CQoFileChangeInfo::scan, known->path, {}, false, toReadAgain});
}

std::vector<SlicedScan::Change> SlicedScan::changesOnDisk()
{
    const std::vector<FoundFile> found = walk();
    QoFileDbItemArray known;
    m_collection.copyFiles(known);
    std::vector<Change> changes;
    if (m_progress.isCanceled() || !m_isTrusted())
        return changes;
    auto next = found.begin();
    for (const QoFileDbItemPtr& item : known)
    {
        if (m_onlyFresh && !isBelowFresh(item->path))
            continue;
        int order = -1;
        while (next != found.end() && (order = next->path.CompareNoCase(item->path)) < 0)
            addChange(changes, nullptr, &takeOne(next, found, {}));
        const bool isThere = next != found.end() && order == 0;
        addChange(changes, item, isThere ? &takeOne(next, found, item->path) : nullptr);
    }
    while (next != found.end())
        addChange(changes, nullptr, &takeOne(next, found, {}));
    // Once more, since with a folder that goes away all in it seems to have gone.
    return m_isTrusted() ? changes : std::vector<Change>();
}

SlicedScan::Report SlicedScan::read()
{
    Report report;
    report.files = m_collection.getFileCount();
    m_progress.setStage(IQoProgress::stageScan);
    const std::vector<Change> changes = changesOnDisk();
    m_progress.setStage(IQoProgress::stageCheck);
    m_progress.setRange(IQoProgress::rangeKnown, static_cast<int>(changes.size()));
    for (std::size_t from = 0; from < changes.size() && !m_progress.isCanceled();)
    {
        // Saving costs more the more there is: a slice that grows with it keeps the share the same.
        const auto known = static_cast<std::size_t>(m_collection.getFileCount());
        const std::size_t slice = std::max(m_filesInSlice, known / shareOfSlice);
        const std::size_t to = std::min(from + slice, changes.size());
        if (!apply(changes, from, to))
        {
            report.isSaved = m_progress.isCanceled();
            break;
        }
        report.hasSaved = true;
        for (; from < to; ++from)
        {
            report.added += changes[from].isNew ? 1 : 0;
            report.gone += changes[from].action == CQoFileChangeInfo::remove ? 1 : 0;
        }
        report.files = m_collection.getFileCount();
        report.changed = static_cast<int>(to) - report.added - report.gone;
    }
    report.isStopped = !report.isSaved || m_progress.isCanceled();
    if (!report.isStopped)
        report.vanished = dropVanished(
            m_collection,
            [this](const CString& path) { return !m_onlyFresh || isBelowFresh(path); },
            m_isTrusted);
    report.added = std::max(0, report.added - report.vanished);
    if (report.gone > 0)
        forgetGone(m_collection);
    return report;
}

bool SlicedScan::apply(const std::vector<Change>& changes, std::size_t from, std::size_t to)
{
    CQoFileChangeInfoList list;
    for (std::size_t i = from; i < to; ++i)
    {
        const Change& change = changes[i];
        if (change.toReadAgain)
            CQoCollDbUtils::SetNullFILETIME(change.toReadAgain->modifTime);
        if (change.action == CQoFileChangeInfo::remove)
            list.addFileToDelete(change.path)->m_keepEmptyDirs = true;
        else if (change.action == CQoFileChangeInfo::move)
            list.addFileToMove(change.path, change.newPath, true)->m_keepEmptyDirs = true;
        else
            list.addFileToScan(
                change.path, CQoFileChangeInfo::ordinaryFile, CQoFileChangeInfo::setImportedIfNew);
        const CString& path = change.newPath.IsEmpty() ? change.path : change.newPath;
        if (change.action != CQoFileChangeInfo::remove && !isOfThisScan(path))
            m_read.insert(pathKey(path));
    }
    SliceProgress progress(m_progress);
    m_collection.applyQoFileChanges(list, {}, &progress);
    m_collection.releaseZombieObjects();
    if (!m_collection.loadedSuccesfully())
        return false;
    if (!changes[from].isNew)
        return !hasUnsaved(m_collection);
    // A record gets its id with the transaction that stores it.
    const auto first = m_collection.getFileByPath(changes[from].path);
    return first && first->getDbItem()->id != 0;
}

/// Whether a scan in one piece would save what the analysis makes of the record: that saves what
/// it has read.
bool SlicedScan::isOfThisScan(const CString& path) const
{
    return isBelowFresh(path) || m_read.contains(pathKey(path));
}

bool SlicedScan::isBelowFresh(const CString& path) const
{
    const std::u16string key = pathKey(path);
    return std::any_of(m_freshRoots.begin(),
                       m_freshRoots.end(),
                       [&key](const std::u16string& root) { return key.starts_with(root); });
}

CollPathArray SlicedScan::walkedRoots() const
{
    CollPathArray roots;
    m_collection.getRootDirs(roots);
    CollPathArray walked;
    for (const CQoCollPath& root : roots)
    {
        if (!m_onlyFresh || isBelowFresh(addBackslash(root.toString())))
            walked.Add(root);
    }
    return walked;
}

void SlicedScan::analyze(Report& report)
{
    QoFileDbItemArray files;
    m_collection.copyFiles(files);
    std::vector<Names> before;
    before.reserve(static_cast<std::size_t>(files.GetSize()));
    for (const QoFileDbItemPtr& item : files)
        before.emplace_back(item);
    CStringArray folders;
    for (const CQoCollPath& root : walkedRoots())
        folders.Add(root.toString());
    // Values that spread over a folder change records without marking them for the save.
    SliceProgress progress(m_progress,
                           [&]
                           {
                               for (const Names& names : before)
                               {
                                   if (!names.haveChanged())
                                       continue;
                                   report.hasMoved = true;
                                   if (names.item->dbState == dbState::unchanged &&
                                       isOfThisScan(names.item->path))
                                       names.item->dbState = dbState::modified;
                               }
                           });
    m_collection.applyQoFileChanges({}, folders, &progress);
    // Once the save has begun it comes to its end, whatever the user says.
    const bool isWhole = m_collection.loadedSuccesfully();
    report.isSaved = !isWhole || !hasUnsaved(m_collection);
    report.isStopped = !isWhole || !report.isSaved;
}
} // namespace qo::host
