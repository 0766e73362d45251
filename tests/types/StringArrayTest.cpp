#include "types/StringArray.h"

#include "support/Print.h"

#include <gtest/gtest.h>

#include <tuple>

TEST(StringArray, SplitsAtEachSeparatorAndJoinsAgain)
{
    const std::tuple<const char16_t*, int, const char16_t*> cases[] = {{u"", 0, u""},
                                                                       {u"a", 1, u"a"},
                                                                       {u"a;b", 2, u"a|b"},
                                                                       {u"a;", 1, u"a"},
                                                                       {u";a", 2, u"|a"},
                                                                       {u"a;;b", 3, u"a||b"},
                                                                       {u";", 1, u""},
                                                                       {u"a b;c", 2, u"a b|c"}};
    for (const auto& [text, count, joined] : cases)
    {
        const CStringArray parts = CStringArray::split(text, u';');
        EXPECT_EQ(parts.GetSize(), count) << qo::toUtf8(CString(text));
        EXPECT_EQ(parts.join(u"|"), joined) << qo::toUtf8(CString(text));
    }
}
