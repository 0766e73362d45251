#pragma once

#include "types/ArrayCursor.h"
#include "types/ChunkedStore.h"

#include <memory>

/// The growable array that all lists of the library are built on: value semantics, int indexes,
/// insertion and removal anywhere in O(log n) (see qo::ChunkedStore). An index outside of the array
/// is a programming error and is not checked. References and iterators are valid until the array's
/// next change. Several threads may read at once; a writer must be alone. A failed allocation
/// throws std::bad_alloc and leaves the array as it was, but for the calls that add several
/// elements, which keep those already added.
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
    /// Sets an element; an index beyond the end first adds default elements up to there.
    void SetAtGrow(int index, ARG value)
    {
        T copy(value);
        if (index == GetSize())
            return m_store.append(std::move(copy));
        if (index > GetSize())
            SetSize(index + 1);
        ElementAt(index) = std::move(copy);
    }
    /// Removes elements at the end, or adds default elements.
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
    /// Appends all elements of another array; returns the index of the first of them.
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

    /// Inserts copies of the value before that index; beyond the end default elements fill the gap.
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
    /// Releases memory that no element uses.
    void FreeExtra() { m_store.trim(); }

    iterator begin() noexcept { return {&m_store, 0}; }
    iterator end() noexcept { return {&m_store, GetSize()}; }
    const_iterator begin() const noexcept { return {&m_store, 0}; }
    const_iterator end() const noexcept { return {&m_store, GetSize()}; }

protected:
    /// See qo::ChunkedStore::note(). All derived classes for one element type must keep the same
    /// kind of note, since one array may be moved into another.
    std::unique_ptr<qo::RowNote>* note() const noexcept { return m_store.note(); }

private:
    [[no_unique_address]] qo::ChunkedStore<T> m_store;
};
