#pragma once

#include "common/GenListT.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <new>
#include <unordered_map>
#include <utility>

/// A list of shared objects. Two handles are equal when they point to the same object. Elements are
/// read-only in place, because a long list that is searched often keeps a count for each object,
/// which the operations of this class maintain. So the array must not be changed through a
/// reference to a base class. Not for several threads at once: a search may build the counts.
///
///   Each of 100,000 files is tested for being in a list of 100,000: the first searches compare
///   elements; when they have compared 16 times the length of the list, the counts are built, and
///   from then on an object that is not in the list costs one look-up.
template <class X>
class CPtrListT : public CGenListT<boost::shared_ptr<X>,
                                   const boost::shared_ptr<X>&,
                                   const boost::shared_ptr<X>&>
{
public:
    using Handle = boost::shared_ptr<X>;
    using Base = CGenListT<Handle, const Handle&, const Handle&>;
    using typename Base::Compare;

    CPtrListT() noexcept = default;
    CPtrListT(const CPtrListT&) = default;
    CPtrListT(CPtrListT&&) noexcept = default;
    CPtrListT& operator=(const CPtrListT&) = default;
    CPtrListT& operator=(CPtrListT&&) noexcept = default;
    ~CPtrListT() override = default;

    int addSorted(const Handle& elem, Compare cmp, bool unique) override
    {
        const X* object = elem.get();
        const int index = Base::addSorted(elem, cmp, unique);
        if (index != -1)
            count(object, 1);
        return index;
    }
    bool removeBinary(const Handle& elem, Compare cmp) override
    {
        int index = 0;
        if (!this->findBinary(elem, 0, this->GetSize(), cmp, index))
            return false;
        RemoveAt(index);
        return true;
    }
    int find(const Handle& elem) const override { return mayHold(elem) ? Base::find(elem) : -1; }
    int add(const Handle& elem) override { return Add(elem); }
    bool remove(const Handle& elem) override
    {
        const int index = this->find(elem);
        if (index != -1)
            RemoveAt(index);
        return index != -1;
    }

    int Add(const Handle& elem)
    {
        const X* object = elem.get(); // elem may be an element of this list and move
        const int index = Base::Add(elem);
        count(object, 1);
        return index;
    }
    void InsertAt(int index, const Handle& elem, int times = 1)
    {
        const X* object = elem.get();
        // With several copies, or a gap, a failure half-way could leave elements without a count.
        const bool isPlain = times == 1 && index <= this->GetSize();
        if (!isPlain)
            forgetCounts();
        Base::InsertAt(index, elem, times);
        if (isPlain)
            count(object, 1);
    }
    void RemoveAt(int index, int times = 1)
    {
        if (times == 1)
            count(this->GetAt(index).get(), -1);
        else
            forgetCounts();
        Base::RemoveAt(index, times);
    }
    void SetAt(int index, const Handle& elem)
    {
        forgetCounts();
        Base::SetAt(index, elem);
    }
    void SetAtGrow(int index, const Handle& elem)
    {
        forgetCounts();
        Base::SetAtGrow(index, elem);
    }
    void SetSize(int size)
    {
        forgetCounts();
        Base::SetSize(size);
    }
    int Append(const CPtrListT& other)
    {
        forgetCounts();
        return Base::Append(other);
    }
    void Copy(const CPtrListT& other) { *this = other; }
    const Handle& ElementAt(int index) const noexcept { return this->GetAt(index); }
    const Handle& operator[](int index) const noexcept { return this->GetAt(index); }
    typename Base::const_iterator begin() const noexcept { return Base::begin(); }
    typename Base::const_iterator end() const noexcept { return Base::end(); }

private:
    /// Counts are built when searches have compared this many times the length of the list.
    static constexpr long long patience = 16;

    /// For long lists only; short ones are searched fast enough.
    struct Search : qo::RowNote
    {
        long long scanned = 0; ///< elements looked at without counts
        bool counted = false;
        std::unordered_map<const X*, int> counts;
    };

    /// Null if there are no counts.
    Search* search() const noexcept
    {
        std::unique_ptr<qo::RowNote>* const note = this->note();
        return note ? static_cast<Search*>(note->get()) : nullptr;
    }
    /// Drops the counts; a later search builds them again if it pays.
    void forgetCounts() noexcept
    {
        if (std::unique_ptr<qo::RowNote>* const note = this->note())
            note->reset();
    }

    /// Changes the count of an object, if counts are kept.
    void count(const X* object, int by) noexcept
    try
    {
        Search* const search = this->search();
        if (!search || !search->counted)
            return;
        const auto entry = search->counts.try_emplace(object, 0).first;
        entry->second += by;
        if (entry->second <= 0)
            search->counts.erase(entry);
    }
    catch (const std::bad_alloc&)
    {
        forgetCounts(); // the list has changed already; it works without counts
    }
    /// False only if no element is that object.
    bool mayHold(const Handle& elem) const
    {
        std::unique_ptr<qo::RowNote>* const note = this->note();
        if (!note)
            return true;
        if (!*note)
            *note = std::make_unique<Search>();
        Search& search = *this->search();
        if (!search.counted)
        {
            search.scanned += this->GetSize();
            if (search.scanned < patience * this->GetSize())
                return true;
            std::unordered_map<const X*, int> counts;
            for (const Handle& each : *this)
                ++counts[each.get()];
            search.counts = std::move(counts);
            search.counted = true;
        }
        return search.counts.find(elem.get()) != search.counts.end();
    }
};
