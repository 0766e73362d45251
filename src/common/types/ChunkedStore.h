#pragma once

#include "common/types/PrefixSums.h"
#include "common/types/RawBlock.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <vector>

namespace qo
{
/// A sequence with random access and cheap insertion anywhere. Up to one chunk (about 16 KiB) it is
/// a flat block that doubles as it grows; beyond that it is a row of such chunks with a Fenwick
/// tree over their sizes, so that insertion and removal at any place cost O(log n) plus a shift
/// within one chunk. Reading by index remembers the last chunk, so that neighbours are found
/// without a search. Any change moves elements: references and iterators end there. Several
/// threads may read at once; a writer must be alone.
template <class T>
class ChunkedStore
{
public:
    static constexpr std::size_t chunkCapacity = sizeof(T) >= 1024 ? 16 : 16384 / sizeof(T);

    /// Neighbours in memory and the index of the first.
    struct Run
    {
        T* begin = nullptr;
        T* end = nullptr;
        std::size_t firstIndex = 0;
        std::size_t chunk = 0;
    };

    ChunkedStore() noexcept = default;
    ChunkedStore(const ChunkedStore& other) : ChunkedStore()
    {
        reserve(other.size());
        for (std::size_t c = 0; c < other.chunkCount(); ++c)
        {
            const Block& chunk = other.chunkAt(c);
            for (std::size_t i = 0; i < chunk.count; ++i)
                append(T(chunk.data[i]));
        }
    }
    ChunkedStore(ChunkedStore&& other) noexcept { swap(other); }
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
        for (std::size_t c = 0; c < chunkCount(); ++c)
            chunkAt(c).release();
    }

    void swap(ChunkedStore& other) noexcept
    {
        std::swap(m_first, other.m_first);
        std::swap(m_rest, other.m_rest);
    }

    std::size_t size() const noexcept { return m_rest ? m_rest->size : m_first.count; }

    T& at(std::size_t index) noexcept { return *locate(index); }
    const T& at(std::size_t index) const noexcept { return *locate(index); }

    /// The store is empty before the first element ends.
    void clear() noexcept
    {
        ChunkedStore old;
        swap(old);
    }

    /// Strong guarantee, as with insert().
    void append(T value)
    {
        Block& last = m_rest ? m_rest->chunks.back() : m_first;
        if (last.isFull())
            return insert(size(), std::move(value));
        last.insert(last.count, std::move(value));
        grown(chunkCount() - 1);
    }

    /// Strong guarantee: a failed allocation leaves the sequence as it was.
    void insert(std::size_t index, T value)
    {
        assert(index <= size());
        std::size_t offset = index;
        std::size_t c = 0;
        // A place between two chunks belongs to the end of the earlier one.
        if (m_rest && index > 0)
        {
            c = find(index - 1, offset);
            ++offset;
        }
        if (chunkAt(c).isFull())
            makeRoom(c, offset);
        chunkAt(c).insert(offset, std::move(value));
        grown(c);
    }

    void erase(std::size_t index) noexcept
    {
        assert(index < size());
        std::size_t offset = index;
        const std::size_t c = find(index, offset);
        [[maybe_unused]] const T taken = chunkAt(c).take(offset);
        shrunk(c, 1);
    }

    void erase(std::size_t index, std::size_t count) noexcept
    {
        assert(index + count <= size());
        while (count > 0)
        {
            std::size_t offset = index;
            const std::size_t c = find(index, offset);
            const std::size_t here = std::min<std::size_t>(count, chunkAt(c).count - offset);
            chunkAt(c).erase(offset, here);
            count -= here;
            shrunk(c, here);
        }
    }

    /// Makes room for that many elements in all, if one flat block can hold them.
    void reserve(std::size_t capacity)
    {
        if (!m_rest && capacity > m_first.capacity && m_first.capacity < chunkCapacity)
            m_first.grow(
                std::min(chunkCapacity, std::max<std::size_t>(capacity, m_first.capacity * 2)));
    }

    /// Gives back memory that no element uses.
    void trim()
    {
        ChunkedStore packed;
        packed.reserve(size());
        for (std::size_t c = 0; c < chunkCount(); ++c)
        {
            for (std::size_t i = 0; i < chunkAt(c).count; ++i)
                packed.append(std::move(chunkAt(c).data[i]));
        }
        swap(packed);
    }

    /// The neighbours among which the element of that index stands.
    Run runOf(std::size_t index) const noexcept
    {
        std::size_t offset = index;
        const std::size_t c = find(index, offset);
        const Block& chunk = chunkAt(c);
        return {chunk.data, chunk.data + chunk.count, index - offset, c};
    }
    /// Those behind them; all null behind the last.
    Run runBehind(const Run& run) const noexcept
    {
        const std::size_t c = run.chunk + 1;
        const std::size_t index = run.firstIndex + static_cast<std::size_t>(run.end - run.begin);
        if (c >= chunkCount())
            return {nullptr, nullptr, index, c};
        // Chunks lie anywhere in memory, out of the processor's guess: it is told of the one after
        // this in time.
        if (c + 1 < chunkCount())
        {
            for (std::size_t line = 0; line < prefetched; line += cacheLine)
                __builtin_prefetch(reinterpret_cast<const char*>(chunkAt(c + 1).data) + line);
        }
        const Block& chunk = chunkAt(c);
        return {chunk.data, chunk.data + chunk.count, index, c};
    }

private:
    using Block = RawBlock<T>;
    static constexpr std::size_t cacheLine = 64;
    static constexpr std::size_t prefetched = 8 * cacheLine;

    /// What a sequence of more than one chunk needs beside the first.
    struct Rest
    {
        std::vector<Block> chunks; ///< all of them, the first included; none is empty
        PrefixSums sums;           ///< over their counts
        std::size_t size = 0;
        /// Number of the chunk read last and the index of its first element, in the upper and lower
        /// half; relaxed, since every value that was ever stored since the last change is right.
        std::atomic<std::uint64_t> hint{0};
    };

    std::size_t chunkCount() const noexcept { return m_rest ? m_rest->chunks.size() : 1; }
    Block& chunkAt(std::size_t c) noexcept { return m_rest ? m_rest->chunks[c] : m_first; }
    const Block& chunkAt(std::size_t c) const noexcept
    {
        return m_rest ? m_rest->chunks[c] : m_first;
    }

    T* locate(std::size_t index) const noexcept
    {
        assert(index < size());
        if (!m_rest)
            return m_first.data + index;
        const std::uint64_t hint = m_rest->hint.load(std::memory_order_relaxed);
        const std::size_t start = hint & 0xFFFFFFFFU;
        std::size_t c = hint >> 32;
        const Block* chunks = m_rest->chunks.data();
        if (index - start < chunks[c].count)
            return chunks[c].data + (index - start);
        std::size_t offset = index;
        c = find(index, offset);
        m_rest->hint.store(static_cast<std::uint64_t>(c) << 32 | (index - offset),
                           std::memory_order_relaxed);
        return chunks[c].data + offset;
    }

    /// The chunk that holds the element; offset becomes its place within.
    std::size_t find(std::size_t index, std::size_t& offset) const noexcept
    {
        offset = index;
        return m_rest ? m_rest->sums.find(offset) : 0;
    }

    void grown(std::size_t c) noexcept
    {
        if (!m_rest)
            return;
        ++m_rest->size;
        m_rest->hint.store(0, std::memory_order_relaxed);
        m_rest->sums.add(c, 1);
    }

    void shrunk(std::size_t c, std::size_t by) noexcept
    {
        if (!m_rest)
            return;
        m_rest->size -= by;
        m_rest->hint.store(0, std::memory_order_relaxed);
        m_rest->sums.add(c, -static_cast<std::ptrdiff_t>(by));
        if (m_rest->chunks[c].count <= chunkCapacity / 4)
            joinNeighbours(c);
    }

    /// Never allocates: makeRoom() has seen to the capacity.
    void rebuildSums() noexcept
    {
        const std::vector<Block>& chunks = m_rest->chunks;
        m_rest->sums.rebuild(chunks.size(), [&chunks](std::size_t c) { return chunks[c].count; });
    }

    /// Very many lists hold one element for good.
    static std::size_t largerThan(std::size_t capacity) noexcept
    {
        constexpr std::size_t second = 4;
        return capacity == 0 ? 1 : std::min(chunkCapacity, std::max(second, capacity * 2));
    }

    /// The chunk is full: grows it, starts a new one behind it, or splits it. Both arguments then
    /// name the place of the insertion again.
    void makeRoom(std::size_t& c, std::size_t& offset)
    {
        if (chunkAt(c).capacity < chunkCapacity)
            return chunkAt(c).grow(largerThan(chunkAt(c).capacity));
        std::unique_ptr<Rest> first;
        if (!m_rest)
        {
            first = std::make_unique<Rest>();
            first->chunks.push_back(m_first);
            first->size = m_first.count;
        }
        std::vector<Block>& chunks = m_rest ? m_rest->chunks : first->chunks;
        // Room for twice as many at a time, so that both vectors stay cheap to extend.
        if (chunks.size() == chunks.capacity())
            chunks.reserve(chunks.size() * 2);
        (m_rest ? m_rest : first)->sums.reserve(chunks.capacity());
        Block fresh = Block::make(chunkCapacity);
        if (first)
        {
            m_rest = std::move(first);
            m_first = Block();
        }
        // Appending fills chunks to the brim; insertion elsewhere splits in the middle.
        const bool atEnd = c + 1 == chunks.size() && offset == chunks[c].count;
        if (!atEnd)
            chunks[c].moveTail(chunks[c].count / 2, fresh);
        chunks.insert(chunks.begin() + static_cast<std::ptrdiff_t>(c) + 1, fresh);
        rebuildSums();
        if (offset > chunks[c].count || atEnd)
        {
            offset -= chunks[c].count;
            ++c;
        }
    }

    /// A chunk has become small: joins it with a neighbour that leaves some room, or drops it
    /// when it is empty.
    void joinNeighbours(std::size_t c) noexcept
    {
        std::vector<Block>& chunks = m_rest->chunks;
        const std::size_t left = c + 1 == chunks.size() ? c - 1 : c;
        const bool fits = chunks[left].count + chunks[left + 1].count <= chunkCapacity / 4 * 3;
        if (!fits && chunks[c].count > 0)
            return;
        if (fits)
            chunks[left + 1].moveTail(0, chunks[left]);
        const std::size_t dropped = fits ? left + 1 : c;
        chunks[dropped].release();
        chunks.erase(chunks.begin() + static_cast<std::ptrdiff_t>(dropped));
        if (chunks.size() == 1)
        {
            m_first = chunks[0];
            m_rest.reset();
        }
        else
            rebuildSums();
    }

    Block m_first; ///< the only chunk while m_rest is null
    std::unique_ptr<Rest> m_rest;
};
} // namespace qo
