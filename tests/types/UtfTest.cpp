#include "types/Utf.h"

#include "support/Print.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>

TEST(Utf, WellFormedTextSurvivesTheRoundTrip)
{
    std::mt19937 random(11);
    for (int i = 0; i < 2000; ++i)
    {
        CString text;
        for (unsigned left = random() % (i % 100 == 0 ? 600 : 20); left > 0; --left)
        {
            const char32_t c = random() % 0x110000 >> (random() % 14);
            if (c >= 0x10000)
                text += static_cast<char16_t>(0xD7C0 + (c >> 10)),
                    text += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
            else if (c < 0xD800 || c > 0xDFFF)
                text += static_cast<char16_t>(c);
        }
        ASSERT_EQ(qo::fromUtf8(qo::toUtf8(text)), text);
    }
    EXPECT_EQ(qo::toUtf8(CString(u"é漢\xD83D\xDE00")), "\xC3\xA9\xE6\xBC\xA2\xF0\x9F\x98\x80");
    EXPECT_EQ(qo::fromUtf8(std::string_view("a\0b", 3)), CString(u"a\0b", 3));
}

TEST(Utf, IllFormedBytesBecomeReplacementCharacters)
{
    const std::pair<const char*, const char16_t*> cases[] = {
        {"a\xFFz", u"a\xFFFDz"},
        {"\xC3", u"\xFFFD"},
        {"\xC0\x80", u"\xFFFD\xFFFD"},
        {"\xED\xA0\x80", u"\xFFFD\xFFFD\xFFFD"},
        {"\xF0\x9F\x98", u"\xFFFD"},
        {"\xF8\x88\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"},
        {"\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"}};
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(qo::fromUtf8(bytes), text);
}

TEST(Utf, LoneSurrogatesBecomeReplacementCharacters)
{
    EXPECT_EQ(qo::toUtf8(CString(u"a\xD800z")), "a\xEF\xBF\xBDz");
    EXPECT_EQ(qo::toUtf8(CString(u"\xDC00\xD800")), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Utf, RandomBytesNeverGiveIllFormedText)
{
    std::mt19937 random(13);
    for (int i = 0; i < 3000; ++i)
    {
        std::string bytes(random() % 300, '\0');
        for (char& c : bytes)
            c = static_cast<char>(random());
        const CString text = qo::fromUtf8(bytes);
        ASSERT_EQ(qo::fromUtf8(qo::toUtf8(text)), text);
    }
}
