#pragma once

#include "common/PtrListT.h"

#include <algorithm>
#include <cstdint>

namespace qo
{
/// Kept in an object for one of the lists that may hold it: the stamps within a list ascend, so
/// that the object's place is found by halving however long the list is. An object that was forced
/// into a second list bears only the stamp of that one; it is then looked for from the start.
using LinkStamp = std::uint32_t;

/// Of an object that no list has held yet.
inline constexpr LinkStamp neverLinked = UINT32_MAX;

/// Appends the object unless the list holds it.
template <class X>
void addLinked(CPtrListT<X>& list, const boost::shared_ptr<X>& object, LinkStamp X::*stamp)
{
    // At the end of the range stamps repeat, and the look-up falls back to the scan.
    const LinkStamp next =
        list.IsEmpty() ? 0
                       : std::min(list[list.GetUpperBound()].get()->*stamp, neverLinked - 2) + 1;
    const bool isNew = object.get()->*stamp == neverLinked;
    if ((isNew ? list.add(object) : list.addUnique(object)) != -1)
        object.get()->*stamp = next;
}

/// Where the stamps say that the object stands; -1 if it does not.
template <class X>
int findLinked(const CPtrListT<X>& list, const boost::shared_ptr<X>& object, LinkStamp X::*stamp)
{
    const LinkStamp wanted = object.get()->*stamp;
    if (wanted == neverLinked || list.IsEmpty())
        return -1;
    if (list[0] == object) // files leave in the order in which they came
        return 0;
    int low = 1;
    int high = list.GetSize();
    while (low < high)
    {
        const int middle = low + (high - low) / 2;
        (list[middle].get()->*stamp < wanted ? low : high) =
            list[middle].get()->*stamp < wanted ? middle + 1 : middle;
    }
    return low < list.GetSize() && list[low] == object ? low : -1;
}

/// Nothing happens if the list does not hold the object.
template <class X>
void removeLinked(CPtrListT<X>& list, const boost::shared_ptr<X>& object, LinkStamp X::*stamp)
{
    const int index = findLinked(list, object, stamp);
    if (index != -1)
        list.RemoveAt(index);
    else
        list.remove(object);
}
} // namespace qo
