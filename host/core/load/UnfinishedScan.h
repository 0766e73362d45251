#pragma once

#include "core/store/StoreRows.h"

namespace qo::host
{
/// What was read by a scan that has begun and not yet come to its end, as the host's store has it,
/// so that the next scan analyses its names: whole root folders at their first scan, and single
/// files of the others. On the thread that calls the kernel.
class UnfinishedScan
{
public:
    /// Reads the store of the data folder, which need not be there. Throws HostError.
    explicit UnfinishedScan(const CString& folder);

    /// What the store held when this was made.
    const CStringArray& rootsAtFirst() const { return m_mark.roots; }
    const CStringArray& filesAtFirst() const { return m_mark.files; }
    bool wasThere() const { return !m_mark.isEmpty(); }
    // These are for the holder of the data folder's lock and throw HostError.
    void begin(const CStringArray& roots) const;
    /// Files outside of these roots are going to be read and saved, and more after them.
    void addFiles(const CStringArray& files) const;
    /// All files are read and saved, at that time last. The names of what stands in the mark are
    /// going to be analysed, which must not happen twice, and saved in one go.
    void beginNames(const FILETIME& lastSave) const;
    void end() const;
    /// Ends it for whole root folders; files wait on.
    void endRoots() const;
    /// Ends a scan whose names were saved when the process ended before it could say so. Before
    /// anything else is saved.
    void settle(const FILETIME& lastSave);

private:
    CString m_folder;
    ScanMark m_mark;
};
} // namespace qo::host
