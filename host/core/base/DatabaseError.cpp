#include "core/base/DatabaseError.h"

#include "core/base/HostFiles.h"

#include <algorithm>
#include <string_view>

namespace qo::host
{
namespace
{
/// SQLite's plain result codes, the low byte of the extended ones.
constexpr int sqliteBusy = 5;
constexpr int sqliteLocked = 6;

ExitCode exitCodeOf(const CSQLiteException& exception)
{
    const int code = exception.code() & 0xFF;
    const bool isBusy = exception.code() != CSQLiteException::wrapperError &&
                        (code == sqliteBusy || code == sqliteLocked);
    return isBusy ? ExitCode::busy : ExitCode::failed;
}
} // namespace

std::string databaseWords(const CString& message)
{
    constexpr std::string_view start = "CSQLiteException: [";
    constexpr std::string_view between = "][";
    std::string text = toUtf8(message);
    text.resize(std::min(text.find('\n'), text.size()));
    const std::size_t at = text.find(start);
    if (at == std::string::npos)
        return text;
    // "[NAME][code 5][words]"; the words may be missing.
    std::string words = text.substr(at + start.size());
    const std::size_t code = words.find(between);
    const std::size_t last =
        code == std::string::npos ? code : words.find(between, code + between.size());
    if (last != std::string::npos)
        words.erase(0, last + between.size());
    else
        words.resize(std::min(code, words.size()));
    if (words.ends_with(']'))
        words.pop_back();
    return text.substr(0, at) + words;
}

std::string damagedSentence(const CString& database, const std::string& words)
{
    return "the database " + shownPath(database) + " is damaged (" + words +
           ") and was left alone: \"qo db repair\" keeps what can be read, \"qo db restore\" goes "
           "back to a snapshot";
}

HostError databaseError(const CSQLiteException& exception, const CString& database)
{
    const ExitCode code = exitCodeOf(exception);
    if (exception.isUnreadableDatabase())
        return {code, damagedSentence(database, databaseWords(exception.message()))};
    // SQLite's words for it depend on what it was doing.
    const bool isFull = code != ExitCode::busy && isDiskFull(database);
    return {code,
            "the database " + shownPath(database) + " cannot be used: " +
                databaseWords(exception.message()) + (isFull ? "; the disk is full" : "")};
}
} // namespace qo::host
