#pragma once

#include "Reorganize/AlbumTracksSeperateRule.h"
#include "Reorganize/ArtistTracksSeperateRule.h"
#include "Reorganize/JingleSeperateRule.h"
#include "Reorganize/ReorganizeRuleNodes.h"
#include "Reorganize/ReorganizeUtils.h"
#include "common/types/StringArray.h"
#include "support/Print.h"

#include <random>

/// All of a rule but its name and m_prio in one text, node by node in the order of the walk, with
/// each node's depth. Fails the test where a parent is not the inverse of a link.
inline CString outline(const CReorganizeRule& rule)
{
    using R = CReorganizeRule;
    CString text = rule.m_unknownAttribsDefValues.toString(true);
    for (const R::CNode* node = rule.getFirstNode(); node; node = rule.getNextNode(node))
    {
        int depth = 0;
        for (const R::CNode* above = node->m_parent; above; above = above->m_parent)
            ++depth;
        text.AppendFormat(u"\n%d: ", depth);
        if (node->m_type == R::CNode::NT_SeperateRule)
        {
            const auto& separator = *static_cast<const R::CSeperateRuleNode*>(node)->m_rule;
            text.AppendFormat(u"%d %s", separator.m_type, separator.toString(true));
        }
        else if (node->m_type == R::CNode::NT_SeperateRuleOutput)
        {
            const auto* output = static_cast<const R::CSeperateRuleOutputNode*>(node);
            text.AppendFormat(u"output %d", output->m_outputType);
        }
        else if (node->m_type == R::CNode::NT_SubdirRule)
            text += static_cast<const R::CSubdirRuleNode*>(node)->m_rule->toString(true);
        else
            text += static_cast<const R::CRenameRuleNode*>(node)->m_rule->toString(true);
    }
    return text;
}

/// Makes valid rules of any shape.
class RandomRule
{
public:
    explicit RandomRule(unsigned seed) : m_random(seed) {}

    void fill(CReorganizeRule& rule)
    {
        rule.m_name = text();
        rule.m_prio = below(100000) - 50000;
        for (int i = below(4); i > 0; --i)
            rule.setUnknownAttribDefValue(attribute(), text());
        for (int i = below(3); i >= 0; --i)
            addBranch(rule, nullptr, 0);
    }

private:
    using Output = CReorganizeRule::CSeperateRuleOutputNode;

    int below(int end) { return static_cast<int>(m_random() % static_cast<unsigned>(end)); }
    CNSAtom::EType attribute() { return CReorganizeUtils::m_attribsInfo[below(21)].type; }
    /// With all that XML, UTF-8 and the library's writer may stumble over.
    CString text()
    {
        static const CStringArray pieces = CStringArray::split(
            u"a| |\"|'|<b>|&|&#x|&#x41;|;|\n|\x1|é|\U0001F3B5|]]>|{|\\|--|\xFEFF|\xFFFE", u'|');
        CString text;
        for (int i = below(6); i > 0; --i)
            text += pieces[below(pieces.GetSize())];
        return text;
    }
    void fillPattern(CNSNamePattern& pattern)
    {
        CString definition;
        for (int i = below(5); i >= 0; --i)
            definition += CReorganizeUtils::getAttributeName(attribute()) + text();
        CReorganizeUtils::parseAttributesString(definition, &pattern);
    }
    CSeperateRule* separator()
    {
        switch (below(3))
        {
        case 0:
            return new CArtistTracksSeperateRule(below(100) - 10);
        case 1:
            return new CAlbumTracksSeperateRule(below(100));
        default:
            return new CJingleSeperateRule;
        }
    }
    void addBranch(CReorganizeRule& rule, Output* parent, int depth)
    {
        if (depth < 5 && below(2) == 0)
        {
            for (Output* output : rule.addSeperateRule(separator(), parent)->m_outputs)
                addBranch(rule, output, depth + 1);
            return;
        }
        auto* const subdir = rule.addSubdirRule(new CSubdirRule, parent);
        subdir->m_rule->keepOriginal = below(2) == 0;
        fillPattern(subdir->m_rule->m_pattern);
        for (int i = below(4); i >= 0; --i)
        {
            const CRenameRule::EType type = CRenameRule::getType(below(3));
            CRenameRule& rename = *rule.addRenameRule(new CRenameRule(type), subdir)->m_rule;
            rename.keepOriginal = below(2) == 0;
            rename.keepOriginalIfAttribEmpty = below(2) == 0;
            fillPattern(rename.m_pattern);
        }
    }

    std::mt19937 m_random;
};
