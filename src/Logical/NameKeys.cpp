#include "Logical/NameKeys.h"

#include "types/CharClass.h"

#include <algorithm>
#include <numeric>
#include <utility>

// The parts: fold() makes words of names; countBelow() searches a sorted row of keys; Place is a
// position inside a chunk, and indexOf() and placeOf() convert between it and an index of the list;
// insert() joins an equal neighbour or makes a new entry, and makes room by giving keys to a
// neighbour chunk or by splitting.

namespace qo
{
namespace
{
using Key = NameKeys::Key;

/// How many of the ascending keys are below the bound. Each round compares fifteen keys that do not
/// depend on each other: in a long row each is a wait for the memory, and these waits overlap.
template <class Below>
std::size_t countBelow(const Key* keys, std::size_t count, Below below)
{
    constexpr std::size_t parts = 16;
    const Key* base = keys;
    while (count > parts)
    {
        const std::size_t step = count / parts;
        std::size_t passed = 0;
        for (std::size_t i = 1; i < parts; ++i)
            passed += below(base[i * step - 1]);
        base += passed * step;
        count = passed + 1 < parts ? step : count - passed * step;
    }
    std::size_t passed = 0;
    for (std::size_t i = 0; i < count; ++i)
        passed += below(base[i]);
    return static_cast<std::size_t>(base - keys) + passed;
}

using Count = std::vector<std::uint16_t>::const_iterator;

std::size_t sum(Count first, Count behind) noexcept
{
    return std::accumulate(first, behind, std::uint32_t(0));
}

/// Moves elements between two vectors; the target has the capacity, so nothing is allocated.
template <class T>
void move(
    std::vector<T>& from, std::size_t begin, std::size_t number, std::vector<T>& to, std::size_t at)
{
    const auto first = from.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto behind = first + static_cast<std::ptrdiff_t>(number);
    to.insert(to.begin() + static_cast<std::ptrdiff_t>(at), first, behind);
    from.erase(first, behind);
}

constexpr int wordBits = 63;

struct Folded
{
    std::uint64_t bits = 0; ///< left-aligned within wordBits
    std::size_t units = 0;  ///< how many units of the name are completely in the bits
};

/// The beginning of a folded name as bits whose order is that of the names: 7 bits for each ASCII
/// unit, an escape (127) and 16 bits for any other.
Folded fold(std::u16string_view name) noexcept
{
    constexpr int plainBits = 7;
    constexpr int otherBits = plainBits + 16;
    constexpr std::uint64_t escape = std::uint64_t(127) << 16;
    Folded folded;
    int left = wordBits;
    for (const char16_t unit : name)
    {
        // A zero would look like the end of the name, so a name ends before one.
        if (unit == 0)
            break;
        const std::uint64_t lower = toLower(unit);
        const bool isPlain = lower < 127;
        const int width = isPlain ? plainBits : otherBits;
        const std::uint64_t code = isPlain ? lower : escape | lower;
        const int taken = std::min(width, left);
        folded.bits = folded.bits << taken | code >> (width - taken);
        left -= taken;
        if (taken < width)
            break;
        ++folded.units;
    }
    folded.bits <<= left;
    return folded;
}

/// Makes a word of the beginning of the name and removes from the name what is completely in it.
std::uint64_t foldOff(std::u16string_view& name) noexcept
{
    const Folded folded = fold(name);
    name.remove_prefix(folded.units);
    return folded.bits;
}

// All parts are compared without branches, since the processor cannot predict which one decides.
// They are objects and not functions, so that the compiler inlines them into the search.

constexpr auto isLessByName = [](const Key& a, const Key& b) noexcept
{ return (a.begin < b.begin) | ((a.begin == b.begin) & (a.rest < b.rest)); };

constexpr auto isLess = [](const Key& a, const Key& b) noexcept
{
    const bool isSameName = (a.begin == b.begin) & (a.rest == b.rest);
    return isLessByName(a, b) | (isSameName & (a.next < b.next));
};
} // namespace

NameKeys::Key NameKeys::of(std::u16string_view name, std::u16string_view next) noexcept
{
    constexpr std::uint64_t isNamed = std::uint64_t(1) << wordBits;
    Key key{};
    key.begin = isNamed | foldOff(name);
    key.rest = foldOff(name) << 1;
    if (!name.empty())
    {
        key.rest |= 1;
        key.next = foldOff(name);
    }
    else if (!next.empty())
        key.next = isNamed | foldOff(next);
    return key;
}

template <class Below>
NameKeys::Place NameKeys::firstNot(Below below) const noexcept
{
    const std::size_t begun = countBelow(m_firsts.data(), m_firsts.size(), below);
    const std::size_t c = begun == 0 ? 0 : begun - 1;
    const std::vector<Key>& keys = m_chunks[c].keys;
    const std::size_t offset = countBelow(keys.data(), keys.size(), below);
    if (offset == keys.size() && c + 1 < m_chunks.size())
        return {c + 1, 0, 0};
    return {c, offset, 0};
}

template <class Less>
NameKeys::Range NameKeys::find(const Key& key, Less less) const noexcept
{
    if (m_chunks.empty())
        return {};
    const Place first = firstNot([&](const Key& each) { return less(each, key); });
    const int index = indexOf(first);
    if (isEnd(first) || less(key, keyAt(first)))
        return {index, index};
    const Place next = behind(first);
    if (isEnd(next) || less(key, keyAt(next)))
        return {index, index + static_cast<int>(countAt(first))};
    return {index, indexOf(firstNot([&](const Key& each) { return !less(key, each); }))};
}

NameKeys::Range NameKeys::find(const Key& key) const noexcept
{
    return m_isNextOrdered ? find(key, isLess) : findName(key);
}

NameKeys::Range NameKeys::findName(const Key& key) const noexcept
{
    return find(key, isLessByName);
}

int NameKeys::indexOf(const Place& place) const noexcept
{
    const auto counts = m_chunks[place.chunk].counts.begin();
    const std::size_t ahead = sum(counts, counts + static_cast<std::ptrdiff_t>(place.offset));
    return static_cast<int>(m_sums.before(place.chunk) + ahead + place.inside);
}

NameKeys::Place NameKeys::placeOf(int index) const noexcept
{
    constexpr std::size_t step =
        16; // counts are added in blocks of this size, which the compiler vectorises
    auto left = static_cast<std::size_t>(index);
    Place place;
    place.chunk = m_sums.find(left);
    const std::vector<std::uint16_t>& counts = m_chunks[place.chunk].counts;
    for (; place.offset + step <= counts.size(); place.offset += step)
    {
        const auto begin = counts.begin() + static_cast<std::ptrdiff_t>(place.offset);
        const std::size_t some = sum(begin, begin + step);
        if (left < some)
            break;
        left -= some;
    }
    for (; left >= counts[place.offset]; ++place.offset)
        left -= counts[place.offset];
    place.inside = left;
    return place;
}

NameKeys::Place NameKeys::placeBefore(int index) const noexcept
{
    if (index == 0)
        return {};
    Place place = placeOf(index - 1);
    ++place.inside;
    return place;
}

NameKeys::Place NameKeys::behind(const Place& place) const noexcept
{
    const bool isLast = place.offset + 1 == m_chunks[place.chunk].keys.size();
    if (isLast && place.chunk + 1 < m_chunks.size())
        return {place.chunk + 1, 0, 0};
    return {place.chunk, place.offset + 1, 0};
}

bool NameKeys::isEnd(const Place& place) const noexcept
{
    return place.offset == m_chunks[place.chunk].keys.size();
}

const NameKeys::Key& NameKeys::keyAt(const Place& place) const noexcept
{
    return m_chunks[place.chunk].keys[place.offset];
}

std::size_t NameKeys::countAt(const Place& place) const noexcept
{
    return m_chunks[place.chunk].counts[place.offset];
}

const NameKeys::Key& NameKeys::at(int index) const noexcept
{
    return keyAt(placeOf(index));
}

bool NameKeys::isInOrder(const Place& place, const Key& key) const noexcept
{
    if (place.inside > 0 && key < keyAt(place))
        return false;
    if (place.inside < countAt(place))
        return key <= keyAt(place);
    const Place next = behind(place);
    return isEnd(next) || key <= keyAt(next);
}

bool NameKeys::canJoin(const Place& place, const Key& key) const noexcept
{
    return !isEnd(place) && keyAt(place) == key && countAt(place) < mostOfOne;
}

void NameKeys::insert(int index, const Key& key)
{
    if (m_chunks.empty())
        return startWith(key);
    Place place = placeBefore(index);
    const bool isOrdered = m_isNextOrdered && isInOrder(place, key);
    const Place next = place.inside == countAt(place) ? behind(place) : place;
    if (canJoin(place, key))
        changeCount(place, 1);
    else if (canJoin(next, key))
        changeCount(next, 1);
    else
    {
        constexpr std::size_t most = 2; // a key between equal ones splits their entry in two
        if (m_chunks[place.chunk].keys.size() + most > chunkCapacity)
        {
            makeRoom(place.chunk);
            place = placeBefore(index);
        }
        insertNew(place, key);
    }
    m_isNextOrdered = isOrdered;
}

void NameKeys::startWith(const Key& key)
{
    m_chunks.reserve(1);
    m_firsts.reserve(1);
    m_sums.reserve(1);
    Chunk chunk;
    chunk.keys.reserve(chunkCapacity);
    chunk.counts.reserve(chunkCapacity);
    chunk.add(0, key, 1);
    m_chunks.push_back(std::move(chunk));
    m_firsts.push_back(key);
    rebuildSums();
}

void NameKeys::Chunk::add(std::size_t offset, const Key& key, std::size_t count) noexcept
{
    const auto at = static_cast<std::ptrdiff_t>(offset);
    keys.insert(keys.begin() + at, key);
    counts.insert(counts.begin() + at, static_cast<std::uint16_t>(count));
    objects += count;
}

void NameKeys::insertNew(const Place& place, const Key& key) noexcept
{
    Chunk& chunk = m_chunks[place.chunk];
    const Key parted = keyAt(place);
    const std::size_t behind = countAt(place) - place.inside;
    if (place.inside > 0 && behind > 0)
    {
        changeCount(place, -static_cast<int>(behind));
        chunk.add(place.offset + 1, parted, behind);
        m_sums.add(place.chunk, static_cast<std::ptrdiff_t>(behind));
    }
    chunk.add(place.offset + (place.inside > 0), key, 1);
    m_sums.add(place.chunk, 1);
    m_firsts[place.chunk] = chunk.keys.front();
}

void NameKeys::changeCount(const Place& place, int by) noexcept
{
    Chunk& chunk = m_chunks[place.chunk];
    std::uint16_t& count = chunk.counts[place.offset];
    count = static_cast<std::uint16_t>(count + by);
    chunk.objects += static_cast<std::size_t>(by);
    m_sums.add(place.chunk, by);
}

void NameKeys::remove(int index) noexcept
{
    const Place place = placeOf(index);
    changeCount(place, -1);
    if (countAt(place) > 0)
        return;
    Chunk& chunk = m_chunks[place.chunk];
    const auto offset = static_cast<std::ptrdiff_t>(place.offset);
    chunk.keys.erase(chunk.keys.begin() + offset);
    chunk.counts.erase(chunk.counts.begin() + offset);
    if (!chunk.keys.empty())
    {
        m_firsts[place.chunk] = chunk.keys.front();
        return;
    }
    const auto at = static_cast<std::ptrdiff_t>(place.chunk);
    m_chunks.erase(m_chunks.begin() + at);
    m_firsts.erase(m_firsts.begin() + at);
    rebuildSums();
    m_isNextOrdered = m_isNextOrdered || m_chunks.empty();
}

void NameKeys::makeRoom(std::size_t c)
{
    if (!giveTo(c, c + 1) && !giveTo(c, c - 1))
        split(c);
}

/// Gives about half of the neighbour's free room to it, which keeps chunks fuller than splitting
/// does. False if there is no such neighbour, or if it is nearly full itself.
bool NameKeys::giveTo(std::size_t from, std::size_t to) noexcept
{
    if (to >= m_chunks.size() || m_chunks[to].keys.size() > chunkCapacity / 4 * 3)
        return false;
    Chunk& giver = m_chunks[from];
    Chunk& taker = m_chunks[to];
    const std::size_t number = (chunkCapacity - taker.keys.size()) / 2;
    const std::size_t begin = to > from ? giver.keys.size() - number : 0;
    const std::size_t at = to > from ? 0 : taker.keys.size();
    move(giver.keys, begin, number, taker.keys, at);
    move(giver.counts, begin, number, taker.counts, at);
    const auto given = taker.counts.begin() + static_cast<std::ptrdiff_t>(at);
    const std::size_t objects = sum(given, given + static_cast<std::ptrdiff_t>(number));
    giver.objects -= objects;
    taker.objects += objects;
    m_sums.add(from, -static_cast<std::ptrdiff_t>(objects));
    m_sums.add(to, static_cast<std::ptrdiff_t>(objects));
    m_firsts[from] = giver.keys.front();
    m_firsts[to] = taker.keys.front();
    return true;
}

void NameKeys::split(std::size_t c)
{
    if (m_chunks.size() == m_chunks.capacity())
        m_chunks.reserve(m_chunks.size() * 2);
    m_firsts.reserve(m_chunks.capacity());
    m_sums.reserve(m_chunks.capacity());
    Chunk upper;
    upper.keys.reserve(chunkCapacity);
    upper.counts.reserve(chunkCapacity);
    // In the last chunk most keys stay below, since lists are often filled in ascending order.
    const std::size_t keep = c + 1 == m_chunks.size() ? chunkCapacity * 7 / 8 : chunkCapacity / 2;
    Chunk& lower = m_chunks[c];
    move(lower.keys, keep, lower.keys.size() - keep, upper.keys, 0);
    move(lower.counts, keep, lower.counts.size() - keep, upper.counts, 0);
    upper.objects = sum(upper.counts.begin(), upper.counts.end());
    lower.objects -= upper.objects;
    const auto at = static_cast<std::ptrdiff_t>(c) + 1;
    m_firsts.insert(m_firsts.begin() + at, upper.keys.front());
    m_chunks.insert(m_chunks.begin() + at, std::move(upper));
    rebuildSums();
}

/// Does not allocate: split() and startWith() have reserved the capacity.
void NameKeys::rebuildSums() noexcept
{
    m_sums.rebuild(m_chunks.size(), [this](std::size_t c) { return m_chunks[c].objects; });
}
} // namespace qo
