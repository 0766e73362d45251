#include "types/CharClass.h"

#include <cstdint>
#include <cstring>
#include <limits>

namespace qo
{
namespace
{
#include "CharTables.inc"

/// Classes are stored as one bit for each unit.
bool testBit(const std::uint8_t* bits, char16_t c)
{
    return (bits[c >> 3] >> (c & 7)) & 1;
}

/// How many units at the beginning are equal, rounded down to a multiple of 4; the caller compares
/// the rest. Paths share long beginnings, which are so compared by words.
std::size_t equalUnits(const char16_t* a, const char16_t* b, std::size_t count)
{
    constexpr std::size_t step = sizeof(std::uint64_t) / sizeof(char16_t);
    std::size_t i = 0;
    for (; i + step <= count; i += step)
    {
        std::uint64_t x = 0;
        std::uint64_t y = 0;
        std::memcpy(&x, a + i, sizeof(x));
        std::memcpy(&y, b + i, sizeof(y));
        if (x != y)
            break;
    }
    return i;
}

/// Negative numbers are built by subtracting, since the smallest one has no positive counterpart.
template <class Number>
Number parse(std::u16string_view text)
{
    std::size_t i = 0;
    while (i < text.size() && isSpace(text[i]))
        ++i;
    const bool negative = i < text.size() && text[i] == u'-';
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+'))
        ++i;
    Number value = 0;
    for (; i < text.size() && isDigit(text[i]); ++i)
    {
        const Number digit = text[i] - u'0';
        const bool overflow = __builtin_mul_overflow(value, Number(10), &value) ||
                              (negative ? __builtin_sub_overflow(value, digit, &value)
                                        : __builtin_add_overflow(value, digit, &value));
        if (overflow)
            return negative ? std::numeric_limits<Number>::min()
                            : std::numeric_limits<Number>::max();
    }
    return value;
}
} // namespace

char16_t toLower(char16_t c) noexcept
{
    return lowerTable[c];
}

bool isLetter(char16_t c) noexcept
{
    return testBit(letterBits, c);
}

bool isSpace(char16_t c) noexcept
{
    return testBit(spaceBits, c);
}

int compareNoCase(std::u16string_view a, std::u16string_view b) noexcept
{
    const std::size_t common = a.size() < b.size() ? a.size() : b.size();
    for (std::size_t i = equalUnits(a.data(), b.data(), common); i < common; ++i)
    {
        if (a[i] == b[i])
            continue;
        const char16_t x = lowerTable[a[i]];
        const char16_t y = lowerTable[b[i]];
        if (x != y)
            return x < y ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

bool startsNoCase(std::u16string_view text, std::u16string_view start) noexcept
{
    return compareNoCase(text.substr(0, start.size()), start) == 0;
}

std::size_t hashNoCase(std::u16string_view text) noexcept
{
    // FNV-1a over the folded units.
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char16_t c : text)
        hash = (hash ^ lowerTable[c]) * 0x100000001b3U;
    return hash ^ (hash >> 29);
}

int compareExact(std::u16string_view a, std::u16string_view b) noexcept
{
    const int result = a.compare(b);
    return result < 0 ? -1 : (result > 0 ? 1 : 0);
}

int textToInt(std::u16string_view text) noexcept
{
    return parse<int>(text);
}

long long textToInt64(std::u16string_view text) noexcept
{
    return parse<long long>(text);
}
} // namespace qo
