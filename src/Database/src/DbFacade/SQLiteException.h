#pragma once

#include "types/Exception.h"
#include "types/String.h"

/// A failure of the database. Made on the heap, thrown and caught as a pointer; a handler's first
/// line takes it into a std::unique_ptr.
class QO_API CSQLiteException : public CException
{
public:
    /// The code of errors that the facade itself finds.
    static constexpr int wrapperError = 1000;

    /// The message is built from all three; the SQL is empty where none applies.
    CSQLiteException(int code, const CString& text, const CString& sql = CString());
    ~CSQLiteException() override;

    bool GetErrorMessage(char16_t* error,
                         unsigned maxError,
                         unsigned* helpContext = nullptr) const override;

    /// An SQLite result code with its extension, or wrapperError.
    int code() const noexcept { return m_code; }
    const CString& message() const noexcept { return m_message; }
    const CString& sql() const noexcept { return m_sql; }

    /// A plain error of the statement, such as a table that does not exist.
    bool isStatementError() const noexcept;
    /// The file is no database or is damaged.
    bool isUnreadableDatabase() const noexcept;

    /// The name of a plain result code; extended codes and all others are "UNKNOWN_ERROR".
    static const char16_t* codeName(int code) noexcept;

private:
    int m_code;
    CString m_message;
    CString m_sql;
};
