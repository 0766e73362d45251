#pragma once

#include <QoKernel/Kernel.h>

namespace qo::host
{
/// A place for a database in the temporary folder. The destructor removes what was made there.
class ScratchDatabase
{
public:
    explicit ScratchDatabase(const char16_t* purpose);
    ~ScratchDatabase();
    ScratchDatabase(const ScratchDatabase&) = delete;
    ScratchDatabase& operator=(const ScratchDatabase&) = delete;

    /// Makes it a copy of another database, if that is there. Throws what the database layer
    /// throws.
    void copyFrom(const CString& database) const;
    const CString& path() const { return m_path; }

private:
    CString m_path;
};
} // namespace qo::host
