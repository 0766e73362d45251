#pragma once

#include "Reorganize/RenameRule.h"
#include "Reorganize/ReorganizeRule.h"
#include "Reorganize/SeperateRule.h"
#include "Reorganize/SubdirRule.h"

#include <memory>

/// A node of a rule. Constructors that take a parent link the new node in, which gives it to the
/// parent. Copies are deep and start without a parent.
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
    /// The child behind previous, or the first one for null; null behind the last.
    virtual CNode* getNextSubNode(const CNode* previous) const;
    /// Deletes a child, where a single one may go; else does nothing.
    virtual void removeSubNode(CNode* node);

    void copyFrom(const CNode* other) { m_type = other->m_type; }

    EType m_type;
    CNode* m_parent = nullptr; ///< null at the top level

    /// Where the node was put in the list it stands in. A hint, for stepping to the next one
    /// without a search: removing others makes it wrong.
    int m_place = -1;
};

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
    /// Takes ownership and becomes the parent; null is no link. The former link is the caller's.
    void setLinkNode(CNode* node);

    int m_outputType;
    CNode* m_link = nullptr; ///< owned
};

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

class QO_API CReorganizeRule::CRenameRuleNode final : public CNode
{
public:
    explicit CRenameRuleNode(CSubdirRuleNode* parent);
    ~CRenameRuleNode() override;
    CNode* clone() const override;

    void copyFrom(const CRenameRuleNode* other);

    CRenameRule* m_rule = nullptr; ///< owned
};
