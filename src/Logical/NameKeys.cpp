#include "Logical/NameKeys.h"

#include "common/types/CharClass.h"

#include <algorithm>
#include <utility>

namespace qo
{
namespace
{
using Key = NameKeys::Key;

/// How many of the ascending keys are below the bound. Looks at several keys at a time that do not
/// depend on each other: in a long list each is a wait for the memory, and these overlap.
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

__extension__ using Bits = unsigned __int128;

struct Folded
{
    Bits bits = 0;       ///< begins at the highest of as many bits as were asked for
    bool isWhole = true; ///< whether they tell the whole name
};

/// The beginning of a folded name as bits that sort as the name does: seven for each ASCII unit, an
/// escape and sixteen for any other.
Folded fold(std::u16string_view name, int size) noexcept
{
    constexpr int plainBits = 7;
    constexpr int otherBits = plainBits + 16;
    constexpr Bits escape = Bits(127) << 16;
    Folded folded;
    int left = size;
    for (const char16_t unit : name)
    {
        const Bits lower = toLower(unit);
        const bool isPlain = lower < 127;
        const int width = isPlain ? plainBits : otherBits;
        // A zero would look like the end of the name.
        folded.isWhole = width <= left && unit != 0;
        const int taken = folded.isWhole ? width : unit != 0 ? left : 0;
        const Bits code = isPlain ? lower : escape | lower;
        folded.bits = folded.bits << taken | code >> (width - taken);
        left -= taken;
        if (!folded.isWhole)
            break;
    }
    folded.bits <<= left;
    return folded;
}

// All parts are compared at once: which one decides is beyond the processor's guess. Objects and
// not functions, so that a search has them in line.

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
    constexpr int wordBits = 63;
    constexpr std::uint64_t isNamed = std::uint64_t(1) << wordBits;
    const Folded first = fold(name, 2 * wordBits);
    Key key{};
    key.begin = isNamed | static_cast<std::uint64_t>(first.bits >> wordBits);
    key.rest = static_cast<std::uint64_t>(first.bits) << 1 | !first.isWhole;
    if (first.isWhole && !next.empty())
        key.next = isNamed | static_cast<std::uint64_t>(fold(next, wordBits).bits);
    return key;
}

template <class Below>
NameKeys::Place NameKeys::firstNot(Below below) const noexcept
{
    const std::size_t begun = countBelow(m_firsts.data(), m_firsts.size(), below);
    const std::size_t c = begun == 0 ? 0 : begun - 1;
    return {c, countBelow(m_chunks[c].data(), m_chunks[c].size(), below)};
}

template <class Less>
NameKeys::Range NameKeys::find(const Key& key, Less less) const noexcept
{
    if (m_chunks.empty())
        return {};
    const Place behind = firstNot([&](const Key& each) { return !less(key, each); });
    if (behind.offset == 0 || less(m_chunks[behind.chunk][behind.offset - 1], key))
        return {indexOf(behind), indexOf(behind)};
    const Place first = firstNot([&](const Key& each) { return less(each, key); });
    return {indexOf(first), indexOf(behind)};
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
    return m_starts[place.chunk] + static_cast<int>(place.offset);
}

NameKeys::Place NameKeys::placeOf(int index) const noexcept
{
    const auto begun = std::upper_bound(m_starts.begin(), m_starts.end(), index);
    const auto c = static_cast<std::size_t>(begun - m_starts.begin()) - 1;
    return {c, static_cast<std::size_t>(index - m_starts[c])};
}

const NameKeys::Key& NameKeys::at(int index) const noexcept
{
    const Place place = placeOf(index);
    return m_chunks[place.chunk][place.offset];
}

bool NameKeys::isBetweenNeighbours(const Place& place, const Key& key) const noexcept
{
    const Chunk& chunk = m_chunks[place.chunk];
    if (place.offset < chunk.size() && chunk[place.offset] < key)
        return false;
    if (place.offset > 0)
        return chunk[place.offset - 1] <= key;
    return place.chunk == 0 || m_chunks[place.chunk - 1].back() <= key;
}

void NameKeys::insert(int index, const Key& key)
{
    if (m_chunks.empty())
        return startWith(key);
    Place place = placeOf(index);
    if (m_chunks[place.chunk].size() == chunkCapacity)
    {
        split(place.chunk);
        place = placeOf(index);
    }
    m_isNextOrdered = m_isNextOrdered && isBetweenNeighbours(place, key);
    Chunk& chunk = m_chunks[place.chunk];
    chunk.insert(chunk.begin() + static_cast<std::ptrdiff_t>(place.offset), key);
    m_firsts[place.chunk] = chunk.front();
    renumber(place.chunk, 1);
}

void NameKeys::startWith(const Key& key)
{
    m_firsts.reserve(1);
    m_starts.reserve(1);
    Chunk chunk;
    chunk.reserve(chunkCapacity);
    chunk.push_back(key);
    m_chunks.push_back(std::move(chunk));
    m_firsts.push_back(key);
    m_starts.push_back(0);
}

void NameKeys::remove(int index) noexcept
{
    const Place place = placeOf(index);
    Chunk& chunk = m_chunks[place.chunk];
    chunk.erase(chunk.begin() + static_cast<std::ptrdiff_t>(place.offset));
    renumber(place.chunk, -1);
    if (!chunk.empty())
    {
        m_firsts[place.chunk] = chunk.front();
        return;
    }
    const auto at = static_cast<std::ptrdiff_t>(place.chunk);
    m_chunks.erase(m_chunks.begin() + at);
    m_firsts.erase(m_firsts.begin() + at);
    m_starts.erase(m_starts.begin() + at);
    m_isNextOrdered = m_isNextOrdered || m_chunks.empty();
}

void NameKeys::split(std::size_t c)
{
    if (m_chunks.size() == m_chunks.capacity())
        m_chunks.reserve(m_chunks.size() * 2);
    m_firsts.reserve(m_chunks.capacity());
    m_starts.reserve(m_chunks.capacity());
    Chunk upper;
    upper.reserve(chunkCapacity);
    const auto at = static_cast<std::ptrdiff_t>(c) + 1;
    // At the end of all keys the chunk stays full, as a list is often filled in order.
    const std::size_t keep = c + 1 == m_chunks.size() ? chunkCapacity * 7 / 8 : chunkCapacity / 2;
    const auto middle = m_chunks[c].begin() + static_cast<std::ptrdiff_t>(keep);
    upper.assign(middle, m_chunks[c].end());
    m_firsts.insert(m_firsts.begin() + at, upper.front());
    m_starts.insert(m_starts.begin() + at, m_starts[c] + static_cast<int>(keep));
    m_chunks.insert(m_chunks.begin() + at, std::move(upper));
    m_chunks[c].resize(keep);
}

void NameKeys::renumber(std::size_t c, int by) noexcept
{
    for (std::size_t i = c + 1; i < m_starts.size(); ++i)
        m_starts[i] += by;
}
} // namespace qo
