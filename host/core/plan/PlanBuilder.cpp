#include "core/plan/PlanBuilder.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/RecordedFile.h"
#include "core/collection/CollectionFiles.h"
#include "core/plan/DiskFolders.h"
#include "core/plan/PlanConflicts.h"
#include "core/plan/TargetName.h"
#include "core/roots/RootFolders.h"
#include "core/rules/RuleWalk.h"

#include <QoKernel/Inside.h>
#include <QoKernel/Physical.h>

#include <cassert>
#include <cerrno>
#include <set>
#include <utility>

namespace qo::host
{
namespace
{
using Verdict = PlannedFile::Verdict;
using File = boost::shared_ptr<CHDFile>;

/// "2026-11-21T20:15:00"
std::string textOfNow()
{
    const CalendarTime now = systemClock().localTime();
    CString text;
    text.Format(u"%04d-%02d-%02dT%02d:%02d:%02d",
                now.year,
                now.month,
                now.day,
                now.hour,
                now.minute,
                now.second);
    return toUtf8(text);
}

/// Absolute system paths, each once.
class FolderList
{
public:
    void add(const CString& folder)
    {
        const std::string path = toSystemPath(folder);
        if (!path.empty() && m_known.insert(path).second)
            m_paths.push_back(path);
    }
    std::vector<std::string> take() { return std::move(m_paths); }

private:
    std::set<std::string> m_known;
    std::vector<std::string> m_paths;
};

void addRoots(FolderList& folders)
{
    CollPathArray roots;
    ownCollection().getRootDirs(roots);
    for (const CQoCollPath& root : roots)
        folders.add(root.toString());
}

/// Looks at the file, and says why it cannot be moved by what the collection knows of it; "" when
/// it can.
std::string whyOther(const QoFileDbItem& record, PlannedFile& file)
{
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    bool isRegular = false;
    const int error = markOf(file.from, file.mark, isRegular);
    if (error == ENOENT || error == ENOTDIR)
        return "it cannot be found any more (" + errorWords(error) + "); run qo scan";
    if (error != 0)
        return "it cannot be looked at: " + errorWords(error);
    if (!isRegular && fileSystem().isLink(record.path))
        return "it is a link";
    FileInfo info;
    info.size = file.mark.size;
    info.modified =
        fromUnixTime(file.mark.modified / nanoseconds, file.mark.modified % nanoseconds);
    return !isRegular || isOtherFile(record, info)
               ? "it has changed since it was scanned; run qo scan"
               : std::string();
}

class Builder
{
public:
    Builder(const CReorganizeRule& rule, const CString& target, IQoProgress& progress)
        : m_walk(rule), m_target(target), m_progress(progress)
    {
        if (!target.IsEmpty())
            m_targetFolder = &findTarget();
    }

    std::vector<PlannedFile> plan(const QoFileDbItemArray& records)
    {
        m_progress.setStage(IQoProgress::stageCheck);
        m_progress.setRange(IQoProgress::rangeKnown, records.GetSize());
        // The rule first: folders get their spellings by what all files want.
        std::vector<Wanting> files;
        files.reserve(static_cast<std::size_t>(records.GetSize()));
        for (const QoFileDbItemPtr& record : records)
        {
            if (m_progress.isCanceled())
                throw HostError(ExitCode::interrupted, "stopped; no plan was made");
            m_progress.step(1);
            if (m_folder.moveTo(record->path))
                enter(m_folder.path());
            const File file = m_directory ? m_directory->getFile(record->path) : File();
            if (file && !toSystemPath(m_root->path).empty())
                addWanting(*record, file, files);
        }
        std::vector<PlanCandidate> candidates;
        candidates.reserve(files.size());
        for (Wanting& wanting : files)
            candidates.push_back(candidateFor(wanting));
        refuseConflicts(candidates, m_folders);
        return inOrder(candidates);
    }

private:
    DiskFolders::Folder& findTarget()
    {
        const CQoCollPath path(m_target);
        const auto root = ownCollection().getRootDir(path);
        if (!root || toSystemPath(m_target).empty())
            throw HostError(ExitCode::notFound,
                            shownPath(m_target) + " is in no root folder of the collection");
        CString relative;
        for (const CString& name : path.relativeTo(root->getPath()))
            relative += (relative.IsEmpty() ? CString() : CString(u"\\")) + name;
        return m_folders.below(m_folders.base(root->getPath().toString()), relative);
    }

    /// The records stand in the order of their folders.
    void enter(const CQoCollPath& folder)
    {
        m_directory = ownCollection().getDir(folder);
        if (!m_directory)
            return;
        m_root = &m_folders.base(CQoUtils::getRootDir(m_directory)->getPath().toString());
        const CString path = addBackslash(folder.toString());
        m_source = &m_folders.below(*m_root, folderBelow(m_root->path, path + u"x"));
    }

    /// A file and where the rule wants it.
    struct Wanting
    {
        const QoFileDbItem* record = nullptr;
        RuleWalk::Answer answer;
        DiskFolders::Folder* root = nullptr;
        DiskFolders::Folder* source = nullptr;
    };

    void addWanting(const QoFileDbItem& record, const File& file, std::vector<Wanting>& files)
    {
        RuleWalk::Answer answer = m_walk.answerFor(file, m_root->path);
        if (answer.hasPlace)
            m_folders.want(m_targetFolder ? *m_targetFolder : *m_root, answer.folder);
        files.push_back({&record, std::move(answer), m_root, m_source});
    }

    PlanCandidate candidateFor(const Wanting& wanting)
    {
        const QoFileDbItem& record = *wanting.record;
        const RuleWalk::Answer& answer = wanting.answer;
        PlanCandidate candidate;
        candidate.from = record.path;
        candidate.track = answer.track;
        PlannedFile& planned = candidate.file;
        planned.from = toSystemPath(record.path);
        const std::string whyChanged = whyOther(record, planned);
        planned.recordId = toUtf8(record.velmoraId);
        planned.kind = toUtf8(answer.kind);
        planned.decidedBy = answer.decidedBy;
        planned.reason = answer.reason;
        planned.verdict = answer.isMeant ? Verdict::refused : Verdict::stay;
        if (answer.hasPlace)
            judge(candidate, wanting, whyChanged);
        return candidate;
    }

    void judge(PlanCandidate& candidate, const Wanting& wanting, const std::string& whyChanged)
    {
        const RuleWalk::Answer& answer = wanting.answer;
        PlannedFile& planned = candidate.file;
        DiskFolders::Folder& into = m_targetFolder ? *m_targetFolder : *wanting.root;
        candidate.folder = &m_folders.target(into, answer.folder);
        candidate.name = fittingFileName(answer.name, candidate.folder->rules);
        candidate.to = addBackslash(candidate.folder->path) + candidate.name;
        planned.to = candidate.name.IsEmpty() ? std::string() : toSystemPath(candidate.to);
        if (candidate.to == candidate.from)
        {
            planned.verdict = Verdict::stay;
            planned.reason = "it is there already";
            return;
        }
        planned.targetDevice = candidate.folder->device;
        planned.reason = whyNot(candidate, *wanting.source);
        if (planned.reason.empty())
            planned.reason = whyChanged;
        planned.verdict = planned.reason.empty() ? Verdict::move : Verdict::refused;
    }

    /// Why the places speak against the move; "" when they do not.
    static std::string whyNot(const PlanCandidate& candidate, const DiskFolders::Folder& source)
    {
        const std::string& to = candidate.file.to;
        if (to.empty())
            return "no file in " + shownPath(candidate.folder->path) + " can have such a name";
        if (to.size() > static_cast<std::size_t>(longestSystemPath()))
            return "its path would be longer than " + std::to_string(longestSystemPath()) +
                   " bytes, the most that the system takes";
        return source.whyClosed.empty() ? candidate.folder->whyClosed : source.whyClosed;
    }

    static std::vector<PlannedFile> inOrder(std::vector<PlanCandidate>& candidates)
    {
        std::vector<PlannedFile> files;
        files.reserve(candidates.size());
        for (const Verdict verdict : {Verdict::refused, Verdict::move, Verdict::stay})
        {
            for (PlanCandidate& candidate : candidates)
            {
                if (candidate.file.verdict == verdict)
                    files.push_back(std::move(candidate.file));
            }
        }
        return files;
    }

    RuleWalk m_walk;
    CString m_target;
    IQoProgress& m_progress;
    DiskFolders m_folders;
    DiskFolders::Folder* m_targetFolder = nullptr; ///< null: each file's root folder
    // Of the file that is looked at; null in a folder that the tree has not.
    FolderOfFile m_folder;
    boost::shared_ptr<CHDDirectory> m_directory;
    DiskFolders::Folder* m_root = nullptr;
    DiskFolders::Folder* m_source = nullptr;
};
} // namespace

ReorganizePlan
PlanBuilder::build(const Options& options, const QoFileDbItemArray& records, IQoProgress& progress)
{
    assert(!CQoCollection::existForeignCollection());
    const CReorganizeRule* const rule = CReorganizeUtils::getRule(options.rule);
    if (!rule)
        throw HostError(ExitCode::notFound, "there is no rule " + toUtf8(options.rule));
    if (!CReorganizeUtils::isReorganizeRuleOfType(rule, CReorganizeUtils::sorter))
        throw HostError(ExitCode::failed,
                        "the rule " + toUtf8(options.rule) +
                            " is for what is imported only, and no collection can be sorted by it");
    const CString target =
        options.target.IsEmpty() ? CString() : CQoCollPath(options.target).toString();
    ReorganizePlan plan;
    plan.id = options.id;
    plan.made = textOfNow();
    plan.rule = toUtf8(options.rule);
    plan.files = Builder(*rule, target, progress).plan(records);
    FolderList targets;
    if (target.IsEmpty())
        addRoots(targets);
    else
        targets.add(target);
    plan.targets = targets.take();
    plan.keptFolders = keptFolders();
    plan.keptFolders.insert(plan.keptFolders.end(), plan.targets.begin(), plan.targets.end());
    return plan;
}

std::vector<std::string> PlanBuilder::keptFolders()
{
    FolderList kept;
    addRoots(kept);
    const RootFolders listed;
    for (const CString& root : listed.folders())
        kept.add(root);
    CStringArray outputs;
    CQoPaths::getOutputDirs(outputs);
    for (const CString& output : outputs)
        kept.add(output);
    const ISpecialFolders& special = specialFolders();
    kept.add(special.home());
    for (const CString& folder : special.userFolders())
        kept.add(folder);
    for (const CString& folder : special.ownFolders())
        kept.add(folder);
    return kept.take();
}
} // namespace qo::host
