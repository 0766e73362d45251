#include "types/CharClass.h"

#include "support/Print.h"
#include "types/String.h"

#include <climits>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
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
    const std::u16string_view texts[][2] = {{u"AzÉЖΩßẞİ_", u"azéжωßßi_"},
                                            {u"\xD801\xDC00\xFFFF", u"\xD801\xDC00\xFFFF"}};
    for (const auto& [upper, lower] : texts)
    {
        for (std::size_t i = 0; i < upper.size(); ++i)
            EXPECT_EQ(qo::toLower(upper[i]), lower[i]) << std::hex << +upper[i];
    }
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

TEST(CharClass, ComparisonAndHashAgreeWithThePlainMeaningAtEveryLength)
{
    constexpr char16_t letters[] = u"aAbBéÉ_[\\ßsＢｂ\xD83D\xFF5E";
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i)
    {
        std::u16string a;
        for (unsigned length = random() % 40; a.size() < length;)
            a += letters[random() % 15];
        std::u16string b = a;
        // Most differ in one place only, of any length: the shared beginning is skipped by words.
        if (!b.empty() && random() % 4)
            b[random() % b.size()] = letters[random() % 15];
        if (random() % 4 == 0)
            b.resize(random() % 44, u'x');
        const int expected = plainCompare(a, b);
        ASSERT_EQ(sign(qo::compareNoCase(a, b)), expected);
        ASSERT_EQ(sign(CString(a.c_str()).CompareNoCase(b.c_str())), expected);
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
