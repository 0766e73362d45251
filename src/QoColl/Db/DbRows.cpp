#include "QoColl/Db/DbRows.h"

#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"

#include <limits>

bool qo::isRowId(std::int64_t id) noexcept
{
    return id >= 1 && id <= std::numeric_limits<int>::max();
}

bool qo::hasRecordId(const CSQLiteQueryResult& row)
{
    const std::int64_t id = row.GetInt64Field(0);
    if (!isRowId(id))
        log(level::error, u"CQoCollDb: a row of FILE_T is left out: its id is %I64d", id);
    return isRowId(id);
}

// Ids are checked where they are read, so no record ever has one that does not name its row.

int qo::rowIdField(const CSQLiteQueryResult& row, int column)
{
    const std::int64_t id = row.GetInt64Field(column);
    if (isRowId(id))
        return static_cast<int>(id);
    CString text;
    text.Format(u"Row id out of range: %I64d", id);
    throwDatabaseError(text);
}

int qo::rowIdField(const CSQLiteQueryResult& row, const char16_t* column)
{
    return rowIdField(row, row.FieldIndex(column));
}

int qo::storedId(const CSQLiteQueryResult& row, int column)
{
    const std::int64_t id = column < 0 ? 0 : row.GetInt64Field(column);
    return isRowId(id) ? static_cast<int>(id) : 0;
}
