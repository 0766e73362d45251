#pragma once

#include "types/String.h"

/// Unicode can write one text in several ways: "é" is one unit, or "e" and a combining accent.
/// Everything here may be called from any thread.
namespace qo
{
/// The composed form (NFC), in which texts that differ only in that way are equal. Lone surrogates
/// stay as they are.
QO_API CString toNfc(const CString& text);

/// Where to cut a text: the largest number of units, at most limit, that does not take a character
/// apart from its combining marks. A single character that is longer than limit is cut, but not
/// within a surrogate pair.
QO_API int wholeCharacters(const CString& text, int limit);
} // namespace qo
