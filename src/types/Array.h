#pragma once

#include "types/ArrayCursor.h"
#include "types/ChunkedStore.h"

#include <memory>

/// The growable array below all lists of the house: value semantics, int indexes, insertion and
/// removal anywhere in O(log n) (see qo::ChunkedStore). An index outside the array is a fault of
/// the caller. A reference into the array ends with its next change.
template <class T, class ARG = const T&>
class CArray
{
public:
    using iterator = qo::ArrayCursor<qo::ChunkedStore<T>, T>;
    using const_iterator = qo::ArrayCursor<const qo::ChunkedStore<T>, const T>;

    CArray() noexcept = default;
    CArray(const CArray&) = default;
    CArray(CArray&&) noexcept = default;
    CArray& operator=(const CArray&) = default;
    CArray& operator=(CArray&&) noexcept = default;
    virtual ~CArray() = default;

    int GetSize() const noexcept { return static_cast<int>(m_store.size()); }
    int GetCount() const noexcept { return GetSize(); }
    int GetUpperBound() const noexcept { return GetSize() - 1; }
    bool IsEmpty() const noexcept { return GetSize() == 0; }

    T& ElementAt(int index) noexcept { return m_store.at(static_cast<std::size_t>(index)); }
    const T& ElementAt(int index) const noexcept
    {
        return m_store.at(static_cast<std::size_t>(index));
    }
    const T& GetAt(int index) const noexcept { return ElementAt(index); }
    T& operator[](int index) noexcept { return ElementAt(index); }
    const T& operator[](int index) const noexcept { return ElementAt(index); }

    void SetAt(int index, ARG value) { ElementAt(index) = value; }
    /// Grows with default elements up to the index when it lies behind the end.
    void SetAtGrow(int index, ARG value)
    {
        T copy(value);
        if (index == GetSize())
            return m_store.append(std::move(copy));
        if (index > GetSize())
            SetSize(index + 1);
        ElementAt(index) = std::move(copy);
    }
    /// Cuts off, or adds default elements.
    void SetSize(int size)
    {
        while (GetSize() < size)
            m_store.append(T());
        if (GetSize() > size)
            RemoveAt(size, GetSize() - size);
    }

    /// Returns the index of the new element.
    int Add(ARG value)
    {
        m_store.append(T(value));
        return GetUpperBound();
    }
    /// Returns the index of the first element that came in.
    int Append(const CArray& other)
    {
        const int first = GetSize();
        const int count = other.GetSize();
        m_store.reserve(m_store.size() + static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i)
            m_store.append(T(other[i]));
        return first;
    }
    void Copy(const CArray& other) { *this = other; }

    void InsertAt(int index, ARG value, int count = 1)
    {
        T copy(value);
        if (index > GetSize())
            SetSize(index);
        for (int i = 1; i < count; ++i)
            m_store.insert(static_cast<std::size_t>(index), copy);
        if (count > 0)
            m_store.insert(static_cast<std::size_t>(index), std::move(copy));
    }
    void RemoveAt(int index) { m_store.erase(static_cast<std::size_t>(index)); }
    void RemoveAt(int index, int count)
    {
        m_store.erase(static_cast<std::size_t>(index), static_cast<std::size_t>(count));
    }
    void RemoveAll() { m_store.clear(); }
    /// Gives back memory that no element uses.
    void FreeExtra() { m_store.trim(); }

    iterator begin() noexcept { return {&m_store, 0}; }
    iterator end() noexcept { return {&m_store, GetSize()}; }
    const_iterator begin() const noexcept { return {&m_store, 0}; }
    const_iterator end() const noexcept { return {&m_store, GetSize()}; }

protected:
    /// See qo::ChunkedStore::note(). All heirs for one type of element keep the same kind of note,
    /// as an array may be moved into another.
    std::unique_ptr<qo::RowNote>* note() const noexcept { return m_store.note(); }

private:
    [[no_unique_address]] qo::ChunkedStore<T> m_store;
};
