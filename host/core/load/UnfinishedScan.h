#pragma once

#include <QoKernel/Kernel.h>

#include <cstdint>
#include <optional>
#include <string>

namespace qo::host
{
/// The root folders whose first scan has begun and not yet come to its end, kept in a file so that
/// the next scan goes on with them. On the thread that calls the kernel.
class UnfinishedScan
{
public:
    /// Reads the file, which need not be there; folder is the collection's own. A file that cannot
    /// be read counts as none.
    explicit UnfinishedScan(const CString& folder);

    /// What the file held when this was made.
    const CStringArray& rootsAtFirst() const { return m_roots; }
    bool wasThere() const { return !m_roots.IsEmpty(); }
    // These throw HostError.
    void begin(const CStringArray& roots) const;
    /// All files are read and saved, at that time last. The names are going to be analysed, which
    /// must not happen twice, and saved in one go.
    void beginNames(const CStringArray& roots, const FILETIME& lastSave) const;
    void end() const;
    /// Ends a scan whose names were saved when the process ended before it could say so. Before
    /// anything else is saved.
    void settle(const FILETIME& lastSave);

private:
    void write(std::string content) const;

    CString m_file;
    CStringArray m_roots;
    std::optional<std::int64_t> m_lastSave; ///< when the analysis of names was begun, if it was
};
} // namespace qo::host
