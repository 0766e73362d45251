#include "core/load/UnfinishedScan.h"

#include "core/store/HostStore.h"

namespace qo::host
{
UnfinishedScan::UnfinishedScan(const CString& folder)
    : m_folder(folder), m_mark(HostStore(folder).mark())
{
}

void UnfinishedScan::begin(const CStringArray& roots) const
{
    HostStore(m_folder).setMark({roots, {}});
}

void UnfinishedScan::beginNames(const CStringArray& roots, const FILETIME& lastSave) const
{
    HostStore(m_folder).setMark({roots, toTicks(lastSave)});
}

void UnfinishedScan::settle(const FILETIME& lastSave)
{
    if (!m_mark.lastSave)
        return;
    const bool wereNamesSaved = *m_mark.lastSave != toTicks(lastSave);
    m_mark.lastSave.reset();
    if (!wereNamesSaved)
        return begin(m_mark.roots);
    end();
    m_mark.roots.RemoveAll();
}

void UnfinishedScan::end() const
{
    HostStore store(m_folder);
    if (!store.mark().roots.IsEmpty())
        store.setMark({});
}
} // namespace qo::host
