#include "Analyze/NSUtils.h"

#include "Physical/DirLTNames.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "support/Print.h"

#include <gtest/gtest.h>

#include <utility>

namespace
{
struct Search
{
    const char16_t* search;
    const char16_t* text;
    int pos; ///< -1: not found
    int len;
};

void expectFound(const Search& row, const CNSUtils::FindStringInfo& info)
{
    SCOPED_TRACE(qo::toUtf8(CString(row.search) + u" in " + row.text));
    int pos = -1;
    int len = -1;
    EXPECT_EQ(CNSUtils::findSubstring(row.search, row.text, info, pos, len), row.pos >= 0);
    EXPECT_EQ(len, row.pos >= 0 ? row.len : -1);
    if (row.pos >= 0)
    {
        EXPECT_EQ(pos, row.pos);
    }
}
} // namespace

TEST(NSUtils, FindsValuesAcrossPunctuationAndCase)
{
    constexpr Search rows[] = {
        {u"AC/DC", u"AC-DC_Back in Black", 0, 5},
        {u"Mr. Big", u"01 Mr Big", 3, 6},
        {u"mr big", u"Mr. Big!", 0, 7},
        {u"Big!", u"Mr. Big!", 4, 4},       // both go on with the same character
        {u"Big! ", u"Mr. Big! live", 4, 5}, // and with one more
        {u"aab", u"aaab", 1, 3},            // an earlier start fails half-way
        {u"a b", u"xa", -1, 0},             // the text ends first
        {u"\u00c9t\u00e9", u"L'\u00e9T\u00c9", 2, 3},
        {u"  ", u"a  b", -1, 0},         // nothing to find it by
        {u"!!!", u"abc!!!defghi", 3, 3}, // mostly punctuation: literally
        {u"a-b", u"a_b", -1, 0},         // 33 percent in the text
        {u"A_B", u"xa_b", 1, 3},
        {u"ab", u"(a) [b]", -1, 0},
        {u"", u"a", -1, 0},
        {u"a", u"", -1, 0},
    };
    CNSUtils::FindStringInfo info;
    info.ignoreExtraChars = true;
    info.maxExtraPercentSearch = info.maxExtraPercentText = 30;
    for (const Search& row : rows)
        expectFound(row, info);
}

TEST(NSUtils, StepsOverNothingUnlessAsked)
{
    constexpr Search rows[] = {
        {u"mr. big", u"Mr. Big", 0, 7}, {u"mr. big", u"Mr Big", -1, 0}, {u" ", u"a b", 1, 1}};
    for (const Search& row : rows)
        expectFound(row, {});
}

TEST(NSUtils, FindsNumbersByTheirValue)
{
    constexpr Search rows[] = {{u"3", u"03 Song", 0, 2},
                               {u"3", u"13 Song 3", 8, 1},
                               {u"3/12", u"Song 003", 5, 3},
                               {u"3", u"13 Song", -1, 0},
                               {u"x", u"Song 0", 5, 1}};
    CNSUtils::FindStringInfo info;
    info.isNumber = true;
    for (const Search& row : rows)
        expectFound(row, info);

    int pos = -1;
    int len = -1;
    EXPECT_FALSE(CNSUtils::findSubstring(u"3", u"a13b14c", info, pos, len));
    EXPECT_EQ(pos, 6) << "behind the last run";
    info.numberAsText = true;
    expectFound({u"3", u"13 Song", 1, 1}, info);
}

TEST(NSUtils, CountsPunctuationWithoutBlanks)
{
    EXPECT_EQ(CNSUtils::getExtraCharsPercent(u""), 100);
    EXPECT_EQ(CNSUtils::getExtraCharsPercent(u"a-b"), 33);
    EXPECT_EQ(CNSUtils::getExtraCharsPercent(u"a b"), 0);
    EXPECT_EQ(CNSUtils::getExtraCharsPercent(u"a b-"), 25);
    EXPECT_TRUE(CNSUtils::isExtraChar(u' '));
    EXPECT_TRUE(CNSUtils::isWordSep(u'\0'));
    EXPECT_FALSE(CNSUtils::isWordSep(u'-'));
    EXPECT_EQ(CNSUtils::getWordsCount(u" [one](two-three). "), 2);
    EXPECT_EQ(CNSUtils::getDigitsCount(u"a1b22"), 3);
    EXPECT_TRUE(CNSUtils::isNumber(u"012"));
    for (const char16_t* text : {u"", u"-1", u"1a", static_cast<const char16_t*>(nullptr)})
        EXPECT_FALSE(CNSUtils::isNumber(text));
}

TEST(NSUtils, ReadsTrackNumbersAndYears)
{
    const std::pair<const char16_t*, std::pair<int, int>> rows[] = {{u"3/12", {3, 12}},
                                                                    {u"/12", {0, 12}},
                                                                    {u"07", {7, 0}},
                                                                    {u"abc", {0, 0}},
                                                                    {u"1/2/3", {1, 2}},
                                                                    {u"", {0, 0}}};
    for (const auto& [text, expected] : rows)
    {
        std::pair<int, int> numbers(-1, -1);
        CNSUtils::analyzeTrackNumber(text, numbers.first, numbers.second);
        EXPECT_EQ(numbers, expected) << qo::toUtf8(CString(text));
    }
    EXPECT_EQ(CNSUtils::getYear(u"1999"), 1999);
    EXPECT_EQ(CNSUtils::getYear(u"1999-05"), 0);
}

TEST(NSUtils, NamesTheTextsOfATag)
{
    CMusicTagEx tag;
    tag.setTitle(u"Song", CTagAttribValue::SV_Original, true);
    EXPECT_EQ(CNSUtils::getTagInfo(CNSAtom::Track, tag), u"Song");
    EXPECT_EQ(CNSUtils::getTagInfo(CNSAtom::Year, tag), u"");
    EXPECT_EQ(CNSUtils::getTagInfo(CNSAtom::Source, tag), u"!");
}

TEST(DirLTNames, KeepsTheFirstSpelling)
{
    CDirLTNames names;
    for (const char16_t* name : {u"One", u"Two", u"ONE"})
        names.addArtist(name);
    EXPECT_EQ(names.m_artists.join(u","), u"One,Two");
    EXPECT_TRUE(names.m_albums.IsEmpty());
}
