#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "types/Forward.h"

/// How the sources of this folder report: not for their users.
namespace qo::sqlite
{
bool isLogged(int level);
/// Writes "SQLITE_LOGGING: " and the text, with this unit's place.
void log(int level, int line, const CString& text);

/// Throws what the connection says of its last failure.
[[noreturn]] void throwFromConnection(sqlite3* db, const CString& sql, int line);
[[noreturn]] void throwError(int code, const char16_t* text, int line);
} // namespace qo::sqlite
