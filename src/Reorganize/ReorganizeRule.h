#pragma once

#include "Analyze/NSNamePattern.h"
#include "Reorganize/Forward.h"
#include "common/AutoListT.h"

#include <memory>

/// A reorganize rule: how the files of a collection are laid out on the disk. It is a tree in which
/// separating nodes send a file to one of their outputs, subdirectory nodes give the folder, and
/// rename nodes below these give the name for each kind of file.
///
///   ArtistTracksSeperateRule, trackLimit 3
///     MoreEqualTracks
///       SubdirRule "{artist.name}\{album.name}\"
///         RenameRule "{track.name}"
///     LessTracks
///       SubdirRule "Mixed\"
///         RenameRule "{artist.name} - {track.name}"
///     NoArtist
///       SubdirRule "Unknown\", with a RenameRule that keeps the name
///
/// Every node owns the nodes below it, and the rule owns the top. The classes of nodes are in
/// Reorganize/ReorganizeRuleNodes.h. No locks.
///
/// Nodes that are passed to a function must belong to this rule. A failed allocation ends in
/// qo::throwOutOfMemory(); the rule is then unchanged, and what was to be added is deleted.
class QO_API CReorganizeRule
{
public:
    class CNode;
    class CSeperateRuleNode;
    class CSeperateRuleOutputNode;
    class CSubdirRuleNode;
    class CRenameRuleNode;

    /// A list of output types.
    using CSeperateRuleOutputList = CArray<int>;
    using AttribList = CGenListT<CNSAtom::EType>;
    using NodePredicate = bool (*)(const CNode*, unsigned long, unsigned long);

    static constexpr int defaultPrio = 65535;

    CReorganizeRule();
    CReorganizeRule(const CReorganizeRule&) = delete;
    CReorganizeRule& operator=(const CReorganizeRule&) = delete;
    virtual ~CReorganizeRule();

    /// Deletes all nodes; name, default values and m_prio are kept.
    void clear();
    /// Copies everything except m_prio, by which each rule has its own position in lists.
    void copyFrom(const CReorganizeRule* other);

    bool isEmpty() const;
    /// True if there are nodes, every separating node has outputs and every output a link, every
    /// subdirectory node has a rename node, and the rules in all nodes are valid.
    bool isValid() const;
    /// Predicates for findNode(); the numbers are not used.
    static bool isInvalidNode(const CNode* node, unsigned long, unsigned long);
    static bool isRenameRuleNode(const CNode* node, unsigned long, unsigned long);
    /// Whether the node may stand below an output.
    static bool isValidSeperateRuleChild(const CNode* node);

    /// Walk over all nodes, parents before children; null after the last. The tree must not change
    /// meanwhile.
    CNode* getFirstNode() const;
    CNode* getNextNode(const CNode* node) const;
    /// The first node of the walk for which predicate(node, first, second) is true; null if there
    /// is none.
    CNode* findNode(NodePredicate predicate, unsigned long first, unsigned long second) const;
    CSeperateRuleOutputNode* findSeperateRuleOutput(const CSeperateRule* rule,
                                                    int outputType) const;
    CSeperateRuleNode* findSeperateRule(const CSeperateRule* rule) const;
    CSubdirRuleNode* findSubdirRuleInfo(const CSubdirRule* rule) const;
    /// The predicates of these three functions: the node's rule is the one at that address.
    static bool
    equalsSeperateRuleOutput(const CNode* node, unsigned long rule, unsigned long outputType);
    static bool equalsSeperateRule(const CNode* node, unsigned long rule, unsigned long);
    static bool equalsSubdirRule(const CNode* node, unsigned long rule, unsigned long);

    /// Deletes the node and everything below it. An output of a separating node cannot be removed
    /// alone.
    void removeNode(CNode* node);

    /// Take ownership of the rule and return its new node, below the parent, or at the end of the
    /// top level without a parent. What was below that output before leaves the tree, and is
    /// deleted with this rule. A separating node gets an output for each one of its rule. A parent
    /// that is given by its rule and not found counts as none.
    CSeperateRuleNode* addSeperateRule(CSeperateRule* rule, CSeperateRuleOutputNode* parent);
    CSeperateRuleNode*
    addSeperateRule(CSeperateRule* rule, const CSeperateRule* parentRule, int outputType);
    CSubdirRuleNode* addSubdirRule(CSubdirRule* rule, CSeperateRuleOutputNode* parent);
    CSubdirRuleNode*
    addSubdirRule(CSubdirRule* rule, const CSeperateRule* parentRule, int outputType);
    CRenameRuleNode* addRenameRule(CRenameRule* rule, CSubdirRuleNode* parent);
    CRenameRuleNode* addRenameRule(CRenameRule* rule, const CSubdirRule* parentRule);

    /// Puts a separating node in the place of the child, which must be at the top level or below an
    /// output, and a copy of the child below each output whose type is listed, or below all outputs
    /// without a list. The child is deleted. At the top level the new node becomes the last one.
    CSeperateRuleNode* addParentSeperateRule(CSeperateRule* rule,
                                             const CNode* child,
                                             CSeperateRuleOutputList* outputs);
    /// Deletes the node and puts a copy of what was below the kept output in its place, at the end
    /// of the top level or below the parent. If that output had no link, a null takes the place,
    /// and the rule is invalid.
    void removeSeperateRule(CSeperateRuleNode* node, int keptOutput);

    /// Append the types of all atoms that are not fixed texts, as often as they occur.
    void getUsedAttribs(const CNSNamePattern& pattern, AttribList& attribs) const;
    void getUsedAttribs(AttribList& attribs) const;

    void clearUnknownAttribsDefValues();
    /// The text for an attribute that a file does not have; false, with value unchanged, if none is
    /// set.
    bool getUnknownAttribDefValue(CNSAtom::EType type, CString& value) const;
    void setUnknownAttribDefValue(CNSAtom::EType type, const CString& value);

    CString m_name; ///< for display
    CAutoListT<CNode> m_nodes;
    /// One atom at most for each attribute, with the text that is used where a file does not have
    /// it.
    CNSNamePattern m_unknownAttribsDefValues;
    int m_prio = defaultPrio; ///< see CReorganizeUtils::compareRules

private:
    /// Puts the node below the output, or at the end of the top level without one.
    void attach(std::unique_ptr<CNode> node, CSeperateRuleOutputNode* parent);
    CSeperateRuleOutputNode* findParent(const CSeperateRule* rule, int outputType) const;

    CAutoListT<CNode> m_replaced; ///< nodes that others have replaced below an output
};
