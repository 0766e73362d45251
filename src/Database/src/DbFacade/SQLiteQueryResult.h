#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "types/Export.h"
#include "types/String.h"

#include <cstdint>
#include <string_view>

/// A cursor over the rows of a statement, made by CSQLiteStatement::ExecuteQuery() with the first
/// row loaded. It owns nothing and is valid only as long as its statement, so the statement must be
/// declared first. Columns are counted from 0, and an index out of range throws. NULL gives the
/// default value; so does the name of a column that does not exist.
class QO_API CSQLiteQueryResult
{
public:
    /// The handle belongs to the statement; both see it become null when a failed step finalizes
    /// it.
    CSQLiteQueryResult(sqlite3* db, sqlite3_stmt*& statement, bool eof);
    virtual ~CSQLiteQueryResult();
    CSQLiteQueryResult(const CSQLiteQueryResult&) = delete;
    CSQLiteQueryResult& operator=(const CSQLiteQueryResult&) = delete;

    bool Eof() const noexcept { return m_eof; }
    /// Advances to the next row; does nothing at the end. A failure finalizes the statement and
    /// throws.
    void NextRow();

    int FieldCount() const noexcept { return m_fieldCount; }
    /// The index of the first column with exactly that name, or -1.
    int FieldIndex(const char16_t* name) const;

    int GetIntField(int index, int defaultValue = 0) const;
    int GetIntField(const char16_t* name, int defaultValue = 0) const;
    bool GetBoolField(int index, bool defaultValue = false) const;
    bool GetBoolField(const char16_t* name, bool defaultValue = false) const;
    std::int64_t GetInt64Field(int index, std::int64_t defaultValue = 0) const;
    std::int64_t GetInt64Field(const char16_t* name, std::int64_t defaultValue = 0) const;
    /// The text belongs to SQLite and is valid until the next step.
    const char16_t* GetTextField(int index, const char16_t* defaultValue = u"") const;
    const char16_t* GetTextField(const char16_t* name, const char16_t* defaultValue = u"") const;
    /// The same with its length; "" for NULL.
    std::u16string_view textView(int index) const;

private:
    /// Throws unless the statement exists and has that column.
    void check(int index) const;
    bool isNull(int index) const;

    sqlite3* m_db;
    sqlite3_stmt*& m_statement;
    bool m_eof;
    int m_fieldCount;
};
