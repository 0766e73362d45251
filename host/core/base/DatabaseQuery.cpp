#include "core/base/DatabaseQuery.h"

#include "core/base/ClosestName.h"

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

std::vector<std::int64_t> numbersOf(const CSQLiteDB& db, const CString& sql)
{
    std::vector<std::int64_t> numbers;
    CSQLiteStatement statement = db.CompileStatement(sql);
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
        numbers.push_back(result.GetInt64Field(0));
    return numbers;
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

std::optional<CString> otherVersion(const CSQLiteDB& db)
{
    if (numberOf(db, u"SELECT count(*) FROM sqlite_master WHERE name = 'VERSION_T'") == 0)
        return {};
    const CStringArray versions = textsOf(db, u"SELECT VT_VERSION FROM VERSION_T");
    const CString version = versions.IsEmpty() ? CString() : versions[0];
    return version == CQoCollDb::currentVersion() ? std::optional<CString>() : version;
}

std::string someOf(const std::vector<std::int64_t>& ids)
{
    constexpr std::size_t shown = 20;
    std::vector<std::string> named;
    for (std::size_t i = 0; i < std::min(shown, ids.size()); ++i)
        named.push_back(std::to_string(ids[i]));
    return "row " + firstOf(named, ids.size());
}
} // namespace qo::host
