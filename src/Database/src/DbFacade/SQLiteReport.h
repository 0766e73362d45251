#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "types/Forward.h"

/// Logging and throwing for the sources of this folder.
namespace qo::sqlite
{
bool isLogged(int level);
/// Writes "SQLITE_LOGGING: " and the text, with the place in the source.
void log(int level, int line, const CString& text);

/// Throws the last failure of the connection.
[[noreturn]] void throwFromConnection(sqlite3* db, const CString& sql, int line);
[[noreturn]] void throwError(int code, const char16_t* text, int line);
} // namespace qo::sqlite
