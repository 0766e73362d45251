#include "core/collection/FileChecks.h"

#include "core/base/Disk.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/Trash.h"
#include "core/roots/RootFolders.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Physical.h>

#include <cerrno>
#include <set>
#include <utility>
#include <vector>

namespace qo::host
{
namespace
{
/// Device and inode: what a thing is, under whatever name.
using Identity = std::pair<std::uint64_t, std::uint64_t>;

CString folderAbove(const CString& path)
{
    return CQoCollPath(path).getParent().toString();
}

/// False if absent. The name itself, not what a link leads to.
bool identityOf(const std::string& path, Identity& identity)
{
    NameInfo info;
    if (disk::look(path, info) != 0)
        return false;
    identity = {info.device, info.inode};
    return true;
}

/// The path and all folders above it, up to "/".
std::vector<std::string> wayUp(std::string path)
{
    std::vector<std::string> names;
    while (path.size() > 1)
    {
        names.push_back(path);
        const std::size_t slash = path.rfind('/');
        path.resize(slash == std::string::npos ? 0 : slash);
    }
    names.emplace_back("/");
    return names;
}

/// A folder that must stay, and all that it would go with: the folders above it, and the links on
/// the way to it.
class Place
{
public:
    Place(std::string path, const char* what) : m_path(std::move(path)), m_what(what)
    {
        const std::string real = resolvedPath(m_path);
        m_isThere = identityOf(real, m_self);
        for (const std::string& way : {m_path, real})
        {
            if (way.empty())
                continue;
            for (const std::string& name : wayUp(way))
            {
                Identity identity;
                if (identityOf(name, identity))
                    m_way.insert(identity);
            }
        }
    }

    bool goesWith(const Identity& identity) const { return m_way.contains(identity); }
    bool is(const Identity& identity) const { return m_isThere && m_self == identity; }
    /// Why the path has to stay.
    std::string whyStays(const std::string& path) const
    {
        return path == m_path ? std::string("it is ") + m_what
                              : "it is or holds " + m_path + ", which is " + m_what;
    }
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
    const char* m_what;
    Identity m_self;
    bool m_isThere = false;
    std::set<Identity> m_way;
};

std::vector<Place> rootPlaces()
{
    std::vector<Place> places;
    const RootFolders listed;
    for (const CString& root : listed.folders())
        places.emplace_back(toSystemPath(root), "a root folder");
    for (const auto& root : ownCollection().getRootDirs())
        places.emplace_back(toSystemPath(root->getPath().toString()), "a root folder");
    return places;
}

Place dataPlace()
{
    return {toSystemPath(specialFolders().data()), "the data folder of this program"};
}

/// Whether it lies in this program's data; a root folder below that is the user's.
bool isInData(const std::string& path)
{
    const Place data = dataPlace();
    const std::vector<Place> roots = rootPlaces();
    for (const std::string& name : wayUp(resolvedPath(path)))
    {
        Identity identity;
        if (!identityOf(name, identity))
            continue;
        if (data.is(identity))
            return true;
        for (const Place& root : roots)
        {
            if (root.is(identity))
                return false;
        }
    }
    return false;
}

/// The name of another file there that the collection would take for the same; "" for none.
CString nameTaken(const CString& from, const CQoCollPath& target)
{
    std::vector<DirEntry> entries;
    const CString parent = target.getParent().toString();
    if (const int error = fileSystem().list(parent, entries))
        throw HostError(ExitCode::failed,
                        shownPath(from) + " cannot become " + shownPath(target.toString()) + ": " +
                            shownPath(parent) + ": " + errorWords(error));
    const CString name = target.getLast();
    const bool isSameFolder = folderAbove(from) == parent;
    CString alike;
    for (const DirEntry& entry : entries)
    {
        if (entry.name == name)
            return name;
        if (entry.name.CompareNoCase(name) == 0 &&
            !(isSameFolder && entry.name == CQoCollPath(from).getLast()))
            alike = entry.name;
    }
    return alike;
}
} // namespace

namespace check
{
void source(const CString& path, const std::string& deed)
{
    NameInfo info;
    const int error = disk::look(toSystemPath(path), info);
    if (error == 0)
        return;
    throw HostError(error == ENOENT || error == ENOTDIR ? ExitCode::notFound : ExitCode::failed,
                    shownPath(path) + " cannot be " + deed + ": " + errorWords(error));
}

void notProtected(const CString& path, const std::string& deed, const Trash& trash)
{
    const std::string system = toSystemPath(path);
    const std::string start = shownPath(path) + " cannot be " + deed + ": ";
    Identity identity;
    if (!identityOf(system, identity))
        return;
    const ISpecialFolders& special = specialFolders();
    std::vector<Place> places = rootPlaces();
    places.push_back(dataPlace());
    places.emplace_back(toSystemPath(special.state()), "the folder of this program's logs");
    places.emplace_back(toSystemPath(special.cache()), "the cache folder of this program");
    places.emplace_back(toSystemPath(special.home()), "the home folder");
    places.emplace_back(trash.homeTrash(), "the trash");
    for (const Place& place : places)
    {
        if (place.goesWith(identity))
            throw HostError(ExitCode::failed, start + place.whyStays(system));
    }
    if (isInData(toSystemPath(folderAbove(path))))
        throw HostError(ExitCode::failed,
                        start + "it is part of this program's data in " + dataPlace().path());
}

void inCollection(const CString& path, const std::string& deed)
{
    if (!ownCollection().isDirInCollection(CQoCollPath(path).getParent()))
        throw HostError(ExitCode::notFound,
                        shownPath(path) + " cannot be " + deed +
                            ": it is in no root folder of the collection");
}

void folder(const CString& path)
{
    FileInfo info;
    const int error = fileSystem().info(path, Spelling::exact, info);
    if (error == ENOENT || error == ENOTDIR)
        throw HostError(ExitCode::notFound, "there is no folder " + shownPath(path));
    if (error != 0)
        throw HostError(ExitCode::failed, shownPath(path) + ": " + errorWords(error));
    if (info.kind != FileKind::directory)
        throw HostError(ExitCode::usage, shownPath(path) + " is no folder");
}

void freeTarget(const CString& from, const CString& to)
{
    const std::string start = shownPath(from) + " cannot become " + shownPath(to) + ": ";
    const CQoCollPath target(to);
    const CString parent = folderAbove(to);
    if (from == to)
        throw HostError(ExitCode::failed, shownPath(from) + " is there already");
    if (!target.isValid() || !ownCollection().isDirInCollection(target.getParent()))
        throw HostError(ExitCode::failed,
                        start + shownPath(parent) + " is in no root folder of the collection");
    if (isInData(toSystemPath(parent)))
        throw HostError(ExitCode::failed,
                        start + shownPath(parent) + " is part of this program's data");
    if (target.isSubPathOf(CQoCollPath(from)))
        throw HostError(ExitCode::failed, start + "a folder cannot be put into itself");
    const CString taken = nameTaken(from, target);
    if (taken == target.getLast())
        throw HostError(ExitCode::failed, "there is already a file of that name: " + shownPath(to));
    if (!taken.IsEmpty())
        throw HostError(ExitCode::failed,
                        start + shownPath(target.getParent().child(taken).toString()) +
                            " differs from it in case alone, and the collection takes both "
                            "for one");
}
} // namespace check

CString targetOf(const CString& from, const CString& to)
{
    FileInfo source;
    FileInfo target;
    if (fileSystem().info(to, Spelling::exact, target) != 0 || target.kind != FileKind::directory)
        return to;
    const bool isSource = fileSystem().info(from, Spelling::exact, source) == 0 &&
                          source.device == target.device && source.inode == target.inode;
    return isSource ? to : CQoCollPath(to).child(CQoCollPath(from).getLast()).toString();
}

bool nameExists(const CString& path)
{
    Identity identity;
    return identityOf(toSystemPath(path), identity);
}
} // namespace qo::host
