#pragma once

#include "types/Utf.h"

#include <ostream>

/// Lets a failed expectation show a CString as text; found by name from gtest.
inline void PrintTo(const CString& text, std::ostream* out)
{
    *out << '"' << qo::toUtf8(text) << '"';
}
