#pragma once

#include "Analyze/NSNamePattern.h"
#include "Reorganize/Forward.h"
#include "common/AutoListT.h"

#include <memory>

/// How the files of a collection are to be laid out on disk: a tree in which separating nodes send
/// a file down one of their outputs, subdirectory nodes give the folder and rename nodes below them
/// the name for each kind of file. Every node owns what lies below it, the rule owns the top. The
/// node classes stand in Reorganize/ReorganizeRuleNodes.h. No locks.
///
/// Pointers to nodes that a call takes must be of this rule. An allocation that fails ends in
/// qo::throwOutOfMemory(); the rule then stays as it was, and what was to be added is deleted.
class QO_API CReorganizeRule
{
public:
    class CNode;
    class CSeperateRuleNode;
    class CSeperateRuleOutputNode;
    class CSubdirRuleNode;
    class CRenameRuleNode;

    /// Types of outputs.
    using CSeperateRuleOutputList = CArray<int>;
    using AttribList = CGenListT<CNSAtom::EType>;
    using NodePredicate = bool (*)(const CNode*, unsigned long, unsigned long);

    static constexpr int defaultPrio = 65535;

    CReorganizeRule();
    CReorganizeRule(const CReorganizeRule&) = delete;
    CReorganizeRule& operator=(const CReorganizeRule&) = delete;
    virtual ~CReorganizeRule();

    /// Deletes all nodes; name, default values and m_prio stay.
    void clear();
    /// Everything but m_prio: each rule keeps its own place among the rules.
    void copyFrom(const CReorganizeRule* other);

    bool isEmpty() const;
    /// Whether every separating node has outputs and every output a link, every subdirectory node
    /// has a rename node, and the rules of all nodes are valid.
    bool isValid() const;
    static bool isInvalidNode(const CNode* node, unsigned long, unsigned long);
    static bool isRenameRuleNode(const CNode* node, unsigned long, unsigned long);
    /// Whether the node may hang under an output.
    static bool isValidSeperateRuleChild(const CNode* node);

    /// The walk over all nodes, each before those below it; null behind the last. The tree must not
    /// change meanwhile.
    CNode* getFirstNode() const;
    CNode* getNextNode(const CNode* node) const;
    /// The first node of the walk that the predicate takes, or null. It gets both numbers.
    CNode* findNode(NodePredicate predicate, unsigned long first, unsigned long second) const;
    CSeperateRuleOutputNode* findSeperateRuleOutput(const CSeperateRule* rule,
                                                    int outputType) const;
    CSeperateRuleNode* findSeperateRule(const CSeperateRule* rule) const;
    CSubdirRuleNode* findSubdirRuleInfo(const CSubdirRule* rule) const;
    /// The predicates of the three: the node's rule is the one at that address.
    static bool
    equalsSeperateRuleOutput(const CNode* node, unsigned long rule, unsigned long outputType);
    static bool equalsSeperateRule(const CNode* node, unsigned long rule, unsigned long);
    static bool equalsSubdirRule(const CNode* node, unsigned long rule, unsigned long);

    /// Deletes the node with all below it. An output of a separating node cannot be removed alone.
    void removeNode(CNode* node);

    /// Take over the rule and return its new node: under the parent, or at the end of the top level
    /// without one. What hung under that output leaves the tree, and is deleted with this rule. A
    /// separating node comes with an output for each of its rule's. A parent that is given by its
    /// rule and is not found counts as none.
    CSeperateRuleNode* addSeperateRule(CSeperateRule* rule, CSeperateRuleOutputNode* parent);
    CSeperateRuleNode*
    addSeperateRule(CSeperateRule* rule, const CSeperateRule* parentRule, int outputType);
    CSubdirRuleNode* addSubdirRule(CSubdirRule* rule, CSeperateRuleOutputNode* parent);
    CSubdirRuleNode*
    addSubdirRule(CSubdirRule* rule, const CSeperateRule* parentRule, int outputType);
    CRenameRuleNode* addRenameRule(CRenameRule* rule, CSubdirRuleNode* parent);
    CRenameRuleNode* addRenameRule(CRenameRule* rule, const CSubdirRule* parentRule);

    /// Puts a separating node where the child is, a node of the top level or under an output, and a
    /// copy of the child's tree under each output whose type is listed, or under all without a
    /// list. The child is deleted. A node of the top level ends up as the last there.
    CSeperateRuleNode* addParentSeperateRule(CSeperateRule* rule,
                                             const CNode* child,
                                             CSeperateRuleOutputList* outputs);
    /// Deletes the node and puts a copy of what hung under the kept output in its place, at the end
    /// of the top level or under the parent. An output without a link leaves a null there, with
    /// which no rule is valid.
    void removeSeperateRule(CSeperateRuleNode* node, int keptOutput);

    /// Append the types of the atoms that are no fixed texts, as often as they occur.
    void getUsedAttribs(const CNSNamePattern& pattern, AttribList& attribs) const;
    void getUsedAttribs(AttribList& attribs) const;

    void clearUnknownAttribsDefValues();
    /// False, with the value as it was, for an attribute without one.
    bool getUnknownAttribDefValue(CNSAtom::EType type, CString& value) const;
    void setUnknownAttribDefValue(CNSAtom::EType type, const CString& value);

    CString m_name; ///< for display
    CAutoListT<CNode> m_nodes;
    /// At most one atom for each attribute: the text that stands for it where a file has none.
    CNSNamePattern m_unknownAttribsDefValues;
    int m_prio = defaultPrio; ///< see CReorganizeUtils::compareRules

private:
    /// Under the output, or at the end of the top level without one.
    void attach(std::unique_ptr<CNode> node, CSeperateRuleOutputNode* parent);
    CSeperateRuleOutputNode* findParent(const CSeperateRule* rule, int outputType) const;

    CAutoListT<CNode> m_replaced; ///< pushed out of their outputs by nodes that came later
};
