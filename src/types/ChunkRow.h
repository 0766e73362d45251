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
/// Base class of what the owner of a long sequence attaches to it, such as an index; see
/// ChunkedStore::note().
class RowNote
{
public:
    RowNote() = default;
    RowNote(const RowNote&) = delete;
    RowNote& operator=(const RowNote&) = delete;
    virtual ~RowNote() = default;
};

/// The long form of a ChunkedStore: a row of chunks of fixed capacity, with prefix sums over their
/// sizes. Reading by index remembers the last chunk, so that neighbours are found without a search.
/// Several threads may read at once; a writer must be alone.
///
///   Capacity 4, elements a to i:    [a b c d] [e f g h] [i . . .]     sizes 4, 4, 1
///   insert X before c:  the chunk is full, and so is its neighbour: it is split
///                                   [a b X .] [c d . .] [e f g h] [i . . .]
///   append:             the last chunk is filled completely before a new one is made
///   erase e, f, g:      a chunk at a quarter of its capacity joins a neighbour: [h i . .]
template <class T>
class ChunkRow
{
public:
    using Block = RawBlock<T>;

    /// Takes over a block, which must be full, as the first chunk. A row always has a chunk.
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
    /// Takes the only chunk out; nothing but the destructor may be called afterwards.
    Block takeOnly() noexcept { return std::exchange(m_chunks[0], Block()); }

    /// The element of that index, which must exist. Tries the chunk that was read last first.
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

    /// The chunk that holds the element of that index. On return index is the position in the
    /// chunk.
    std::size_t find(std::size_t& index) const noexcept { return m_sums.find(index); }

    /// If it throws, nothing has changed; so too with insert().
    void append(T&& value)
    {
        std::size_t c = m_chunks.size() - 1;
        std::size_t offset = m_chunks[c].count;
        insertAt(c, offset, std::move(value));
    }
    /// If it throws, nothing has changed.
    void insert(std::size_t index, T&& value)
    {
        std::size_t offset = index;
        std::size_t c = 0;
        // A position between two chunks is taken as the end of the earlier one.
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

    std::unique_ptr<RowNote> note; ///< null, or what the owner attached

private:
    void insertAt(std::size_t c, std::size_t offset, T&& value)
    {
        if (m_chunks[c].count == m_capacity)
            makeRoom(c, offset);
        m_chunks[c].insert(offset, std::move(value));
        m_hint.store(0, std::memory_order_relaxed);
        m_sums.add(c, 1);
    }

    /// Does not allocate: makeRoom() has reserved the capacity.
    void rebuildSums() noexcept
    {
        m_sums.rebuild(m_chunks.size(), [this](std::size_t c) { return m_chunks[c].count; });
    }

    /// Makes room in a full chunk: gives elements to a neighbour, starts a new chunk at the end, or
    /// splits it. Afterwards both arguments name the position of the insertion again.
    void makeRoom(std::size_t& c, std::size_t& offset)
    {
        // Appending fills chunks completely; insertion elsewhere makes use of the neighbours' room.
        const bool atEnd = c + 1 == m_chunks.size() && offset == m_chunks[c].count;
        if (!atEnd && (giveToNext(c, offset) || giveToPrevious(c, offset)))
            return;
        // Doubles the room, so that extending both vectors stays cheap.
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

    /// Moves a position that lies beyond its chunk to the next one.
    void goOn(std::size_t& c, std::size_t& offset, bool force = false) const noexcept
    {
        if (offset <= m_chunks[c].count && !force)
            return;
        offset -= m_chunks[c].count;
        ++c;
    }

    /// How many elements to give away so that both chunks are equally full; 0 if the neighbour has
    /// so little room that it would be full again soon.
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

    /// A chunk has become small: joins it with a neighbour if both together leave some room, or
    /// removes it when it is empty.
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

    std::vector<Block> m_chunks; ///< none is empty, unless it is the only one
    PrefixSums m_sums;           ///< over their counts
    std::size_t m_capacity;
    /// The number of the chunk that was read last, in the upper half, and the index of its first
    /// element, in the lower half. Relaxed, since any value stored since the last change is
    /// correct.
    mutable std::atomic<std::uint64_t> m_hint{0};
};
} // namespace qo
