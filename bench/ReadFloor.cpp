#include "Sqlite.h"

#include <string>

namespace
{
/// The columns that a start reads: all but the lyrics.
std::u16string columns(const bench::Database& database)
{
    const bench::Statement names = bench::prepare(
        database, u"SELECT name FROM pragma_table_info('FILE_T') WHERE name <> 'FT_LYRICS'");
    std::u16string list;
    while (sqlite3_step(names.get()) == SQLITE_ROW)
        list += (list.empty() ? u"" : u", ") + bench::text(names, 0);
    return list;
}

long readAll(const char* path, long& sum)
{
    const bench::Database database = bench::openDatabase(path, SQLITE_OPEN_READONLY);
    const bench::Statement rows =
        bench::prepare(database, u"SELECT " + columns(database) + u" FROM FILE_T");
    const int count = sqlite3_column_count(rows.get());
    long read = 0;
    for (; sqlite3_step(rows.get()) == SQLITE_ROW; ++read)
    {
        for (int i = 0; i < count; ++i)
        {
            if (sqlite3_column_type(rows.get(), i) == SQLITE_INTEGER)
                sum += static_cast<long>(sqlite3_column_int64(rows.get(), i));
            else if (const void* units = sqlite3_column_text16(rows.get(), i))
                sum += *static_cast<const char16_t*>(units);
        }
    }
    return read;
}
} // namespace

/// Reads every file row of a collection's database.
int main(int argc, char** argv)
{
    if (argc != 2)
        bench::fail("usage", "floor_read DATABASE");
    long sum = 0;
    bench::measure([&] { return readAll(argv[1], sum); });
    return sum == 1;
}
