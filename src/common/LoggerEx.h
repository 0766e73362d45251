#pragma once

#include "types/Format.h"
#include "types/String.h"

#include <atomic>
#include <memory>

/// The logger of the model's own code. The kernel has one built in; a host may put its own in its
/// place with setQoKernelLogger. Any thread may write. A derived class that takes the lines itself
/// overrides writeText, which may be called by several threads at once.
class QO_API CLoggerEx
{
public:
    CLoggerEx();
    CLoggerEx(const CLoggerEx&) = delete;
    CLoggerEx& operator=(const CLoggerEx&) = delete;
    virtual ~CLoggerEx();

    /// Lines go to files of that base path from now on; old files of it are removed.
    void setBasePath(const CString& basePath);
    /// Lines above the level are passed over; 0 is silence.
    void setMaxLevel(int level) noexcept { m_maxLevel = level < 1 ? 0 : level; }
    int getMaxLevel() const noexcept { return m_maxLevel; }
    bool takes(int level) const noexcept { return m_maxLevel != 0 && level <= m_maxLevel; }

    template <class... Args>
    void write(int level, const char16_t* format, const Args&... args)
    {
        if (!takes(level))
            return;
        CString text;
        text.Format(format, args...);
        writeText(level, text);
    }
    /// One line; the level has been tested by the caller.
    virtual void writeText(int level, const CString& text);

private:
    struct Output;
    std::atomic<int> m_maxLevel{0};
    std::unique_ptr<Output> m_output;
};

/// Replaces the logger through which the kernel writes; null brings back the built-in one. The
/// logger stays the caller's and must live until it is replaced.
QO_API void setQoKernelLogger(CLoggerEx* logger);

namespace qo
{
/// The logger of this moment: to be asked for at each use, never to be kept.
QO_API CLoggerEx& currentLogger() noexcept;
QO_API CLoggerEx& builtInLogger() noexcept;
} // namespace qo
