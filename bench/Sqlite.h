#pragma once

#include "Floor.h"

#include <sqlite3.h>

#include <memory>
#include <string>

namespace bench
{
struct Close
{
    void operator()(sqlite3* database) const { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, Close>;
using Statement = std::unique_ptr<sqlite3_stmt, Close>;

inline Database openDatabase(const char* path, int flags)
{
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(path, &database, flags, nullptr);
    Database owner(database);
    if (result != SQLITE_OK)
        fail(path, sqlite3_errstr(result));
    return owner;
}

inline void execute(const Database& database, const std::string& sql)
{
    if (sqlite3_exec(database.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(sql.c_str(), sqlite3_errmsg(database.get()));
}

inline Statement prepare(const Database& database, const std::u16string& sql)
{
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare16_v2(database.get(), sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
        fail("prepare", sqlite3_errmsg(database.get()));
    return Statement(statement);
}

inline std::u16string text(const Statement& statement, int column)
{
    const auto* units =
        static_cast<const char16_t*>(sqlite3_column_text16(statement.get(), column));
    return units
               ? std::u16string(
                     units,
                     static_cast<std::size_t>(sqlite3_column_bytes16(statement.get(), column)) / 2)
               : std::u16string();
}
} // namespace bench
