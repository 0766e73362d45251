#pragma once

#include "types/Relocate.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace qo
{
/// Elements in one block of memory with room after them. A plain record without a destructor: its
/// holder must call release(). Elements must be movable without exceptions. Offsets and room are
/// not checked.
template <class T>
struct RawBlock
{
    T* data = nullptr;
    std::uint32_t count = 0;
    std::uint32_t capacity = 0;

    static RawBlock make(std::size_t capacity)
    {
        RawBlock block;
        block.data = static_cast<T*>(::operator new(capacity * sizeof(T)));
        block.capacity = static_cast<std::uint32_t>(capacity);
        return block;
    }

    /// Destroys the elements and frees the memory.
    void release() noexcept
    {
        std::destroy_n(data, count);
        ::operator delete(static_cast<void*>(data));
        *this = RawBlock();
    }

    /// The block must not be full.
    void insert(std::size_t offset, T&& value) noexcept
    {
        relocate(data + offset, count - offset, data + offset + 1);
        new (data + offset) T(std::move(value));
        ++count;
    }

    /// Takes one element out.
    T take(std::size_t offset) noexcept
    {
        T taken(std::move(data[offset]));
        std::destroy_at(data + offset);
        relocate(data + offset + 1, count - offset - 1, data + offset);
        --count;
        return taken;
    }

    /// Moves the elements from an offset on to the end of another block, which must have the room.
    void moveTail(std::size_t from, RawBlock& to) noexcept
    {
        const std::size_t number = count - from;
        relocate(data + from, number, to.data + to.count);
        to.count += static_cast<std::uint32_t>(number);
        count = static_cast<std::uint32_t>(from);
    }

    /// The same to the front of the other block.
    void moveTailAhead(std::size_t from, RawBlock& to) noexcept
    {
        const std::size_t number = count - from;
        relocate(to.data, to.count, to.data + number);
        relocate(data + from, number, to.data);
        to.count += static_cast<std::uint32_t>(number);
        count = static_cast<std::uint32_t>(from);
    }

    /// Moves that many elements from the front to the end of another block, which must have the
    /// room.
    void moveHead(std::size_t number, RawBlock& to) noexcept
    {
        relocate(data, number, to.data + to.count);
        relocate(data + number, count - number, data);
        to.count += static_cast<std::uint32_t>(number);
        count -= static_cast<std::uint32_t>(number);
    }

private:
    /// Moves elements into raw memory, which may overlap with theirs, and destroys the old ones.
    static void relocate(T* from, std::size_t number, T* to) noexcept
    {
        if constexpr (IsRelocatable<T>::value)
        {
            if (number > 0)
                std::memmove(
                    static_cast<void*>(to), static_cast<const void*>(from), number * sizeof(T));
        }
        else
        {
            const bool forward = to < from;
            for (std::size_t i = 0; i < number; ++i)
            {
                T& old = from[forward ? i : number - 1 - i];
                new (to + (&old - from)) T(std::move(old));
                old.~T(); // NOLINT(bugprone-use-after-move): what was moved from still ends
            }
        }
    }
};
} // namespace qo
