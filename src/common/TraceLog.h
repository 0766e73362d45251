#pragma once

#include "types/Format.h"
#include "types/String.h"

namespace qo
{
/// The trace of the process, used by helpers of files and drives. Any thread may trace, but not
/// from code that runs while a line is being written.
class QO_API TraceLog
{
public:
    /// Closes the open file, and removes old files of the new base path.
    static void setBasePath(const CString& basePath);
    /// A level below 1 turns tracing off.
    static void setMaxLevel(int level);
    static int getMaxLevel() noexcept;
    /// Opens the file again for each line, for logs that must survive a crash of the system.
    static void setReopenAfterLine(bool reopen);
    /// Writes each line to standard error too, where a debugger shows it.
    static void setDebuggerOutput(bool output);

    static void writeText(int level, const CString& text);

    template <class... Args>
    static void trace(int level, const char16_t* format, const Args&... args)
    {
        if (!format || getMaxLevel() == 0 || level > getMaxLevel())
            return;
        CString text;
        text.Format(format, args...);
        writeText(level, text);
    }
};
} // namespace qo
