#include "Reorganize/ReorganizeRule.h"

#include "Reorganize/RuleTrees.h"

#include <gtest/gtest.h>

namespace
{
using Node = CReorganizeRule::CNode;
using Output = CReorganizeRule::CSeperateRuleOutputNode;
constexpr CReorganizeRule::CSubdirRuleNode* noFolder = nullptr;

/// A folder with one name that is kept: the smallest valid branch.
CReorganizeRule::CSubdirRuleNode* addFolder(CReorganizeRule& rule, Output* parent)
{
    auto* const folder = rule.addSubdirRule(new CSubdirRule, parent);
    rule.addRenameRule(new CRenameRule(CRenameRule::Music), folder);
    return folder;
}

int countNodes(const CReorganizeRule& rule)
{
    int count = 0;
    for (const Node* node = rule.getFirstNode(); node; node = rule.getNextNode(node))
        ++count;
    return count;
}

} // namespace

TEST(ReorganizeRule, IsValidWhenEveryNodeHasWhatItNeeds)
{
    CReorganizeRule rule;
    EXPECT_TRUE(rule.isEmpty());
    EXPECT_FALSE(rule.isValid());
    auto* const folder = rule.addSubdirRule(new CSubdirRule, nullptr);
    EXPECT_FALSE(rule.isValid()) << "no names";
    auto* const name = rule.addRenameRule(new CRenameRule(CRenameRule::Music), folder->m_rule);
    EXPECT_EQ(name->m_parent, folder);
    EXPECT_TRUE(rule.isValid()) << "the name is kept";
    name->m_rule->keepOriginal = false;
    EXPECT_FALSE(rule.isValid()) << "no pattern";
    name->m_rule->m_pattern.setAtom(CNSAtom::Track, u"");
    EXPECT_TRUE(rule.isValid());

    auto* const separator = rule.addSeperateRule(new CJingleSeperateRule, nullptr);
    EXPECT_FALSE(rule.isValid()) << "outputs without links";
    for (Output* output : separator->m_outputs)
        addFolder(rule, output);
    EXPECT_TRUE(rule.isValid());
    rule.removeNode(name);
    EXPECT_FALSE(rule.isValid());
    rule.removeNode(folder);
    EXPECT_TRUE(rule.isValid());
    rule.m_prio = 3;
    rule.clear();
    EXPECT_TRUE(rule.isEmpty());
    EXPECT_EQ(rule.m_prio, 3);
}

TEST(ReorganizeRule, IsWalkedFromParentsToChildrenInOrder)
{
    CReorganizeRule rule;
    auto* const separator = rule.addSeperateRule(new CAlbumTracksSeperateRule(5), nullptr);
    for (Output* output : separator->m_outputs)
        addFolder(rule, output);
    auto* const last = rule.addRenameRule(new CRenameRule(CRenameRule::Lyrics), noFolder);
    std::vector<int> types;
    for (const Node* node = rule.getFirstNode(); node; node = rule.getNextNode(node))
        types.push_back(node->m_type);
    EXPECT_EQ(types, (std::vector<int>{1, 2, 4, 8, 2, 4, 8, 2, 4, 8, 8}));
    EXPECT_EQ(rule.getNextNode(last), nullptr);

    EXPECT_EQ(rule.findSeperateRule(separator->m_rule), separator);
    EXPECT_EQ(rule.findSeperateRuleOutput(separator->m_rule, CAlbumTracksSeperateRule::NoAlbum),
              separator->m_outputs[2]);
    EXPECT_EQ(rule.findSeperateRuleOutput(separator->m_rule, -1), nullptr);
    EXPECT_EQ(rule.findNode(CReorganizeRule::isRenameRuleNode, 0, 0)->m_parent,
              separator->m_outputs[0]->m_link);
    const auto* const link = static_cast<CReorganizeRule::CSubdirRuleNode*>(
        separator->getOutput(CAlbumTracksSeperateRule::LessTracks)->m_link);
    EXPECT_EQ(rule.findSubdirRuleInfo(link->m_rule), link);
    EXPECT_TRUE(CReorganizeRule::isValidSeperateRuleChild(link));
    EXPECT_FALSE(CReorganizeRule::isValidSeperateRuleChild(last));
    EXPECT_EQ(separator->getOutput(0), nullptr);
}

TEST(ReorganizeRule, ACopyHasEverythingButThePlaceAmongTheRules)
{
    CReorganizeRule rule;
    fillWholly(rule, u"one");
    CReorganizeRule copy;
    fillWholly(copy, u"other");
    copy.m_prio = 4;
    copy.copyFrom(&rule);
    EXPECT_EQ(copy.m_prio, 4);
    EXPECT_EQ(copy.m_name, rule.m_name);
    EXPECT_EQ(outline(copy), outline(rule));
    const CString before = outline(rule);
    rule.copyFrom(&rule);
    EXPECT_EQ(outline(rule), before);
    copy.clear();
    EXPECT_EQ(outline(rule), before) << "nothing is shared";
}

TEST(ReorganizeRule, ASeparatorGoesAboveANodeAndCopiesItToTheChosenOutputs)
{
    CReorganizeRule rule;
    auto* const folder = addFolder(rule, nullptr);
    rule.addRenameRule(new CRenameRule(CRenameRule::Music), noFolder);
    auto* const outer = rule.addParentSeperateRule(new CJingleSeperateRule, folder, nullptr);
    EXPECT_EQ(rule.m_nodes.GetSize(), 2);
    EXPECT_EQ(rule.m_nodes[1], outer) << "its place is lost";
    EXPECT_TRUE(rule.isValid());
    EXPECT_EQ(countNodes(rule), 8);

    CReorganizeRule::CSeperateRuleOutputList chosen;
    chosen.Add(CArtistTracksSeperateRule::NoArtist);
    auto* const inner = rule.addParentSeperateRule(
        new CArtistTracksSeperateRule(2), outer->m_outputs[1]->m_link, &chosen);
    EXPECT_EQ(outer->m_outputs[1]->m_link, inner);
    EXPECT_EQ(inner->m_parent, outer->m_outputs[1]);
    EXPECT_FALSE(inner->m_outputs[0]->m_link);
    EXPECT_TRUE(inner->m_outputs[2]->m_link);
    EXPECT_FALSE(rule.isValid()) << "the others are the caller's to fill";

    rule.removeSeperateRule(inner, CArtistTracksSeperateRule::NoArtist);
    EXPECT_TRUE(rule.isValid());
    EXPECT_EQ(countNodes(rule), 8);
    EXPECT_EQ(outer->m_outputs[1]->m_link->m_parent, outer->m_outputs[1]);
    rule.removeSeperateRule(outer, CJingleSeperateRule::IsJingle);
    EXPECT_TRUE(rule.isValid());
    EXPECT_EQ(countNodes(rule), 3);
}

TEST(ReorganizeRule, ABranchThatIsNotThereLeavesANullThatIsNotValid)
{
    CReorganizeRule rule;
    auto* const separator = rule.addSeperateRule(new CJingleSeperateRule, nullptr);
    addFolder(rule, nullptr);
    rule.removeSeperateRule(separator, CJingleSeperateRule::IsJingle);
    EXPECT_EQ(rule.m_nodes.GetSize(), 2);
    EXPECT_FALSE(rule.m_nodes[1]);
    EXPECT_EQ(countNodes(rule), 2);
    EXPECT_FALSE(rule.isValid());
    CReorganizeRule copy;
    copy.copyFrom(&rule);
    EXPECT_FALSE(copy.isValid());
}

TEST(ReorganizeRule, ASecondNodeUnderAnOutputPushesOutTheFirst)
{
    CReorganizeRule rule;
    auto* const separator = rule.addSeperateRule(new CJingleSeperateRule, nullptr);
    const CSubdirRule* const first = addFolder(rule, separator->m_outputs[0])->m_rule;
    auto* const second = addFolder(rule, separator->m_outputs[0]);
    EXPECT_EQ(separator->m_outputs[0]->m_link, second);
    EXPECT_EQ(rule.findSubdirRuleInfo(first), nullptr);
    EXPECT_EQ(rule.addRenameRule(new CRenameRule(CRenameRule::Music), first)->m_parent, nullptr);
    EXPECT_EQ(rule.addSubdirRule(new CSubdirRule, separator->m_rule, 5)->m_parent, nullptr)
        << "an unknown output is none";
}

TEST(ReorganizeRule, TellsItsAttributesAndTheirDefaults)
{
    CReorganizeRule rule;
    auto* const folder = addFolder(rule, nullptr);
    CReorganizeUtils::parseAttributesString(u"{date.eu} {artist.name}", &folder->m_rule->m_pattern);
    auto* const name = rule.addRenameRule(new CRenameRule(CRenameRule::Picture), folder);
    CReorganizeUtils::parseAttributesString(u"-{artist.name}", &name->m_rule->m_pattern);
    CReorganizeRule::AttribList attribs;
    rule.getUsedAttribs(attribs);
    EXPECT_EQ(std::vector<int>(attribs.begin(), attribs.end()),
              (std::vector<int>{CNSAtom::DateStartEU, CNSAtom::Artist, CNSAtom::Artist}));

    rule.setUnknownAttribDefValue(CNSAtom::Artist, u"nobody");
    rule.setUnknownAttribDefValue(CNSAtom::Artist, u"somebody");
    CString value = u"as it was";
    EXPECT_FALSE(rule.getUnknownAttribDefValue(CNSAtom::Album, value));
    EXPECT_EQ(value, u"as it was");
    EXPECT_TRUE(rule.getUnknownAttribDefValue(CNSAtom::Artist, value));
    EXPECT_EQ(value, u"somebody");
    rule.clearUnknownAttribsDefValues();
    EXPECT_FALSE(rule.getUnknownAttribDefValue(CNSAtom::Artist, value));
}
