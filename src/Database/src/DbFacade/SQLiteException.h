#pragma once

#include "types/Exception.h"
#include "types/String.h"

/// A failure of the database. Made on the heap, thrown and caught as a pointer; a handler's first
/// line takes it into a std::unique_ptr.
class QO_API CSQLiteException : public CException
{
public:
    /// The code of errors that the facade detects itself.
    static constexpr int wrapperError = 1000;

    /// The message is built from all three; sql is "" where there is none.
    CSQLiteException(int code, const CString& text, const CString& sql = CString());
    ~CSQLiteException() override;

    bool GetErrorMessage(char16_t* error,
                         unsigned maxError,
                         unsigned* helpContext = nullptr) const override;

    /// An extended SQLite result code, or wrapperError.
    int code() const noexcept { return m_code; }
    const CString& message() const noexcept { return m_message; }
    const CString& sql() const noexcept { return m_sql; }

    /// Whether the statement itself is wrong, for instance names a missing table.
    bool isStatementError() const noexcept;
    /// Whether the file is not a database, or is damaged.
    bool isUnreadableDatabase() const noexcept;

    /// The name of a plain result code; "UNKNOWN_ERROR" for extended and other codes.
    static const char16_t* codeName(int code) noexcept;

private:
    int m_code;
    CString m_message;
    CString m_sql;
};

namespace qo
{
/// Logs as the facade does, and throws, an error that its users find in what they have read. The
/// code is wrapperError.
[[noreturn]] QO_API void throwDatabaseError(const CString& text);
} // namespace qo
