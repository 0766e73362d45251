#pragma once

#include "Reorganize/ReorganizeRuleNodes.h"

namespace qo
{
/// The list takes the node; on a failure it is the caller's still.
template <class NODE>
void appendNode(CAutoListT<NODE>& nodes, NODE* node)
{
    const int place = nodes.add(node);
    if (node)
        node->m_place = place;
}

/// -1 for a node that is not in the list.
template <class NODE>
int placeOf(const CAutoListT<NODE>& nodes, const CReorganizeRule::CNode* node)
{
    const int hint = node->m_place;
    const bool isThere = hint >= 0 && hint < nodes.GetSize() && nodes.GetAt(hint) == node;
    return isThere ? hint : nodes.find(static_cast<const NODE*>(node));
}

/// The element behind previous, or the first one for null; null behind the last. Passes over nulls
/// in the list.
template <class NODE>
NODE* nextNode(const CAutoListT<NODE>& nodes, const CReorganizeRule::CNode* previous)
{
    int place = previous ? placeOf(nodes, previous) : -1;
    if (previous && place == -1)
        return nullptr;
    while (++place < nodes.GetSize())
    {
        if (NODE* node = nodes.GetAt(place))
            return node;
    }
    return nullptr;
}
} // namespace qo
