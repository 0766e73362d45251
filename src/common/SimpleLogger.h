#pragma once

#include "types/Export.h"

/// The log of the database layer: one trace file of its own per process. Safe from any thread.

/// Starts it at a level with "<basePath>_<time>_<pid>.txt" as its file; level 0 keeps it silent.
/// A second call changes nothing.
QO_API void InitSimpleLogger(int maxLevel, const char16_t* basePath);
QO_API bool IsSimpleLoggerInitialized();
/// 0 until it is started.
QO_API int GetSimpleLoggerMaxLevel();
/// The line reads "text (source:line)".
QO_API void WriteSimpleLog(int level, const char16_t* source, int line, const char16_t* text);
