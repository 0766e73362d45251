#pragma once

#include "common/PtrListT.h"

/// A list of shared objects that is kept sorted. Everything is found by comparison and not by
/// identity, so searching for one object may find another one that compares equal.
template <class X>
class CQoSortedPtrList : public CPtrListT<X>
{
public:
    using typename CPtrListT<X>::Handle;
    using typename CPtrListT<X>::Compare;

    explicit CQoSortedPtrList(Compare compare) noexcept : m_compare(compare) {}

    int find(const Handle& elem) const override
    {
        int index = 0;
        return this->findBinary(elem, 0, this->GetSize(), m_compare, index) ? index : -1;
    }
    int add(const Handle& elem) override { return this->addSorted(elem, m_compare, false); }
    int addUnique(const Handle& elem) override { return this->addSorted(elem, m_compare, true); }
    bool remove(const Handle& elem) override { return this->removeBinary(elem, m_compare); }

private:
    Compare m_compare;
};
