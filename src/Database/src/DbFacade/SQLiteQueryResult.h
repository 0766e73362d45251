#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "types/Export.h"
#include "types/String.h"

#include <cstdint>
#include <string_view>

/// A cursor on the rows of a statement, made by CSQLiteStatement::ExecuteQuery() with the first row
/// loaded: loop while Eof() is false, read, call NextRow(). It owns nothing and is valid only while
/// its statement lives: declare the statement first. Indexes count from 0; one outside the columns
/// throws. A NULL gives the default, and so does, silently, a name that no column has.
class QO_API CSQLiteQueryResult
{
public:
    /// The handle stays the statement's; both see when a failed step has finalized it.
    CSQLiteQueryResult(sqlite3* db, sqlite3_stmt*& statement, bool eof);
    virtual ~CSQLiteQueryResult();
    CSQLiteQueryResult(const CSQLiteQueryResult&) = delete;
    CSQLiteQueryResult& operator=(const CSQLiteQueryResult&) = delete;

    bool Eof() const noexcept { return m_eof; }
    /// Nothing at the end. A failure finalizes the statement and throws.
    void NextRow();

    int FieldCount() const noexcept { return m_fieldCount; }
    /// The first column of exactly that name, or -1.
    int FieldIndex(const char16_t* name) const;

    int GetIntField(int index, int defaultValue = 0) const;
    int GetIntField(const char16_t* name, int defaultValue = 0) const;
    bool GetBoolField(int index, bool defaultValue = false) const;
    bool GetBoolField(const char16_t* name, bool defaultValue = false) const;
    std::int64_t GetInt64Field(int index, std::int64_t defaultValue = 0) const;
    std::int64_t GetInt64Field(const char16_t* name, std::int64_t defaultValue = 0) const;
    /// The text is SQLite's and lasts until the next step.
    const char16_t* GetTextField(int index, const char16_t* defaultValue = u"") const;
    const char16_t* GetTextField(const char16_t* name, const char16_t* defaultValue = u"") const;
    /// The same with its length and "" for NULL, without a search for the end.
    std::u16string_view textView(int index) const;

private:
    /// Throws unless the statement is there and has that column.
    void check(int index) const;
    bool isNull(int index) const;

    sqlite3* m_db;
    sqlite3_stmt*& m_statement;
    bool m_eof;
    int m_fieldCount;
};
