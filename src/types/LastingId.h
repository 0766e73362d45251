#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

namespace qo
{
/// The lasting id of a file in one word. There is one for each file of a collection, and nearly all
/// are a time to the millisecond with a counter, as makeVelmoraId() gives them; these are kept as a
/// number, without an allocation. Every other text is kept as it is.
///
///   "20240131_235959_123"      a number
///   "20240131_235959_123_1"    a number
///   "20240131_235959_123_01"   a text: the number would be that of the line above
///
/// Whatever was given, text() is that text again.
class QO_API LastingId
{
public:
    LastingId() noexcept = default;
    LastingId(const CString& text) : LastingId(text.view()) {}
    LastingId(const char16_t* text) : LastingId(CString(text)) {}
    explicit LastingId(std::u16string_view text);
    LastingId(const LastingId& other);
    LastingId(LastingId&& other) noexcept : m_bits(std::exchange(other.m_bits, 0)) {}
    LastingId& operator=(LastingId other) noexcept
    {
        std::swap(m_bits, other.m_bits);
        return *this;
    }
    ~LastingId()
    {
        if (other())
            end();
    }

    bool IsEmpty() const noexcept { return m_bits == 0; }
    /// Put together anew each time.
    CString text() const;
    operator CString() const { return text(); }

    friend bool operator==(const LastingId& a, const LastingId& b) noexcept
    {
        return a.m_bits == b.m_bits || (a.other() && b.other() && *a.other() == *b.other());
    }
    friend bool operator==(const LastingId& a, const CString& b) { return a == LastingId(b); }
    friend bool operator==(const LastingId& a, const char16_t* b) { return a == LastingId(b); }

private:
    friend std::hash<LastingId>;

    /// The text that is no number; null if there is none.
    const CString* other() const noexcept
    {
        return m_bits & 1U ? nullptr : reinterpret_cast<const CString*>(m_bits);
    }
    void end() noexcept;

    /// Twice the number and one, the address of an own CString, or 0 for the empty text.
    std::uint64_t m_bits = 0;
};
} // namespace qo

template <>
struct std::hash<qo::LastingId>
{
    std::size_t operator()(const qo::LastingId& id) const noexcept
    {
        const CString* const other = id.other();
        return other ? std::hash<CString>()(*other) : std::hash<std::uint64_t>()(id.m_bits);
    }
};
