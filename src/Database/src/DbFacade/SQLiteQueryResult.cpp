#include "Database/src/DbFacade/SQLiteQueryResult.h"

#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteReport.h"

#include <sqlite3.h>

using namespace qo::sqlite;

CSQLiteQueryResult::CSQLiteQueryResult(sqlite3* db, sqlite3_stmt*& statement, bool eof)
    : m_db(db), m_statement(statement), m_eof(eof), m_fieldCount(sqlite3_column_count(statement))
{
}

CSQLiteQueryResult::~CSQLiteQueryResult() = default;

void CSQLiteQueryResult::NextRow()
{
    if (m_eof)
        return;
    if (!m_statement)
        throwError(CSQLiteException::wrapperError, u"Null statement pointer", __LINE__);
    switch (sqlite3_step(m_statement))
    {
    case SQLITE_DONE:
        m_eof = true;
        return;
    case SQLITE_ROW:
        return;
    default:
        sqlite3_finalize(m_statement);
        m_statement = nullptr;
        throwFromConnection(m_db, CString(), __LINE__);
    }
}

int CSQLiteQueryResult::FieldIndex(const char16_t* name) const
{
    if (!m_statement)
        throwError(CSQLiteException::wrapperError, u"Null statement pointer", __LINE__);
    for (int i = 0; name && i < m_fieldCount; ++i)
    {
        const auto* column = static_cast<const char16_t*>(sqlite3_column_name16(m_statement, i));
        if (column && std::u16string_view(column) == name)
            return i;
    }
    return -1;
}

void CSQLiteQueryResult::check(int index) const
{
    if (!m_statement)
        throwError(CSQLiteException::wrapperError, u"Null statement pointer", __LINE__);
    if (index < 0 || index >= m_fieldCount)
        throwError(CSQLiteException::wrapperError, u"Invalid field index requested!", __LINE__);
}

bool CSQLiteQueryResult::isNull(int index) const
{
    return sqlite3_column_type(m_statement, index) == SQLITE_NULL;
}

// Each call into SQLite takes the lock of the connection. So NULL is tested only where SQLite's own
// value for it (0, no text) is not the wanted default.

int CSQLiteQueryResult::GetIntField(int index, int defaultValue) const
{
    check(index);
    if (defaultValue != 0 && isNull(index))
        return defaultValue;
    return sqlite3_column_int(m_statement, index);
}

int CSQLiteQueryResult::GetIntField(const char16_t* name, int defaultValue) const
{
    const int index = FieldIndex(name);
    return index < 0 ? defaultValue : GetIntField(index, defaultValue);
}

bool CSQLiteQueryResult::GetBoolField(int index, bool defaultValue) const
{
    return GetIntField(index, defaultValue) != 0;
}

bool CSQLiteQueryResult::GetBoolField(const char16_t* name, bool defaultValue) const
{
    return GetIntField(name, defaultValue) != 0;
}

std::int64_t CSQLiteQueryResult::GetInt64Field(int index, std::int64_t defaultValue) const
{
    check(index);
    if (defaultValue != 0 && isNull(index))
        return defaultValue;
    return sqlite3_column_int64(m_statement, index);
}

std::int64_t CSQLiteQueryResult::GetInt64Field(const char16_t* name,
                                               std::int64_t defaultValue) const
{
    const int index = FieldIndex(name);
    return index < 0 ? defaultValue : GetInt64Field(index, defaultValue);
}

const char16_t* CSQLiteQueryResult::GetTextField(int index, const char16_t* defaultValue) const
{
    check(index);
    const void* text = sqlite3_column_text16(m_statement, index);
    if (text)
        return static_cast<const char16_t*>(text);
    if (!isNull(index))
        throwFromConnection(m_db, CString(), __LINE__);
    return defaultValue;
}

const char16_t* CSQLiteQueryResult::GetTextField(const char16_t* name,
                                                 const char16_t* defaultValue) const
{
    const int index = FieldIndex(name);
    return index < 0 ? defaultValue : GetTextField(index, defaultValue);
}

std::u16string_view CSQLiteQueryResult::textView(int index) const
{
    const char16_t* const text = GetTextField(index, nullptr);
    if (!text || !*text)
        return {};
    const auto bytes = static_cast<std::size_t>(sqlite3_column_bytes16(m_statement, index));
    return {text, bytes / sizeof(char16_t)};
}
