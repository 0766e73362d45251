#pragma once

#include "types/Export.h"

/// The log of the database layer, with one trace file for each process. May be called from any
/// thread.
///
/// Starts it with "<basePath>_<time>_<pid>.txt" as its file; level 0 writes nothing. A second call
/// does nothing.

/// Starts it at a level with "<basePath>_<time>_<pid>.txt" as its file; level 0 keeps it silent.
/// A second call changes nothing.
QO_API void InitSimpleLogger(int maxLevel, const char16_t* basePath);
QO_API bool IsSimpleLoggerInitialized();
/// 0 before it is started.
QO_API int GetSimpleLoggerMaxLevel();
/// Writes "text (source:line)".
QO_API void WriteSimpleLog(int level, const char16_t* source, int line, const char16_t* text);
