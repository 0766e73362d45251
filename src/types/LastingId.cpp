#include "types/LastingId.h"

#include <array>
#include <optional>

namespace qo
{
namespace
{
/// A part of an id that is a number: so many digits, a number below the limit, and what follows.
struct Part
{
    std::size_t digits;
    std::uint64_t limit;
    char16_t follows; ///< 0 for nothing
};

/// Year, month, day, hour, minute, second, millisecond. As digits of one number they leave room for
/// a counter below 25000 in 63 bits.
constexpr std::array<Part, 7> parts = {{{4, 10000, 0},
                                        {2, 13, 0},
                                        {2, 32, u'_'},
                                        {2, 24, 0},
                                        {2, 60, 0},
                                        {2, 61, u'_'},
                                        {3, 1000, 0}}};
constexpr std::uint64_t counterLimit = 25000;
constexpr std::uint64_t base = 10;

/// A number of one or more digits below the limit.
std::optional<std::uint64_t> numberIn(std::u16string_view digits, std::uint64_t limit)
{
    std::uint64_t number = 0;
    for (const char16_t c : digits)
    {
        if (c < u'0' || c > u'9')
            return {};
        number = number * base + (c - u'0');
        if (number >= limit)
            return {};
    }
    return number;
}

/// The number for a text, of which textOf() makes exactly that text again.
std::optional<std::uint64_t> numberOf(std::u16string_view text)
{
    std::uint64_t number = 0;
    for (const Part& part : parts)
    {
        if (text.size() < part.digits + (part.follows ? 1 : 0))
            return {};
        const auto value = numberIn(text.substr(0, part.digits), part.limit);
        text.remove_prefix(part.digits);
        if (!value || (part.follows && text.front() != part.follows))
            return {};
        text.remove_prefix(part.follows ? 1 : 0);
        number = number * part.limit + *value;
    }
    number *= counterLimit;
    if (text.empty())
        return number;
    if (text.size() < 2 || text[0] != u'_' || text[1] == u'0')
        return {};
    const auto counter = numberIn(text.substr(1), counterLimit);
    return counter ? std::optional(number + *counter) : std::nullopt;
}

CString textOf(std::uint64_t number)
{
    constexpr std::size_t longest = 25; // "20240131_235959_123_24999"
    std::array<char16_t, longest> text{};
    std::size_t at = text.size();
    const auto write = [&](std::uint64_t value, std::size_t digits)
    {
        for (; digits > 0 || value > 0; value /= base, digits -= digits > 0 ? 1 : 0)
            text[--at] = static_cast<char16_t>(u'0' + value % base);
    };
    if (const std::uint64_t counter = number % counterLimit; counter > 0)
    {
        write(counter, 0);
        text[--at] = u'_';
    }
    number /= counterLimit;
    for (std::size_t part = parts.size(); part-- > 0; number /= parts[part].limit)
    {
        if (parts[part].follows)
            text[--at] = parts[part].follows;
        write(number % parts[part].limit, parts[part].digits);
    }
    return CString(std::u16string_view(text.data() + at, text.size() - at));
}
} // namespace

LastingId::LastingId(std::u16string_view text)
{
    if (const auto number = numberOf(text))
        m_bits = *number * 2 + 1;
    else if (!text.empty())
        m_bits = reinterpret_cast<std::uint64_t>(new CString(text));
}

LastingId::LastingId(const LastingId& other) : m_bits(other.m_bits)
{
    if (const CString* const text = other.other())
        m_bits = reinterpret_cast<std::uint64_t>(new CString(*text));
}

void LastingId::end() noexcept
{
    delete other();
}

CString LastingId::text() const
{
    if (m_bits & 1U)
        return textOf(m_bits / 2);
    return other() ? *other() : CString();
}
} // namespace qo
