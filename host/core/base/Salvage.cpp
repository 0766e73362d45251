#include "core/base/Salvage.h"

#include "core/base/DatabaseQuery.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/ScratchDatabase.h"

#include <QoKernel/Inside.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>

namespace qo::host
{
namespace
{
constexpr std::int64_t largestId = std::numeric_limits<int>::max();
/// The widest table has 25 columns; one more tells a table apart from a wider one.
constexpr int leafColumns = 26;
/// A page costs no more statements than that, however it is damaged.
constexpr int failuresOfPage = 4000;

/// Where the first page has what is needed here (file format of SQLite 3).
constexpr std::size_t headerSize = 100;
constexpr std::size_t pageSizeAt = 16;
constexpr std::size_t freeListAt = 32;
constexpr std::size_t encodingAt = 56;
constexpr unsigned char leafOfTable = 0x0D;
constexpr std::size_t usualPage = 4096;

std::uint32_t bigEndian(const std::string& bytes, std::size_t at)
{
    std::uint32_t value = 0;
    for (std::size_t i = at; i < at + 4; ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

/// Any statement, its rows unread.
void perform(const CSQLiteDB& db, const CString& sql)
{
    CSQLiteStatement statement = db.CompileStatement(sql);
    (void)statement.ExecuteQuery();
}

/// False when the database's damage was in the way; other failures are thrown.
bool attempt(const CSQLiteDB& db, const CString& sql)
{
    try
    {
        perform(db, sql);
        return true;
    }
    catch (CSQLiteException* raw)
    {
        std::unique_ptr<CSQLiteException> exception(raw);
        if (!exception->isUnreadableDatabase() && !exception->isStatementError())
            throw exception.release();
        return false;
    }
}

struct Column
{
    CString name;
    bool isNumber = false;
    bool isRowId = false;
};

std::vector<Column> columnsOf(const CSQLiteDB& db, const CString& table, const char16_t* schema)
{
    CString sql;
    sql.Format(u"SELECT name, type, pk FROM pragma_table_info('%s', '%s')", table, schema);
    std::vector<Column> columns;
    CSQLiteStatement statement = db.CompileStatement(sql);
    for (CSQLiteQueryResult row = statement.ExecuteQuery(); !row.Eof(); row.NextRow())
    {
        const bool isNumber = CString(row.GetTextField(1)).Left(4) != CString(u"TEXT");
        columns.push_back({row.GetTextField(0), isNumber, isNumber && row.GetIntField(2) > 0});
    }
    return columns;
}

CString joined(const std::vector<Column>& columns, std::size_t first = 0)
{
    CString text;
    for (std::size_t i = first; i < columns.size(); ++i)
        text += (i == first ? CString() : CString(u", ")) + columns[i].name;
    return text;
}

/// The bytes of one page, fewer at the end of the file.
std::string readPage(IFile& file, std::size_t pageSize, std::int64_t number)
{
    std::string bytes(pageSize, 0);
    if (!file.seek((number - 1) * static_cast<std::int64_t>(pageSize)))
        return {};
    const std::int64_t got = file.read(bytes.data(), pageSize);
    bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return bytes;
}

std::unique_ptr<IFile> openFile(const CString& path, OpenMode mode)
{
    int error = 0;
    std::unique_ptr<IFile> file = fileSystem().open(path, mode, error);
    if (!file)
        throw HostError(ExitCode::failed, shownPath(path) + ": " + errorWords(error));
    return file;
}

/// A copy of the damaged database as one file, with what stood in its log where that can be read.
class DamagedCopy
{
public:
    explicit DamagedCopy(const CString& database) : m_scratch(u"repair")
    {
        for (const char16_t* const side : {u"", u"-wal", u"-journal"})
        {
            const int error = fileSystem().copyFile(database + side, m_scratch.path() + side);
            if (error != 0 && (error != ENOENT || !*side))
                throw HostError(ExitCode::failed,
                                shownPath(database + side) + " cannot be copied to " +
                                    shownPath(m_scratch.path()) + ": " + errorWords(error));
        }
        try
        {
            CSQLiteDB db(m_scratch.path());
            db.Open();
            m_isReadable = attempt(db, u"SELECT count(*) FROM sqlite_master");
            if (!attempt(db, u"PRAGMA wal_checkpoint(TRUNCATE)") ||
                !attempt(db, u"PRAGMA journal_mode = DELETE"))
                m_isReadable = false;
        }
        catch (CSQLiteException* raw)
        {
            const std::unique_ptr<CSQLiteException> exception(raw);
            m_isReadable = false;
        }
        readHeader();
    }
    ~DamagedCopy() { (void)fileSystem().removeFile(m_scratch.path() + u"-journal"); }
    DamagedCopy(const DamagedCopy&) = delete;
    DamagedCopy& operator=(const DamagedCopy&) = delete;

    const CString& path() const { return m_scratch.path(); }
    /// Whether SQLite can read its schema.
    bool isReadable() const { return m_isReadable; }
    std::size_t pageSize() const { return m_pageSize; }
    const char16_t* encoding() const
    {
        constexpr const char16_t* names[] = {u"UTF-8", u"UTF-16le", u"UTF-16be"};
        return names[m_encoding - 1];
    }

    /// Gives the file a first page with a table whose root can be any page, see LeafReader. Returns
    /// the leaves of tables that are in use.
    std::vector<std::int64_t> becomeLeaves() const
    {
        const std::vector<std::int64_t> leaves = findLeaves();
        const ScratchDatabase pattern(u"pattern");
        {
            CSQLiteDB db(pattern.path());
            db.Open();
            CString sql;
            sql.Format(u"PRAGMA page_size = %d", static_cast<int>(m_pageSize));
            perform(db, sql);
            perform(db, u"PRAGMA encoding = '" + CString(encoding()) + u"'");
            CString columns;
            for (int i = 0; i < leafColumns; ++i)
                columns.AppendFormat(i == 0 ? u"c%d" : u", c%d", i);
            perform(db, u"CREATE TABLE qo_leaf(" + columns + u")");
        }
        std::string page = readPage(*openFile(pattern.path(), OpenMode::read), m_pageSize, 1);
        // No free pages, and a size that SQLite takes from the file.
        if (page.size() >= headerSize)
            std::fill_n(page.begin() + freeListAt - 4, 12, '\0');
        const std::unique_ptr<IFile> file = openFile(path(), OpenMode::update);
        if (!file->write(page.data(), page.size()))
            throw HostError(ExitCode::failed, shownPath(path()) + ": " + errorWords(file->error()));
        return leaves;
    }

private:
    void readHeader()
    {
        m_header = readPage(*openFile(path(), OpenMode::read), headerSize, 1);
        m_isHeaderSound = m_header.size() == headerSize && m_header.starts_with("SQLite format 3");
        if (!m_isHeaderSound)
            return;
        const std::size_t size = bigEndian(m_header, pageSizeAt) >> 16;
        m_pageSize = size == 1 ? 65536 : size;
        m_isHeaderSound = m_pageSize >= 512 && (m_pageSize & (m_pageSize - 1)) == 0;
        m_pageSize = m_isHeaderSound ? m_pageSize : usualPage;
        const std::uint32_t encoding = bigEndian(m_header, encodingAt);
        m_encoding = encoding >= 1 && encoding <= 3 ? encoding : 2;
    }

    std::vector<std::int64_t> findLeaves() const
    {
        const std::unique_ptr<IFile> file = openFile(path(), OpenMode::read);
        const std::int64_t pages = file->sizeAtOpen() / static_cast<std::int64_t>(m_pageSize);
        const std::vector<bool> isFree = findFree(*file, pages);
        std::vector<std::int64_t> leaves;
        for (std::int64_t page = 2; page <= pages; ++page)
        {
            char kind = 0;
            if (!isFree[static_cast<std::size_t>(page)] &&
                file->seek((page - 1) * static_cast<std::int64_t>(m_pageSize)) &&
                file->read(&kind, 1) == 1 && static_cast<unsigned char>(kind) == leafOfTable)
                leaves.push_back(page);
        }
        return leaves;
    }

    /// Free pages may still hold rows that were deleted. They are named by a chain of pages: the
    /// next of the chain, a count, and as many numbers of free pages.
    std::vector<bool> findFree(IFile& file, std::int64_t pages) const
    {
        std::vector<bool> isFree(static_cast<std::size_t>(pages) + 1);
        std::int64_t trunk = m_isHeaderSound ? bigEndian(m_header, freeListAt) : 0;
        while (trunk > 0 && trunk <= pages && !isFree[static_cast<std::size_t>(trunk)])
        {
            isFree[static_cast<std::size_t>(trunk)] = true;
            const std::string bytes = readPage(file, m_pageSize, trunk);
            if (bytes.size() < m_pageSize)
                break;
            const std::size_t count =
                std::min<std::size_t>(bigEndian(bytes, 4), m_pageSize / 4 - 2);
            for (std::size_t i = 0; i < count; ++i)
            {
                const std::uint32_t page = bigEndian(bytes, 8 + 4 * i);
                if (page <= pages)
                    isFree[page] = true;
            }
            trunk = bigEndian(bytes, 0);
        }
        return isFree;
    }

    ScratchDatabase m_scratch;
    bool m_isReadable = false;
    std::string m_header;
    bool m_isHeaderSound = false;
    std::size_t m_pageSize = usualPage;
    std::uint32_t m_encoding = 2;
};

/// A connection to the new database with the damaged one beside it as "d".
class SalvageConnection
{
public:
    SalvageConnection(const CString& target, const DamagedCopy& damaged)
        : m_db(target), m_damaged(damaged)
    {
        m_db.Open();
        for (const CString& table :
             textsOf(m_db,
                     u"SELECT name FROM main.sqlite_master WHERE type = 'table' AND substr(name, "
                     u"1, 7) <> 'sqlite_' AND name <> 'VERSION_T'"))
            m_tables.push_back({table, columnsOf(m_db, table, u"main")});
        perform(m_db, u"CREATE TEMP TABLE qo_expected(id INTEGER PRIMARY KEY)");
    }

    void readTables(Salvage::Report& report)
    {
        if (!m_damaged.isReadable())
        {
            report.isCertain = false;
            return;
        }
        // What cannot be parsed is passed over in this mode.
        perform(m_db, u"PRAGMA writable_schema = ON");
        report.isCertain = attempt(m_db, attachment());
        if (!report.isCertain)
            return;
        for (Table& table : m_tables)
            readTable(table, report);
        takeSequences();
        if (hasFiles())
            expectIds();
        perform(m_db, u"DETACH d");
        perform(m_db, u"PRAGMA writable_schema = RESET");
    }

    void readLeaves(const std::vector<std::int64_t>& leaves)
    {
        if (leaves.empty())
            return;
        perform(m_db, attachment());
        // The copy is thrown away.
        perform(m_db, u"PRAGMA d.synchronous = OFF");
        perform(m_db, u"PRAGMA d.journal_mode = OFF");
        // Each page is a transaction of its own: one over all could not be committed once SQLite
        // has met damage in it. The disk gets them together.
        perform(m_db, u"PRAGMA main.synchronous = OFF");
        for (const std::int64_t leaf : leaves)
            readLeaf(leaf);
        perform(m_db, u"PRAGMA main.synchronous = FULL");
        perform(m_db, u"PRAGMA main.wal_checkpoint(TRUNCATE)");
        perform(m_db, u"DETACH d");
    }

    void count(Salvage::Report& report)
    {
        for (const Table& table : m_tables)
        {
            const std::int64_t rows =
                numbersOf(m_db, u"SELECT count(*) FROM main." + table.name)[0];
            report.tables.push_back({toUtf8(table.name), rows});
        }
        if (hasFiles())
            report.lostIds = numbersOf(
                m_db,
                u"SELECT id FROM qo_expected WHERE id NOT IN (SELECT FT_ID FROM main.FILE_T)");
    }

private:
    struct Table
    {
        CString name;
        std::vector<Column> columns; ///< the first one may be the row's id
        bool isAbsent = false;       ///< the schema can be read and does not name it

        bool hasId() const { return columns[0].isRowId; }
    };

    CString attachment() const
    {
        CString name = qo::fromUtf8(toSystemPath(m_damaged.path()));
        name.Replace(u"'", u"''");
        return u"ATTACH '" + name + u"' AS d";
    }

    static CString inRange(const CString& id, std::int64_t first, std::int64_t last)
    {
        CString text;
        text.Format(u"%s BETWEEN %I64d AND %I64d", id, first, last);
        return text;
    }

    void readTable(Table& table, Salvage::Report& report)
    {
        std::vector<Column> columns;
        try
        {
            columns = columnsOf(m_db, table.name, u"d");
            table.isAbsent = columns.empty();
        }
        catch (CSQLiteException* raw)
        {
            const std::unique_ptr<CSQLiteException> exception(raw);
        }
        const auto isThere = [&columns](const Column& wanted)
        {
            return std::any_of(columns.begin(),
                               columns.end(),
                               [&wanted](const Column& found)
                               { return found.name == wanted.name; });
        };
        const bool hasSome = std::any_of(table.columns.begin(), table.columns.end(), isThere);
        if (!hasSome || (table.hasId() && !isThere(table.columns[0])))
        {
            report.isCertain = false;
            return;
        }
        // What this program does not know stays behind, what is missing stays empty.
        std::vector<Column> values = table.columns;
        for (Column& column : values)
        {
            if (!isThere(column))
                column.name = column.isNumber ? u"0" : u"''";
        }
        const CString into = u"INSERT OR IGNORE INTO main." + table.name;
        const CString all =
            into + u"(" + joined(table.columns) + u") SELECT " + joined(values) + source(table);
        if (!table.hasId())
        {
            report.isCertain = attempt(m_db, all) && report.isCertain;
            return;
        }
        const CString isGood = inRange(table.columns[0].name, 1, largestId);
        report.isCertain = attempt(m_db, all + u" WHERE " + isGood) && report.isCertain;
        if (attempt(m_db,
                    into + u"(" + joined(table.columns, 1) + u") SELECT " + joined(values, 1) +
                        source(table) + u" WHERE NOT (" + isGood + u")"))
            report.newIds += numbersOf(m_db, u"SELECT changes()")[0];
    }

    static CString source(const Table& table) { return u" FROM d." + table.name + u" NOT INDEXED"; }

    bool hasFiles() const
    {
        return std::any_of(m_tables.begin(),
                           m_tables.end(),
                           [](const Table& table) { return table.name == CString(u"FILE_T"); });
    }

    /// Ids that were given out are not given out again.
    void takeSequences()
    {
        attempt(m_db,
                u"UPDATE main.sqlite_sequence SET seq = max(seq, coalesce((SELECT s.seq FROM "
                u"d.sqlite_sequence s WHERE s.name = main.sqlite_sequence.name), 0))");
        attempt(m_db,
                u"INSERT INTO main.sqlite_sequence(name, seq) SELECT name, seq FROM "
                u"d.sqlite_sequence WHERE name NOT IN (SELECT name FROM main.sqlite_sequence) AND "
                u"name IN (SELECT name FROM main.sqlite_master)");
    }

    /// The ids that the indexes name: their pages may be sound where the table's are not.
    void expectIds()
    {
        CStringArray indexes;
        {
            CSQLiteStatement statement = m_db.CompileStatement(
                u"SELECT name FROM main.sqlite_master WHERE type = 'index' AND tbl_name = "
                u"'FILE_T' AND sql IS NOT NULL");
            for (CSQLiteQueryResult row = statement.ExecuteQuery(); !row.Eof(); row.NextRow())
                indexes.Add(row.GetTextField(0));
        }
        for (const CString& index : indexes)
            attempt(m_db,
                    u"INSERT OR IGNORE INTO qo_expected SELECT FT_ID FROM d.FILE_T INDEXED BY " +
                        index + u" WHERE " + inRange(u"FT_ID", 1, largestId));
    }

    void readLeaf(std::int64_t leaf)
    {
        perform(m_db, u"PRAGMA writable_schema = ON");
        CString sql;
        sql.Format(u"UPDATE d.sqlite_master SET rootpage = %I64d WHERE name = 'qo_leaf'", leaf);
        perform(m_db, sql);
        // Reads the schema again and ends that mode.
        perform(m_db, u"PRAGMA writable_schema = RESET");
        int failures = 0;
        for (const Table& table : m_tables)
        {
            if (!table.isAbsent)
                readRows(table, 1, largestId, failures);
        }
    }

    /// The rows of a leaf that may be the table's. What fails is tried in halves, down to the row
    /// that cannot be read.
    void readRows(const Table& table, std::int64_t first, std::int64_t last, int& failures)
    {
        const CString sql = u"INSERT OR IGNORE INTO main." + table.name + u"(" +
                            joined(table.columns) + u") SELECT " + leafNames(table) +
                            u" FROM d.qo_leaf WHERE " + inRange(u"rowid", first, last) +
                            shapeOf(table);
        if (failures > failuresOfPage || attempt(m_db, sql))
            return;
        ++failures;
        if (first == last)
            return;
        const std::int64_t middle = first + (last - first) / 2;
        readRows(table, first, middle, failures);
        readRows(table, middle + 1, last, failures);
    }

    static CString leafNames(const Table& table)
    {
        CString names;
        for (std::size_t i = 0; i < table.columns.size(); ++i)
            names.AppendFormat(i == 0 ? u"c%d" : u", c%d", static_cast<int>(i));
        if (table.hasId())
            names.Replace(u"c0,", u"rowid,");
        return names;
    }

    /// The id is no part of the row's own content. The last column must be there, and none after
    /// it.
    static CString shapeOf(const Table& table)
    {
        CString sql(table.hasId() ? u" AND c0 IS NULL" : u"");
        const int count = static_cast<int>(table.columns.size());
        for (int i = table.hasId() ? 1 : 0; i < count; ++i)
        {
            const bool isNumber = table.columns[static_cast<std::size_t>(i)].isNumber;
            sql.AppendFormat(u" AND typeof(c%d) %s '%s'%s",
                             i,
                             i + 1 == count ? u"=" : u"IN ('null',",
                             isNumber ? u"integer" : u"text",
                             i + 1 == count ? u"" : u")");
        }
        if (count < leafColumns - 1)
            sql.AppendFormat(u" AND c%d IS NULL", count);
        return sql;
    }

    CSQLiteDB m_db;
    const DamagedCopy& m_damaged;
    std::vector<Table> m_tables;
};
} // namespace

std::int64_t Salvage::Report::rows() const
{
    std::int64_t sum = 0;
    for (const Table& table : tables)
        sum += table.rows;
    return sum;
}

Salvage::Report Salvage::copyTo(const CString& target, const MakeTarget& make) const
{
    const DamagedCopy damaged(m_database);
    // SQLite copies no rows between texts of two kinds.
    if (damaged.encoding() != CString(u"UTF-16le"))
    {
        CSQLiteDB db(target);
        db.Open();
        perform(db, u"PRAGMA encoding = '" + CString(damaged.encoding()) + u"'");
        perform(db, u"CREATE TABLE qo_first(x)");
        perform(db, u"DROP TABLE qo_first");
    }
    make(target);
    Report report;
    SalvageConnection salvage(target, damaged);
    salvage.readTables(report);
    salvage.readLeaves(damaged.becomeLeaves());
    salvage.count(report);
    return report;
}
} // namespace qo::host
