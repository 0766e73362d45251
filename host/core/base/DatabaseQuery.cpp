#include "core/base/DatabaseQuery.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <algorithm>

namespace qo::host
{
CString quotedName(CString name)
{
    name.Replace(u"\"", u"\"\"");
    return u"\"" + name + u"\"";
}

std::int64_t numberOf(const CSQLiteDB& db, const CString& sql)
{
    CSQLiteStatement statement = db.CompileStatement(sql);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    return result.Eof() ? 0 : result.GetInt64Field(0);
}

CStringArray textsOf(const CSQLiteDB& db, const CString& sql)
{
    CStringArray texts;
    CSQLiteStatement statement = db.CompileStatement(sql);
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
        texts.Add(result.GetTextField(0));
    return texts;
}

CStringArray missingColumns(const CSQLiteDB& db, const CString& table)
{
    const CStringArray found = textsOf(db, u"SELECT name FROM pragma_table_info('" + table + u"')");
    CStringArray columns;
    CQoCollDb::getColumns(table, columns);
    CStringArray missing;
    for (const CString& column : columns)
    {
        if (std::find(found.begin(), found.end(), column) == found.end())
            missing.Add(column);
    }
    return missing;
}
} // namespace qo::host
