#include "Reorganize/ReorganizeRule.h"

#include "Reorganize/NodeList.h"

// Walking and searching the tree of a rule; what changes the tree is in ReorganizeRuleEdit.cpp.

namespace
{
using Node = CReorganizeRule::CNode;

/// Predicates get addresses as numbers.
unsigned long toNumber(const void* address)
{
    static_assert(sizeof(unsigned long) >= sizeof(address));
    return reinterpret_cast<unsigned long>(address);
}

template <class NODE>
bool isNodeOf(const Node* node, Node::EType type, unsigned long rule)
{
    return node->m_type == type && toNumber(static_cast<const NODE*>(node)->m_rule) == rule;
}

template <class NODE>
bool hasNoValidRule(const Node* node)
{
    const auto* rule = static_cast<const NODE*>(node)->m_rule;
    return !rule || !rule->isValid();
}
} // namespace

CReorganizeRule::CReorganizeRule() = default;

CReorganizeRule::~CReorganizeRule() = default;

void CReorganizeRule::clear()
{
    m_nodes.clear();
    m_replaced.clear();
}

/// Nulls are copied too, so an invalid rule stays invalid.
void CReorganizeRule::copyFrom(const CReorganizeRule* other)
{
    if (other == this)
        return;
    clear();
    m_name = other->m_name;
    for (const CNode* node : other->m_nodes)
    {
        std::unique_ptr<CNode> copy(node ? node->clone() : nullptr);
        qo::appendNode(m_nodes, copy.get());
        copy.release();
    }
    m_unknownAttribsDefValues.copyFrom(other->m_unknownAttribsDefValues);
}

bool CReorganizeRule::isEmpty() const
{
    return m_nodes.IsEmpty();
}

bool CReorganizeRule::isValid() const
{
    return !isEmpty() && m_nodes.find(nullptr) == -1 && !findNode(isInvalidNode, 0, 0);
}

/// A predicate for findNode(); see isValid() for what makes a node invalid.
bool CReorganizeRule::isInvalidNode(const CNode* node, unsigned long, unsigned long)
{
    switch (node->m_type)
    {
    case CNode::NT_SeperateRule:
        return static_cast<const CSeperateRuleNode*>(node)->m_outputs.IsEmpty();
    case CNode::NT_SeperateRuleOutput:
        return !static_cast<const CSeperateRuleOutputNode*>(node)->m_link;
    case CNode::NT_SubdirRule:
        return hasNoValidRule<CSubdirRuleNode>(node) ||
               static_cast<const CSubdirRuleNode*>(node)->m_renameRules.IsEmpty();
    case CNode::NT_RenameRule:
        return hasNoValidRule<CRenameRuleNode>(node);
    }
    return true;
}

bool CReorganizeRule::isRenameRuleNode(const CNode* node, unsigned long, unsigned long)
{
    return node->m_type == CNode::NT_RenameRule;
}

bool CReorganizeRule::isValidSeperateRuleChild(const CNode* node)
{
    return node->m_type == CNode::NT_SeperateRule || node->m_type == CNode::NT_SubdirRule;
}

CReorganizeRule::CNode* CReorganizeRule::getFirstNode() const
{
    return qo::nextNode(m_nodes, nullptr);
}

/// The first child, else the next sibling of the node or of the nearest parent that has one.
CReorganizeRule::CNode* CReorganizeRule::getNextNode(const CNode* node) const
{
    if (CNode* child = node->getNextSubNode(nullptr))
        return child;
    for (; node->m_parent; node = node->m_parent)
    {
        if (CNode* sibling = node->m_parent->getNextSubNode(node))
            return sibling;
    }
    return qo::nextNode(m_nodes, node);
}

CReorganizeRule::CNode*
CReorganizeRule::findNode(NodePredicate predicate, unsigned long first, unsigned long second) const
{
    for (CNode* node = getFirstNode(); node; node = getNextNode(node))
    {
        if (predicate(node, first, second))
            return node;
    }
    return nullptr;
}

bool CReorganizeRule::equalsSeperateRuleOutput(const CNode* node,
                                               unsigned long rule,
                                               unsigned long outputType)
{
    return node->m_type == CNode::NT_SeperateRuleOutput &&
           isNodeOf<CSeperateRuleNode>(node->m_parent, CNode::NT_SeperateRule, rule) &&
           static_cast<const CSeperateRuleOutputNode*>(node)->m_outputType ==
               static_cast<int>(outputType);
}

CReorganizeRule::CSeperateRuleOutputNode*
CReorganizeRule::findSeperateRuleOutput(const CSeperateRule* rule, int outputType) const
{
    const auto type = static_cast<unsigned long>(outputType);
    return static_cast<CSeperateRuleOutputNode*>(
        findNode(equalsSeperateRuleOutput, toNumber(rule), type));
}

bool CReorganizeRule::equalsSeperateRule(const CNode* node, unsigned long rule, unsigned long)
{
    return isNodeOf<CSeperateRuleNode>(node, CNode::NT_SeperateRule, rule);
}

CReorganizeRule::CSeperateRuleNode*
CReorganizeRule::findSeperateRule(const CSeperateRule* rule) const
{
    return static_cast<CSeperateRuleNode*>(findNode(equalsSeperateRule, toNumber(rule), 0));
}

bool CReorganizeRule::equalsSubdirRule(const CNode* node, unsigned long rule, unsigned long)
{
    return isNodeOf<CSubdirRuleNode>(node, CNode::NT_SubdirRule, rule);
}

CReorganizeRule::CSubdirRuleNode* CReorganizeRule::findSubdirRuleInfo(const CSubdirRule* rule) const
{
    return static_cast<CSubdirRuleNode*>(findNode(equalsSubdirRule, toNumber(rule), 0));
}

void CReorganizeRule::getUsedAttribs(const CNSNamePattern& pattern, AttribList& attribs) const
{
    for (const CNSAtom* atom : pattern.m_atoms)
    {
        if (atom->m_type != CNSAtom::FixedString)
            attribs.add(atom->m_type);
    }
}

void CReorganizeRule::getUsedAttribs(AttribList& attribs) const
{
    for (const CNode* node = getFirstNode(); node; node = getNextNode(node))
    {
        if (node->m_type == CNode::NT_SubdirRule)
            getUsedAttribs(static_cast<const CSubdirRuleNode*>(node)->m_rule->m_pattern, attribs);
        else if (node->m_type == CNode::NT_RenameRule)
            getUsedAttribs(static_cast<const CRenameRuleNode*>(node)->m_rule->m_pattern, attribs);
    }
}

void CReorganizeRule::clearUnknownAttribsDefValues()
{
    m_unknownAttribsDefValues.clear();
}

bool CReorganizeRule::getUnknownAttribDefValue(CNSAtom::EType type, CString& value) const
{
    const CNSAtom* atom = m_unknownAttribsDefValues.getAtom(type, 0);
    if (atom)
        value = atom->m_value;
    return atom;
}

void CReorganizeRule::setUnknownAttribDefValue(CNSAtom::EType type, const CString& value)
{
    m_unknownAttribsDefValues.setAtom(type, value);
}
