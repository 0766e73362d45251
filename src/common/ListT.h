#pragma once

#include "common/GenListT.h"

#include <functional>

/// A list of pointers to objects that belong to others.
template <class X>
class CListT : public CGenListT<X*, X*, const X*>
{
public:
    using Base = CGenListT<X*, X*, const X*>;

    CListT() noexcept = default;
    CListT(const CListT&) = default;
    CListT(CListT&&) noexcept = default;
    CListT& operator=(const CListT&) = default;
    CListT& operator=(CListT&&) noexcept = default;
    ~CListT() override = default;

    int find(const X* elem) const override
    {
        int index = 0;
        for (const X* candidate : *this)
        {
            if (comparePointers(candidate, elem) == 0)
                return index;
            ++index;
        }
        return -1;
    }

    /// By address: negative, 0 or positive.
    static int comparePointers(const X* a, const X* b) noexcept
    {
        return static_cast<int>(std::less<>()(b, a)) - static_cast<int>(std::less<>()(a, b));
    }
};
