#include "Database/src/DbFacade/SQLiteReport.h"

#include "Database/src/DbFacade/SQLiteException.h"
#include "common/LogLevel.h"
#include "common/SimpleLogger.h"
#include "types/String.h"

#include <sqlite3.h>

#include <memory>

namespace qo::sqlite
{
namespace
{
constexpr const char16_t* source = u"..\\..\\..\\Database\\src\\DbFacade\\SQLiteWrapper";

[[noreturn]] void logAndThrow(std::unique_ptr<CSQLiteException> exception, int line)
{
    if (isLogged(level::warning))
        log(level::warning, line, exception->message() + u" for SQL: " + exception->sql());
    throw exception.release();
}
} // namespace

bool isLogged(int level)
{
    return GetSimpleLoggerMaxLevel() >= level;
}

void log(int level, int line, const CString& text)
{
    WriteSimpleLog(level, source, line, u"SQLITE_LOGGING: " + text);
}

void throwFromConnection(sqlite3* db, const CString& sql, int line)
{
    const auto* text = static_cast<const char16_t*>(sqlite3_errmsg16(db));
    logAndThrow(std::make_unique<CSQLiteException>(sqlite3_errcode(db), text, sql), line);
}

void throwError(int code, const char16_t* text, int line)
{
    logAndThrow(std::make_unique<CSQLiteException>(code, text), line);
}
} // namespace qo::sqlite

void qo::throwDatabaseError(const CString& text)
{
    sqlite::throwError(CSQLiteException::wrapperError, text, __LINE__);
}
