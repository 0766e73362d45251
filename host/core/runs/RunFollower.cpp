#include "core/runs/RunFollower.h"

#include "core/base/Disk.h"
#include "core/base/RecordedFile.h"
#include "core/base/SystemPath.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/FileChecks.h"
#include "core/roots/RootFolders.h"
#include "core/runs/RecordValues.h"
#include "core/session/ProgressReporter.h"
#include "core/session/Session.h"

namespace qo::host
{
namespace
{
using Outside = MovedFile::Outside;

std::string placeBelow(const std::string& place, const std::string& below)
{
    return below.empty() ? place : inFolder(place, below);
}

/// The path of a record for the moment in which files change places; of the same kind of file.
CString placeBetween(const CString& path)
{
    const CQoCollPath whole(path);
    return addBackslash(whole.getParent().toString()) + u".qo-between-" + whole.getLast();
}

bool isWithin(const CString& path, const CString& folder)
{
    return path == folder || (path.GetLength() > folder.GetLength() &&
                              path.Left(folder.GetLength() + 1) == folder + u"\\");
}
} // namespace

RunFollower::RunFollower(Session& session, MoveRun& run)
    : m_run(run)
    , m_lister(RootFolders().folders(), session.ignoredNames())
    , m_changes(session, true)
{
    for (const MoveProgress::Record& record : run.start().records)
        m_recordsOf[record.file].push_back(&record);
}

/// At its place, or wherever an earlier attempt has left it.
QoFileDbItemPtr RunFollower::recordOf(const std::string& id, const CString& path)
{
    const QoFileDbItemPtr record = CollectionChanges::recordOf(path);
    if (record && toUtf8(record->velmoraId) == id)
        return record;
    if (m_byId.empty())
    {
        QoFileDbItemArray all;
        ownCollection().copyFiles(all);
        for (const QoFileDbItemPtr& each : all)
        {
            const auto [found, isNew] = m_byId.try_emplace(toUtf8(each->velmoraId), each);
            if (!isNew)
                found->second.reset();
        }
    }
    const auto found = m_byId.find(id);
    return id.empty() || found == m_byId.end() ? QoFileDbItemPtr() : found->second;
}

std::vector<RunFollower::Known> RunFollower::recordsOf(const MoveRun::Place& place)
{
    std::vector<Known> records;
    const auto add = [&](const std::string& id, const std::string& below)
    {
        Known known;
        known.record = recordOf(id, fromSystemPath(placeBelow(place.from, below)));
        known.id = id;
        known.below = below;
        records.push_back(std::move(known));
    };
    for (const MoveProgress::Record* record : m_recordsOf[place.file])
    {
        add(record->id, record->below);
        records.back().values = &record->values;
    }
    const std::string& id = m_run.start().files[place.file].recordId;
    if (records.empty() && !id.empty())
        add(id, {});
    return records;
}

void RunFollower::apply()
{
    const std::vector<MoveRun::Place> places = m_run.notApplied();
    if (places.empty())
        return;
    for (const MoveRun::Place& place : places)
    {
        const MovedFile& file = m_run.start().files[place.file];
        const std::vector<Known> records = recordsOf(place);
        if (file.outside == Outside::target && place.to == file.to)
            leave(place, records);
        else
        {
            if (file.outside != Outside::source)
                move(place, records);
            if (place.to == file.to || place.to == file.from)
                arrive(place, records);
        }
    }
    collectMoves();
    // What the collection knows must not be lost in a power cut.
    m_run.sync();
    ProgressReporter silent([](const ProgressEvent&) {});
    m_changes.apply(silent);
    m_run.setApplied();
}

void RunFollower::leave(const MoveRun::Place& place, const std::vector<Known>& records)
{
    const CString from = fromSystemPath(place.from);
    std::vector<QoFileDbItemPtr> leaving;
    for (const Known& known : records)
    {
        if (known.record)
            leaving.push_back(known.record);
    }
    if (records.empty())
    {
        for (const QoFileDbItemPtr& record : CollectionChanges::recordsAt(from))
        {
            if (isWithin(record->path, from))
                leaving.push_back(record);
        }
    }
    for (const QoFileDbItemPtr& record : leaving)
        m_changes.remove(record->path);
}

void RunFollower::move(const MoveRun::Place& place, const std::vector<Known>& records)
{
    for (const Known& known : records)
    {
        const CString to = fromSystemPath(placeBelow(place.to, known.below));
        // A file that was gone before has not moved.
        if (known.record && known.record->path != to && nameExists(to))
            m_moves.emplace_back(known.record, to);
    }
}

/// Files without a record, and those that come back to theirs.
void RunFollower::arrive(const MoveRun::Place& place, const std::vector<Known>& records)
{
    std::unordered_set<std::u16string> known;
    for (const Known& each : records)
    {
        const CString path = fromSystemPath(placeBelow(place.to, each.below));
        if (each.record)
            known.insert(pathKey(path));
        else if (each.values && !each.id.empty() && nameExists(path))
        {
            known.insert(pathKey(path));
            m_restored.push_back(recordvalues::recordOf(path, each.id, *each.values));
        }
    }
    const bool isMove = m_run.start().files[place.file].deed == MovedFile::Deed::move;
    const CString from = fromSystemPath(place.from);
    const CString to = fromSystemPath(place.to);
    for (const CString& path : filesAt(to, m_lister))
    {
        // An earlier attempt may have come so far.
        const QoFileDbItemPtr there = CollectionChanges::recordOf(path);
        FileInfo info;
        const bool isKnown = there && there->path == path &&
                             fileSystem().info(path, Spelling::exact, info) == 0 &&
                             !isOtherFile(*there, info);
        if (!isKnown && !known.contains(pathKey(path)))
            m_arrivals.emplace_back(path, isMove ? rebased(path, to, from) : CString());
    }
}

/// What leaves a path goes before what arrives there, as on the disk. A record that goes to a path
/// that another record leaves waits under a path in between: the collection can hold but one of a
/// path, and sees all leave before the first arrives.
///
/// Example: s/a goes to s/Q, s/q goes to t/Z. The path s/Q is left, as s/q, so the changes are
/// s/a to s/.qo-between-a and s/q to t/Z; then s/.qo-between-a to s/Q.
void RunFollower::collectMoves()
{
    std::unordered_set<std::u16string> left;
    std::unordered_set<const QoFileDbItem*> moving;
    for (const auto& [record, to] : m_moves)
    {
        left.insert(pathKey(record->path));
        moving.insert(record.get());
    }
    const auto makeRoom = [&](const CString& to)
    {
        const QoFileDbItemPtr other = CollectionChanges::recordOf(to);
        // The file of that record was gone before: what is there now came with this run.
        if (other && !moving.contains(other.get()) &&
            (other->path == to || !nameExists(other->path)))
            m_changes.remove(other->path);
    };
    std::vector<std::pair<CString, CString>> last;
    for (const auto& [record, to] : m_moves)
    {
        if (!left.contains(pathKey(to)))
        {
            makeRoom(to);
            continue;
        }
        const CString between = placeBetween(record->path);
        m_changes.move(record->path, between, false);
        last.emplace_back(between, to);
    }
    for (const auto& [record, to] : m_moves)
    {
        if (!left.contains(pathKey(to)))
            m_changes.move(record->path, to, false);
    }
    for (const auto& [from, to] : last)
        m_changes.move(from, to, false);
    for (const auto& [path, from] : m_arrivals)
    {
        makeRoom(path);
        m_changes.arrive(path, from);
    }
    for (const QoFileDbItemPtr& record : m_restored)
    {
        makeRoom(record->path);
        m_changes.restore(record);
    }
}
} // namespace qo::host
