#pragma once

#include "Reorganize/ReorganizeRuleNodes.h"

namespace qo
{
/// Appends a node, which then belongs to the list; if that throws it still belongs to the caller.
template <class NODE>
void appendNode(CAutoListT<NODE>& nodes, NODE* node)
{
    const int place = nodes.add(node);
    if (node)
        node->m_place = place;
}

/// The index of the node; -1 if it is not in the list. Tries the position where the node was put
/// before it searches.
template <class NODE>
int placeOf(const CAutoListT<NODE>& nodes, const CReorganizeRule::CNode* node)
{
    const int hint = node->m_place;
    const bool isThere = hint >= 0 && hint < nodes.GetSize() && nodes.GetAt(hint) == node;
    return isThere ? hint : nodes.find(static_cast<const NODE*>(node));
}

/// The element after previous, or the first one for null; null after the last. Skips nulls in the
/// list.
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
