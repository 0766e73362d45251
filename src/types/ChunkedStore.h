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
/// A sequence with random access and cheap insertion anywhere, in one of three forms by its size:
///
///   near   0 or 1 element   in the store itself (elements of up to two pointers)
///   flat   up to a chunk    one block of 4 KiB at most, which doubles as it grows
///   row    more             a ChunkRow of such blocks
///
/// A million handles (16 bytes) are a row of 4,000 to 8,000 chunks. Inserting in the middle takes
/// 13 steps to find the chunk and shifts 256 handles at most, in a flat array half a million.
///
/// Any change moves elements, and so does moving the store: references and iterators become
/// invalid. Several threads may read at once; a writer must be alone.
template <class T>
class ChunkedStore
{
public:
    static constexpr std::size_t chunkCapacity = sizeof(T) >= 256 ? 16 : 4096 / sizeof(T);

    /// Elements that are contiguous in memory, and the index of the first.
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

    /// Elements are destroyed after the store is empty, so their destructors may use it.
    void clear() noexcept { ChunkedStore old(std::move(*this)); }

    /// If it throws, nothing has changed.
    void append(T value)
    {
        growIfFull();
        if (isRow())
            m_far.row->append(std::move(value));
        else
            new (begin() + size()) T(std::move(value));
        m_sizeAndNear += sizeUnit;
    }

    /// If it throws, nothing has changed.
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

    /// Removes the element before it is destroyed, so its destructor may use the sequence.
    void erase(std::size_t index) noexcept { [[maybe_unused]] const T taken = take(index); }

    /// The same for several; the last one goes first.
    void erase(std::size_t index, std::size_t count) noexcept
    {
        assert(index + count <= size());
        while (count > 0)
            erase(index + --count);
    }

    /// Makes room for that many elements in total, as far as one flat block can hold them.
    void reserve(std::size_t wanted)
    {
        if (!isRow() && wanted > capacity() && capacity() < chunkCapacity)
            grow(std::min(chunkCapacity, std::max<std::size_t>(wanted, capacity() * 2)));
    }

    /// Releases memory that no element uses. If it throws, nothing has changed.
    void trim()
    {
        ChunkedStore packed(*this);
        swap(packed);
    }

    /// A place for what only a long sequence needs, such as an index; null if it is not a row. It
    /// moves with the elements, but is not copied. Whoever changes the sequence must update it.
    std::unique_ptr<RowNote>* note() const noexcept { return isRow() ? &m_far.row->note : nullptr; }

    /// The contiguous elements among which the element of that index stands.
    Run runOf(std::size_t index) const noexcept
    {
        if (!isRow())
            return {begin(), begin() + size(), 0, 0};
        std::size_t offset = index;
        const std::size_t c = m_far.row->find(offset);
        const Block& chunk = m_far.row->chunk(c);
        return {chunk.data, chunk.data + chunk.count, index - offset, c};
    }
    /// The contiguous elements that follow; with null pointers at the end.
    Run runBehind(const Run& run) const noexcept
    {
        const std::size_t c = run.chunk + 1;
        const std::size_t index = run.firstIndex + static_cast<std::size_t>(run.end - run.begin);
        if (!isRow() || c >= m_far.row->count())
            return {nullptr, nullptr, index, c};
        // Chunks are anywhere in memory, so the processor cannot predict the next one: it is asked
        // to load the one after this in time.
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
    /// Very many lists hold one handle for ever; such a list needs no memory of its own.
    static constexpr std::size_t nearCapacity =
        sizeof(T) <= 2 * sizeof(void*) && alignof(T) <= alignof(void*) ? 1 : 0;
    static constexpr std::uint32_t rowMark = UINT32_MAX; ///< as m_far.capacity: row is in use
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
    /// For the near and the flat form only, as the next two.
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

    /// Moves into a larger flat block. If it throws, nothing has changed; so too with enterRow().
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

    /// Turns a row of one chunk into a flat block.
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

    /// Takes the elements of another store; this one must be empty.
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

    static constexpr std::uint32_t emptyMark = nearCapacity; ///< no element and no block

    union
    {
        Far m_far;
        alignas(void*) std::byte m_near[2 * sizeof(void*)];
    };
    /// Twice the number of elements, plus 1 in the near form. It is the last member, so that a
    /// class can place members of its own in the padding after it.
    std::uint32_t m_sizeAndNear = emptyMark;
};
} // namespace qo
