#include "core/watch/FolderChanges.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/CollectionFiles.h"
#include "core/load/LossGuard.h"
#include "core/load/Snapshots.h"
#include "core/load/UnreadFiles.h"
#include "core/roots/RootFolders.h"
#include "core/roots/RootGuard.h"
#include "core/roots/RootLister.h"
#include "core/session/Session.h"

#include <algorithm>
#include <set>

namespace qo::host
{
namespace
{
bool isThere(const CString& path, FileKind kind)
{
    FileInfo info;
    return fileSystem().info(path, Spelling::exact, info) == 0 && info.kind == kind;
}

/// Throws when a root folder is away, since all files below it seem to have gone.
void refuseWithoutRoots()
{
    const RootFolders roots;
    const std::string text =
        rootSentences(checkRoots(roots.folders(), Session::databasePath()), "is away");
    if (!text.empty())
        throw HostError(ExitCode::away, text + "nothing was changed");
}
} // namespace

/// What the events come to, each path once.
class FolderChanges::Collector
{
public:
    explicit Collector(Session& session)
        : m_session(session)
        , m_changes(session, true)
        , m_lister(RootFolders().folders(), session.ignoredNames())
    {
    }

    void take(const FolderEvent& event)
    {
        if (event.kind == FolderEvent::Kind::moved)
            takeMove(fromSystemPath(event.path), fromSystemPath(event.newPath));
        else if (event.kind != FolderEvent::Kind::needRescan)
            look(fromSystemPath(event.path));
    }
    Report apply(IQoProgress& progress)
    {
        if (m_report.removed > 0)
            refuseWithoutRoots();
        const int known = CQoCollection::m_ownCollection.getFileCount();
        if (LossGuard::isGreatLoss(static_cast<std::size_t>(m_report.removed),
                                   static_cast<std::size_t>(known)))
            m_session.note(Snapshots(Session::databasePath()).keep());
        if (!m_changes.isEmpty())
            m_changes.apply(progress);
        return m_report;
    }

private:
    /// The record follows its file. The record of a file that was overwritten by the move is
    /// removed.
    void moveRecord(const QoFileDbItemPtr& record, const CString& target)
    {
        const CString from = record->path;
        if (m_movedAway.contains(record.get()))
            return;
        if (!isThere(target, FileKind::regular) ||
            (from != target && isThere(from, FileKind::regular)))
        {
            look(from);
            return look(target);
        }
        const QoFileDbItemPtr former = CollectionChanges::recordOf(target);
        if (former && former != record && !m_movedAway.contains(former.get()))
        {
            m_changes.remove(target);
            ++m_report.removed;
        }
        m_changes.move(from, target, true);
        m_movedAway.insert(record.get());
        m_settled.insert(target);
        ++m_report.moved;
    }

    void takeMove(const CString& from, const CString& to)
    {
        const std::vector<QoFileDbItemPtr> records = CollectionChanges::recordsAt(from);
        for (const QoFileDbItemPtr& record : records)
            moveRecord(record, rebased(record->path, from, to));
        if (isThere(to, FileKind::directory))
            return scanFolder(to);
        if (records.empty())
            look(to);
    }

    /// Adds the files of a folder that the collection does not know.
    void scanFolder(const CString& folder)
    {
        m_lister.forEachFile(folder,
                             [this](const CString& path, const FileInfo&)
                             {
                                 if (!CollectionChanges::recordOf(path))
                                     look(path);
                                 return true;
                             });
    }

    /// Scans a file that is there, and removes the records of files that have gone, also those of a
    /// whole folder.
    void look(const CString& path)
    {
        if (isThere(path, FileKind::regular))
        {
            if (!CQoCollection::m_ownCollection.isFilePathInCollection(CQoCollPath(path)) ||
                m_lister.isPassedOver(path) || !m_settled.insert(path).second)
                return;
            m_changes.scan(path);
            ++m_report.scanned;
            return;
        }
        for (const QoFileDbItemPtr& record : CollectionChanges::recordsAt(path))
        {
            if (m_movedAway.contains(record.get()))
                continue;
            if (record->path != path && isThere(record->path, FileKind::regular))
                look(record->path);
            else if (isKnownToBeGone(record->path) && m_settled.insert(record->path).second)
            {
                m_changes.remove(record->path);
                ++m_report.removed;
            }
        }
    }

    Session& m_session;
    CollectionChanges m_changes;
    RootLister m_lister;
    Report m_report;
    std::set<CString> m_settled; ///< paths whose state is decided
    std::set<const QoFileDbItem*> m_movedAway;
};

FolderChanges::FolderChanges(Session& session) : m_session(session) {}

FolderChanges::Report FolderChanges::apply(const std::vector<FolderEvent>& events,
                                           IQoProgress& progress)
{
    using Kind = FolderEvent::Kind;
    if (std::any_of(events.begin(),
                    events.end(),
                    [](const FolderEvent& event)
                    { return event.kind == Kind::removed || event.kind == Kind::moved; }))
        refuseWithoutRoots();
    Collector collector(m_session);
    for (const FolderEvent& event : events)
        collector.take(event);
    return collector.apply(progress);
}
} // namespace qo::host
