#pragma once

#include "types/Format.h"
#include "types/String.h"

namespace qo
{
/// The process's file-level trace, which the helpers of files and drives write to. Any thread may
/// trace; code that traces must not be called while a line is written.
class QO_API TraceLog
{
public:
    /// Closes the open file and removes old ones of that base path.
    static void setBasePath(const CString& basePath);
    /// A level below 1 turns tracing off.
    static void setMaxLevel(int level);
    static int getMaxLevel() noexcept;
    /// Opens the file anew for each line, for logs that must outlive a crash of the system.
    static void setReopenAfterLine(bool reopen);
    /// Each line also goes to standard error, where a debugger shows it.
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
