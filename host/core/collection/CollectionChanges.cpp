#include "core/collection/CollectionChanges.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionFiles.h"
#include "core/session/Session.h"

#include <QoKernel/Logical.h>
#include <QoKernel/Physical.h>

#include <utility>

namespace qo::host
{
struct CollectionChanges::Stage
{
    CQoFileChangeInfoList list;
    std::unordered_set<std::u16string> paths;
    std::unordered_set<std::u16string> folders;
    CStringArray toAnalyze;

    void analyze(const CString& file) { analyzeFolder(CQoCollPath(file).getParent().toString()); }
    void analyzeFolder(const CString& folder)
    {
        if (folders.insert(pathKey(folder)).second)
            toAnalyze.Add(folder);
    }
    void takeAnalysis(Stage& other)
    {
        for (const CString& folder : other.toAnalyze)
            analyzeFolder(folder);
        other.toAnalyze.RemoveAll();
    }
};

CollectionChanges::CollectionChanges(Session& session, bool keepEmptyDirs)
    : m_session(session), m_keepEmptyDirs(keepEmptyDirs)
{
}

CollectionChanges::~CollectionChanges() = default;

CollectionChanges::Stage& CollectionChanges::stageFor(const CString& path, const CString& target)
{
    const auto touches = [](const Stage& stage, const CString& one)
    { return !one.IsEmpty() && stage.paths.contains(pathKey(one)); };
    // As early as can be: removals make way for all moves in one stage ahead of them.
    std::size_t index = m_stages.size();
    while (index > 0 && !touches(*m_stages[index - 1], path) &&
           !touches(*m_stages[index - 1], target))
        --index;
    if (index == m_stages.size())
        m_stages.push_back(std::make_unique<Stage>());
    Stage& stage = *m_stages[index];
    stage.paths.insert(pathKey(path));
    if (!target.IsEmpty())
        stage.paths.insert(pathKey(target));
    return stage;
}

void CollectionChanges::scan(const CString& path)
{
    Stage& stage = stageFor(path, CString());
    stage.list.addFileToScan(path, CQoFileChangeInfo::ordinaryFile, CQoFileChangeInfo::setImported);
    stage.analyze(path);
}

void CollectionChanges::arrive(const CString& path, const CString& from)
{
    scan(path);
    if (!from.IsEmpty())
        m_arrivals.emplace_back(from, path);
}

void CollectionChanges::restore(const QoFileDbItemPtr& record)
{
    Stage& stage = stageFor(record->path, CString());
    stage.list.addVelmoraFile(record->path, record);
    stage.analyze(record->path);
}

void CollectionChanges::move(const CString& from, const CString& to, bool readAgain)
{
    Stage& stage = stageFor(from, to);
    stage.list.addFileToMove(from, to, readAgain)->m_keepEmptyDirs = m_keepEmptyDirs;
    stage.analyze(to);
}

void CollectionChanges::remove(const CString& path)
{
    Stage& stage = stageFor(path, CString());
    stage.list.addFileToDelete(path)->m_keepEmptyDirs = m_keepEmptyDirs;
}

void CollectionChanges::apply(IQoProgress& progress)
{
    const std::vector<std::unique_ptr<Stage>> stages = std::move(m_stages);
    m_stages.clear();
    // What lies somewhere for the moment only must not lend its artist to its neighbours.
    for (const auto& stage : stages)
    {
        if (stage != stages.back())
            stages.back()->takeAnalysis(*stage);
    }
    int saved = 0;
    for (const auto& stage : stages)
    {
        try
        {
            applyStage(*stage, progress);
            forgetGone(CQoCollection::m_ownCollection);
        }
        catch (const HostError& error)
        {
            if (saved == 0)
                throw;
            throw HostError(error.code(),
                            std::string(error.what()) + "; the first " + std::to_string(saved) +
                                " of its changes to the collection were saved before and stay");
        }
        saved += stage->list.GetSize();
    }
    PendingTags::settle(m_session, std::exchange(m_arrivals, {}));
}

void CollectionChanges::applyStage(const Stage& stage, IQoProgress& progress)
{
    CQoCollection& collection = CQoCollection::m_ownCollection;
    m_session.scanHost().forget();
    bool isApplied = false;
    try
    {
        isApplied = collection.applyQoFileChanges(stage.list, stage.toAnalyze, &progress);
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(Session::databasePath());
    }
    if (!isApplied)
        throw HostError(ExitCode::failed, "the collection is not loaded");
    if (!collection.loadedSuccesfully())
        throw HostError(ExitCode::interrupted, "interrupted");
    const std::string failure = m_session.scanHost().lastFailure();
    if (!failure.empty())
        throw HostError(ExitCode::failed,
                        "the collection could not be saved to " +
                            shownPath(Session::databasePath()) + ": " + failure);
}

QoFileDbItemPtr CollectionChanges::recordOf(const CString& path)
{
    const auto file = CQoCollection::m_ownCollection.getFileByPath(path);
    return file ? file->getDbItem() : QoFileDbItemPtr();
}

std::vector<QoFileDbItemPtr> CollectionChanges::recordsAt(const CString& path)
{
    if (const QoFileDbItemPtr record = recordOf(path))
        return {record};
    std::vector<QoFileDbItemPtr> records;
    if (const auto dir = CQoCollection::m_ownCollection.getDir(path))
    {
        CPtrListT<CHDFile> files;
        dir->getAllFiles(files);
        for (const auto& file : files)
            records.push_back(file->getDbItem());
    }
    return records;
}
} // namespace qo::host
