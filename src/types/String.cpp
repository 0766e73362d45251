#include "types/String.h"

#include "types/CharClass.h"

#include <cstring>
#include <limits>
#include <new>

// The buffer: a Header with reference count, length and capacity, and the text directly after it.
// m_text points to the text, header() steps back from it. All empty texts share s_empty, which is
// never counted. own() is called before every write: it copies the buffer unless this object is its
// only user and it is large enough.

namespace
{
/// Keeps the number of bytes and one growth by half within an int.
constexpr int maxLength = std::numeric_limits<int>::max() / 4;

std::u16string_view viewOf(const char16_t* text) noexcept
{
    return text ? std::u16string_view(text) : std::u16string_view();
}

int toIndex(std::size_t position) noexcept
{
    return position == std::u16string_view::npos ? -1 : static_cast<int>(position);
}
} // namespace

constinit CString::EmptyBlock CString::s_empty{{{1}, 0, 0}, {0, 0}};

char16_t* CString::allocate(int capacity)
{
    if (capacity < 0 || capacity > maxLength)
        throw std::bad_alloc();
    const std::size_t bytes =
        sizeof(Header) + (static_cast<std::size_t>(capacity) + 1) * sizeof(char16_t);
    void* block = ::operator new(bytes);
    auto* head = new (block) Header{{1}, 0, capacity};
    auto* text = reinterpret_cast<char16_t*>(reinterpret_cast<char*>(head) + sizeof(Header));
    text[0] = 0;
    return text;
}

void CString::destroy(char16_t* text) noexcept
{
    ::operator delete(static_cast<void*>(header(text)));
}

CString::CString(const char16_t* text) : m_text(emptyText())
{
    assign(viewOf(text));
}

CString::CString(const char16_t* text, int length) : m_text(emptyText())
{
    if (text && length > 0)
        assign({text, static_cast<std::size_t>(length)});
}

CString::CString(std::u16string_view text) : m_text(emptyText())
{
    assign(text);
}

CString::CString(char16_t c, int count) : m_text(emptyText())
{
    if (count <= 0)
        return;
    m_text = allocate(count);
    for (int i = 0; i < count; ++i)
        m_text[i] = c;
    setLength(count);
}

CString& CString::operator=(const CString& other) noexcept
{
    if (sharesBufferWith(other))
        return *this;
    retain(other.m_text);
    release(m_text);
    m_text = other.m_text;
    return *this;
}

CString& CString::operator=(CString&& other) noexcept
{
    if (this != &other)
    {
        release(m_text);
        m_text = other.m_text;
        other.m_text = emptyText();
    }
    return *this;
}

CString& CString::operator=(const char16_t* text)
{
    // The text may be a part of this buffer: copy first, then swap.
    CString fresh(text);
    return *this = std::move(fresh);
}

void CString::assign(std::u16string_view text)
{
    if (text.empty())
        return;
    if (text.size() > static_cast<std::size_t>(maxLength))
        throw std::bad_alloc();
    const int length = static_cast<int>(text.size());
    m_text = allocate(length);
    std::memcpy(m_text, text.data(), text.size() * sizeof(char16_t));
    setLength(length);
}

void CString::Empty() noexcept
{
    release(m_text);
    m_text = emptyText();
}

void CString::setLength(int length) noexcept
{
    header(m_text)->length = length;
    m_text[length] = 0;
}

void CString::own(int capacity)
{
    const int length = GetLength();
    if (capacity < length)
        capacity = length;
    if (m_text != emptyText() && header(m_text)->refs.load(std::memory_order_acquire) == 1 &&
        header(m_text)->capacity >= capacity)
        return;
    char16_t* fresh = allocate(capacity);
    std::memcpy(fresh, m_text, static_cast<std::size_t>(length) * sizeof(char16_t));
    release(m_text);
    m_text = fresh;
    setLength(length);
}

void CString::Preallocate(int length)
{
    if (length > 0)
        own(length);
}

void CString::SetAt(int index, char16_t c)
{
    own(GetLength());
    m_text[index] = c;
}

CString& CString::operator+=(const char16_t* text)
{
    return append(viewOf(text));
}

CString& CString::append(std::u16string_view text)
{
    if (text.empty())
        return *this;
    const int length = GetLength();
    if (text.size() > static_cast<std::size_t>(maxLength - length))
        throw std::bad_alloc();
    const int total = length + static_cast<int>(text.size());
    // A text that is a part of this buffer must outlive the buffer.
    CString keep;
    if (text.data() >= m_text && text.data() <= m_text + length)
        keep = *this;
    // An unshared buffer that is large enough is extended in place.
    const bool fits = m_text != emptyText() &&
                      header(m_text)->refs.load(std::memory_order_acquire) == 1 &&
                      header(m_text)->capacity >= total;
    if (!fits)
        // Grows by half, so that appending many times copies each character only a few times.
        own(length == 0 ? total : total + total / 2);
    std::memmove(m_text + length, text.data(), text.size() * sizeof(char16_t));
    setLength(total);
    return *this;
}

int CString::Compare(const char16_t* other) const noexcept
{
    return qo::compareExact(view(), viewOf(other));
}

int CString::Compare(const CString& other) const noexcept
{
    return qo::compareExact(view(), other.view());
}

int CString::CompareNoCase(const char16_t* other) const noexcept
{
    return qo::compareNoCase(view(), viewOf(other));
}

int CString::CompareNoCase(const CString& other) const noexcept
{
    return m_text == other.m_text ? 0 : qo::compareNoCase(view(), other.view());
}

CString CString::Mid(int first, int count) const
{
    const int length = GetLength();
    if (first < 0)
        first = 0;
    if (first >= length || count <= 0)
        return {};
    if (count > length - first)
        count = length - first;
    return count == length ? *this : CString(m_text + first, count);
}

CString CString::Right(int count) const
{
    const int length = GetLength();
    return count >= length ? *this : Mid(length - count, count);
}

int CString::Find(char16_t c, int start) const noexcept
{
    return toIndex(view().find(c, static_cast<std::size_t>(start < 0 ? 0 : start)));
}

int CString::Find(const char16_t* text, int start) const noexcept
{
    return toIndex(view().find(viewOf(text), static_cast<std::size_t>(start < 0 ? 0 : start)));
}

int CString::ReverseFind(char16_t c) const noexcept
{
    return toIndex(view().rfind(c));
}

int CString::FindOneOf(const char16_t* set) const noexcept
{
    return toIndex(view().find_first_of(viewOf(set)));
}

int CString::Replace(char16_t from, char16_t to)
{
    int hits = 0;
    for (int i = Find(from); i >= 0 && from != to; i = Find(from, i + 1))
    {
        SetAt(i, to);
        ++hits;
    }
    return hits;
}

int CString::Replace(const char16_t* from, const char16_t* to)
{
    const std::u16string_view what = viewOf(from);
    if (what.empty())
        return 0;
    const CString source = *this;
    const std::u16string_view all = source.view();
    const CString with(to);
    CString result;
    int hits = 0;
    std::size_t begin = 0;
    for (std::size_t at = all.find(what); at != std::u16string_view::npos;
         at = all.find(what, begin))
    {
        result.append(all.substr(begin, at - begin)).append(with.view());
        begin = at + what.size();
        ++hits;
    }
    if (hits)
        *this = std::move(result.append(all.substr(begin)));
    return hits;
}

int CString::Remove(char16_t c)
{
    const char16_t set[] = {c, 0};
    return Replace(set, u"");
}

int CString::Insert(int index, const char16_t* text)
{
    const int length = GetLength();
    index = index < 0 ? 0 : (index > length ? length : index);
    const std::u16string_view what = viewOf(text);
    if (!what.empty())
    {
        CString result;
        result.Preallocate(length + static_cast<int>(what.size()));
        result.append(view().substr(0, static_cast<std::size_t>(index)));
        result.append(what).append(view().substr(static_cast<std::size_t>(index)));
        *this = std::move(result);
    }
    return GetLength();
}

int CString::Delete(int index, int count)
{
    const int length = GetLength();
    if (index < 0)
        index = 0;
    if (index < length && count > 0)
    {
        if (count > length - index)
            count = length - index;
        own(length);
        std::memmove(m_text + index,
                     m_text + index + count,
                     static_cast<std::size_t>(length - index - count) * sizeof(char16_t));
        setLength(length - count);
    }
    return GetLength();
}

CString& CString::MakeLower()
{
    const int length = GetLength();
    for (int i = 0; i < length; ++i)
    {
        const char16_t lower = qo::toLower(m_text[i]);
        if (lower != m_text[i])
            SetAt(i, lower);
    }
    return *this;
}

CString& CString::Trim()
{
    return TrimRight().TrimLeft();
}

CString& CString::TrimLeft()
{
    int first = 0;
    while (first < GetLength() && qo::isSpace(m_text[first]))
        ++first;
    if (first > 0)
        *this = Mid(first);
    return *this;
}

CString& CString::TrimRight()
{
    int length = GetLength();
    while (length > 0 && qo::isSpace(m_text[length - 1]))
        --length;
    if (length < GetLength())
        *this = Left(length);
    return *this;
}

char16_t* CString::GetBuffer(int minLength)
{
    own(minLength < 1 ? 1 : minLength);
    return m_text;
}

void CString::ReleaseBuffer(int length)
{
    if (m_text == emptyText())
        return;
    const int capacity = header(m_text)->capacity;
    if (length < 0)
    {
        length = 0;
        while (length < capacity && m_text[length])
            ++length;
    }
    setLength(length > capacity ? capacity : length);
}

CString operator+(const CString& a, const CString& b)
{
    CString result;
    result.Preallocate(a.GetLength() + b.GetLength());
    return result.append(a.view()).append(b.view());
}

CString operator+(const CString& a, const char16_t* b)
{
    CString result;
    const std::u16string_view tail = viewOf(b);
    result.Preallocate(a.GetLength() + static_cast<int>(tail.size()));
    return result.append(a.view()).append(tail);
}

CString operator+(const char16_t* a, const CString& b)
{
    CString result;
    const std::u16string_view front = viewOf(a);
    result.Preallocate(b.GetLength() + static_cast<int>(front.size()));
    return result.append(front).append(b.view());
}

CString operator+(const CString& a, char16_t b)
{
    CString result;
    result.Preallocate(a.GetLength() + 1);
    return result.append(a.view()) += b;
}

CString operator+(char16_t a, const CString& b)
{
    return CString(a) + b;
}
