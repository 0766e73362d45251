#pragma once

#include "types/Export.h"
#include "types/Forward.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace qo
{
/// One argument of a format with its type. Texts are borrowed and must live until formatTo()
/// returns.
class QO_API FormatArg
{
public:
    enum class Kind : std::uint8_t
    {
        none,
        signedInt,
        unsignedInt,
        real,
        character,
        text,
        narrowText,
        path,
        pointer
    };

    FormatArg() noexcept = default;
    template <class T, std::enable_if_t<std::is_integral_v<T>, int> = 0>
    explicit FormatArg(T value) noexcept
        : m_kind(std::is_signed_v<T> ? Kind::signedInt : Kind::unsignedInt), m_size(sizeof(T))
    {
        m_value.integer = static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
    }
    template <class T, std::enable_if_t<std::is_enum_v<T>, int> = 0>
    explicit FormatArg(T value) noexcept : FormatArg(static_cast<std::underlying_type_t<T>>(value))
    {
    }
    explicit FormatArg(char16_t value) noexcept : m_kind(Kind::character), m_size(2)
    {
        m_value.integer = value;
    }
    explicit FormatArg(double value) noexcept : m_kind(Kind::real) { m_value.real = value; }
    explicit FormatArg(const CString& text) noexcept;
    explicit FormatArg(const FilePath& path) noexcept : m_kind(Kind::path)
    {
        m_value.pointer = &path;
    }
    /// A null text prints as "(null)".
    explicit FormatArg(const char16_t* text) noexcept : m_kind(Kind::text)
    {
        m_value.pointer = text;
    }
    /// UTF-8, for texts of third-party libraries.
    explicit FormatArg(const char* text) noexcept : m_kind(Kind::narrowText)
    {
        m_value.pointer = text;
    }
    explicit FormatArg(const void* pointer) noexcept : m_kind(Kind::pointer)
    {
        m_value.pointer = pointer;
    }

    Kind kind() const noexcept { return m_kind; }
    bool isInteger() const noexcept;
    bool isNegative() const noexcept;
    /// The value as an unsigned number of its own width: -1 as an int is 0xFFFFFFFF.
    std::uint64_t unsignedValue() const noexcept;
    std::int64_t signedValue() const noexcept { return static_cast<std::int64_t>(m_value.integer); }
    double real() const noexcept { return m_value.real; }
    const void* pointer() const noexcept { return m_value.pointer; }

private:
    Kind m_kind = Kind::none;
    std::uint8_t m_size = 0;
    union
    {
        std::uint64_t integer;
        double real;
        const void* pointer;
    } m_value{};
};

/// Appends the format to the text, with each directive filled from the arguments in order. Known
/// are %s %c %d %i %u %x %X %p %f %% with the flags "-", "0", "+", blank and "#", a width, a
/// precision, and the size words h, l, ll, I64 and I32. These are skipped, since an argument knows
/// its own width. %f prints a point whatever the locale. An unknown directive prints itself and
/// takes no argument; so does one whose argument is missing. One with an argument of the wrong kind
/// prints itself and skips the argument.
///
///   formatTo(out, u"%d files, %5.1f MB, %s", {3, 2.5, u"done"})
///     appends "3 files,   2.5 MB, done".
QO_API void
formatTo(CString& out, const char16_t* format, const FormatArg* args, std::size_t count);
} // namespace qo
