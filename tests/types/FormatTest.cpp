#include "types/Format.h"

#include "support/Print.h"
#include "types/String.h"

#include <climits>
#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <random>
#include <utility>

namespace
{
template <class... Args>
CString format(const char16_t* pattern, const Args&... args)
{
    CString text;
    text.Format(pattern, args...);
    return text;
}

enum class Colour : unsigned char
{
    red = 200
};
} // namespace

TEST(Format, DirectivesPrintTheirArguments)
{
    const std::pair<CString, const char16_t*> cases[] = {
        {format(u"%s %s", CString(u"a"), u"b"), u"a b"},
        {format(u"%d%%", 50), u"50%"},
        {format(u"%05d|%5d|%-5d|%+d", -42, 42, 42, 42), u"-0042|   42|42   |+42"},
        {format(u"%u", 4294967295U), u"4294967295"},
        {format(u"%02X %x %lx %#x", 10, 255, 255UL, 255), u"0A ff ff 0xff"},
        {format(u"%I64d", std::numeric_limits<long long>::min()), u"-9223372036854775808"},
        {format(u"%02I64d", 7LL), u"07"},
        {format(u"%d", std::numeric_limits<unsigned long long>::max()), u"18446744073709551615"},
        {format(u"%c%c", u'é', 65), u"éA"},
        {format(u"%f %.2f %.0f", 0.5, 2.345, 2.5), u"0.500000 2.35 2"},
        {format(u"%08.3f|%+.1f", -3.14159, 1.25), u"-003.142|+1.2"},
        {format(u"%10s|%-4s|%.2s", u"right", u"l", u"cut"), u"     right|l   |cu"},
        {format(u"%s", "h\u00e9 \u266b"), u"h\u00e9 \u266b"},
        {format(u"%p", reinterpret_cast<const void*>(0xAB)), u"00000000000000AB"},
        {format(u"%d", Colour::red), u"200"},
        {format(u"%d %d", true, short(-3)), u"1 -3"},
    };
    for (const auto& [actual, expected] : cases)
        EXPECT_EQ(actual, expected);
}

TEST(Format, WhatDoesNotFitPrintsItself)
{
    const char16_t* const none = nullptr;
    EXPECT_EQ(format(u"100%"), u"100%");
    EXPECT_EQ(format(u"%d and %s"), u"%d and %s");
    EXPECT_EQ(format(u"%q %d", 1), u"%q 1");
    EXPECT_EQ(format(u"%d %s", u"text", 5), u"%d %s");
    EXPECT_EQ(format(u"%s", none), u"(null)");
    EXPECT_EQ(format(u"%s", u"%d %s %n"), u"%d %s %n");
    EXPECT_EQ(format(u"%99999999999d", 1).GetLength(), 4096);
    EXPECT_EQ(format(u"%.9999999f", 1.0).GetLength(), 202);
    EXPECT_EQ(format(u"%d", 1, 2, 3), u"1");
}

TEST(Format, TheTextItselfMayBeAnArgument)
{
    CString text(u"loop");
    text.Format(u"%s-%s", text, text.GetString());
    EXPECT_EQ(text, u"loop-loop");
    text.AppendFormat(u"<%s|%s>", text, text);
    EXPECT_EQ(text, u"loop-loop<loop-loop|loop-loop>");
}

TEST(Format, NumbersPrintAsTheCLibraryPrintsThem)
{
    std::mt19937_64 random(7);
    const char16_t* const wide[] = {
        u"%d", u"%u", u"%x", u"%X", u"%08d", u"%-12d|", u"%+d", u"%.5d", u"% d", u"%#X"};
    const char* const narrow[] = {
        "%d", "%u", "%x", "%X", "%08d", "%-12d|", "%+d", "%.5d", "% d", "%#X"};
    for (int i = 0; i < 2000; ++i)
    {
        const int number =
            i == 0 ? INT_MIN
                   : static_cast<int>(random() >> (random() % 64)) * (i % 3 == 0 ? -1 : 1);
        const double real = static_cast<double>(number) / 1024;
        char expected[64];
        for (std::size_t f = 0; f < std::size(wide); ++f)
        {
            std::snprintf(expected, sizeof(expected), narrow[f], number);
            ASSERT_EQ(format(wide[f], number), format(u"%s", expected))
                << narrow[f] << " of " << number;
        }
        std::snprintf(expected, sizeof(expected), "%.3f", real);
        ASSERT_EQ(format(u"%.3f", real), format(u"%s", expected)) << real;
    }
}
