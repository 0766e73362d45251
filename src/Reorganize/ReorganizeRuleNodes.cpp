#include "Reorganize/ReorganizeRuleNodes.h"

#include "Analyze/MakeOwned.h"
#include "Reorganize/NodeList.h"

// Copying, walking and freeing of nodes. Each class answers for its own children: outputs, a link,
// or rename nodes.

namespace
{
/// A copy made by copyFrom(), with the arguments for its constructor.
template <class NODE, class... Args>
CReorganizeRule::CNode* cloneNode(const NODE& node, Args... args)
{
    auto copy = qo::makeOwned<NODE>(QO_HERE(u".\\Reorganize\\ReorganizeRule"), args...);
    copy->copyFrom(&node);
    return copy.release();
}

/// Appends a node to a list of the parent.
template <class NODE>
void append(CAutoListT<NODE>& nodes, NODE* node, CReorganizeRule::CNode* parent)
{
    qo::appendNode(nodes, node);
    node->m_parent = parent;
}

template <class NODE>
void cloneNodes(const CAutoListT<NODE>& nodes, CAutoListT<NODE>& copies, CReorganizeRule::CNode* to)
{
    for (const NODE* node : nodes)
    {
        std::unique_ptr<NODE> copy(static_cast<NODE*>(node->clone()));
        append(copies, copy.get(), to);
        copy.release();
    }
}

/// A copy of a rule or node; null for null.
template <class RULE>
RULE* cloneRule(const RULE* rule)
{
    return rule ? rule->clone() : nullptr;
}
} // namespace

CReorganizeRule::CNode::~CNode() = default;

CReorganizeRule::CNode* CReorganizeRule::CNode::getNextSubNode(const CNode* /*previous*/) const
{
    return nullptr;
}

void CReorganizeRule::CNode::removeSubNode(CNode* /*node*/) {}

CReorganizeRule::CSeperateRuleNode::CSeperateRuleNode(CSeperateRuleOutputNode* parent)
    : CNode(NT_SeperateRule)
{
    if (parent)
        parent->setLinkNode(this);
}

CReorganizeRule::CSeperateRuleNode::~CSeperateRuleNode()
{
    delete m_rule;
}

CReorganizeRule::CNode* CReorganizeRule::CSeperateRuleNode::clone() const
{
    return cloneNode(*this, nullptr);
}

CReorganizeRule::CNode*
CReorganizeRule::CSeperateRuleNode::getNextSubNode(const CNode* previous) const
{
    return qo::nextNode(m_outputs, previous);
}

void CReorganizeRule::CSeperateRuleNode::copyFrom(const CSeperateRuleNode* other)
{
    clear();
    CNode::copyFrom(other);
    m_rule = cloneRule(other->m_rule);
    cloneNodes(other->m_outputs, m_outputs, this);
}

void CReorganizeRule::CSeperateRuleNode::clear()
{
    delete std::exchange(m_rule, nullptr);
    m_outputs.clear();
}

void CReorganizeRule::CSeperateRuleNode::addOutputNode(CSeperateRuleOutputNode* output)
{
    append(m_outputs, output, this);
}

CReorganizeRule::CSeperateRuleOutputNode*
CReorganizeRule::CSeperateRuleNode::getOutput(int outputType) const
{
    for (CSeperateRuleOutputNode* output : m_outputs)
    {
        if (output->m_outputType == outputType)
            return output;
    }
    return nullptr;
}

CReorganizeRule::CSeperateRuleOutputNode::CSeperateRuleOutputNode(CSeperateRuleNode* parent,
                                                                  int outputType)
    : CNode(NT_SeperateRuleOutput), m_outputType(outputType)
{
    if (parent)
        parent->addOutputNode(this);
}

CReorganizeRule::CSeperateRuleOutputNode::~CSeperateRuleOutputNode()
{
    delete m_link;
}

CReorganizeRule::CNode* CReorganizeRule::CSeperateRuleOutputNode::clone() const
{
    return cloneNode(*this, nullptr, m_outputType);
}

CReorganizeRule::CNode*
CReorganizeRule::CSeperateRuleOutputNode::getNextSubNode(const CNode* previous) const
{
    return previous && previous == m_link ? nullptr : m_link;
}

void CReorganizeRule::CSeperateRuleOutputNode::removeSubNode(CNode* node)
{
    if (node && node == m_link)
        clear();
}

void CReorganizeRule::CSeperateRuleOutputNode::copyFrom(const CSeperateRuleOutputNode* other)
{
    clear();
    CNode::copyFrom(other);
    m_outputType = other->m_outputType;
    setLinkNode(cloneRule(other->m_link));
}

void CReorganizeRule::CSeperateRuleOutputNode::clear()
{
    delete std::exchange(m_link, nullptr);
}

void CReorganizeRule::CSeperateRuleOutputNode::setLinkNode(CNode* node)
{
    m_link = node;
    if (node)
        node->m_parent = this;
}

CReorganizeRule::CSubdirRuleNode::CSubdirRuleNode(CSeperateRuleOutputNode* parent)
    : CNode(NT_SubdirRule)
{
    if (parent)
        parent->setLinkNode(this);
}

CReorganizeRule::CSubdirRuleNode::~CSubdirRuleNode()
{
    delete m_rule;
}

CReorganizeRule::CNode* CReorganizeRule::CSubdirRuleNode::clone() const
{
    return cloneNode(*this, nullptr);
}

CReorganizeRule::CNode*
CReorganizeRule::CSubdirRuleNode::getNextSubNode(const CNode* previous) const
{
    return qo::nextNode(m_renameRules, previous);
}

void CReorganizeRule::CSubdirRuleNode::removeSubNode(CNode* node)
{
    if (node && node->m_type == NT_RenameRule &&
        m_renameRules.remove(static_cast<CRenameRuleNode*>(node)))
        delete node;
}

void CReorganizeRule::CSubdirRuleNode::copyFrom(const CSubdirRuleNode* other)
{
    clear();
    CNode::copyFrom(other);
    m_rule = cloneRule(other->m_rule);
    cloneNodes(other->m_renameRules, m_renameRules, this);
}

void CReorganizeRule::CSubdirRuleNode::clear()
{
    delete std::exchange(m_rule, nullptr);
    m_renameRules.clear();
}

void CReorganizeRule::CSubdirRuleNode::addRenameRuleNode(CRenameRuleNode* node)
{
    append(m_renameRules, node, this);
}

CReorganizeRule::CRenameRuleNode::CRenameRuleNode(CSubdirRuleNode* parent) : CNode(NT_RenameRule)
{
    if (parent)
        parent->addRenameRuleNode(this);
}

CReorganizeRule::CRenameRuleNode::~CRenameRuleNode()
{
    delete m_rule;
}

CReorganizeRule::CNode* CReorganizeRule::CRenameRuleNode::clone() const
{
    return cloneNode(*this, nullptr);
}

void CReorganizeRule::CRenameRuleNode::copyFrom(const CRenameRuleNode* other)
{
    CNode::copyFrom(other);
    delete std::exchange(m_rule, nullptr);
    m_rule = cloneRule(other->m_rule);
}
