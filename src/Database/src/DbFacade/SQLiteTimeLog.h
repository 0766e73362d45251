#pragma once

#include "types/String.h"

#include <cstdint>

/// Logs its lifetime when it is destroyed: the duration of a statement, transaction or connection.
/// Only at the level of details.
class QO_API CSQLiteTimeLog
{
public:
    CSQLiteTimeLog(const char16_t* tag, const CString& text);
    ~CSQLiteTimeLog();
    CSQLiteTimeLog(const CSQLiteTimeLog&) = delete;
    CSQLiteTimeLog& operator=(const CSQLiteTimeLog&) = delete;

    const CString& text() const noexcept { return m_text; }

private:
    CString m_text;
    const char16_t* m_tag; ///< must be a literal
    std::uint32_t m_start;
};
