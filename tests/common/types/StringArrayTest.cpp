#include "common/types/StringArray.h"

#include "support/Print.h"

#include <gtest/gtest.h>

TEST(StringArray, SplitsAtEachSeparatorAndJoinsAgain)
{
    const struct
    {
        const char16_t* text;
        int parts;
        const char16_t* joined;
    } cases[] = {{u"", 0, u""},
                 {u"a", 1, u"a"},
                 {u"a;b", 2, u"a|b"},
                 {u"a;", 1, u"a"},
                 {u";a", 2, u"|a"},
                 {u"a;;b", 3, u"a||b"},
                 {u";", 1, u""},
                 {u"a b;c", 2, u"a b|c"}};
    for (const auto& c : cases)
    {
        const CStringArray parts = CStringArray::split(c.text, u';');
        EXPECT_EQ(parts.GetSize(), c.parts) << qo::toUtf8(CString(c.text));
        EXPECT_EQ(parts.join(u"|"), c.joined);
    }
}
