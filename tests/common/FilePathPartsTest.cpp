#include "common/FilePathParts.h"

#include "common/CollPath.h"
#include "support/Print.h"

#include <gtest/gtest.h>

TEST(FilePathParts, AreThoseOfTheWholePathTakenApart)
{
    // Every short text over the characters that matter, behind each kind of device.
    const char16_t* devices[] = {u"C:",
                                 u"C:\\",
                                 u"\\\\server\\",
                                 u"\\\\usb:id\\",
                                 u"\\\\share:%1",
                                 u"\\\\other:id\\a",
                                 u"\\\\",
                                 u"",
                                 u"\\",
                                 u"x"};
    const char16_t alphabet[] = {u'\\', u'.', u'a', u'%', u':'};
    constexpr int longest = 5;
    for (const char16_t* device : devices)
    {
        for (int code = 0; code < 5 * 5 * 5 * 5 * 5 * 6; ++code)
        {
            CString path(device);
            const int length = code % (longest + 1);
            for (int i = 0, rest = code / (longest + 1); i < length; ++i, rest /= 5)
                path += alphabet[rest % 5];
            const CQoCollPath whole(path);
            ASSERT_EQ(qo::fileNameOf(path), whole.getLast()) << testing::PrintToString(path);
            ASSERT_EQ(qo::fileTitleOf(path), whole.getFileTitle()) << testing::PrintToString(path);
            ASSERT_EQ(qo::fileExtOf(path), whole.getFileExt()) << testing::PrintToString(path);
        }
    }
}
