#include "Reorganize/FileNameCleaner.h"

#include "support/Print.h"

#include <gtest/gtest.h>

#include <tuple>

TEST(FileNameCleaner, NamesAndPathsLoseWhatFilesCannotHave)
{
    const std::tuple<bool, const char16_t*, const char16_t*, const char16_t*> cases[] = {
        {false, u"", u"", u""},
        {false, u"plain {artist.name}", u"plain {artist.name}", u"plain {artist.name}"},
        {false, u"a\\b/c:d*e?f\"g<h>i|j\x1fk", u"abcdefghijk", u"a_b_c_d_e_f_g_h_i_j_k"},
        {false, u"  two blanks", u"two blanks", u"_ two blanks"},
        {false, u"?  a", u"a", u"_  a"},
        {false, u".hidden", u".hidden", u".hidden"},
        {false, u"a. .", u"a", u"a. _"},
        {false, u"a. ?", u"a", u"a. _"},
        {false, u"a ?b", u"a b", u"a _b"},
        {false, u"..", u"", u"._"},
        {false, u"   ", u"", u"_ _"},
        {false, u"é\U0001F3B5.", u"é\U0001F3B5", u"é\U0001F3B5_"},
        {true, u"a\\b", u"a\\b", u"a\\b"},
        {true, u"\\", u"\\", u"\\"},
        {true, u"\\\\a\\\\\\b", u"\\a\\\\b", u"\\a\\\\b"},
        {true, u" a. \\..\\c?", u"a\\\\c", u"_a._\\._\\c_"},
        {true, u"a/b", u"ab", u"a_b"},
    };
    for (const auto& [isPath, text, dropped, replaced] : cases)
    {
        const auto clean = isPath ? qo::cleanFilePath : qo::cleanFileName;
        EXPECT_EQ(clean(text, qo::CleanMode::drop), dropped) << qo::toUtf8(CString(text));
        EXPECT_EQ(clean(text, qo::CleanMode::replace), replaced) << qo::toUtf8(CString(text));
    }
}
