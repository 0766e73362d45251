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
    HostStore(m_folder).setMark({roots, {}, m_mark.files});
}

void UnfinishedScan::addFiles(const CStringArray& files) const
{
    HostStore(m_folder).addReadFiles(files);
}

void UnfinishedScan::beginNames(const FILETIME& lastSave) const
{
    HostStore store(m_folder);
    ScanMark mark = store.mark();
    mark.lastSave = toTicks(lastSave);
    if (!mark.isEmpty())
        store.setMark(mark);
}

void UnfinishedScan::settle(const FILETIME& lastSave)
{
    if (!m_mark.lastSave)
        return;
    const bool wereNamesSaved = *m_mark.lastSave != toTicks(lastSave);
    m_mark.lastSave.reset();
    if (!wereNamesSaved)
        return HostStore(m_folder).setMark(m_mark);
    end();
    m_mark = {};
}

void UnfinishedScan::end() const
{
    HostStore store(m_folder);
    if (!store.mark().isEmpty())
        store.setMark({});
}

void UnfinishedScan::endRoots() const
{
    HostStore store(m_folder);
    const ScanMark mark = store.mark();
    if (!mark.roots.IsEmpty())
        store.setMark({{}, {}, mark.files});
}
} // namespace qo::host
