#pragma once

#include "types/Format.h"
#include "types/String.h"

#include <atomic>
#include <memory>

/// The logger of the model's code. The kernel has a built-in one; a host may replace it with
/// setQoKernelLogger(). Any thread may write. A derived class that handles lines itself overrides
/// writeText(), which several threads may call at once.
class QO_API CLoggerEx
{
public:
    CLoggerEx();
    CLoggerEx(const CLoggerEx&) = delete;
    CLoggerEx& operator=(const CLoggerEx&) = delete;
    virtual ~CLoggerEx();

    /// From now on lines go to files of that base path; old files of it are removed.
    void setBasePath(const CString& basePath);
    /// Lines above the level are ignored; 0 writes nothing.
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
    /// Writes one line; the caller has checked the level.
    virtual void writeText(int level, const CString& text);

private:
    struct Output;
    std::atomic<int> m_maxLevel{0};
    std::unique_ptr<Output> m_output;
};

/// Replaces the logger of the kernel; null restores the built-in one. The logger belongs to the
/// caller and must live until it is replaced.
QO_API void setQoKernelLogger(CLoggerEx* logger);

namespace qo
{
/// The current logger. It may be replaced at any time, so it must not be kept.
QO_API CLoggerEx& currentLogger() noexcept;
QO_API CLoggerEx& builtInLogger() noexcept;
} // namespace qo
