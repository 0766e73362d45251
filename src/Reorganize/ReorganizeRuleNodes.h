#pragma once

#include "Reorganize/RenameRule.h"
#include "Reorganize/ReorganizeRule.h"
#include "Reorganize/SeperateRule.h"
#include "Reorganize/SubdirRule.h"

#include <memory>

/// A node in the tree of a rule. A constructor with a parent links the new node to it, and the
/// parent then owns it. Copies are deep and have no parent.
class QO_API CReorganizeRule::CNode
{
public:
    enum EType : int
    {
        NT_SeperateRule = 1,
        NT_SeperateRuleOutput = 2,
        NT_SubdirRule = 4,
        NT_RenameRule = 8
    };

    explicit CNode(EType type) : m_type(type) {}
    CNode(const CNode&) = delete;
    CNode& operator=(const CNode&) = delete;
    virtual ~CNode();
    /// A new node that belongs to the caller.
    virtual CNode* clone() const = 0;
    /// The child after previous, or the first one for null; null after the last.
    virtual CNode* getNextSubNode(const CNode* previous) const;
    /// Deletes a child if single children may be removed; otherwise does nothing.
    virtual void removeSubNode(CNode* node);

    void copyFrom(const CNode* other) { m_type = other->m_type; }

    EType m_type;
    CNode* m_parent = nullptr; ///< null at the top level

    /// The position at which the node was put into its list. It may be outdated by removals, and
    /// only saves a search when stepping to the next node.
    int m_place = -1;
};

/// Sends a file to one of its outputs.
class QO_API CReorganizeRule::CSeperateRuleNode final : public CNode
{
public:
    explicit CSeperateRuleNode(CSeperateRuleOutputNode* parent);
    ~CSeperateRuleNode() override;
    CNode* clone() const override;
    CNode* getNextSubNode(const CNode* previous) const override;

    void copyFrom(const CSeperateRuleNode* other);
    void clear();
    /// Takes ownership.
    void addOutputNode(CSeperateRuleOutputNode* output);
    /// Null for an unknown type.
    CSeperateRuleOutputNode* getOutput(int outputType) const;

    CSeperateRule* m_rule = nullptr; ///< owned
    CAutoListT<CSeperateRuleOutputNode> m_outputs;
};

/// One output of a separating node; its link is what follows for files of this output.
class QO_API CReorganizeRule::CSeperateRuleOutputNode final : public CNode
{
public:
    CSeperateRuleOutputNode(CSeperateRuleNode* parent, int outputType);
    ~CSeperateRuleOutputNode() override;
    CNode* clone() const override;
    CNode* getNextSubNode(const CNode* previous) const override;
    void removeSubNode(CNode* node) override;

    void copyFrom(const CSeperateRuleOutputNode* other);
    void clear();
    /// Takes ownership and becomes the parent; null means no link. The former link then belongs to
    /// the caller.
    void setLinkNode(CNode* node);

    int m_outputType;
    CNode* m_link = nullptr; ///< owned
};

/// Gives the folder of a file; the rename nodes below it give the name.
class QO_API CReorganizeRule::CSubdirRuleNode final : public CNode
{
public:
    explicit CSubdirRuleNode(CSeperateRuleOutputNode* parent);
    ~CSubdirRuleNode() override;
    CNode* clone() const override;
    CNode* getNextSubNode(const CNode* previous) const override;
    void removeSubNode(CNode* node) override;

    void copyFrom(const CSubdirRuleNode* other);
    void clear();
    /// Takes ownership.
    void addRenameRuleNode(CRenameRuleNode* node);

    CSubdirRule* m_rule = nullptr; ///< owned
    CAutoListT<CRenameRuleNode> m_renameRules;
};

/// Gives the name of a file of one kind.
class QO_API CReorganizeRule::CRenameRuleNode final : public CNode
{
public:
    explicit CRenameRuleNode(CSubdirRuleNode* parent);
    ~CRenameRuleNode() override;
    CNode* clone() const override;

    void copyFrom(const CRenameRuleNode* other);

    CRenameRule* m_rule = nullptr; ///< owned
};
