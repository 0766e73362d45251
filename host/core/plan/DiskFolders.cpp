#include "core/plan/DiskFolders.h"

#include "core/base/Disk.h"
#include "core/base/HostFiles.h"
#include "core/plan/TargetName.h"

#include <algorithm>
#include <cerrno>
#include <limits>

namespace qo::host
{
namespace
{
/// Calls for each component.
template <class Visit>
void forEachName(const CString& relative, Visit visit)
{
    int start = 0;
    while (start < relative.GetLength())
    {
        int end = relative.Find(u'\\', start);
        end = end < 0 ? relative.GetLength() : end;
        visit(relative.Mid(start, end - start));
        start = end + 1;
    }
}
} // namespace

DiskFolders::DiskFolders()
{
    for (const CString& own : specialFolders().ownFolders())
    {
        NameInfo info;
        if (disk::lookAtFolder(toSystemPath(own), info) == 0)
            m_ownFolders.emplace_back(info.device, info.inode);
    }
}

DiskFolders::Folder& DiskFolders::base(const CString& path)
{
    std::unique_ptr<Folder>& folder = m_bases[path];
    if (!folder)
    {
        folder = std::make_unique<Folder>();
        folder->path = path;
        NameInfo info;
        folder->isThere = disk::lookAtFolder(toSystemPath(path), info) == 0;
        folder->device = info.device;
        folder->rules = volumeRulesOf(path);
        if (!folder->isThere)
            folder->whyClosed = shownPath(path) + " is not there";
    }
    return *folder;
}

DiskFolders::Folder& DiskFolders::below(Folder& base, const CString& relative)
{
    Folder*& known = base.m_below[relative];
    if (!known)
    {
        known = &base;
        forEachName(relative, [&](const CString& name) { known = &child(*known, name); });
    }
    return *known;
}

DiskFolders::Folder& DiskFolders::target(Folder& base, const CString& relative)
{
    Folder*& known = base.m_targets[relative];
    if (!known)
    {
        known = &base;
        forEachName(relative, [&](const CString& name) { known = &fittingChild(*known, name); });
    }
    return *known;
}

DiskFolders::Folder& DiskFolders::child(Folder& parent, const CString& name)
{
    std::unique_ptr<Folder>& folder = parent.m_children[name];
    if (!folder)
    {
        folder = std::make_unique<Folder>();
        folder->path = addBackslash(parent.path) + name;
        folder->parent = &parent;
        folder->rules = parent.rules;
        folder->device = parent.device;
        folder->whyClosed = parent.whyClosed;
        if (folder->whyClosed.empty())
            look(*folder, name);
    }
    return *folder;
}

void DiskFolders::want(const Folder& base, const CString& relative)
{
    const CString path = addBackslash(base.path) + relative;
    if (!relative.IsEmpty() && m_wanted[path]++ == 0)
        m_wantedInOrder.push_back(path);
}

/// The spelling that most files want, the first of those that equally many want.
const CString& DiskFolders::spellingOf(const Folder& parent, const CString& wanted)
{
    for (const CString& path : m_wantedInOrder)
    {
        for (int end = path.Find(u'\\'); end >= 0; end = path.Find(u'\\', end + 1))
            addWish(path.Left(end), m_wanted[path]);
        addWish(path, m_wanted[path]);
    }
    m_wantedInOrder.clear();
    const auto wishes = m_wishes.find(sameNameKey(addBackslash(parent.path) + wanted));
    if (wishes == m_wishes.end())
        return wanted;
    return std::max_element(wishes->second.begin(),
                            wishes->second.end(),
                            [](const Wish& a, const Wish& b) { return a.files < b.files; })
        ->name;
}

void DiskFolders::addWish(const CString& folder, std::size_t files)
{
    const CString name = folder.Mid(folder.ReverseFind(u'\\') + 1);
    std::vector<Wish>& wishes = m_wishes[sameNameKey(folder)];
    auto wish = std::find_if(
        wishes.begin(), wishes.end(), [&](const Wish& each) { return each.name == name; });
    if (wish == wishes.end())
        wish = wishes.insert(wishes.end(), Wish{name, 0});
    wish->files += files;
}

/// Example: the disk has "ABBA", and files want "Abba" and "abba": all go to "ABBA". Without it,
/// and with three files for "Abba" and one for "abba", all go to "Abba". A file named "abba",
/// without an extension, is in the way only on a disk that takes both names for one.
DiskFolders::Folder& DiskFolders::fittingChild(Folder& parent, const CString& wanted)
{
    const CString name = fittingFolderName(spellingOf(parent, wanted), parent.rules);
    const std::vector<CString>& alike = namesLike(parent, name);
    if (std::find(alike.begin(), alike.end(), name) != alike.end())
        return child(parent, name);
    for (const CString& other : alike)
    {
        // A file of such a name is in the way only where the disk takes both for one.
        Folder& folder = child(parent, other);
        if (folder.isThere || parent.rules.ignoresCase || toNfc(other) == toNfc(name))
            return folder;
    }
    parent.m_newFolders.emplace(sameNameKey(name), name);
    return child(parent, name);
}

const std::vector<CString>& DiskFolders::namesLike(Folder& folder, const CString& name)
{
    static const std::vector<CString> none;
    if (!folder.m_areNamesRead)
        readNames(folder);
    const auto alike = folder.m_names.find(sameNameKey(name));
    return alike == folder.m_names.end() ? none : alike->second;
}

bool DiskFolders::isNewFolder(const Folder& folder, const CString& name)
{
    return folder.m_newFolders.contains(sameNameKey(name));
}

void DiskFolders::look(Folder& folder, const CString& name) const
{
    const std::string shown = shownPath(folder.path);
    if (isNoName(name))
        folder.whyClosed = shown + " is no name of a folder";
    else if (isTrashFolder(folder.parent->path, name))
        folder.whyClosed = shown + " is a trash";
    if (!folder.parent->isThere)
        return;
    NameInfo info;
    if (const int error = disk::look(toSystemPath(folder.path), info))
    {
        if (error != ENOENT)
            folder.whyClosed = shown + " cannot be looked at: " + errorWords(error);
        return;
    }
    folder.isThere = info.kind == NameInfo::Kind::directory;
    const Identity identity(info.device, info.inode);
    if (std::find(m_ownFolders.begin(), m_ownFolders.end(), identity) != m_ownFolders.end())
        folder.whyClosed = shown + " is part of this program's data";
    else if (!folder.isThere)
        folder.whyClosed =
            shown + (info.kind == NameInfo::Kind::link ? " is a link" : " is no folder");
    else
    {
        folder.rules = volumeRulesOf(folder.path);
        folder.device = info.device;
    }
}

void DiskFolders::readNames(Folder& folder) const
{
    folder.m_areNamesRead = true;
    if (!folder.isThere)
        return;
    std::vector<CString> names;
    if (const int error = firstNames(folder.path, std::numeric_limits<std::size_t>::max(), names))
        folder.whyClosed = shownPath(folder.path) + " cannot be looked at: " + errorWords(error);
    for (const CString& name : names)
        folder.m_names[sameNameKey(name)].push_back(name);
}
} // namespace qo::host
