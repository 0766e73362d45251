#include "Analyze/NSNamePattern.h"

#include "Analyze/NSAnalyzer.h"
#include "support/Print.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
/// Refines the pattern by the value as the analysis of a name does.
bool refine(CNSNamePattern& pattern,
            CNSAtom::EType type,
            const char16_t* value,
            bool dryRun = false)
{
    return CNSAnalyzer::refinePatternWithAtom(pattern, type, value, true, false, dryRun);
}
} // namespace

TEST(NSAtom, ValuesCountInFixedTextsOnly)
{
    const CNSAtom one(CNSAtom::Artist, u"One");
    const CNSAtom two(CNSAtom::Artist, u"Two");
    const CNSAtom text(CNSAtom::FixedString, u"text");
    const CNSAtom upper(CNSAtom::FixedString, u"TEXT");
    const CNSAtom other(CNSAtom::FixedString, u"texu");
    EXPECT_TRUE(one.isEqualTo(&two));
    EXPECT_TRUE(text.isEqualTo(&upper));
    EXPECT_FALSE(text.isEqualTo(&other));
    EXPECT_LT(CNSAtom::compare(&text, &other), 0);
    EXPECT_LT(CNSAtom::compare(&other, &one), 0);
    EXPECT_EQ(two.toString(false), u"[Artist]:Two");
}

TEST(NSNamePattern, GivesAtomsAwayAndTakesThemOver)
{
    CNSNamePattern pattern;
    pattern.setAtom(CNSAtom::Artist, u"One");
    pattern.setAtom(CNSAtom::FixedString, u" - ");
    pattern.setAtom(CNSAtom::Artist, u"Two");
    EXPECT_EQ(pattern.getAtomValue(CNSAtom::Artist), u"Two");
    EXPECT_EQ(pattern.toString(false), u"[Artist] - ");

    const std::unique_ptr<CNSNamePattern> copy(pattern.clone());
    std::unique_ptr<CNSAtom> taken(pattern.removeAtomAt(0));
    EXPECT_EQ(pattern.getAtom(CNSAtom::Artist, 0), nullptr);
    pattern.insertAtomAfter(taken.get(), copy->getAtom(CNSAtom::FixedString, 0));
    EXPECT_EQ(pattern.toString(false), u" - ") << "the anchor stands elsewhere";
    pattern.insertAtomAfter(taken.release(), pattern.getAtom(CNSAtom::FixedString, 0));
    EXPECT_EQ(pattern.toString(true), u"[FixedString]: -  [Artist]:Two ");
    EXPECT_EQ(copy->toString(true), u"[Artist]:Two [FixedString]: -  ");
    pattern.copyFrom(*copy);
    pattern.addAtom(copy->getAtom(CNSAtom::Artist, 0)->clone());
    EXPECT_EQ(pattern.getAtomCount(CNSAtom::Artist), 2);
    EXPECT_EQ(pattern.toString(false), u"[Artist] - [Artist]");
}

TEST(NSNamePattern, IsSplitByTheFirstFixedTextThatHoldsTheValue)
{
    CNSNamePattern pattern;
    pattern.setAtom(CNSAtom::FixedString, u"03 one - ONE - 03");
    EXPECT_TRUE(refine(pattern, CNSAtom::Artist, u"One", true));
    EXPECT_EQ(pattern.m_atoms.GetSize(), 1);
    EXPECT_TRUE(refine(pattern, CNSAtom::Artist, u"One"));
    EXPECT_TRUE(refine(pattern, CNSAtom::Track, u"One"));
    EXPECT_TRUE(refine(pattern, CNSAtom::TrackNumber, u"3/9"));
    EXPECT_EQ(pattern.toString(true),
              u"[TrackNumber]:03 [FixedString]:  [Artist]:one [FixedString]: -  [Track]:ONE "
              u"[FixedString]: - 03 ");
    EXPECT_FALSE(refine(pattern, CNSAtom::Album, u"One")) << "what matched is not searched again";
}
