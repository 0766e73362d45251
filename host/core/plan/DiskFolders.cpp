#include "core/plan/DiskFolders.h"

#include "core/base/HostFiles.h"
#include "core/plan/TargetName.h"

#include <sys/stat.h>

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
        struct stat st;
        if (::stat(toSystemPath(own).c_str(), &st) == 0)
            m_ownFolders.emplace_back(st.st_dev, st.st_ino);
    }
}

DiskFolders::Folder& DiskFolders::base(const CString& path)
{
    std::unique_ptr<Folder>& folder = m_bases[path];
    if (!folder)
    {
        folder = std::make_unique<Folder>();
        folder->path = path;
        folder->isThere = fileSystem().isDirectory(path);
        folder->rules = volumeRulesOf(path);
        if (!folder->isThere)
            folder->whyClosed = shownPath(path) + " is not there";
    }
    return *folder;
}

DiskFolders::Folder& DiskFolders::below(Folder& base, const CString& relative)
{
    Folder*& known = base.below[relative];
    if (!known)
    {
        known = &base;
        forEachName(relative, [&](const CString& name) { known = &child(*known, name); });
    }
    return *known;
}

DiskFolders::Folder& DiskFolders::target(Folder& base, const CString& relative)
{
    Folder*& known = base.targets[relative];
    if (!known)
    {
        known = &base;
        forEachName(relative, [&](const CString& name) { known = &fittingChild(*known, name); });
    }
    return *known;
}

DiskFolders::Folder& DiskFolders::child(Folder& parent, const CString& name)
{
    std::unique_ptr<Folder>& folder = parent.children[name];
    if (!folder)
    {
        folder = std::make_unique<Folder>();
        folder->path = addBackslash(parent.path) + name;
        folder->parent = &parent;
        folder->rules = parent.rules;
        folder->whyClosed = parent.whyClosed;
        if (folder->whyClosed.empty())
            look(*folder, name);
    }
    return *folder;
}

DiskFolders::Folder& DiskFolders::fittingChild(Folder& parent, const CString& wanted)
{
    const CString name = fittingFolderName(wanted, parent.rules);
    const std::vector<CString>& alike = namesLike(parent, name);
    if (std::find(alike.begin(), alike.end(), name) != alike.end())
        return child(parent, name);
    const auto isSame = [&](const CString& other)
    { return parent.rules.ignoresCase || toNfc(other) == toNfc(name); };
    const auto same = std::find_if(alike.begin(), alike.end(), isSame);
    if (same != alike.end())
        return child(parent, *same);
    // Of two new folders the first that is asked for gives the name.
    const CString& first = parent.newFolders.emplace(sameNameKey(name), name).first->second;
    return child(parent, isSame(first) ? first : name);
}

const std::vector<CString>& DiskFolders::namesLike(Folder& folder, const CString& name)
{
    static const std::vector<CString> none;
    if (!folder.areNamesRead)
        readNames(folder);
    const auto alike = folder.names.find(sameNameKey(name));
    return alike == folder.names.end() ? none : alike->second;
}

bool DiskFolders::isNewFolder(const Folder& folder, const CString& name)
{
    return folder.newFolders.contains(sameNameKey(name));
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
    struct stat st;
    if (::lstat(toSystemPath(folder.path).c_str(), &st) != 0)
    {
        if (const int error = errno; error != ENOENT)
            folder.whyClosed = shown + " cannot be looked at: " + errorWords(error);
        return;
    }
    folder.isThere = S_ISDIR(st.st_mode);
    const Identity identity(st.st_dev, st.st_ino);
    if (std::find(m_ownFolders.begin(), m_ownFolders.end(), identity) != m_ownFolders.end())
        folder.whyClosed = shown + " is part of this program's data";
    else if (!folder.isThere)
        folder.whyClosed = shown + (S_ISLNK(st.st_mode) ? " is a link" : " is no folder");
    else
        folder.rules = volumeRulesOf(folder.path);
}

void DiskFolders::readNames(Folder& folder) const
{
    folder.areNamesRead = true;
    if (!folder.isThere)
        return;
    std::vector<CString> names;
    if (const int error = firstNames(folder.path, std::numeric_limits<std::size_t>::max(), names))
        folder.whyClosed = shownPath(folder.path) + " cannot be looked at: " + errorWords(error);
    for (const CString& name : names)
        folder.names[sameNameKey(name)].push_back(name);
}
} // namespace qo::host
