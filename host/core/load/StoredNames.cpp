#include "core/load/StoredNames.h"

#include "core/base/DatabaseQuery.h"
#include "core/roots/StoredRoots.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <string>
#include <unordered_set>

namespace qo::host
{
namespace
{
/// The column's values but for rows that repeat the one ahead of them, as the tracks of a folder
/// do. For so many rows that is faster than DISTINCT.
void readNames(const CSQLiteDB& db, const CString& sql, std::unordered_set<std::u16string>& names)
{
    CSQLiteStatement statement = db.CompileStatement(sql);
    std::u16string last;
    for (CSQLiteQueryResult result = statement.ExecuteQuery(); !result.Eof(); result.NextRow())
    {
        const std::u16string_view name = result.GetTextField(0);
        if (name == last)
            continue;
        last = name;
        names.insert(last);
    }
}
} // namespace

CStringArray storedNames(const CString& database, NameKind kind)
{
    CStringArray names;
    if (!isCollection(database))
        return names;
    const CString column = kind == NameKind::artist  ? u"FT_ARTIST"
                           : kind == NameKind::album ? u"FT_ALBUM"
                                                     : u"FT_GENRE";
    CSQLiteDB db(database);
    db.Open();
    // The collection is the last column of a row, so reading it takes as long again. It is looked
    // at only when there are others, which an index tells.
    CString sql = u"SELECT " + column + u" FROM FILE_T";
    if (numberOf(db, u"SELECT 1 FROM FILE_T WHERE FT_COLL_ID > '' LIMIT 1") != 0)
        sql += u" WHERE +FT_COLL_ID = ''";
    std::unordered_set<std::u16string> spellings;
    readNames(db, sql, spellings);
    spellings.erase(std::u16string());
    std::unordered_set<std::u16string> seen;
    for (const std::u16string& spelling : spellings)
    {
        const CString name(spelling.c_str());
        CString lower = name;
        lower.MakeLower();
        if (seen.emplace(lower.view()).second)
            names.Add(name);
    }
    return names;
}
} // namespace qo::host
