#include "common/types/CharClass.h"

#include "common/types/String.h"
#include "support/Print.h"

#include <climits>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <tuple>
#include <utility>

namespace
{
int sign(int value)
{
    return (value > 0) - (value < 0);
}

/// The plain meaning of the comparison: fold both, then compare units.
int plainCompare(std::u16string a, std::u16string b)
{
    std::transform(a.begin(), a.end(), a.begin(), qo::toLower);
    std::transform(b.begin(), b.end(), b.begin(), qo::toLower);
    return sign(a.compare(b));
}
} // namespace

TEST(CharClass, FoldingIsSimpleAndKeepsLength)
{
    const char16_t pairs[][2] = {{u'A', u'a'},
                                 {u'z', u'z'},
                                 {u'É', u'é'},
                                 {u'Ж', u'ж'},
                                 {u'Ω', u'ω'},
                                 {u'ß', u'ß'},
                                 {u'ẞ', u'ß'},
                                 {u'İ', u'i'},
                                 {u'_', u'_'},
                                 {0xD801, 0xD801},
                                 {0xDC00, 0xDC00},
                                 {0xFFFF, 0xFFFF}};
    for (const auto& [upper, lower] : pairs)
        EXPECT_EQ(qo::toLower(upper), lower) << std::hex << +upper;
}

TEST(CharClass, LettersOfAnyScriptAreLettersAndDigitsAreAscii)
{
    for (const char16_t c : std::u16string_view(u"aZéßжΩ漢あ한א"))
        EXPECT_TRUE(qo::isLetter(c)) << std::hex << +c;
    for (const char16_t c : std::u16string_view(u"0 _-.\u0660\xD83D\xDE00"))
        EXPECT_FALSE(qo::isLetter(c)) << std::hex << +c;
    EXPECT_TRUE(qo::isDigit(u'0') && qo::isDigit(u'9'));
    EXPECT_FALSE(qo::isDigit(u'\u0660') || qo::isDigit(u'/') || qo::isDigit(u':'));
    EXPECT_TRUE(qo::isSpace(u' ') && qo::isSpace(u'\t') && qo::isSpace(u'\u00A0') &&
                qo::isSpace(u'\u3000'));
    EXPECT_FALSE(qo::isSpace(u'a') || qo::isSpace(u'\0') || qo::isSpace(u'\u200B'));
}

TEST(CharClass, NamesAreComparedFoldedToLowerCase)
{
    const std::tuple<const char16_t*, const char16_t*, int> cases[] = {
        {u"", u"", 0},
        {u"", u"a", -1},
        {u"ABC", u"abc", 0},
        {u"abc", u"abcd", -1},
        {u"ÉTÉ", u"été", 0},
        {u"_", u"A", -1},
        {u"_", u"[", 1},
        {u"a_", u"aB", -1},
        {u"e", u"é", -1},
        {u"STRASSE", u"straße", -1},
        {u"Ｂ", u"ｂ", 0},
        {u"\xD83D\xDE00", u"\uFF5E", -1},
        {u"folder/track A", u"folder/track b", -1}};
    for (const auto& [a, b, result] : cases)
    {
        EXPECT_EQ(sign(qo::compareNoCase(a, b)), result) << testing::PrintToString(CString(a));
        EXPECT_EQ(sign(qo::compareNoCase(b, a)), -result);
        EXPECT_EQ(CString(a).CompareNoCase(b), qo::compareNoCase(a, b));
    }
}

TEST(CharClass, ComparisonAndHashAgreeWithThePlainMeaningAtEveryLength)
{
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i)
    {
        std::u16string a;
        for (unsigned length = random() % 40; a.size() < length;)
            a += u"aAbBéÉ_\\"[random() % 8];
        std::u16string b = a;
        // Most differ in one place only, of any length: the shared beginning is skipped by words.
        if (!b.empty() && random() % 4)
            b[random() % b.size()] = u"aAbBéÉ_\\"[random() % 8];
        if (random() % 4 == 0)
            b.resize(random() % 44, u'x');
        const int expected = plainCompare(a, b);
        ASSERT_EQ(sign(qo::compareNoCase(a, b)), expected);
        if (expected == 0)
        {
            ASSERT_EQ(qo::hashNoCase(a), qo::hashNoCase(b));
        }
    }
}

TEST(CharClass, NumbersAreReadUpToTheFirstOtherUnit)
{
    const std::pair<const char16_t*, int> cases[] = {{u"", 0},
                                                     {u"12", 12},
                                                     {u" \t-7x", -7},
                                                     {u"+5", 5},
                                                     {u"3/12", 3},
                                                     {u"x3", 0},
                                                     {u"--3", 0},
                                                     {u"- 3", 0},
                                                     {u"007", 7},
                                                     {u"2147483647", INT_MAX},
                                                     {u"2147483648", INT_MAX},
                                                     {u"-2147483648", INT_MIN},
                                                     {u"-99999999999999999999", INT_MIN}};
    for (const auto& [text, number] : cases)
        EXPECT_EQ(qo::textToInt(text), number) << testing::PrintToString(CString(text));
    EXPECT_EQ(qo::textToInt64(u"9223372036854775807"), LLONG_MAX);
    EXPECT_EQ(qo::textToInt64(u"9223372036854775808"), LLONG_MAX);
    EXPECT_EQ(qo::textToInt64(u"-9223372036854775809"), LLONG_MIN);
}
