#pragma once

#include "Reorganize/AlbumTracksSeperateRule.h"
#include "Reorganize/ArtistTracksSeperateRule.h"
#include "Reorganize/JingleSeperateRule.h"
#include "Reorganize/ReorganizeRuleNodes.h"
#include "Reorganize/ReorganizeUtils.h"
#include "support/Print.h"

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

/// Fills a rule with a node of every kind that holds the text wherever it can: a valid rule.
inline void fillWholly(CReorganizeRule& rule, const CString& text)
{
    using Output = CReorganizeRule::CSeperateRuleOutputNode;
    rule.m_name = text;
    rule.m_prio = -3;
    for (const CNSAtom::EType type : {CNSAtom::Artist, CNSAtom::DateEndEU})
        rule.setUnknownAttribDefValue(type, text);
    const auto addFolder = [&](Output* parent, bool keepsOriginal)
    {
        auto* const subdir = rule.addSubdirRule(new CSubdirRule, parent);
        subdir->m_rule->keepOriginal = keepsOriginal;
        CReorganizeUtils::parseAttributesString(text + u"{date.eu}" + text,
                                                &subdir->m_rule->m_pattern);
        for (int i = 0; i < 3; ++i)
        {
            auto* const name = new CRenameRule(CRenameRule::getType(i));
            rule.addRenameRule(name, subdir);
            name->keepOriginal = keepsOriginal;
            name->keepOriginalIfAttribEmpty = i == 1;
            CReorganizeUtils::parseAttributesString(u"{artist.name}" + text, &name->m_pattern);
        }
    };
    auto* const artists = rule.addSeperateRule(new CArtistTracksSeperateRule(-7), nullptr);
    auto* const albums =
        rule.addSeperateRule(new CAlbumTracksSeperateRule(50), artists->m_outputs[0]);
    auto* const jingles = rule.addSeperateRule(new CJingleSeperateRule, albums->m_outputs[1]);
    for (const auto* separator : {artists, albums, jingles})
    {
        for (Output* output : separator->m_outputs)
        {
            if (!output->m_link)
                addFolder(output, separator == albums);
        }
    }
    addFolder(nullptr, true);
}
