#include "core/base/ScratchDatabase.h"

#include <QoKernel/Inside.h>

namespace qo::host
{
ScratchDatabase::ScratchDatabase(const char16_t* purpose)
{
    CString name;
    name.Format(u"%s-%u", purpose, systemClock().processId());
    m_path = CQoPaths::makeTempFilePath(name);
}

ScratchDatabase::~ScratchDatabase()
{
    for (const char16_t* const end :
         {u"", u"-wal", u"-shm", u".bak", u".bak-wal", u".bak-shm", u".creation-lock"})
        (void)fileSystem().removeFile(m_path + end);
}

void ScratchDatabase::copyFrom(const CString& database) const
{
    if (fileSystem().exists(database))
        backupDatabase(database, m_path);
}
} // namespace qo::host
