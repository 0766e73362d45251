#pragma once

#include "types/Export.h"
#include "types/Format.h"
#include "types/Relocate.h"

#include <atomic>
#include <compare>
#include <concepts>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

/// A UTF-16 text with value semantics: one pointer to a shared, reference-counted buffer that is
/// copied when one of its sharers writes. Copying costs one atomic increment; an empty text
/// allocates nothing. The text is zero-terminated and contains further zeros only if it was made
/// with a length. Indexes and lengths count UTF-16 units. One object must not be written by one
/// thread while another thread uses it; two objects that share a buffer are independent of each
/// other.
///
/// A failed allocation throws std::bad_alloc and leaves the text as it was.
class QO_API CString
{
public:
    CString() noexcept : m_text(emptyText()) {}
    CString(const CString& other) noexcept : m_text(other.m_text) { retain(m_text); }
    CString(CString&& other) noexcept : m_text(other.m_text) { other.m_text = emptyText(); }
    /// A null pointer gives the empty text.
    CString(const char16_t* text);
    CString(const char16_t* text, int length);
    explicit CString(std::u16string_view text);
    explicit CString(char16_t c, int count = 1);
    ~CString() { release(m_text); }

    CString& operator=(const CString& other) noexcept;
    CString& operator=(CString&& other) noexcept;
    CString& operator=(const char16_t* text);

    int GetLength() const noexcept { return header(m_text)->length; }
    bool IsEmpty() const noexcept { return GetLength() == 0; }
    void Empty() noexcept;

    /// Never null; valid until this object changes.
    const char16_t* GetString() const noexcept { return m_text; }
    operator const char16_t*() const noexcept { return m_text; }
    std::u16string_view view() const noexcept
    {
        return {m_text, static_cast<std::size_t>(GetLength())};
    }

    /// The index must be from 0 to the length; at the length it reads the closing zero.
    char16_t GetAt(int index) const noexcept { return m_text[index]; }
    char16_t operator[](int index) const noexcept { return m_text[index]; }
    void SetAt(int index, char16_t c);

    CString& operator+=(const CString& text) { return append(text.view()); }
    CString& operator+=(const char16_t* text);
    CString& operator+=(char16_t c) { return append({&c, 1}); }
    CString& append(std::u16string_view text);

    /// Makes room for that many units, so that appending up to there does not allocate.
    void Preallocate(int length);

    int Compare(const char16_t* other) const noexcept;
    int Compare(const CString& other) const noexcept;
    /// The comparison of names without regard to case, see qo::compareNoCase.
    int CompareNoCase(const char16_t* other) const noexcept;
    int CompareNoCase(const CString& other) const noexcept;

    /// Parts outside of the text are cut off; a negative start counts as 0.
    CString Mid(int first) const { return Mid(first, GetLength()); }
    CString Mid(int first, int count) const;
    CString Left(int count) const { return Mid(0, count); }
    CString Right(int count) const;

    /// The index of the first match at start or after it, or -1.
    int Find(char16_t c, int start = 0) const noexcept;
    int Find(const char16_t* text, int start = 0) const noexcept;
    int ReverseFind(char16_t c) const noexcept;
    int FindOneOf(const char16_t* set) const noexcept;

    /// Each returns how many matches it replaced or removed.
    int Replace(char16_t from, char16_t to);
    int Replace(const char16_t* from, const char16_t* to);
    int Remove(char16_t c);
    /// Each returns the new length. An index beyond the end is the end.
    int Insert(int index, const char16_t* text);
    int Delete(int index, int count = 1);

    CString& MakeLower();
    CString& Trim();
    CString& TrimLeft();
    CString& TrimRight();

    /// Replaces the text by the format filled with the arguments (see qo::formatTo); the format is
    /// never a user's text. This text itself may be one of the arguments.
    template <class... Args>
    void Format(const char16_t* format, const Args&... args)
    {
        const qo::FormatArg list[] = {qo::FormatArg(args)..., qo::FormatArg()};
        CString result;
        qo::formatTo(result, format, list, sizeof...(Args));
        *this = std::move(result);
    }
    template <class... Args>
    void AppendFormat(const char16_t* format, const Args&... args)
    {
        CString tail;
        tail.Format(format, args...);
        append(tail.view());
    }

    /// A buffer for at least that many units, which the caller fills. ReleaseBuffer() must follow,
    /// with the length, or -1 to search for the closing zero.
    char16_t* GetBuffer(int minLength);
    void ReleaseBuffer(int length = -1);

    bool sharesBufferWith(const CString& other) const noexcept { return m_text == other.m_text; }

private:
    struct Header
    {
        std::atomic<std::int32_t> refs;
        std::int32_t length;
        std::int32_t capacity;
    };
    struct EmptyBlock
    {
        Header header;
        char16_t text[2];
    };
    static EmptyBlock s_empty;

    static char16_t* emptyText() noexcept { return s_empty.text; }
    static Header* header(char16_t* text) noexcept
    {
        return reinterpret_cast<Header*>(reinterpret_cast<char*>(text) - sizeof(Header));
    }
    static char16_t* allocate(int capacity);
    static void destroy(char16_t* text) noexcept;
    static void retain(char16_t* text) noexcept
    {
        if (text != emptyText())
            header(text)->refs.fetch_add(1, std::memory_order_relaxed);
    }
    static void release(char16_t* text) noexcept
    {
        if (text != emptyText() && header(text)->refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
            destroy(text);
    }
    /// Makes the buffer this object's own, with room for that many units, and keeps the text.
    void own(int capacity);
    void setLength(int length) noexcept;
    void assign(std::u16string_view text);

    char16_t* m_text;
};

QO_API CString operator+(const CString& a, const CString& b);
QO_API CString operator+(const CString& a, const char16_t* b);
QO_API CString operator+(const char16_t* a, const CString& b);
QO_API CString operator+(const CString& a, char16_t b);
QO_API CString operator+(char16_t a, const CString& b);
/// Would move the pointer to the characters of the text.
template <std::integral Number>
CString operator+(Number a, const CString& b) = delete;

inline bool operator==(const CString& a, const CString& b) noexcept
{
    return a.sharesBufferWith(b) || a.view() == b.view();
}
inline bool operator==(const CString& a, const char16_t* b) noexcept
{
    return a.Compare(b) == 0;
}
inline bool operator==(const char16_t* a, const CString& b) noexcept
{
    return b.Compare(a) == 0;
}
inline bool operator!=(const CString& a, const CString& b) noexcept
{
    return !(a == b);
}
inline bool operator!=(const CString& a, const char16_t* b) noexcept
{
    return !(a == b);
}
inline bool operator!=(const char16_t* a, const CString& b) noexcept
{
    return !(b == a);
}
/// Compares by units. With this operator none of < > <= >= falls back to comparing addresses.
inline std::strong_ordering operator<=>(const CString& a, const CString& b) noexcept
{
    return a.view() <=> b.view();
}

template <>
struct qo::IsRelocatable<CString> : std::true_type
{
};

template <>
struct std::hash<CString>
{
    std::size_t operator()(const CString& text) const noexcept
    {
        return std::hash<std::u16string_view>()(text.view());
    }
};
