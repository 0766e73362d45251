#include "Sqlite.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <variant>
#include <vector>

namespace
{
using Value = std::variant<std::monostate, std::int64_t, std::u16string>;
using Row = std::vector<Value>;

struct Source
{
    std::vector<std::string> schema; ///< the table, then its indexes
    std::vector<Row> rows;
};

Source readSource(const char* path)
{
    using namespace bench;
    const Database database = openDatabase(path, SQLITE_OPEN_READONLY);
    Source source;
    const Statement schema = prepare(database,
                                     u"SELECT sql FROM sqlite_master WHERE tbl_name = 'FILE_T' AND "
                                     u"sql NOT NULL ORDER BY type DESC");
    while (sqlite3_step(schema.get()) == SQLITE_ROW)
        source.schema.emplace_back(
            reinterpret_cast<const char*>(sqlite3_column_text(schema.get(), 0)));
    const Statement rows = prepare(database, u"SELECT * FROM FILE_T");
    while (sqlite3_step(rows.get()) == SQLITE_ROW)
    {
        Row row;
        for (int i = 0; i < sqlite3_column_count(rows.get()); ++i)
        {
            switch (sqlite3_column_type(rows.get(), i))
            {
            case SQLITE_NULL:
                row.emplace_back();
                break;
            case SQLITE_INTEGER:
                row.emplace_back(static_cast<std::int64_t>(sqlite3_column_int64(rows.get(), i)));
                break;
            default:
                row.emplace_back(text(rows, i));
                break;
            }
        }
        source.rows.push_back(std::move(row));
    }
    return source;
}

void bind(const bench::Statement& statement, int place, const Value& value)
{
    if (const auto* number = std::get_if<std::int64_t>(&value))
        sqlite3_bind_int64(statement.get(), place, *number);
    else if (const auto* text = std::get_if<std::u16string>(&value))
        sqlite3_bind_text16(statement.get(),
                            place,
                            text->data(),
                            static_cast<int>(text->size() * 2),
                            SQLITE_STATIC);
    else
        sqlite3_bind_null(statement.get(), place);
}

long insertAll(const Source& source, const char* path)
{
    using namespace bench;
    const Database database = openDatabase(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    execute(database, "PRAGMA encoding = 'UTF-16le'");
    for (const std::string& sql : source.schema)
        execute(database, sql);
    execute(database, "BEGIN");
    std::u16string places = u"INSERT INTO FILE_T VALUES (?";
    for (std::size_t i = 1; i < source.rows.front().size(); ++i)
        places += u",?";
    {
        const Statement statement = prepare(database, places + u")");
        for (const Row& row : source.rows)
        {
            for (std::size_t i = 0; i < row.size(); ++i)
                bind(statement, static_cast<int>(i) + 1, row[i]);
            if (sqlite3_step(statement.get()) != SQLITE_DONE)
                fail(path, sqlite3_errmsg(database.get()));
            sqlite3_reset(statement.get());
        }
    }
    execute(database, "COMMIT");
    return static_cast<long>(source.rows.size());
}
} // namespace

/// Inserts the file rows of a collection's database into a fresh one, in one transaction.
int main(int argc, char** argv)
{
    if (argc != 3)
        bench::fail("usage", "floor_insert SOURCE-DATABASE NEW-DATABASE");
    const Source source = readSource(argv[1]);
    if (source.rows.empty() || source.schema.empty())
        bench::fail(argv[1], "has no rows in FILE_T");
    std::remove(argv[2]);
    bench::measure([&] { return insertAll(source, argv[2]); });
    std::remove(argv[2]);
}
