#pragma once

#include "common/BinarySearch.h"
#include "types/Array.h"

#include <cstdlib>
#include <utility>
#include <vector>

/// The list operations of the model, over the growable array. Elements are compared by identity
/// unless a comparison is given. A comparison is negative when its first argument comes before its
/// second. The binary operations need a list that was filled through them with the same comparison.
/// ARG is the type by which an element is passed to be stored, CONST_ARG the type to be compared.
template <class T, class ARG = const T&, class CONST_ARG = const T&>
class CGenListT : public CArray<T, ARG>
{
public:
    using Compare = int (*)(CONST_ARG, CONST_ARG);
    using SortCompare = int (*)(void* context, CONST_ARG, CONST_ARG);

    CGenListT() noexcept = default;
    CGenListT(const CGenListT&) = default;
    CGenListT(CGenListT&&) noexcept = default;
    CGenListT& operator=(const CGenListT&) = default;
    CGenListT& operator=(CGenListT&&) noexcept = default;
    ~CGenListT() override = default;

    /// Inserts before the equal element that the search finds and returns the index; with unique it
    /// returns -1 instead if there is one.
    virtual int addSorted(ARG elem, Compare cmp, bool unique)
    {
        int index = 0;
        if (findBinary(elem, 0, this->GetSize(), cmp, index) && unique)
            return -1;
        this->InsertAt(index, elem);
        return index;
    }
    /// Searches the half-open range from low to high, see qo::searchBinary. False if there is no
    /// equal element; index is then where the key belongs.
    virtual bool findBinary(CONST_ARG key, int low, int high, Compare cmp, int& index) const
    {
        return findByKey(key, low, high, cmp, index);
    }
    /// Removes an equal element; false if there is none.
    virtual bool removeBinary(CONST_ARG elem, Compare cmp)
    {
        int index = 0;
        if (!findBinary(elem, 0, this->GetSize(), cmp, index))
            return false;
        this->RemoveAt(index);
        return true;
    }
    /// The index of the first such element, or -1.
    virtual int find(CONST_ARG elem) const
    {
        int index = 0;
        for (const T& candidate : *this)
        {
            if (candidate == elem)
                return index;
            ++index;
        }
        return -1;
    }
    /// Appends and returns the index.
    virtual int add(ARG elem) { return this->Add(elem); }
    /// Appends unless the element is there: -1 if it is.
    virtual int addUnique(ARG elem) { return find(elem) == -1 ? add(elem) : -1; }
    virtual bool remove(CONST_ARG elem)
    {
        const int index = find(elem);
        if (index != -1)
            this->RemoveAt(index);
        return index != -1;
    }
    virtual void clear() { this->RemoveAll(); }
    /// Sorts. The comparison need not be transitive; if it is not, the order is arbitrary.
    virtual void sort(SortCompare cmp, void* context)
    {
        std::vector<const T*> order;
        order.reserve(static_cast<std::size_t>(this->GetSize()));
        for (const T& elem : std::as_const(*this))
            order.push_back(&elem);
        SortCall call{cmp, context};
        qsort_r(order.data(), order.size(), sizeof(const T*), qsortCmpFunc, &call);
        CArray<T, ARG> sorted;
        for (const T* elem : order)
            sorted.Add(*elem);
        static_cast<CArray<T, ARG>&>(*this) = std::move(sorted);
    }
    virtual const T& getAt(int index) const { return this->GetAt(index); }
    /// The element at the index, which then advances to the next one, or to -1 after the last.
    virtual const T& getNextElem(int& index) const
    {
        const T& elem = this->GetAt(index);
        index = index + 1 < this->GetSize() ? index + 1 : -1;
        return elem;
    }

    /// findBinary() for a key of any type.
    template <class KEY, class CMP>
    bool findByKey(const KEY& key, int low, int high, CMP cmp, int& index) const
    {
        const auto order = [&](int at) { return cmp(key, this->GetAt(at)); };
        return qo::searchBinary(low, high, order, index);
    }

private:
    /// What qsort_r passes to the comparison.
    struct SortCall
    {
        SortCompare compare;
        void* context;
    };
    static int qsortCmpFunc(const void* a, const void* b, void* call)
    {
        const auto* sortCall = static_cast<const SortCall*>(call);
        return sortCall->compare(sortCall->context,
                                 **static_cast<const T* const*>(a),
                                 **static_cast<const T* const*>(b));
    }
};
