#include "platform/DriveMap.h"

#include "platform/FileSystem.h"
#include "support/Print.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

TEST(DriveMap, NamesHaveOneCollectionFormAndComeBack)
{
    const std::pair<const char*, const char16_t*> cases[] = {
        {"/", u"C:\\"},
        {"/home/ann/Music", u"C:\\home\\ann\\Music"},
        {"//home///ann/", u"C:\\home\\ann"},
        {"/line\nfeed\ttab", u"C:\\line\uF00Afeed\uF009tab"},
        {"/latin1 \xE9", u"C:\\latin1 \uF0E9"},
        {"/over\xC0\xAFlong", u"C:\\over\uF0C0\uF0AFlong"},
        {"/half\xED\xA0\x80", u"C:\\half\uF0ED\uF0A0\uF080"},
        // A name that already holds a character of the block.
        {"/block\xEF\x81\x9C", u"C:\\block\uF0EF\uF081\uF09C"},
    };
    for (const auto& [system, expected] : cases)
    {
        const CString collection = qo::fromSystemPath(system);
        EXPECT_EQ(collection, CString(expected)) << system;
        EXPECT_EQ(qo::fromSystemPath(qo::toSystemPath(collection)), collection) << system;
    }
}

TEST(DriveMap, AnyBytesOfANameSurviveTheWayThereAndBack)
{
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round)
    {
        std::string name = "/";
        for (unsigned i = random() % 40 + 1; i > 0; --i)
        {
            char byte =
                static_cast<char>(random() % 3 == 0 ? random() % 256 : 0xE0 + random() % 32);
            name += byte == '/' || byte == 0 ? 'x' : byte;
        }
        EXPECT_EQ(qo::toSystemPath(qo::fromSystemPath(name)), name);
    }
}

TEST(DriveMap, PathsThatStandForNothingMapToNothing)
{
    const char16_t* const paths[] = {u"",
                                     u"C",
                                     u"Music\\a.mp3",
                                     u"Q:\\a.mp3",
                                     u"\\\\server\\share\\a.mp3",
                                     u"C:\\a/b",
                                     u"C:\\a\nb", // a line feed has its own place in the block
                                     u"C:\\\uF02E\uF02E\\x", // dots in disguise
                                     u"C:\\a\uF02Fb",
                                     u"C:\\\uF0C3\uF0A9"}; // bytes that make up a letter
    for (const char16_t* path : paths)
        EXPECT_EQ(qo::toSystemPath(path), "") << qo::toUtf8(CString(path));
    const char16_t lone[] = {u'C', u':', u'\\', 0xD800, u'x', 0};
    EXPECT_EQ(qo::toSystemPath(lone), "");
    EXPECT_EQ(qo::toSystemPath(CString(u"C:\\a\0b", 6)), "");
}

TEST(DriveMap, DevicesKeepTheirLetterUpToZAndTheLongestMountPointWins)
{
    qo::DriveMap map;
    EXPECT_EQ(map.addDevice(u"stick", "/media/ann/stick"), u'D');
    EXPECT_EQ(map.addDevice(u"player", "/media/ann/stick/inner/"), u'E');
    EXPECT_EQ(map.fromSystem("/media/ann/stick/a.mp3"), CString(u"D:\\a.mp3"));
    EXPECT_EQ(map.fromSystem("/media/ann/stick/inner/b.mp3"), CString(u"E:\\b.mp3"));
    EXPECT_EQ(map.fromSystem("/media/ann/stickers"), CString(u"C:\\media\\ann\\stickers"));
    EXPECT_EQ(map.toSystem(u"d:\\a.mp3"), "/media/ann/stick/a.mp3");

    map.removeDevice(u"stick");
    EXPECT_EQ(map.toSystem(u"D:\\a.mp3"), "");
    EXPECT_EQ(map.fromSystem("/media/ann/stick/a.mp3"), CString(u"C:\\media\\ann\\stick\\a.mp3"));
    EXPECT_EQ(map.addDevice(u"stick", "/mnt/elsewhere"), u'D');
    EXPECT_EQ(map.addDevice(u"third", "/mnt/third"), u'F');

    map.mapServer(u"\\\\nas\\music", "/net/music");
    EXPECT_EQ(map.toSystem(u"\\\\NAS\\Music\\x\\y.ogg"), "/net/music/x/y.ogg");
    EXPECT_EQ(map.fromSystem("/net/music/x/y.ogg"), CString(u"\\\\nas\\music\\x\\y.ogg"));
    map.mapServer(u"\\\\nas\\music\\live\\", "/net/live");
    EXPECT_EQ(map.fromSystem("/net/live/z"), CString(u"\\\\nas\\music\\live\\z"));
    EXPECT_EQ(map.toSystem(u"\\\\nas\\music\\live\\z"), "/net/live/z");

    for (char16_t letter = u'G'; letter <= u'Z'; ++letter)
        EXPECT_EQ(map.addDevice(CString(letter), "/m/" + std::to_string(letter)), letter);
    EXPECT_EQ(map.addDevice(u"one too many", "/m/last"), 0);
}
