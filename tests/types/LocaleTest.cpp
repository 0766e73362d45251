#include "support/Print.h"
#include "support/TempDir.h"
#include "types/CharClass.h"
#include "types/String.h"
#include "types/Utf.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace
{
/// Everything whose answer a process locale could sway, in one text.
CString everything()
{
    CString text;
    text.Format(u"%f %.2f %d ", 1234.5, -0.125, 1234567);
    text += CString(u"ÄÖÜ ÉİIı ẞ").MakeLower();
    text.AppendFormat(u" %d %d %d",
                      qo::compareNoCase(u"Äpfel", u"äPFEL"),
                      qo::compareNoCase(u"Ä", u"z"),
                      qo::textToInt(u"1.234,5"));
    for (char16_t c = 0; c < 0x3000; ++c)
        text.AppendFormat(u"%d", qo::isLetter(c) + 2 * qo::isSpace(c));
    return text + qo::fromUtf8(qo::toUtf8(CString(u"ß→漢")));
}

class Locale : public testing::Test
{
protected:
    void SetUp() override
    {
        const std::string make =
            "localedef -i de_DE -f UTF-8 '" + m_dir.path("de_DE.UTF-8") + "' >/dev/null 2>&1";
        ASSERT_EQ(std::system(make.c_str()), 0)
            << "the Debian package \"locales\" is needed"; // NOLINT(concurrency-mt-unsafe)
        ::setenv("LOCPATH", m_dir.path().c_str(), 1);
    }
    void TearDown() override
    {
        std::setlocale(LC_ALL, "C");
        ::unsetenv("LOCPATH");
    }

    TempDir m_dir;
};
} // namespace

TEST_F(Locale, NothingDependsOnIt)
{
    std::setlocale(LC_ALL, "C");
    const CString plain = everything();
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    char number[16];
    std::snprintf(number, sizeof(number), "%.1f", 0.5);
    ASSERT_STREQ(number, "0,5") << "the locale is not in force";
    EXPECT_EQ(everything(), plain);
    EXPECT_EQ(plain.Left(25), u"1234.500000 -0.12 1234567");
}
