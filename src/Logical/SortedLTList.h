#pragma once

#include "Logical/LTList.h"
#include "Logical/NameKeys.h"
#include "Logical/UnusedNotes.h"
#include "common/BinarySearch.h"

namespace qo
{
/// How a list takes objects without a name.
enum class Unknown
{
    first, ///< they stand ahead of all others and equal nothing
    named  ///< they are compared as those with the shortest name
};

/// A list that is kept sorted by hand: each object stands where the search for its tag led. All
/// comparisons go by the name first, so that the keys of the names ascend even where the rest of
/// a comparison is not transitive, and most elements that the search asks are judged by them.
template <class X>
class SortedLTList final : public LTListOf<X>
{
public:
    SortedLTList(CPtrListT<X>& list, Unknown unknown) noexcept
        : LTListOf<X>(list), m_unknown(unknown)
    {
    }

    /// findBinary() over the whole list: compare(object) compares what is looked for, which has
    /// that key, with an object. Unless the next names are sure only the first ones spare looks.
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
    /// At the position that find() gave for the key.
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
        UnusedNotes::instance().add(object.get(), object->getType()); // until it is linked
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
    /// Tells the processor of the objects that will be asked, which lie anywhere in memory. Of many
    /// the search asks only a few.
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
