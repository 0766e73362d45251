#include "core/store/StoredRecords.h"

#include "core/roots/StoredRoots.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

namespace qo::host
{
namespace
{
constexpr const char16_t* selectRecords =
    u"SELECT FT_VELMORA_ID, FT_PATH, FT_SIZE, FT_MODIF_TIME FROM FILE_T WHERE ";

StoredRecord recordOf(const CSQLiteQueryResult& row)
{
    return {CString(row.textView(0)),
            CString(row.textView(1)),
            row.GetInt64Field(2),
            row.GetInt64Field(3)};
}
} // namespace

StoredRecords::StoredRecords(const CString& database)
    : m_database(isCollection(database) ? database : CString())
{
}

std::map<CString, StoredRecord>
StoredRecords::byIds(const std::map<CString, CString>& pathsById) const
{
    std::map<CString, StoredRecord> records;
    if (m_database.IsEmpty() || pathsById.empty())
        return records;
    CSQLiteDB db(m_database);
    db.Open();
    for (const auto& [id, path] : pathsById)
    {
        // The plus keeps SQLite from the index of collections, which most rows share.
        CSQLiteStatement statement =
            db.CompileStatement(CString(selectRecords) +
                                u"FT_VELMORA_ID = ?1 AND +FT_COLL_ID = '' ORDER BY FT_PATH <> ?2");
        statement.BindText(1, id);
        statement.BindText(2, path);
        const CSQLiteQueryResult row = statement.ExecuteQuery();
        if (!row.Eof())
            records.emplace(id, recordOf(row));
    }
    return records;
}

std::map<CString, StoredRecord> StoredRecords::byPaths(const std::set<CString>& paths) const
{
    std::map<CString, StoredRecord> records;
    if (m_database.IsEmpty() || paths.empty())
        return records;
    CSQLiteDB db(m_database);
    db.Open();
    CSQLiteStatement statement = db.CompileStatement(CString(selectRecords) + u"FT_COLL_ID = ''");
    CSQLiteQueryResult row = statement.ExecuteQuery();
    for (; !row.Eof(); row.NextRow())
    {
        if (const CString path(row.textView(1)); paths.contains(path))
            records.emplace(path, recordOf(row));
    }
    return records;
}
} // namespace qo::host
