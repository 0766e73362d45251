#pragma once

#include "types/ChunkRow.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace qo
{
/// A sequence with random access and cheap insertion anywhere. One small element stands in the
/// store itself; more, up to one chunk (about 4 KiB), are a flat block that doubles as it grows;
/// beyond that it is a ChunkRow, so that insertion and removal at any place cost O(log n) plus a
/// shift within one chunk. Any change moves elements, moving the store does too: references and
/// iterators end there. Several threads may read at once; a writer must be alone.
template <class T>
class ChunkedStore
{
public:
    static constexpr std::size_t chunkCapacity = sizeof(T) >= 256 ? 16 : 4096 / sizeof(T);

    /// Neighbours in memory and the index of the first.
    struct Run
    {
        T* begin = nullptr;
        T* end = nullptr;
        std::size_t firstIndex = 0;
        std::size_t chunk = 0;
    };

    ChunkedStore() noexcept : m_far{} {}
    ChunkedStore(const ChunkedStore& other) : ChunkedStore()
    {
        reserve(other.size());
        for (std::size_t c = 0; c < other.chunkCount(); ++c)
        {
            const Block chunk = other.chunkAt(c);
            for (std::size_t i = 0; i < chunk.count; ++i)
                append(T(chunk.data[i]));
        }
    }
    ChunkedStore(ChunkedStore&& other) noexcept : ChunkedStore() { takeOver(other); }
    ChunkedStore& operator=(const ChunkedStore& other)
    {
        if (this != &other)
        {
            ChunkedStore copy(other);
            swap(copy);
        }
        return *this;
    }
    ChunkedStore& operator=(ChunkedStore&& other) noexcept
    {
        ChunkedStore taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~ChunkedStore()
    {
        if (isRow())
            std::unique_ptr<ChunkRow<T>>{m_far.row};
        else if (isNear())
            std::destroy_n(near(), size());
        else
            flat().release();
    }

    void swap(ChunkedStore& other) noexcept
    {
        ChunkedStore held;
        held.takeOver(*this);
        takeOver(other);
        other.takeOver(held);
    }

    std::size_t size() const noexcept { return m_sizeAndNear / sizeUnit; }

    T& at(std::size_t index) noexcept { return *locate(index); }
    const T& at(std::size_t index) const noexcept { return *locate(index); }

    /// The store is empty before the first element ends.
    void clear() noexcept { ChunkedStore old(std::move(*this)); }

    /// Strong guarantee, as with insert().
    void append(T value)
    {
        growIfFull();
        if (isRow())
            m_far.row->append(std::move(value));
        else
            new (begin() + size()) T(std::move(value));
        m_sizeAndNear += sizeUnit;
    }

    /// Strong guarantee: a failed allocation leaves the sequence as it was.
    void insert(std::size_t index, T value)
    {
        assert(index <= size());
        growIfFull();
        if (isRow())
            m_far.row->insert(index, std::move(value));
        else
            flat().insert(index, std::move(value));
        m_sizeAndNear += sizeUnit;
    }

    /// The element ends when the sequence is whole without it: what its end sets off may use the
    /// sequence.
    void erase(std::size_t index) noexcept { [[maybe_unused]] const T taken = take(index); }

    /// What the end of the elements sets off may look at the sequence.
    void erase(std::size_t index, std::size_t count) noexcept
    {
        assert(index + count <= size());
        while (count > 0)
            erase(index + --count);
    }

    /// Makes room for that many elements in all, if one flat block can hold them.
    void reserve(std::size_t wanted)
    {
        if (!isRow() && wanted > capacity() && capacity() < chunkCapacity)
            grow(std::min(chunkCapacity, std::max<std::size_t>(wanted, capacity() * 2)));
    }

    /// Gives back memory that no element uses. Strong guarantee.
    void trim()
    {
        ChunkedStore packed(*this);
        swap(packed);
    }

    /// A place for what is only worth knowing of a long sequence; null while one chunk holds it.
    /// The note moves with the elements, copies start without one. Whoever changes the sequence
    /// keeps it in step.
    std::unique_ptr<RowNote>* note() const noexcept { return isRow() ? &m_far.row->note : nullptr; }

    /// The neighbours among which the element of that index stands.
    Run runOf(std::size_t index) const noexcept
    {
        if (!isRow())
            return {begin(), begin() + size(), 0, 0};
        std::size_t offset = index;
        const std::size_t c = m_far.row->find(offset);
        const Block& chunk = m_far.row->chunk(c);
        return {chunk.data, chunk.data + chunk.count, index - offset, c};
    }
    /// Those behind them; all null behind the last.
    Run runBehind(const Run& run) const noexcept
    {
        const std::size_t c = run.chunk + 1;
        const std::size_t index = run.firstIndex + static_cast<std::size_t>(run.end - run.begin);
        if (!isRow() || c >= m_far.row->count())
            return {nullptr, nullptr, index, c};
        // Chunks lie anywhere in memory, out of the processor's guess: it is told of the one after
        // this in time.
        if (c + 1 < m_far.row->count())
        {
            for (std::size_t line = 0; line < prefetched; line += cacheLine)
                __builtin_prefetch(reinterpret_cast<const char*>(m_far.row->chunk(c + 1).data) +
                                   line);
        }
        const Block& chunk = m_far.row->chunk(c);
        return {chunk.data, chunk.data + chunk.count, index, c};
    }

private:
    using Block = RawBlock<T>;
    static constexpr std::size_t cacheLine = 64;
    static constexpr std::size_t prefetched = 8 * cacheLine;
    /// Very many lists hold one handle for good, and it costs no memory beside the list.
    static constexpr std::size_t nearCapacity =
        sizeof(T) <= 2 * sizeof(void*) && alignof(T) <= alignof(void*) ? 1 : 0;
    /// Says of a far capacity that it is a row's.
    static constexpr std::uint32_t rowMark = UINT32_MAX;
    static constexpr std::uint32_t sizeUnit = 2;

    struct Far
    {
        union
        {
            T* flat;
            ChunkRow<T>* row;
        };
        std::uint32_t capacity;
    };

    bool isNear() const noexcept { return nearCapacity > 0 && m_sizeAndNear % sizeUnit != 0; }
    bool isRow() const noexcept { return !isNear() && m_far.capacity == rowMark; }
    T* near() const noexcept { return reinterpret_cast<T*>(const_cast<std::byte*>(m_near)); }
    /// Of the near and the flat form, as the next two.
    std::size_t capacity() const noexcept { return isNear() ? nearCapacity : m_far.capacity; }
    T* begin() const noexcept { return isNear() ? near() : m_far.flat; }
    Block flat() const noexcept
    {
        return {
            begin(), static_cast<std::uint32_t>(size()), static_cast<std::uint32_t>(capacity())};
    }

    std::size_t chunkCount() const noexcept { return isRow() ? m_far.row->count() : 1; }
    Block chunkAt(std::size_t c) const noexcept { return isRow() ? m_far.row->chunk(c) : flat(); }

    T* locate(std::size_t index) const noexcept
    {
        assert(index < size());
        return isRow() ? m_far.row->locate(index) : begin() + index;
    }

    void growIfFull()
    {
        constexpr std::size_t second = 4;
        const std::size_t full = size();
        if (isRow() || full < capacity())
            return;
        if (full >= chunkCapacity)
            enterRow();
        else
            grow(full == 0 ? 1 : std::min(chunkCapacity, std::max(second, full * 2)));
    }

    /// Into a larger flat block. Strong guarantee, as with the next.
    void grow(std::size_t newCapacity)
    {
        Block larger = Block::make(newCapacity);
        Block old = flat();
        old.moveTail(0, larger);
        if (!isNear())
            old.release();
        setFlat(larger, size());
    }

    void enterRow()
    {
        m_far.row = std::make_unique<ChunkRow<T>>(flat(), chunkCapacity).release();
        m_far.capacity = rowMark;
    }

    T take(std::size_t index) noexcept
    {
        assert(index < size());
        if (!isRow())
        {
            Block block = flat();
            m_sizeAndNear -= sizeUnit;
            return block.take(index);
        }
        m_sizeAndNear -= sizeUnit;
        T taken = m_far.row->take(index);
        leaveRow();
        return taken;
    }

    /// A row of one chunk becomes a flat block.
    void leaveRow() noexcept
    {
        if (m_far.row->count() > 1)
            return;
        const std::unique_ptr<ChunkRow<T>> row(m_far.row);
        setFlat(row->takeOnly(), size());
    }

    void setFlat(const Block& block, std::size_t size) noexcept
    {
        m_far = Far{{block.data}, block.capacity};
        m_sizeAndNear = static_cast<std::uint32_t>(size) * sizeUnit;
    }

    /// Must be empty itself.
    void takeOver(ChunkedStore& other) noexcept
    {
        if (other.isNear())
        {
            if (other.size() > 0)
                new (m_near) T(std::move(*other.near()));
            std::destroy_n(other.near(), other.size());
        }
        else
            m_far = std::exchange(other.m_far, Far{});
        m_sizeAndNear = std::exchange(other.m_sizeAndNear, emptyMark);
    }

    /// Empty and in the form that needs no block.
    static constexpr std::uint32_t emptyMark = nearCapacity;

    union
    {
        Far m_far;
        alignas(void*) std::byte m_near[2 * sizeof(void*)];
    };
    /// In units of two; odd in the near form. The last member: what a class has behind a store can
    /// share its padding.
    std::uint32_t m_sizeAndNear = emptyMark;
};
} // namespace qo
