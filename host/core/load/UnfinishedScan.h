#pragma once

#include "core/store/StoreRows.h"

namespace qo::host
{
/// The root folders whose first scan has begun and not yet come to its end, as the host's store has
/// them, so that the next scan goes on with them. On the thread that calls the kernel.
class UnfinishedScan
{
public:
    /// Reads the store of the data folder, which need not be there. Throws HostError.
    explicit UnfinishedScan(const CString& folder);

    /// What the store held when this was made.
    const CStringArray& rootsAtFirst() const { return m_mark.roots; }
    bool wasThere() const { return !m_mark.roots.IsEmpty(); }
    // These are for the holder of the data folder's lock and throw HostError.
    void begin(const CStringArray& roots) const;
    /// All files are read and saved, at that time last. The names are going to be analysed, which
    /// must not happen twice, and saved in one go.
    void beginNames(const CStringArray& roots, const FILETIME& lastSave) const;
    void end() const;
    /// Ends a scan whose names were saved when the process ended before it could say so. Before
    /// anything else is saved.
    void settle(const FILETIME& lastSave);

private:
    CString m_folder;
    ScanMark m_mark;
};
} // namespace qo::host
