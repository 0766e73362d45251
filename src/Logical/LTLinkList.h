#pragma once

#include "Logical/LinkStamp.h"
#include "common/PtrListT.h"

#include <algorithm>
#include <type_traits>

namespace qo
{
/// Where objects of the class have the stamp for a list.
template <class X>
using StampOf = LinkStamp std::type_identity_t<X>::*;

/// Appends the object unless the list holds it.
template <class X>
void addLinked(CPtrListT<X>& list, const boost::shared_ptr<X>& object, StampOf<X> stamp)
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
int findLinked(const CPtrListT<X>& list, const boost::shared_ptr<X>& object, StampOf<X> stamp)
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
void removeLinked(CPtrListT<X>& list, const boost::shared_ptr<X>& object, StampOf<X> stamp)
{
    const int index = findLinked(list, object, stamp);
    if (index != -1)
        list.RemoveAt(index);
    else
        list.remove(object);
}
} // namespace qo
