#pragma once

#include "common/LogLevel.h"
#include "types/Format.h"

namespace qo
{
/// Whether the current logger accepts lines of that level; to be asked before arguments are
/// computed at some cost.
QO_API bool isLogged(int level) noexcept;

QO_API void logArgs(int level, const char16_t* format, const FormatArg* args, std::size_t count);

/// Writes one line to the current logger (see CLoggerEx). The format must not come from a user.
template <class... Args>
void log(int level, const char16_t* format, const Args&... args)
{
    if (!isLogged(level))
        return;
    const FormatArg list[] = {FormatArg(args)..., FormatArg()};
    logArgs(level, format, list, sizeof...(Args));
}
} // namespace qo
