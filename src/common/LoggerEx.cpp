#include "common/LoggerEx.h"

#include "common/Log.h"
#include "common/TraceFile.h"
#include "platform/Platform.h"
#include "types/CriticalSection.h"

// The logger with its file, and the choice between the built-in logger and a host's. All lines of
// the model go through logArgs().

struct CLoggerEx::Output
{
    CCriticalSection lock;
    qo::TraceFile file;
};

CLoggerEx::CLoggerEx() : m_output(std::make_unique<Output>()) {}

CLoggerEx::~CLoggerEx() = default;

void CLoggerEx::setBasePath(const CString& basePath)
{
    {
        const qo::Guard guard(m_output->lock);
        m_output->file.setBasePath(basePath);
    }
    qo::TraceFile::cleanUp(basePath, qo::keptLogFiles);
}

void CLoggerEx::writeText(int level, const CString& text)
{
    const qo::Guard guard(m_output->lock);
    const qo::CalendarTime time = qo::systemClock().localTime();
    qo::TraceFile& file = m_output->file;
    // A new file for each day of the month, whatever the size of the old one.
    if (!file.isOpen() || file.date().day != time.day)
        file.open(time);
    file.writeLine(level, time, text);
}

namespace
{
std::atomic<CLoggerEx*> replacement{nullptr};
}

void setQoKernelLogger(CLoggerEx* logger)
{
    replacement = logger;
}

namespace qo
{
CLoggerEx& builtInLogger() noexcept
{
    // Never destroyed: destructors of static objects may still log.
    static auto* const only = new CLoggerEx();
    return *only;
}

CLoggerEx& currentLogger() noexcept
{
    CLoggerEx* const logger = replacement;
    return logger ? *logger : builtInLogger();
}

bool isLogged(int level) noexcept
{
    return currentLogger().takes(level);
}

void logArgs(int level, const char16_t* format, const FormatArg* args, std::size_t count)
{
    CString text;
    formatTo(text, format, args, count);
    currentLogger().writeText(level, text);
}
} // namespace qo
