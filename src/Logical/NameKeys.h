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
/// A compact copy of the sort order of a list that is sorted by name first. For each object it has
/// one key of three words: the beginning of its folded (lower case) name and, where that is the
/// whole name, of the second name that the list is sorted by (a track's artist). The keys ascend
/// with the list, so a search compares these words, which lie side by side in memory, and reads the
/// objects themselves only where keys are equal. SortedLTList keeps it in step with its list.
///
///   A word holds 9 ASCII letters (7 bits each) or fewer others.
///     title "Waterloo", artist "ABBA":     begin "waterloo",   rest "",           next "abba"
///     title "The Winner Takes It All":     begin "the winne",  rest "r takes i",  next "t all"
///   Neighbours with equal keys are stored once, with a count:
///     Dawn, Gold, Gold, Gold, Night   is   keys {dawn, gold, night}, counts {1, 3, 1}
///   Keys stand in chunks of up to 256, so an insertion moves a few kilobytes at most, and
///   PrefixSums over the objects of each chunk turn a place in a chunk into an index of the list
///   and back.
///
/// No locks.
class NameKeys
{
public:
    struct Key
    {
        std::uint64_t begin;
        std::uint64_t rest;
        std::uint64_t next; ///< the second name, 0 without one; or a third word of the first

        auto operator<=>(const Key&) const = default;
        /// Whether the key holds the whole first name, so that objects with equal keys have equal
        /// names.
        bool isWholeName() const noexcept { return (rest & 1) == 0; }
    };
    /// A half-open range of indexes of the list: the objects with one key.
    struct Range
    {
        int first = 0;
        int behind = 0;
    };

    // A copy would not have the room that insertions count on.
    NameKeys() = default;
    NameKeys(const NameKeys&) = delete;
    NameKeys& operator=(const NameKeys&) = delete;
    NameKeys(NameKeys&&) noexcept = default;
    NameKeys& operator=(NameKeys&&) noexcept = default;
    ~NameKeys() = default;

    /// The key of objects without a name where these are ordered before all names.
    static constexpr Key unknown{0, 0, 0};
    /// The key of a name. A smaller name never has a larger key, and equal names have equal keys.
    /// Objects without a second name are ordered before those with one.
    static Key of(std::u16string_view name, std::u16string_view next = {}) noexcept;

    /// The objects with that key; an empty range at the place where the key belongs when there are
    /// none. Compares the first name alone when the second names are not in order.
    Range find(const Key& key) const noexcept;
    /// The same by the first name alone.
    Range findName(const Key& key) const noexcept;
    /// Inserts a key at an index of the list; if it throws, nothing has changed. The first names
    /// must stay in order. If the second ones do not, they are ignored until all keys are removed.
    void insert(int index, const Key& key);
    void remove(int index) noexcept;
    const Key& at(int index) const noexcept;
    void clear() noexcept { *this = NameKeys(); }

private:
    /// Sorted keys and for each the number of neighbouring objects with it. Copies of a collection,
    /// and songs that are on several albums, so cost little.
    struct Chunk
    {
        std::vector<Key> keys; ///< never empty; never reallocated
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
        std::size_t inside = 0; ///< how many objects of the key stand before it
    };

    template <class Less>
    Range find(const Key& key, Less less) const noexcept;
    /// The place of the first key that is not below, or the end. There must be keys.
    template <class Below>
    Place firstNot(Below below) const noexcept;
    Place placeOf(int index) const noexcept;
    /// The place just after the object before that index.
    Place placeBefore(int index) const noexcept;
    /// The place of the next key; the end if there is none.
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
    /// Makes room in a full chunk: gives keys to a neighbour, or splits it.
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
