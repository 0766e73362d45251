#pragma once

#include "types/String.h"

#include <cstdint>

/// Reports, when it ends, how long it lived: the time of one statement, transaction or connection.
/// It speaks only at the level of details.
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
    const char16_t* m_tag; ///< a literal
    std::uint32_t m_start;
};
