#include "Database/src/DbFacade/SQLiteException.h"

#include <sqlite3.h>

#include <algorithm>

namespace
{
/// The names of plain result codes in their order, from 0.
constexpr const char16_t* plainNames[] = {
    u"SQLITE_OK",       u"SQLITE_ERROR",     u"SQLITE_INTERNAL", u"SQLITE_PERM",
    u"SQLITE_ABORT",    u"SQLITE_BUSY",      u"SQLITE_LOCKED",   u"SQLITE_NOMEM",
    u"SQLITE_READONLY", u"SQLITE_INTERRUPT", u"SQLITE_IOERR",    u"SQLITE_CORRUPT",
    u"SQLITE_NOTFOUND", u"SQLITE_FULL",      u"SQLITE_CANTOPEN", u"SQLITE_PROTOCOL",
    u"SQLITE_EMPTY",    u"SQLITE_SCHEMA",    u"SQLITE_TOOBIG",   u"SQLITE_CONSTRAINT",
    u"SQLITE_MISMATCH", u"SQLITE_MISUSE",    u"SQLITE_NOLFS",    u"SQLITE_AUTH",
    u"SQLITE_FORMAT",   u"SQLITE_RANGE"};

/// Hosts search their logs for this form.
CString formatMessage(int code, const CString& text, const CString& sql)
{
    CString message;
    if (text.IsEmpty())
        message.Format(u"CSQLiteException: [%s][code %d]", CSQLiteException::codeName(code), code);
    else
        message.Format(
            u"CSQLiteException: [%s][code %d][%s]", CSQLiteException::codeName(code), code, text);
    if (!sql.IsEmpty())
        message += u"\n\tSQL >> " + sql;
    return message;
}
} // namespace

CSQLiteException::CSQLiteException(int code, const CString& text, const CString& sql)
    : m_code(code), m_message(formatMessage(code, text, sql)), m_sql(sql)
{
}

CSQLiteException::~CSQLiteException() = default;

bool CSQLiteException::GetErrorMessage(char16_t* error, unsigned maxError, unsigned*) const
{
    if (!error || maxError == 0)
        return true;
    const std::size_t count =
        std::min<std::size_t>(maxError - 1, static_cast<std::size_t>(m_message.GetLength()));
    std::copy_n(m_message.GetString(), count, error);
    error[count] = 0;
    return true;
}

bool CSQLiteException::isStatementError() const noexcept
{
    return m_code == SQLITE_ERROR;
}

bool CSQLiteException::isUnreadableDatabase() const noexcept
{
    const int plain = m_code & 0xFF;
    return m_code != wrapperError && (plain == SQLITE_NOTADB || plain == SQLITE_CORRUPT);
}

const char16_t* CSQLiteException::codeName(int code) noexcept
{
    if (code >= 0 && code < static_cast<int>(std::size(plainNames)))
        return plainNames[code];
    switch (code)
    {
    case SQLITE_ROW:
        return u"SQLITE_ROW";
    case SQLITE_DONE:
        return u"SQLITE_DONE";
    case wrapperError:
        return u"SQLITE_WRAPPER_ERROR";
    default:
        return u"UNKNOWN_ERROR";
    }
}
