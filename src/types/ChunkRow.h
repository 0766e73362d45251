#pragma once

#include "types/PrefixSums.h"
#include "types/RawBlock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace qo
{
/// What the owner of a long sequence keeps with it.
class RowNote
{
public:
    RowNote() = default;
    RowNote(const RowNote&) = delete;
    RowNote& operator=(const RowNote&) = delete;
    virtual ~RowNote() = default;
};

/// The long form of a ChunkedStore: a row of chunks of fixed capacity, with a Fenwick tree over
/// their sizes. Reading by index remembers the last chunk, so that neighbours are found without a
/// search. Several threads may read at once; a writer must be alone.
template <class T>
class ChunkRow
{
public:
    using Block = RawBlock<T>;

    /// Takes the block over, which must be full. No row has less than one chunk.
    ChunkRow(const Block& first, std::size_t capacity) : m_capacity(capacity)
    {
        m_chunks.push_back(first);
        m_sums.reserve(1);
        rebuildSums();
    }
    ChunkRow(const ChunkRow&) = delete;
    ChunkRow& operator=(const ChunkRow&) = delete;
    ~ChunkRow()
    {
        for (Block& chunk : m_chunks)
            chunk.release();
    }

    std::size_t count() const noexcept { return m_chunks.size(); }
    const Block& chunk(std::size_t c) const noexcept { return m_chunks[c]; }
    /// Takes the only chunk out; the row then only waits for its end.
    Block takeOnly() noexcept { return std::exchange(m_chunks[0], Block()); }

    T* locate(std::size_t index) const noexcept
    {
        const std::uint64_t hint = m_hint.load(std::memory_order_relaxed);
        const std::size_t start = hint & 0xFFFFFFFFU;
        std::size_t c = hint >> 32;
        if (index - start < m_chunks[c].count)
            return m_chunks[c].data + (index - start);
        std::size_t offset = index;
        c = find(offset);
        m_hint.store(static_cast<std::uint64_t>(c) << 32 | (index - offset),
                     std::memory_order_relaxed);
        return m_chunks[c].data + offset;
    }

    /// The chunk that holds the element of that index, which becomes its place within.
    std::size_t find(std::size_t& index) const noexcept { return m_sums.find(index); }

    /// Strong guarantee.
    void append(T&& value)
    {
        std::size_t c = m_chunks.size() - 1;
        std::size_t offset = m_chunks[c].count;
        insertAt(c, offset, std::move(value));
    }
    /// Strong guarantee.
    void insert(std::size_t index, T&& value)
    {
        std::size_t offset = index;
        std::size_t c = 0;
        // A place between two chunks belongs to the end of the earlier one.
        if (index > 0)
        {
            offset = index - 1;
            c = find(offset);
            ++offset;
        }
        insertAt(c, offset, std::move(value));
    }

    T take(std::size_t index) noexcept
    {
        const std::size_t c = find(index);
        T taken = m_chunks[c].take(index);
        shrunk(c);
        return taken;
    }

    std::unique_ptr<RowNote> note; ///< null, or the owner's

private:
    void insertAt(std::size_t c, std::size_t offset, T&& value)
    {
        if (m_chunks[c].count == m_capacity)
            makeRoom(c, offset);
        m_chunks[c].insert(offset, std::move(value));
        m_hint.store(0, std::memory_order_relaxed);
        m_sums.add(c, 1);
    }

    /// Never allocates: makeRoom() has seen to the capacity.
    void rebuildSums() noexcept
    {
        m_sums.rebuild(m_chunks.size(), [this](std::size_t c) { return m_chunks[c].count; });
    }

    /// The chunk is full: gives a part to a neighbour, starts a new one behind it, or splits it.
    /// Both arguments then name the place of the insertion again.
    void makeRoom(std::size_t& c, std::size_t& offset)
    {
        // Appending fills chunks to the brim; insertion elsewhere spreads over the neighbours.
        const bool atEnd = c + 1 == m_chunks.size() && offset == m_chunks[c].count;
        if (!atEnd && (giveToNext(c, offset) || giveToPrevious(c, offset)))
            return;
        // Room for twice as many at a time, so that both vectors stay cheap to extend.
        if (m_chunks.size() == m_chunks.capacity())
            m_chunks.reserve(m_chunks.size() * 2);
        m_sums.reserve(m_chunks.capacity());
        Block fresh = Block::make(m_capacity);
        if (!atEnd)
            m_chunks[c].moveTail(m_chunks[c].count / 2, fresh);
        m_chunks.insert(m_chunks.begin() + static_cast<std::ptrdiff_t>(c) + 1, fresh);
        rebuildSums();
        goOn(c, offset, atEnd);
    }

    /// A place past a chunk that has become shorter is one of the next.
    void goOn(std::size_t& c, std::size_t& offset, bool force = false) const noexcept
    {
        if (offset <= m_chunks[c].count && !force)
            return;
        offset -= m_chunks[c].count;
        ++c;
    }

    /// How many to give away so that both have as many; 0 if it would not last.
    std::size_t share(std::size_t neighbour) const noexcept
    {
        const std::size_t room = m_capacity - m_chunks[neighbour].count;
        return room >= m_capacity / 4 ? room / 2 : 0;
    }

    bool giveToNext(std::size_t& c, std::size_t& offset) noexcept
    {
        const std::size_t given = c + 1 < m_chunks.size() ? share(c + 1) : 0;
        if (given == 0)
            return false;
        m_chunks[c].moveTailAhead(m_chunks[c].count - given, m_chunks[c + 1]);
        moved(c, c + 1, given);
        goOn(c, offset);
        return true;
    }
    bool giveToPrevious(std::size_t& c, std::size_t& offset) noexcept
    {
        const std::size_t given = c > 0 ? share(c - 1) : 0;
        if (given == 0)
            return false;
        m_chunks[c].moveHead(given, m_chunks[c - 1]);
        moved(c, c - 1, given);
        if (offset < given)
        {
            --c;
            offset += m_chunks[c].count;
        }
        offset -= given;
        return true;
    }
    void moved(std::size_t from, std::size_t to, std::size_t number) noexcept
    {
        m_sums.add(from, -static_cast<std::ptrdiff_t>(number));
        m_sums.add(to, static_cast<std::ptrdiff_t>(number));
    }

    void shrunk(std::size_t c) noexcept
    {
        m_hint.store(0, std::memory_order_relaxed);
        m_sums.add(c, -1);
        if (m_chunks[c].count <= m_capacity / 4 && m_chunks.size() > 1)
            joinNeighbours(c);
    }

    /// A chunk has become small: joins it with a neighbour that leaves some room, or drops it
    /// when it is empty.
    void joinNeighbours(std::size_t c) noexcept
    {
        const std::size_t left = c + 1 == m_chunks.size() ? c - 1 : c;
        const bool fits = m_chunks[left].count + m_chunks[left + 1].count <= m_capacity / 4 * 3;
        if (!fits && m_chunks[c].count > 0)
            return;
        if (fits)
            m_chunks[left + 1].moveTail(0, m_chunks[left]);
        const std::size_t dropped = fits ? left + 1 : c;
        m_chunks[dropped].release();
        m_chunks.erase(m_chunks.begin() + static_cast<std::ptrdiff_t>(dropped));
        rebuildSums();
    }

    std::vector<Block> m_chunks; ///< none is empty unless it is the only one
    PrefixSums m_sums;           ///< over their counts
    std::size_t m_capacity;
    /// Number of the chunk read last and the index of its first element, in the upper and lower
    /// half; relaxed, since every value that was ever stored since the last change is right.
    mutable std::atomic<std::uint64_t> m_hint{0};
};
} // namespace qo
