#pragma once

#include "types/String.h"

/// Unicode has several ways to write one text. Safe from any thread.
namespace qo
{
/// The composed form (NFC), in which texts that look alike for that reason alone are equal. Lone
/// surrogates stay as they are.
QO_API CString toNfc(const CString& text);

/// How many units at the start of the text, at most limit, can stand without the rest: nothing that
/// makes one character with its marks is taken apart, unless one alone is longer than that.
QO_API int wholeCharacters(const CString& text, int limit);
} // namespace qo
