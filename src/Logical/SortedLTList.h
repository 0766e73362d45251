#pragma once

#include "Logical/LTList.h"
#include "Logical/NameKeys.h"
#include "Logical/UnusedNotes.h"
#include "common/BinarySearch.h"

namespace qo
{
/// How a list treats objects without a name.
enum class Unknown
{
    first, ///< ordered before all others; equal to nothing
    named  ///< compared like any other name
};

/// A list that is kept sorted by insertion: each object stands where the search for its tag ended.
/// All comparisons begin with the name, so the keys of the names (NameKeys) ascend even where the
/// rest of a comparison is not transitive.
///
///   The search for "Gold" in {Dawn, Gold, Gold, Gold, Night} asks the same positions as a plain
///   binary search. Positions outside of [1, 4), the range of the key, are answered by the keys;
///   only the objects in the range are really compared. The result is the same, with far fewer
///   reads of memory.
template <class X>
class SortedLTList final : public LTListOf<X>
{
public:
    SortedLTList(CPtrListT<X>& list, Unknown unknown) noexcept
        : LTListOf<X>(list), m_unknown(unknown)
    {
    }

    /// Searches the whole list with searchBinary(). compare(object) gives the order of what is
    /// searched, whose key is given, against an object. isNextSure: the second names of the keys
    /// are in order too, so they may be used. False when not found; position is then where it
    /// belongs.
    template <class COMPARE>
    bool find(const NameKeys::Key& key, bool isNextSure, COMPARE compare, int& position)
    {
        const NameKeys::Range same = isNextSure ? m_keys.find(key) : m_keys.findName(key);
        position = same.first;
        if (same.first == same.behind)
            return false;
        announce(same);
        const auto order = [&](int index)
        {
            if (index < same.first)
                return 1;
            return index >= same.behind ? -1 : compare(this->m_list[index]);
        };
        return searchBinary(0, this->m_list.GetSize(), order, position);
    }
    /// Inserts at the position that find() gave for the key. If it throws, nothing has changed.
    void insert(int position, const boost::shared_ptr<X>& object, const NameKeys::Key& key)
    {
        const bool ahead = m_unknown == Unknown::first && object->isUnknown();
        m_keys.insert(position, ahead ? NameKeys::unknown : key);
        try
        {
            this->m_list.InsertAt(position, object);
        }
        catch (...)
        {
            m_keys.remove(position);
            throw;
        }
        UnusedNotes::instance().add(object.get(),
                                    object->getType()); // it is unused until it is linked
    }
    void clear() override
    {
        m_keys.clear();
        LTListOf<X>::clear();
    }

protected:
    void removeAt(int index) override
    {
        m_keys.remove(index);
        LTListOf<X>::removeAt(index);
    }
    void pack(const std::vector<int>& removed) override
    {
        NameKeys keys;
        int count = 0;
        this->forEachKept(removed, [&](int index) { keys.insert(count++, m_keys.at(index)); });
        LTListOf<X>::pack(removed);
        m_keys = std::move(keys);
    }

private:
    /// Asks the processor to load the objects that will be compared, which are scattered in memory.
    /// In a long range the search compares only a few, so that is left alone.
    void announce(const NameKeys::Range& range) const noexcept
    {
        constexpr int manyFrom = 8;
        constexpr std::size_t cacheLine = 64;
        if (range.behind - range.first > manyFrom)
            return;
        for (int index = range.first; index < range.behind; ++index)
        {
            const auto* object = reinterpret_cast<const char*>(this->m_list[index].get());
            for (std::size_t line = 0; line < sizeof(X); line += cacheLine)
                __builtin_prefetch(object + line);
        }
    }

    NameKeys m_keys;
    Unknown m_unknown;
};
} // namespace qo
