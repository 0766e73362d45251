#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qo
{
/// A Fenwick tree over the sizes of a row of parts. It finds the part that holds the n-th element,
/// and changes a size, in O(log n).
///
///   Sizes 3, 1, 4, 2: the tree holds 3, 3+1, 4, 3+1+4+2. find(5) goes past the first two parts (4
///   elements) and gives the third, with position 1 in it.
class PrefixSums
{
public:
    /// Makes room for that many parts, so that rebuild() does not allocate.
    void reserve(std::size_t parts) { m_sums.reserve(parts + 1); }

    /// Replaces all sizes; sizeOf(i) gives that of part i. Allocates only beyond what is reserved.
    template <class SizeOf>
    void rebuild(std::size_t parts, SizeOf sizeOf)
    {
        m_sums.assign(parts + 1, 0);
        for (std::size_t i = 1; i <= parts; ++i)
        {
            m_sums[i] += static_cast<std::uint32_t>(sizeOf(i - 1));
            const std::size_t up = i + lowBit(i);
            if (up <= parts)
                m_sums[up] += m_sums[i];
        }
    }

    /// Changes the size of one part.
    void add(std::size_t part, std::ptrdiff_t by) noexcept
    {
        for (std::size_t i = part + 1; i < m_sums.size(); i += lowBit(i))
            m_sums[i] = static_cast<std::uint32_t>(static_cast<std::ptrdiff_t>(m_sums[i]) + by);
    }

    /// The sum of the sizes of all parts before that one.
    std::size_t before(std::size_t part) const noexcept
    {
        std::size_t size = 0;
        for (std::size_t i = part; i > 0; i -= lowBit(i))
            size += m_sums[i];
        return size;
    }

    /// The part that holds the element of that index. On return index is the position in the part.
    std::size_t find(std::size_t& index) const noexcept
    {
        std::size_t part = 0;
        for (std::size_t step = std::bit_floor(m_sums.size() - 1); step > 0; step /= 2)
        {
            if (part + step < m_sums.size() && m_sums[part + step] <= index)
            {
                part += step;
                index -= m_sums[part];
            }
        }
        return part;
    }

private:
    static std::size_t lowBit(std::size_t i) noexcept { return i & (~i + 1); }

    std::vector<std::uint32_t> m_sums; ///< index 0 is not used
};
} // namespace qo
