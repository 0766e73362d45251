#pragma once

#include <QoKernel/Kernel.h>

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
    /// Throws HostError.
    void begin(const CStringArray& roots) const;
    void end() const;

private:
    CString m_file;
    CStringArray m_roots;
};
} // namespace qo::host
