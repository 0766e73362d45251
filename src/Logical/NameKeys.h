#pragma once

#include "types/Export.h"
#include "types/PrefixSums.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace qo
{
/// One key for each object of a list that is sorted by name first, in the places of the objects:
/// the beginning of its folded name and, where that is the whole name, of the name that the list
/// goes by next; a longer name takes up the place of both. The keys ascend with the list, so that a
/// search looks at the objects only where they are the same. Kept in step with its list by
/// SortedLTList.
class NameKeys
{
public:
    struct Key
    {
        std::uint64_t begin;
        std::uint64_t rest;
        std::uint64_t next; ///< of the second name, 0 without one; or more of the first name

        auto operator<=>(const Key&) const = default;
        /// Whether names with this key are the same, but for their case.
        bool isWholeName() const noexcept { return (rest & 1) == 0; }
    };
    /// The indexes of the objects with one key.
    struct Range
    {
        int first = 0;
        int behind = 0;
    };

    /// Of objects that stand ahead of all names.
    static constexpr Key unknown{0, 0, 0};
    /// Of smaller names it is smaller or the same, of equal names the same. Objects without the
    /// second name stand ahead of those with one.
    static Key of(std::u16string_view name, std::u16string_view next = {}) noexcept;

    /// An empty range where the key would stand when it is not there. Goes by the first name alone
    /// while the second has no order.
    Range find(const Key& key) const noexcept;
    /// Goes by the first name alone.
    Range findName(const Key& key) const noexcept;
    /// Strong guarantee. The first names must stay in order; if the second ones do not, they have
    /// none until all keys are gone.
    void insert(int index, const Key& key);
    void remove(int index) noexcept;
    const Key& at(int index) const noexcept;
    void clear() noexcept { *this = NameKeys(); }

private:
    /// A row of keys and how many neighbouring objects each stands for: copies of a collection, and
    /// songs that are on several albums, cost little.
    struct Chunk
    {
        std::vector<Key> keys; ///< never empty, and never beyond the first capacity
        std::vector<std::uint16_t> counts;
        std::size_t objects = 0; ///< the sum of the counts

        void add(std::size_t offset, const Key& key, std::size_t count) noexcept;
    };
    static constexpr std::size_t chunkCapacity = 256;
    static constexpr std::size_t mostOfOne = UINT16_MAX;

    struct Place
    {
        std::size_t chunk = 0;
        std::size_t offset = 0;
        std::size_t inside = 0; ///< how many objects of the key are ahead
    };

    template <class Less>
    Range find(const Key& key, Less less) const noexcept;
    /// Of the first key that is not below, or behind the last one. There must be keys.
    template <class Below>
    Place firstNot(Below below) const noexcept;
    Place placeOf(int index) const noexcept;
    /// Behind the object ahead of that index.
    Place placeBefore(int index) const noexcept;
    /// The next key's; behind the last one if there is none.
    Place behind(const Place& place) const noexcept;
    bool isEnd(const Place& place) const noexcept;
    const Key& keyAt(const Place& place) const noexcept;
    std::size_t countAt(const Place& place) const noexcept;
    int indexOf(const Place& place) const noexcept;
    bool isInOrder(const Place& place, const Key& key) const noexcept;
    bool canJoin(const Place& place, const Key& key) const noexcept;
    void startWith(const Key& key);
    void insertNew(const Place& place, const Key& key) noexcept;
    void changeCount(const Place& place, int by) noexcept;
    void makeRoom(std::size_t c);
    bool giveTo(std::size_t from, std::size_t to) noexcept;
    void split(std::size_t c);
    void rebuildSums() noexcept;

    std::vector<Chunk> m_chunks;
    std::vector<Key> m_firsts; ///< the first key of each chunk
    PrefixSums m_sums;         ///< over the objects of each chunk
    bool m_isNextOrdered = true;
};
} // namespace qo
