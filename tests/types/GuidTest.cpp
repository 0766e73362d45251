#include "types/Guid.h"

#include "support/Print.h"

#include <gtest/gtest.h>

TEST(Guid, TextIsLowerCaseAndReadBackInEitherCase)
{
    const GUID id{0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};
    EXPECT_EQ(qo::guidToText(id), u"00112233-4455-6677-8899-aabbccddeeff");
    GUID read;
    EXPECT_TRUE(qo::guidFromText(u"00112233-4455-6677-8899-AABBccddeeff", read));
    EXPECT_EQ(read, id);
}

TEST(Guid, AnythingElseIsRefusedAndGivesTheNullId)
{
    for (const char16_t* text : {u"",
                                 u"00112233",
                                 u"{00112233-4455-6677-8899-aabbccddeeff}",
                                 u"00112233-4455-6677-8899-aabbccddeef",
                                 u"00112233-4455-6677-8899-aabbccddeefg",
                                 u"00112233 4455-6677-8899-aabbccddeeff",
                                 u"001122334-455-6677-8899-aabbccddeeff",
                                 u"00112233-4455-6677-8899-aabbccddeeff0"})
    {
        GUID id{1, 2, 3, {}};
        EXPECT_FALSE(qo::guidFromText(text, id)) << qo::toUtf8(CString(text));
        EXPECT_EQ(id, GUID());
    }
}
