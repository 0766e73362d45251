#include "core/load/DatabaseRepair.h"

#include "core/base/ScratchDatabase.h"
#include "core/load/DatabaseMigration.h"

#include <QoKernel/Inside.h>

#include <memory>

namespace qo::host
{
DatabaseRepair::Report DatabaseRepair::copyTo(const CString& target) const
{
    const Report report =
        Salvage(m_database)
            .copyTo(target,
                    [](const CString& path)
                    { CQoCollDb::CreateDatabaseIfNotValid(path, CQoCollDb::ConfigInfo()); });
    // The rows are as the other version wrote them, and are still to be carried over.
    if (const std::optional<CString> version = DatabaseMigration::otherVersion(m_database))
    {
        CSQLiteDB db(target);
        db.Open();
        CSQLiteStatement statement = db.CompileStatement(u"UPDATE VERSION_T SET VT_VERSION = ?1");
        statement.BindText(1, *version);
        statement.ExecuteDML();
    }
    return report;
}

bool DatabaseRepair::hasRow() const
{
    const ScratchDatabase scratch(u"readable");
    return copyTo(scratch.path()).rows() > 0;
}

bool DatabaseRepair::isDatabase(const CString& path)
{
    try
    {
        CSQLiteDB db(path);
        db.Open();
        CSQLiteStatement statement = db.CompileStatement(u"SELECT count(*) FROM sqlite_master");
        return !statement.ExecuteQuery().Eof();
    }
    catch (CSQLiteException* raw)
    {
        std::unique_ptr<CSQLiteException> exception(raw);
        if (!exception->isUnreadableDatabase() && !exception->isStatementError())
            throw exception.release();
        return false;
    }
}
} // namespace qo::host
