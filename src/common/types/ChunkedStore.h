#pragma once

#include "common/types/ChunkRow.h"

#include <cassert>

namespace qo
{
/// A sequence with random access and cheap insertion anywhere. One small element stands in the
/// store itself. More, up to one chunk (about 4 KiB), are a flat block that doubles as it grows;
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

    ChunkedStore() noexcept : m_flat(nullptr) {}
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
    ChunkedStore(ChunkedStore&& other) noexcept : ChunkedStore() { take(other); }
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
            std::unique_ptr<ChunkRow<T>>{m_row};
        else if (isNear())
            std::destroy_n(begin(), m_size);
        else
            flat().release();
    }

    void swap(ChunkedStore& other) noexcept
    {
        ChunkedStore held;
        held.take(*this);
        take(other);
        other.take(held);
    }

    std::size_t size() const noexcept { return m_size; }

    T& at(std::size_t index) noexcept { return *locate(index); }
    const T& at(std::size_t index) const noexcept { return *locate(index); }

    /// The store is empty before the first element ends.
    void clear() noexcept { ChunkedStore old(std::move(*this)); }

    /// Strong guarantee, as with insert().
    void append(T value)
    {
        if (!isRow() && m_size == capacity())
            grow(largerThan(m_size));
        if (isRow())
            m_row->append(std::move(value));
        else
            new (begin() + m_size) T(std::move(value));
        ++m_size;
    }

    /// Strong guarantee: a failed allocation leaves the sequence as it was.
    void insert(std::size_t index, T value)
    {
        assert(index <= size());
        if (!isRow() && m_size == capacity())
            grow(largerThan(m_size));
        if (isRow())
            m_row->insert(index, std::move(value));
        else
            flat().insert(index, std::move(value));
        ++m_size;
    }

    void erase(std::size_t index) noexcept
    {
        assert(index < size());
        --m_size;
        if (isRow())
        {
            m_row->erase(index);
            return leaveRow();
        }
        Block block = flat();
        ++block.count;
        [[maybe_unused]] const T taken = block.take(index);
    }

    void erase(std::size_t index, std::size_t count) noexcept
    {
        assert(index + count <= size());
        while (count > 0 && isRow())
        {
            const std::size_t here = m_row->erase(index, count);
            count -= here;
            m_size -= static_cast<std::uint32_t>(here);
            leaveRow();
        }
        if (count == 0)
            return;
        flat().erase(index, count);
        m_size -= static_cast<std::uint32_t>(count);
    }

    /// Makes room for that many elements in all, if one flat block can hold them.
    void reserve(std::size_t wanted)
    {
        if (!isRow() && wanted > capacity() && capacity() < chunkCapacity)
            grow(std::min(chunkCapacity, std::max<std::size_t>(wanted, capacity() * 2)));
    }

    /// Gives back memory that no element uses.
    void trim()
    {
        ChunkedStore packed;
        packed.reserve(size());
        for (std::size_t c = 0; c < chunkCount(); ++c)
        {
            const Block chunk = chunkAt(c);
            for (std::size_t i = 0; i < chunk.count; ++i)
                packed.append(std::move(chunk.data[i]));
        }
        swap(packed);
    }

    /// The neighbours among which the element of that index stands.
    Run runOf(std::size_t index) const noexcept
    {
        if (!isRow())
            return {begin(), begin() + m_size, 0, 0};
        std::size_t offset = index;
        const std::size_t c = m_row->find(offset);
        const Block& chunk = m_row->chunk(c);
        return {chunk.data, chunk.data + chunk.count, index - offset, c};
    }
    /// Those behind them; all null behind the last.
    Run runBehind(const Run& run) const noexcept
    {
        const std::size_t c = run.chunk + 1;
        const std::size_t index = run.firstIndex + static_cast<std::size_t>(run.end - run.begin);
        if (!isRow() || c >= m_row->count())
            return {nullptr, nullptr, index, c};
        // Chunks lie anywhere in memory, out of the processor's guess: it is told of the one after
        // this in time.
        if (c + 1 < m_row->count())
        {
            for (std::size_t line = 0; line < prefetched; line += cacheLine)
                __builtin_prefetch(reinterpret_cast<const char*>(m_row->chunk(c + 1).data) + line);
        }
        const Block& chunk = m_row->chunk(c);
        return {chunk.data, chunk.data + chunk.count, index, c};
    }

private:
    using Block = RawBlock<T>;
    static constexpr std::size_t cacheLine = 64;
    static constexpr std::size_t prefetched = 8 * cacheLine;
    /// Very many lists hold one handle for good, and it costs no memory beside the list.
    static constexpr std::size_t nearCapacity =
        sizeof(T) <= 2 * sizeof(void*) && alignof(T) <= alignof(void*) ? 1 : 0;
    // What m_capacity says of the two forms that are no flat block.
    static constexpr std::uint32_t nearMark = 0;
    static constexpr std::uint32_t rowMark = UINT32_MAX;

    bool isNear() const noexcept { return m_capacity == nearMark; }
    bool isRow() const noexcept { return m_capacity == rowMark; }
    T* near() const noexcept { return reinterpret_cast<T*>(const_cast<std::byte*>(m_near)); }
    /// Of the near and the flat form, as the next two.
    std::size_t capacity() const noexcept { return isNear() ? nearCapacity : m_capacity; }
    T* begin() const noexcept { return nearCapacity > 0 && isNear() ? near() : m_flat; }
    Block flat() const noexcept { return {begin(), m_size, m_capacity}; }

    std::size_t chunkCount() const noexcept { return isRow() ? m_row->count() : 1; }
    Block chunkAt(std::size_t c) const noexcept { return isRow() ? m_row->chunk(c) : flat(); }

    T* locate(std::size_t index) const noexcept
    {
        assert(index < size());
        return isRow() ? m_row->locate(index) : begin() + index;
    }

    static std::size_t largerThan(std::size_t size) noexcept
    {
        constexpr std::size_t second = 4;
        if (size == 0)
            return 1;
        return size >= chunkCapacity ? rowMark
                                     : std::min(chunkCapacity, std::max(second, size * 2));
    }

    /// Into a larger flat block, or into a row. Strong guarantee.
    void grow(std::size_t newCapacity)
    {
        if (newCapacity == rowMark)
        {
            m_row = std::make_unique<ChunkRow<T>>(flat(), chunkCapacity).release();
            m_capacity = rowMark;
            return;
        }
        Block larger = Block::make(newCapacity);
        Block old = flat();
        old.moveTail(0, larger);
        if (!isNear())
            old.release();
        m_flat = larger.data;
        m_capacity = larger.capacity;
    }

    /// A row of one chunk becomes a flat block.
    void leaveRow() noexcept
    {
        if (!isRow() || m_row->count() > 1)
            return;
        const std::unique_ptr<ChunkRow<T>> row(m_row);
        const Block only = row->takeOnly();
        m_flat = only.data;
        m_capacity = only.capacity;
    }

    /// Must be empty itself.
    void take(ChunkedStore& other) noexcept
    {
        m_size = std::exchange(other.m_size, 0);
        m_capacity = std::exchange(other.m_capacity, nearMark);
        if (isRow())
            m_row = other.m_row;
        else if (!isNear())
            m_flat = other.m_flat;
        else if constexpr (nearCapacity > 0)
        {
            if (m_size > 0)
                new (near()) T(std::move(*other.near()));
            std::destroy_n(other.near(), m_size);
        }
    }

    union
    {
        T* m_flat;
        ChunkRow<T>* m_row;
        alignas(void*) std::byte m_near[2 * sizeof(void*)];
    };
    std::uint32_t m_size = 0;
    std::uint32_t m_capacity = nearMark;
};
} // namespace qo
