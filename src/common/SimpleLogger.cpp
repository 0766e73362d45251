#include "common/SimpleLogger.h"

#include "common/LoggerEx.h"

#include <atomic>
#include <mutex>

namespace
{
std::atomic<CLoggerEx*> logger{nullptr};
std::once_flag started;
} // namespace

void InitSimpleLogger(int maxLevel, const char16_t* basePath)
{
    std::call_once(started,
                   [&]
                   {
                       // Never destroyed: connections may be closed by destructors of static
                       // objects.
                       auto* const fresh = new CLoggerEx();
                       fresh->setBasePath(basePath);
                       fresh->setMaxLevel(maxLevel);
                       logger = fresh;
                   });
}

bool IsSimpleLoggerInitialized()
{
    return logger != nullptr;
}

int GetSimpleLoggerMaxLevel()
{
    const CLoggerEx* const current = logger;
    return current ? current->getMaxLevel() : 0;
}

void WriteSimpleLog(int level, const char16_t* source, int line, const char16_t* text)
{
    if (CLoggerEx* const current = logger)
        current->write(level, u"%s (%s:%d)", text, source, line);
}
