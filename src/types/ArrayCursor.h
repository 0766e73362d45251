#pragma once

#include <compare>
#include <cstddef>
#include <iterator>
#include <type_traits>

namespace qo
{
/// A random-access iterator over a ChunkedStore. It remembers the run of contiguous elements that
/// it stands in, so that a step is the increment of a pointer and one comparison. Valid until the
/// store's next change.
template <class Store, class Value>
class ArrayCursor
{
public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = std::remove_const_t<Value>;
    using difference_type = int;
    using pointer = Value*;
    using reference = Value&;

    ArrayCursor() noexcept = default;
    ArrayCursor(Store* store, int index) noexcept : m_store(store) { seek(index); }

    Value& operator*() const noexcept { return *m_at; }
    Value* operator->() const noexcept { return m_at; }
    Value& operator[](int by) const noexcept { return *(*this + by); }

    ArrayCursor& operator++() noexcept
    {
        if (++m_at == m_run.end)
        {
            m_run = m_store->runBehind(m_run);
            m_at = m_run.begin;
        }
        return *this;
    }
    ArrayCursor& operator--() noexcept
    {
        if (m_at == m_run.begin)
            seek(index() - 1);
        else
            --m_at;
        return *this;
    }
    ArrayCursor operator++(int) noexcept
    {
        ArrayCursor before = *this;
        ++*this;
        return before;
    }
    ArrayCursor operator--(int) noexcept
    {
        ArrayCursor before = *this;
        --*this;
        return before;
    }
    ArrayCursor& operator+=(int by) noexcept
    {
        const std::ptrdiff_t inRun = m_at - m_run.begin + by;
        if (inRun >= 0 && inRun < m_run.end - m_run.begin)
            m_at = m_run.begin + inRun;
        else
            seek(index() + by);
        return *this;
    }
    ArrayCursor& operator-=(int by) noexcept { return *this += -by; }
    ArrayCursor operator+(int by) const noexcept { return ArrayCursor(*this) += by; }
    friend ArrayCursor operator+(int by, const ArrayCursor& cursor) noexcept { return cursor + by; }
    ArrayCursor operator-(int by) const noexcept { return ArrayCursor(*this) -= by; }

    int operator-(const ArrayCursor& other) const noexcept { return index() - other.index(); }
    bool operator==(const ArrayCursor& other) const noexcept { return m_at == other.m_at; }
    auto operator<=>(const ArrayCursor& other) const noexcept { return index() <=> other.index(); }

private:
    using Run = typename std::remove_const_t<Store>::Run;

    int index() const noexcept
    {
        return static_cast<int>(m_run.firstIndex) + static_cast<int>(m_at - m_run.begin);
    }
    /// Finds the run of that index; an index at or beyond the end gives the end position.
    void seek(int index) noexcept
    {
        const auto wanted = static_cast<std::size_t>(index);
        m_run =
            wanted < m_store->size() ? m_store->runOf(wanted) : Run{nullptr, nullptr, wanted, 0};
        m_at = m_run.begin ? m_run.begin + (wanted - m_run.firstIndex) : nullptr;
    }

    Store* m_store = nullptr;
    Value* m_at = nullptr; ///< null at the end
    Run m_run;
};
} // namespace qo
