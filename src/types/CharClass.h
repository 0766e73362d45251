#pragma once

#include "types/Export.h"

#include <string_view>

/// Classes of single UTF-16 units, and the comparisons that are built on them. All answers come
/// from tables that are generated at build time, so they depend neither on the locale nor on the C
/// library. Everything here may be called from any thread.
namespace qo
{
/// The simple lower-case form of one unit; surrogates and units without one are returned unchanged.
QO_API char16_t toLower(char16_t c) noexcept;

/// Letters of any script in the basic multilingual plane. Surrogates are not letters.
QO_API bool isLetter(char16_t c) noexcept;

/// ASCII digits only, which are the ones that textToInt() reads.
constexpr bool isDigit(char16_t c) noexcept
{
    return c >= u'0' && c <= u'9';
}

/// White space of any script.
QO_API bool isSpace(char16_t c) noexcept;

/// Compares unit by unit after folding to lower case: negative, 0 or positive. A text that is the
/// beginning of the other one is smaller. Wherever the library says "the same name", it means that
/// this is 0.
QO_API int compareNoCase(std::u16string_view a, std::u16string_view b) noexcept;

/// Whether the text begins with that one by the same comparison; every text begins with "".
QO_API bool startsNoCase(std::u16string_view text, std::u16string_view start) noexcept;

/// A hash that is equal for texts which compareNoCase() calls equal.
QO_API std::size_t hashNoCase(std::u16string_view text) noexcept;

/// Compares unit by unit: negative, 0 or positive.
QO_API int compareExact(std::u16string_view a, std::u16string_view b) noexcept;

/// Skips white space, takes a sign and the digits after it, and stops at the first other unit.
/// Without digits it gives 0, beyond the range of int the nearest int. " -12x" gives -12.
QO_API int textToInt(std::u16string_view text) noexcept;

/// The same with 64 bits.
QO_API long long textToInt64(std::u16string_view text) noexcept;
} // namespace qo
