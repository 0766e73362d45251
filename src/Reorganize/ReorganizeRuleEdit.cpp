#include "Analyze/MakeOwned.h"
#include "Reorganize/NodeList.h"
#include "Reorganize/ReorganizeRule.h"

#include <algorithm>
#include <cassert>

// Adding and removing nodes. Whatever may throw happens before the tree changes.

namespace
{
/// A node without a parent for the rule, which is deleted if that fails.
template <class NODE, class RULE>
std::unique_ptr<NODE> makeNode(RULE* rule)
{
    std::unique_ptr<RULE> owned(rule);
    auto node = qo::makeOwned<NODE>(QO_HERE(u".\\Reorganize\\ReorganizeRule"), nullptr);
    node->m_rule = owned.release();
    return node;
}

/// A separating node with an output for each one of its rule.
std::unique_ptr<CReorganizeRule::CSeperateRuleNode> makeSeperateRuleNode(CSeperateRule* rule)
{
    auto node = makeNode<CReorganizeRule::CSeperateRuleNode>(rule);
    for (int i = 0; i < rule->getOutputCount(); ++i)
    {
        using Output = CReorganizeRule::CSeperateRuleOutputNode;
        auto output = qo::makeOwned<Output>(
            QO_HERE(u".\\Reorganize\\ReorganizeRule"), nullptr, rule->getOutputType(i));
        node->addOutputNode(output.get());
        output.release();
    }
    return node;
}

/// Whether the type is in the list.
bool holds(const CReorganizeRule::CSeperateRuleOutputList& outputs, int type)
{
    return std::find(outputs.begin(), outputs.end(), type) != outputs.end();
}
} // namespace

void CReorganizeRule::removeNode(CNode* node)
{
    if (node->m_parent)
        node->m_parent->removeSubNode(node);
    else if (m_nodes.remove(node))
        delete node;
}

void CReorganizeRule::attach(std::unique_ptr<CNode> node, CSeperateRuleOutputNode* parent)
{
    if (parent)
    {
        if (parent->m_link)
            m_replaced.add(parent->m_link);
        parent->setLinkNode(node.release());
        return;
    }
    qo::appendNode(m_nodes, node.get());
    node.release();
}

CReorganizeRule::CSeperateRuleOutputNode* CReorganizeRule::findParent(const CSeperateRule* rule,
                                                                      int outputType) const
{
    return rule ? findSeperateRuleOutput(rule, outputType) : nullptr;
}

CReorganizeRule::CSeperateRuleNode*
CReorganizeRule::addSeperateRule(CSeperateRule* rule, CSeperateRuleOutputNode* parent)
{
    auto node = makeSeperateRuleNode(rule);
    CSeperateRuleNode* const added = node.get();
    attach(std::move(node), parent);
    return added;
}

CReorganizeRule::CSeperateRuleNode* CReorganizeRule::addSeperateRule(
    CSeperateRule* rule, const CSeperateRule* parentRule, int outputType)
{
    return addSeperateRule(rule, findParent(parentRule, outputType));
}

CReorganizeRule::CSubdirRuleNode* CReorganizeRule::addSubdirRule(CSubdirRule* rule,
                                                                 CSeperateRuleOutputNode* parent)
{
    auto node = makeNode<CSubdirRuleNode>(rule);
    CSubdirRuleNode* const added = node.get();
    attach(std::move(node), parent);
    return added;
}

CReorganizeRule::CSubdirRuleNode*
CReorganizeRule::addSubdirRule(CSubdirRule* rule, const CSeperateRule* parentRule, int outputType)
{
    return addSubdirRule(rule, findParent(parentRule, outputType));
}

CReorganizeRule::CRenameRuleNode* CReorganizeRule::addRenameRule(CRenameRule* rule,
                                                                 CSubdirRuleNode* parent)
{
    auto node = makeNode<CRenameRuleNode>(rule);
    CRenameRuleNode* const added = node.get();
    if (parent)
    {
        parent->addRenameRuleNode(added);
        node.release();
    }
    else
        attach(std::move(node), nullptr);
    return added;
}

CReorganizeRule::CRenameRuleNode* CReorganizeRule::addRenameRule(CRenameRule* rule,
                                                                 const CSubdirRule* parentRule)
{
    return addRenameRule(rule, parentRule ? findSubdirRuleInfo(parentRule) : nullptr);
}

CReorganizeRule::CSeperateRuleNode* CReorganizeRule::addParentSeperateRule(
    CSeperateRule* rule, const CNode* child, CSeperateRuleOutputList* outputs)
{
    assert(!child->m_parent || child->m_parent->m_type == CNode::NT_SeperateRuleOutput);
    auto node = makeSeperateRuleNode(rule);
    for (CSeperateRuleOutputNode* output : node->m_outputs)
    {
        if (!outputs || holds(*outputs, output->m_outputType))
            output->setLinkNode(child->clone());
    }
    CSeperateRuleNode* const added = node.get();
    auto* const parent = static_cast<CSeperateRuleOutputNode*>(child->m_parent);
    // The child is removed from the top level only after the new node was attached, which may
    // throw.
    const int place = parent ? -1 : qo::placeOf(m_nodes, child);
    if (parent)
        parent->m_link = nullptr;
    attach(std::move(node), parent);
    if (place != -1)
        m_nodes.RemoveAt(place);
    delete child;
    return added;
}

void CReorganizeRule::removeSeperateRule(CSeperateRuleNode* node, int keptOutput)
{
    const CSeperateRuleOutputNode* const kept = node->getOutput(keptOutput);
    // The branch is copied before the node with its outputs is deleted.
    std::unique_ptr<CNode> branch(kept && kept->m_link ? kept->m_link->clone() : nullptr);
    auto* const parent = static_cast<CSeperateRuleOutputNode*>(node->m_parent);
    removeNode(node);
    attach(std::move(branch), parent);
}
