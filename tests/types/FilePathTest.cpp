#include "types/FilePath.h"

#include "support/Print.h"
#include "types/CharClass.h"
#include "types/TextPool.h"

#include <gtest/gtest.h>

#include <vector>

using qo::FilePath;

namespace
{
const std::vector<CString> paths = {CString(),
                                    CString(u"\\"),
                                    CString(u"\\\\"),
                                    CString(u"x"),
                                    CString(u"C:x.mp3"),
                                    CString(u"C:\\"),
                                    CString(u"C:\\a.mp3"),
                                    CString(u"C:\\A.mp3"),
                                    CString(u"C:\\A\\"),
                                    CString(u"C:\\A\\a.mp3"),
                                    CString(u"C:\\A\\b.mp3"),
                                    CString(u"C:\\a\\B.MP3"),
                                    CString(u"C:\\A\\B\\c.mp3"),
                                    CString(u"C:\\A!\\b.mp3"),
                                    CString(u"C:\\AB.mp3"),
                                    CString(u"C:\\ab\\c.mp3"),
                                    CString(u"C:\\A\\\\b.mp3"),
                                    CString(u"\\\\wpd:1\\Ä\\ö.mp3"),
                                    CString(u"\\\\wpd:1\\ä\\Ö.mp3")};
} // namespace

TEST(FilePath, IsTheTextThatWasGiven)
{
    for (const CString& path : paths)
    {
        const FilePath parts(path);
        EXPECT_EQ(parts.text(), path);
        EXPECT_EQ(parts.GetLength(), path.GetLength());
        EXPECT_EQ(parts.IsEmpty(), path.IsEmpty());
        EXPECT_EQ(parts.name().Find(u'\\'), -1);
    }
}

TEST(FilePath, ComparesLikeTheWholeTexts)
{
    for (const CString& a : paths)
        for (const CString& b : paths)
        {
            SCOPED_TRACE(testing::PrintToString(a) + " and " + testing::PrintToString(b));
            const int order = a.CompareNoCase(b);
            EXPECT_EQ(FilePath(a).CompareNoCase(b), order);
            EXPECT_EQ(FilePath(a).CompareNoCase(FilePath(b)), order);
            EXPECT_EQ(FilePath(a.view(), FilePath(b)).CompareNoCase(FilePath(b)), order);
            EXPECT_EQ(FilePath(a) == FilePath(b), a == b);
            EXPECT_EQ(FilePath(a) == b, a == b);
            EXPECT_EQ(FilePath(a) == b.GetString(), a == b);
        }
}

TEST(FilePath, SharesTheFolderOfANeighbourOrOfAPool)
{
    const FilePath first(u"C:\\A\\a.mp3");
    const FilePath second(u"C:\\A\\b.mp3", first);
    EXPECT_TRUE(second.folder().sharesBufferWith(first.folder()));
    EXPECT_EQ(second, u"C:\\A\\b.mp3");
    EXPECT_EQ(FilePath(u"C:\\B\\b.mp3", first), u"C:\\B\\b.mp3");

    qo::TextPool pool;
    FilePath third(u"C:\\A\\c.mp3");
    FilePath fourth(u"C:\\A\\d.mp3");
    third.shareFolder(pool);
    fourth.shareFolder(pool);
    EXPECT_TRUE(third.folder().sharesBufferWith(fourth.folder()));
    EXPECT_EQ(fourth, u"C:\\A\\d.mp3");
}

TEST(FilePath, IsFormattedAsItsText)
{
    CString text;
    text.Format(u"%s: %.4s", FilePath(u"C:\\A\\a.mp3"), FilePath(u"C:\\A\\a.mp3"));
    EXPECT_EQ(text, u"C:\\A\\a.mp3: C:\\A");
}
