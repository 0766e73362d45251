#include "core/roots/RootFolders.h"

#include "core/base/HostFiles.h"

#include <QoKernel/Collection.h>

namespace qo::host
{
namespace
{
struct KindRow
{
    const char* name;
    CQoPathInfo::EType kind;
};
constexpr KindRow kindRows[] = {{"all", CQoPathInfo::allIsMusic},
                                {"none", CQoPathInfo::nothingIsMusic},
                                {"audio", CQoPathInfo::audioIsMusic}};

/// The list ends at the first empty setting.
constexpr const char16_t* removedKey = u"MusicCollectionDirRemoved%d";

int find(const CStringArray& folders, const CString& folder)
{
    for (int i = 0; i < folders.GetSize(); ++i)
    {
        if (folders[i] == folder)
            return i;
    }
    return -1;
}
} // namespace

RootFolders::RootFolders()
{
    CStringArray stored;
    CQoPathsInfoMap kinds;
    CQoPaths::getMusicCollectionDirs(stored, &kinds);
    // A damaged settings file may name the same folder twice, or none at all.
    for (const CString& folder : stored)
    {
        if (CQoCollPath(folder).isValid() && !toSystemPath(folder).empty())
            add(folder, kinds.getType(CQoCollPath(folder).toString()));
    }
    for (int i = 0;; ++i)
    {
        const CString folder = CQoSettings::getIndexed(removedKey, i);
        if (folder.IsEmpty())
            break;
        m_removed.Add(folder);
    }
}

CString RootFolders::holder(const CString& path) const
{
    const CQoCollPath parsed(path);
    for (const CString& folder : m_folders)
    {
        if (parsed.isSubPathOrSame(CQoCollPath(folder)))
            return folder;
    }
    return {};
}

bool RootFolders::add(const CString& folder, CQoPathInfo::EType kind)
{
    if (const int removed = find(m_removed, folder); removed >= 0)
        m_removed.RemoveAt(removed);
    const bool isListed = find(m_folders, folder) >= 0;
    if (isListed && m_kinds.getType(folder) == kind)
        return false;
    if (!isListed)
        m_folders.Add(lastingPath(folder));
    m_kinds.SetAt(folder, kind);
    return true;
}

void RootFolders::remove(const CString& folder)
{
    if (const int listed = find(m_folders, folder); listed >= 0)
        m_folders.RemoveAt(listed);
    if (!wasRemoved(folder))
        m_removed.Add(folder);
}

bool RootFolders::wasRemoved(const CString& folder) const
{
    return find(m_removed, folder) >= 0;
}

void RootFolders::store() const
{
    CQoPaths::setMusicCollectionDirs(m_folders, m_kinds);
    storeRemoved();
}

void RootFolders::storeRemoved() const
{
    int count = 0;
    for (; count < m_removed.GetSize(); ++count)
        CQoSettings::setIndexed(removedKey, count, m_removed[count]);
    for (; !CQoSettings::getIndexed(removedKey, count).IsEmpty(); ++count)
        CQoSettings::setIndexed(removedKey, count, CString());
}

const char* RootFolders::kindName(CQoPathInfo::EType kind)
{
    for (const KindRow& row : kindRows)
    {
        if (row.kind == kind)
            return row.name;
    }
    return "audio";
}

bool RootFolders::kindFromName(const std::string& name, CQoPathInfo::EType& kind)
{
    for (const KindRow& row : kindRows)
    {
        if (name == row.name)
        {
            kind = row.kind;
            return true;
        }
    }
    return false;
}
} // namespace qo::host
