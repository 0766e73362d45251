#include "core/runs/FileMoves.h"

#include "core/base/Disk.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/FileChecks.h"
#include "core/plan/PlanBuilder.h"
#include "core/plan/TargetName.h"
#include "core/roots/RootFolders.h"
#include "core/runs/MoveSteps.h"
#include "core/runs/RecordValues.h"
#include "core/runs/RunChecks.h"
#include "core/session/Session.h"

#include <QoKernel/Physical.h>

#include <algorithm>
#include <cerrno>

namespace qo::host
{
/// A thing in the folder that is moved or copied file by file, folders before what they hold.
struct FileMoves::Found
{
    std::string path;
    NameInfo info;
};

namespace
{
using Deed = MovedFile::Deed;
using Outside = MovedFile::Outside;
using What = MovedFile::What;
using Kind = MoveStep::Kind;

const char* wordOf(Deed deed)
{
    return deed == Deed::move ? "moved" : "copied";
}

/// A sentence that begins with what cannot be done.
[[noreturn]] void
refuse(const std::string& from, const std::string& deed, const std::string& cause, int error = 0)
{
    throw HostError(error == ENOENT      ? ExitCode::notFound
                    : error == ECANCELED ? ExitCode::interrupted
                                         : ExitCode::failed,
                    from + " cannot be " + deed + ": " + cause);
}

What whatOf(const NameInfo& info)
{
    return info.kind == NameInfo::Kind::link        ? What::link
           : info.kind == NameInfo::Kind::directory ? What::folder
                                                    : What::file;
}

/// Whether the record's file is the asked one or lies below it on the disk. The collection takes
/// folders whose names differ in case alone for one, the disk need not.
bool isRecordOf(const CString& record, const CString& asked)
{
    if (record == asked || (record.GetLength() > asked.GetLength() &&
                            record.Left(asked.GetLength() + 1) == asked + u"\\"))
        return true;
    CQoCollPath above(record);
    while (above.getCount() > CQoCollPath(asked).getCount())
        above = above.getParent();
    const CString spelled = above.toString();
    return nameExists(spelled) ? disk::isSameEntry(toSystemPath(spelled), toSystemPath(asked))
                               : nameExists(rebased(record, asked, asked));
}

/// The records of the file, or of the files below the folder of exactly that name.
std::vector<QoFileDbItemPtr> recordsOf(const CString& path)
{
    std::vector<QoFileDbItemPtr> records = CollectionChanges::recordsAt(path);
    std::erase_if(records,
                  [&](const QoFileDbItemPtr& record) { return !isRecordOf(record->path, path); });
    return records;
}

/// The path from the folder to the file in it, "" for the file itself.
std::string relativeTo(const CString& folder, const CString& path)
{
    const std::string above = toSystemPath(folder);
    const std::string whole = toSystemPath(path);
    // Names may differ in case, and so in length.
    std::size_t start = 0;
    for (auto left = std::count(above.begin(), above.end(), '/'); left >= 0; --left)
    {
        const std::size_t slash = whole.find('/', start);
        if (slash == std::string::npos)
            return {};
        start = slash + 1;
    }
    return whole.substr(start);
}

FileMoves::Request requestFor(const CString& from, const CString& to)
{
    FileMoves::Request request;
    request.from = from;
    request.to = to;
    return request;
}
} // namespace

FileMoves::FileMoves(const Session& session,
                     std::string kind,
                     Trash trash,
                     std::function<bool()> stop)
    : m_lister(RootFolders().folders(), session.ignoredNames())
    , m_kind(std::move(kind))
    , m_trash(std::move(trash))
    , m_stop(std::move(stop))
{
}

FileMoves::Found FileMoves::look(const CString& path) const
{
    Found found{toSystemPath(path), {}};
    if (const int error = disk::look(found.path, found.info))
        refuse(
            found.path, m_kind == "rm" ? "put into the trash" : "moved", errorWords(error), error);
    return found;
}

/// Two requests of one run must not be about the same file, nor lead to the same place.
void FileMoves::refuseDoubles(const std::string& from, const std::string& to) const
{
    const std::string key = sameNameKey(to);
    for (const Request& request : m_requests)
    {
        const std::string other = toSystemPath(request.from);
        if (other == from || isBelow(from, other) || isBelow(other, from))
            throw HostError(ExitCode::failed,
                            from + " goes along with " + other + ", which is named as well");
        if (sameNameKey(toSystemPath(request.to)) == key)
            throw HostError(ExitCode::failed,
                            "there is already a file of that name: " + to + ", from " + other);
    }
}

const FileMoves::Request& FileMoves::move(const CString& from, const CString& to)
{
    check::source(from, "moved");
    check::notProtected(from, "moved", m_trash);
    check::inCollection(from, "moved");
    return transfer(from, targetOf(from, to), Deed::move, Outside::neither);
}

const FileMoves::Request& FileMoves::add(const CString& from, const CString& to, Deed deed)
{
    if (deed == Deed::move && ownCollection().isDirInCollection(CQoCollPath(from)))
        return move(from, to);
    check::source(from, wordOf(deed));
    const CString target = targetOf(from, to);
    if (deed == Deed::move)
    {
        check::notProtected(from, "moved", m_trash);
        return transfer(from, target, deed, Outside::source);
    }
    // What is wanted of a link is the music that it leads to.
    const std::string real = resolvedPath(toSystemPath(from));
    return transfer(real.empty() ? from : fromSystemPath(real), target, deed, Outside::source);
}

const FileMoves::Request&
FileMoves::transfer(const CString& from, const CString& to, Deed deed, Outside outside)
{
    check::freeTarget(from, to);
    const Found top = look(from);
    const std::string target = toSystemPath(to);
    refuseDoubles(top.path, target);
    NameInfo folder;
    const std::string nearest = disk::nearestFolder(parentOf(target));
    if (const int error = disk::lookAtFolder(nearest, folder))
        refuse(top.path, wordOf(deed), nearest + ": " + errorWords(error), error);
    const bool isOnePiece = deed == Deed::move && folder.mount == top.info.mount;
    if (const int error = deed == Deed::copy ? fileSystem().mayChange(fromSystemPath(nearest))
                                             : disk::checkRights(top.path, target))
        refuse(top.path, std::string(wordOf(deed)) + " to " + target, errorWords(error), error);

    Request request = requestFor(from, to);
    request.files = static_cast<int>(filesAt(from, m_lister).size());
    MovedFile item{top.path, target, markOf(top.info)};
    item.what = whatOf(top.info);
    item.deed = deed;
    item.outside = outside;
    item.targetDevice = folder.device;
    const auto tree = isOnePiece ? std::vector<Found>() : walk(top, top.path, deed);
    if (!isOnePiece)
        needRoom(tree, nearest, deed);
    if (isOnePiece || item.what != What::folder)
    {
        addRecords(from, false);
        addItem(request, item);
    }
    else
        addTree(request, tree, item);
    if (outside == Outside::neither)
        addEmptied(top.path);
    else
        m_bases.push_back(parentOf(top.path));
    m_requests.push_back(std::move(request));
    return m_requests.back();
}

const FileMoves::Request& FileMoves::remove(const CString& path)
{
    constexpr const char* deed = "put into the trash";
    check::source(path, deed);
    check::notProtected(path, deed, m_trash);
    check::inCollection(path, deed);
    const Found top = look(path);
    std::set<std::string> taken;
    for (const MoveStep& note : m_notes)
        taken.insert(note.to);
    const Trash::Item place = m_trash.placeFor(top.path, taken);
    refuseDoubles(top.path, place.file);
    if (const int error = disk::checkRights(top.path, place.file))
        refuse(top.path, deed, errorWords(error), error);
    Request request = requestFor(path, fromSystemPath(place.file));
    request.files = static_cast<int>(recordsOf(path).size());
    MovedFile item{top.path, place.file, markOf(top.info)};
    item.what = whatOf(top.info);
    item.outside = Outside::target;
    MoveStep note;
    note.kind = Kind::writeNote;
    note.file = m_files.size();
    note.to = place.note;
    note.text = place.text;
    m_notes.push_back(note);
    addRecords(path, true);
    addItem(request, item);
    addEmptied(top.path);
    m_bases.push_back(parentOf(place.file));
    m_requests.push_back(std::move(request));
    return m_requests.back();
}

void FileMoves::addItem(Request& request, MovedFile file)
{
    request.items.push_back(m_files.size());
    m_files.push_back(std::move(file));
}

/// Those that go along with the file or folder that is added next.
void FileMoves::addRecords(const CString& from, bool withValues)
{
    for (const QoFileDbItemPtr& record : recordsOf(from))
        m_records.push_back(
            {m_files.size(),
             relativeTo(from, record->path),
             toUtf8(record->velmoraId),
             withValues ? recordvalues::of(*record) : std::map<std::string, std::string>()});
}

/// All that is to be moved or copied one by one. Better to know before a long copy than after it
/// what cannot be read, and what cannot be removed then.
std::vector<FileMoves::Found>
FileMoves::walk(const Found& top, const std::string& from, Deed deed) const
{
    std::vector<Found> all{top};
    for (std::size_t i = 0; i < all.size(); ++i)
    {
        const Found found = all[i];
        const CString path = fromSystemPath(found.path);
        if (m_stop && m_stop())
            refuse(from, wordOf(deed), errorWords(ECANCELED), ECANCELED);
        if (found.info.mount != top.info.mount)
            refuse(from, wordOf(deed), "something is mounted in " + found.path);
        if (found.info.kind == NameInfo::Kind::other)
            refuse(from, wordOf(deed), found.path + " is neither a file, nor a link, nor a folder");
        if (const int error = fileSystem().mayRead(path))
            refuse(from, wordOf(deed), found.path + ": " + errorWords(error), error);
        if (const int error = deed == Deed::move ? fileSystem().mayRemove(path) : 0)
            refuse(from,
                   wordOf(deed),
                   "nothing may be taken out of " + parentOf(found.path) + ": " + errorWords(error),
                   error);
        if (found.info.kind != NameInfo::Kind::directory)
            continue;
        std::vector<DirEntry> entries;
        if (const int error = fileSystem().list(path, entries))
            refuse(from, wordOf(deed), found.path + ": " + errorWords(error), error);
        for (const DirEntry& entry : entries)
            all.push_back(look(addBackslash(path) + entry.name));
    }
    return all;
}

/// Refuses what does not fit beside what the requests before it will copy to that disk. A disk that
/// does not say what it can take is tried.
void FileMoves::needRoom(const std::vector<Found>& tree, const std::string& folder, Deed deed)
{
    NameInfo info;
    std::uint64_t room = 0;
    if (disk::lookAtFolder(folder, info) != 0 ||
        fileSystem().room(fromSystemPath(folder), room) != 0)
        return;
    std::uint64_t needed = m_needed[info.device];
    for (const Found& found : tree)
    {
        if (found.info.kind == NameInfo::Kind::regular)
            needed += static_cast<std::uint64_t>(found.info.size);
    }
    if (needed > room)
        refuse(tree.front().path,
               wordOf(deed),
               "there is no room in " + folder + ": " + std::to_string(needed) +
                   " bytes are needed and " + std::to_string(room) + " are free");
    m_needed[info.device] = needed;
}

void FileMoves::addTree(Request& request, const std::vector<Found>& tree, const MovedFile& top)
{
    for (const Found& found : tree)
    {
        const std::string to = top.to + found.path.substr(top.from.size());
        if (found.info.kind != NameInfo::Kind::directory)
        {
            MovedFile item = top;
            item.from = found.path;
            item.to = to;
            item.mark = markOf(found.info);
            item.what = whatOf(found.info);
            if (top.outside == Outside::neither)
                addRecords(fromSystemPath(found.path), false);
            addItem(request, item);
            continue;
        }
        MoveStep make;
        make.kind = Kind::makeFolder;
        make.to = to;
        make.rights = {found.info.mode, found.info.owner, found.info.group};
        m_makes.push_back(make);
        if (top.deed != Deed::move)
            continue;
        MoveStep remove;
        remove.kind = Kind::removeFolder;
        remove.to = found.path;
        remove.isOurs = true;
        m_removals.push_back(remove);
    }
}

/// The folders above what leaves may run empty, up to the first that is kept.
void FileMoves::addEmptied(const std::string& from)
{
    const std::vector<std::string> kept = PlanBuilder::keptFolders();
    const auto isKept = [&](const std::string& folder)
    { return std::find(kept.begin(), kept.end(), folder) != kept.end(); };
    for (std::string folder = parentOf(from);
         folder != "/" && !isKept(folder) && m_emptied.insert(folder).second;
         folder = parentOf(folder))
    {
        const bool isInRoot =
            std::any_of(kept.begin(),
                        kept.end(),
                        [&](const std::string& base) { return isBelow(folder, base); });
        if (!isInRoot)
            break;
        MoveStep step;
        step.kind = Kind::removeFolder;
        step.to = folder;
        m_removals.push_back(step);
    }
}

MoveProgress::Start FileMoves::start(const std::string& id) const
{
    MoveProgress::Start start;
    start.id = id;
    start.kind = m_kind;
    start.targets = check::rootFolders();
    start.targets.insert(start.targets.end(), m_bases.begin(), m_bases.end());
    start.keptFolders = start.targets;
    start.files = m_files;
    start.records = m_records;
    start.steps = MoveSteps::inOrder(m_files, m_makes, m_removals, id);
    start.steps.insert(start.steps.begin(), m_notes.begin(), m_notes.end());
    return start;
}
} // namespace qo::host
