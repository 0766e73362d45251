#pragma once

#include "types/Export.h"

#include <string_view>

/// Questions about single UTF-16 units and the comparisons that rest on them. All answers come
/// from tables made at build time: neither the locale of the process nor the C library has a say.
/// Safe from any thread.
namespace qo
{
/// The simple lower-case form of one unit; surrogates and units without one are returned as given.
QO_API char16_t toLower(char16_t c) noexcept;

/// Letters of any script in the basic plane. Surrogates are no letters.
QO_API bool isLetter(char16_t c) noexcept;

/// ASCII digits only, the same ones that textToInt() reads.
constexpr bool isDigit(char16_t c) noexcept
{
    return c >= u'0' && c <= u'9';
}

QO_API bool isSpace(char16_t c) noexcept;

/// Compares unit by unit after folding to lower case: negative, 0 or positive. A text that is the
/// beginning of the other comes first. This is the one meaning of "the same name" in the house.
QO_API int compareNoCase(std::u16string_view a, std::u16string_view b) noexcept;

/// Hash that is equal for texts which compareNoCase() calls equal.
QO_API std::size_t hashNoCase(std::u16string_view text) noexcept;

/// Compares unit by unit: negative, 0 or positive.
QO_API int compareExact(std::u16string_view a, std::u16string_view b) noexcept;

/// Skips blanks, takes a sign and the digits behind it, and stops at the first other unit. No
/// digits give 0; a number beyond the range of int gives the nearest int.
QO_API int textToInt(std::u16string_view text) noexcept;

/// The same with 64 bits.
QO_API long long textToInt64(std::u16string_view text) noexcept;
} // namespace qo
