#include "QoColl/Db/FileRuns.h"

#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteStatement.h"
#include "QoColl/Db/DbRows.h"
#include "common/MakeObject.h"
#include "types/CharClass.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace qo
{
namespace
{
constexpr std::size_t mostRuns = 16;

CSQLiteStatement& bind(CSQLiteStatement& statement, const CString& collId, int first, int last)
{
    statement.BindText(1, collId);
    statement.BindInt(2, first);
    statement.BindInt(3, last);
    return statement;
}
} // namespace

/// The rows with ids from a first to a last one.
class FileRuns::Run
{
public:
    Run(const CSQLiteDB& db, const CString& collId, int first, int last)
        : m_statement(db.CompileStatement(selectFiles(
              u"", u"WHERE \tFT_COLL_ID = ?1 AND FT_ID BETWEEN ?2 AND ?3 ORDER BY FT_ID")))
        , m_rows(bind(m_statement, collId, first, last).ExecuteQuery())
    {
    }
    /// Reads the next row into head(); false at the end.
    bool read(FileRowReader& reader)
    {
        m_head.reset();
        if (m_rows.Eof())
            return false;
        m_head = makeObject<QoFileDbItem>(QO_HERE(u".\\QoColl\\Db\\FileRuns"));
        reader.read(*m_head, m_rows);
        m_rows.NextRow();
        return true;
    }
    const QoFileDbItemPtr& head() const noexcept { return m_head; }
    /// Of two records of one path the newer one comes first, as in an array of all.
    bool isBefore(const Run& other) const noexcept
    {
        const int order = m_head->path.CompareNoCase(other.m_head->path);
        return order < 0 || (order == 0 && m_head->id > other.m_head->id);
    }

private:
    CSQLiteStatement m_statement;
    CSQLiteQueryResult m_rows;
    QoFileDbItemPtr m_head;
};

FileRuns::FileRuns(const CSQLiteDB& db, const CString& collId)
{
    findRuns(db, collId);
    std::erase_if(m_runs, [this](const auto& run) { return !run->read(m_reader); });
    std::sort(
        m_runs.begin(), m_runs.end(), [](const auto& a, const auto& b) { return a->isBefore(*b); });
}

FileRuns::~FileRuns() = default;

void FileRuns::findRuns(const CSQLiteDB& db, const CString& collId)
{
    CSQLiteStatement statement = db.CompileStatement(
        u"SELECT FT_ID, FT_PATH FROM FILE_T WHERE FT_COLL_ID = ?1 ORDER BY FT_ID");
    statement.BindText(1, collId);
    std::vector<int> starts;
    std::u16string last;
    for (CSQLiteQueryResult row = statement.ExecuteQuery(); !row.Eof(); row.NextRow())
    {
        if (!hasRecordId(row))
            continue;
        ++m_count;
        const std::u16string_view path = row.textView(1);
        if (starts.empty() || compareNoCase(last, path) >= 0)
            starts.push_back(row.GetIntField(0));
        last = path;
        if (starts.size() > mostRuns)
        {
            m_areTooMany = true;
            return;
        }
    }
    for (std::size_t i = 0; i < starts.size(); ++i)
    {
        const bool isLast = i + 1 == starts.size();
        const int end = isLast ? std::numeric_limits<int>::max() : starts[i + 1] - 1;
        m_runs.push_back(std::make_unique<Run>(db, collId, starts[i], end));
    }
}

bool FileRuns::next(QoFileDbItemArray& records, int most)
{
    for (int i = 0; i < most && !m_runs.empty(); ++i)
    {
        records.Add(m_runs.front()->head());
        if (m_runs.front()->read(m_reader))
            moveFirstToItsPlace();
        else
            m_runs.erase(m_runs.begin());
    }
    return !m_runs.empty();
}

/// Most records come from the run of the one before, so that one comparison settles it.
void FileRuns::moveFirstToItsPlace()
{
    for (std::size_t i = 1; i < m_runs.size() && m_runs[i]->isBefore(*m_runs[i - 1]); ++i)
        std::swap(m_runs[i - 1], m_runs[i]);
}
} // namespace qo
