#pragma once

#include "Logical/LinkStamp.h"
#include "common/PtrListT.h"

#include <algorithm>
#include <type_traits>

namespace qo
{
/// The member of an object that holds its stamp for a list; see LinkStamp.h.
template <class X>
using StampOf = LinkStamp std::type_identity_t<X>::*;

/// Appends the object unless the list holds it, and gives it the next higher stamp. An object
/// without a stamp was never in a list, so the list need not be searched for it.
template <class X>
void addLinked(CPtrListT<X>& list, const boost::shared_ptr<X>& object, StampOf<X> stamp)
{
    // When the numbers are used up stamps repeat; findLinked() may then miss an object, and
    // removeLinked() searches the whole list.
    const LinkStamp next =
        list.IsEmpty() ? 0
                       : std::min(list[list.GetUpperBound()].get()->*stamp, neverLinked - 2) + 1;
    const bool isNew = object.get()->*stamp == neverLinked;
    if ((isNew ? list.add(object) : list.addUnique(object)) != -1)
        object.get()->*stamp = next;
}

/// Finds the object by halving over the stamps, which ascend within the list. -1 if it is not where
/// its stamp belongs; a caller must then search the list from the start.
///
///   Example: an album's tracks A, B, C have the stamps 0, 1, 2. B leaves, D comes: A 0, C 2, D 3.
///   C is found by its 2, whatever left before it.
template <class X>
int findLinked(const CPtrListT<X>& list, const boost::shared_ptr<X>& object, StampOf<X> stamp)
{
    const LinkStamp wanted = object.get()->*stamp;
    if (wanted == neverLinked || list.IsEmpty())
        return -1;
    if (list[0] == object) // files mostly leave in the order in which they came
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

/// Removes the object; nothing happens if the list does not hold it.
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
