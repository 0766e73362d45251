#include "types/LastingId.h"

#include "support/Print.h"

#include <gtest/gtest.h>

#include <utility>

using qo::LastingId;

// Whatever text an id has, it is that text again; times with a counter and other texts, and those
// that only look like times.
TEST(LastingId, IsTheTextThatWasGiven)
{
    for (const char16_t* const text : {u"",
                                       u"00000000_000000_000",
                                       u"20240131_235959_123",
                                       u"20240131_235960_999",
                                       u"99991231_235959_999_24999",
                                       u"20240131_235959_123_1",
                                       u"20240131_235959_123_100",
                                       u"20240131_235959_123_01",
                                       u"20240131_235959_123_0",
                                       u"20240131_235959_123_",
                                       u"20240131_235959_123_25000",
                                       u"20240131_235959_123_99999999999999999999999",
                                       u"20240131_235959_123 ",
                                       u"20240131_235959_12",
                                       u"20240131_235959123",
                                       u"20240131-235959_123",
                                       u"20241331_235959_123",
                                       u"20240132_235959_123",
                                       u"20240131_245959_123",
                                       u"2024-131_235959_123",
                                       u"٢٠٢٤0131_235959_123",
                                       u"{8C2B4E6A-0000-0000-0000-000000000000}"})
    {
        LastingId id(text);
        EXPECT_EQ(id.text(), CString(text));
        EXPECT_EQ(id.IsEmpty(), *text == 0);

        LastingId copy(id);
        EXPECT_EQ(copy, id);
        EXPECT_EQ(std::hash<LastingId>()(copy), std::hash<LastingId>()(id));
        const LastingId moved(std::move(copy));
        id = u"another";
        id = moved;
        EXPECT_EQ(id, text);
        EXPECT_NE(id, CString(text) + u"1");
    }
}
