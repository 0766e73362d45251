#include "QoColl/Collection/QoUtils.h"

#include "common/CollPath.h"
#include "common/types/CharClass.h"
#include "common/types/StringArray.h"
#include "support/Print.h"

#include <gtest/gtest.h>

namespace
{
CStringArray texts(std::initializer_list<const char16_t*> list)
{
    CStringArray result;
    for (const char16_t* text : list)
        result.Add(text);
    return result;
}
} // namespace

TEST(QoUtils, KindsOfMediaByExtension)
{
    const struct
    {
        const char16_t* ext;
        bool audio;
        bool video;
    } rows[] = {{u"mp3", true, false},       {u"FLAC", true, false},      {u"aif", true, false},
                {u"AiFf", true, false},      {u"aa", true, false},        {u"au", true, false},
                {u"MKV", false, true},       {u"mp4", false, true},       {u"MP4", false, true},
                {u"Mp4", false, true},       {u"webm", false, true},      {u"3G2", false, true},
                {u"m\u212Av", false, false}, {u"m4\u0430", false, false}, {u"ASF", false, false},
                {u"opus", false, false},     {u"", false, false},         {u"m", false, false},
                {u"mp", false, false},       {u"mp3x", false, false},     {u"webmm", false, false},
                {u"\0mp3", false, false},    {u"mp3 ", false, false}};
    for (const auto& row : rows)
    {
        // The Kelvin sign folds to 'k' where the house's comparison says so.
        const bool kelvin = qo::compareNoCase(row.ext, u"mkv") == 0;
        EXPECT_EQ(CQoUtils::isAudioExt(row.ext), row.audio)
            << testing::PrintToString(CString(row.ext));
        EXPECT_EQ(CQoUtils::isVideoExt(row.ext), row.video || kelvin)
            << testing::PrintToString(CString(row.ext));
        EXPECT_EQ(CQoUtils::isMusicExt(row.ext), row.audio || row.video || kelvin);
    }
    EXPECT_TRUE(CQoUtils::isMusicFilePath(u"\\\\usb:x\\a\\b.Mp3"));
    EXPECT_FALSE(CQoUtils::isMusicFilePath(u"C:\\mp3"));
}

TEST(QoUtils, RealPathIsThatOfDrivesAndServersOnly)
{
    CString real = u"kept";
    EXPECT_TRUE(CQoUtils::getRealPath(CQoCollPath(u"C:\\a\\b.mp3"), real));
    EXPECT_EQ(real, u"C:\\a\\b.mp3");
    EXPECT_EQ(CQoUtils::getRealPath(CQoCollPath(u"\\\\server\\x")), u"\\\\server\\x");
    real = u"kept";
    for (const char16_t* path : {u"\\\\wpd:id\\a", u"\\\\share:id\\a", u"\\\\lplugin:id\\a", u""})
    {
        EXPECT_FALSE(CQoUtils::getRealPath(CQoCollPath(path), real));
        EXPECT_EQ(CQoUtils::getRealPath(CQoCollPath(path)), u"");
    }
    EXPECT_EQ(real, u"kept");
}

TEST(QoUtils, DifferenceOfPathsIsSortedAndCountsRepeats)
{
    CStringArray added;
    CStringArray removed;
    CQoUtils::diffPaths(texts({u"C:\\z", u"c:\\A", u"C:\\b", u"C:\\b"}),
                        texts({u"C:\\B", u"C:\\y", u"C:\\a", u"C:\\C"}),
                        added,
                        removed);
    EXPECT_EQ(added.join(u"|"), u"C:\\b|C:\\z");
    EXPECT_EQ(removed.join(u"|"), u"C:\\C|C:\\y");
}
