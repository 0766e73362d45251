#pragma once

#include <QoKernel/Kernel.h>

namespace qo::host
{
/// A place for a database in the temporary folder. The destructor removes what was made there.
class ScratchDatabase
{
public:
    explicit ScratchDatabase(const char16_t* purpose)
    {
        CString name;
        name.Format(u"%s-%u", purpose, systemClock().processId());
        m_path = CQoPaths::makeTempFilePath(name);
    }
    ~ScratchDatabase()
    {
        for (const char16_t* end : {u"", u"-wal", u"-shm"})
            (void)fileSystem().removeFile(m_path + end);
    }
    ScratchDatabase(const ScratchDatabase&) = delete;
    ScratchDatabase& operator=(const ScratchDatabase&) = delete;

    const CString& path() const { return m_path; }

private:
    CString m_path;
};
} // namespace qo::host
