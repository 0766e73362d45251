#include "QoColl/Collection/QoUtils.h"

#include "Logical/LTArtist.h"
#include "Physical/HDMusicFile.h"
#include "common/CollPath.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/Records.h"
#include "support/TempDir.h"
#include "types/CharClass.h"
#include "types/StringArray.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <tuple>

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
    // The Kelvin sign folds to 'k' where the house's comparison says so.
    const bool kelvin = qo::compareNoCase(u"m\u212Av", u"mkv") == 0;
    const std::tuple<const char16_t*, bool, bool> rows[] = {
        {u"mp3 FLAC aif AiFf aa au", true, false},
        {u"MKV mp4 MP4 Mp4 webm 3G2", false, true},
        {u"m\u212Av", false, kelvin},
        {u"m4\u0430 ASF opus m mp mp3x webmm", false, false}};
    for (const auto& [list, audio, video] : rows)
    {
        for (const CString& ext : CStringArray::split(list, u' '))
        {
            EXPECT_EQ(CQoUtils::isAudioExt(ext), audio) << testing::PrintToString(ext);
            EXPECT_EQ(CQoUtils::isVideoExt(ext), video) << testing::PrintToString(ext);
            EXPECT_EQ(CQoUtils::isMusicExt(ext), audio || video) << testing::PrintToString(ext);
        }
    }
    for (const char16_t* none : {u"", u"\0mp3", u"mp3 "})
        EXPECT_FALSE(CQoUtils::isMusicExt(none));
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

TEST(QoUtils, AFileHasOneBitOfEachGroupOfTheFilter)
{
    const auto file = fileOf(u"C:\\a.mp3");
    CQoUtils::Files files;
    files.add(file);
    QoFileDbItem& item = *file->getDbItem();
    const struct
    {
        const char* name;
        unsigned flags;
        int source;
        bool reviewed;
        bool imported;
        int bits;
    } rows[] = {{"music of the user's own", 8, 0, false, false, 1 + 16 + 32 + 256 + 1024 + 4096},
                {"no music", 16, 0, false, false, 1 + 16 + 64 + 256 + 1024 + 4096},
                {"a film", 2 + 16, 0, true, false, 2 + 16 + 64 + 128 + 1024 + 4096},
                {"gathered", 1 + 8, 4, false, true, 1 + 8 + 32 + 256 + 512 + 4096},
                {"purchased", 8 + 32, 0, true, true, 1 + 16 + 32 + 128 + 512 + 2048}};
    for (const auto& row : rows)
    {
        item.flags = row.flags;
        item.source = static_cast<eItemSource>(row.source);
        item.reviewed = row.reviewed;
        item.imported = row.imported;
        for (int bit = 1; bit <= 4096; bit *= 2)
            EXPECT_EQ(CQoUtils::existVisibleFiles(files, bit), (row.bits & bit) != 0)
                << row.name << ", bit " << bit;
        EXPECT_FALSE(CQoUtils::existVisibleFiles(files, 0x1fff & ~row.bits)) << row.name;
    }
    EXPECT_EQ(CQoUtils::getFileAudioVideoType(fileOf(u"C:\\a.txt")), 4);
}

TEST(QoUtils, ListsAreSortedOutByKindFlagAndDevice)
{
    CQoUtils::Files files;
    for (const char16_t* path : {u"\\\\wpd:x\\a.jpg", u"\\\\share:x\\C:\\a.mp3"})
        files.add(fileOf(path));
    EXPECT_FALSE(CQoUtils::existRealFilesInList(files));
    for (const char16_t* path : {u"C:\\a.mp3", u"\\\\server\\a.avi", u"\\\\usb:x\\a.txt"})
        files.add(fileOf(path));
    files[4]->getDbItem()->flags = qo::fileFlag::notMusic;
    EXPECT_TRUE(CQoUtils::existMusicFilesInList(files));
    EXPECT_EQ(CQoUtils::countMusicFiles(files), 3);
    CPtrListT<CHDMusicFile> music;
    CQoUtils::getMusicFiles(files, music);
    EXPECT_EQ(music[2], files[3]);
    int isMusic = -1;
    int isNot = -1;
    CQoUtils::getMusicNonMusicTypeFileCount(files, isMusic, isNot);
    EXPECT_EQ(isMusic, 4);
    EXPECT_EQ(isNot, 1);
    CQoUtils::Files real;
    CQoUtils::getRealFiles(files, real);
    EXPECT_EQ(real.GetSize(), 3);
    EXPECT_EQ(real[0], files[2]);
}

TEST(QoUtils, ArtistAndTitleOfFileNames)
{
    const struct
    {
        const char16_t* name;
        const char16_t* artist;
        const char16_t* title;
    } rows[] = {{u"05 - Song.mp3", u"", u"Song"},
                {u"05 - Artist - Song.mp3", u"Artist", u"Song"},
                {u"123 - Song.mp3", u"123", u"Song"},
                {u"C:\\a - b\\ Artist-Song - live.tar.mp3 ", u"Artist", u"Song - live.tar"},
                {u"\\\\wpd:id\\x\\1-A%1B - C.mp3", u"A\\B", u"C"},
                {u"a\\b\\Artist - Song.mp3", u"Artist", u"Song"},
                {u"05 - Feat. X.mp3", u"", u"Feat"},
                {u"1-2-3-4.mp3", u"", u"4"},
                {u" - Song", u"", u"Song"},
                {u"07", u"", u"07"},
                {u"07 -", u"", u""},
                {u"Song.mp3", u"", u"Song"},
                {u"", u"", u""}};
    for (const auto& row : rows)
    {
        CString artist = u"?";
        CString title = u"?";
        CQoUtils::getArtistTitleFromFileName(row.name, artist, title);
        EXPECT_EQ(artist, row.artist) << testing::PrintToString(CString(row.name));
        EXPECT_EQ(title, row.title) << testing::PrintToString(CString(row.name));
        EXPECT_EQ(CQoUtils::getArtistFromFileName(row.name), row.artist);
    }
    // A name that some peer made up neither hangs nor overflows.
    CString endless;
    for (int i = 0; i < 300000; ++i)
        endless += u"1-";
    EXPECT_EQ(CQoUtils::getArtistFromFileName(endless), u"");
}

TEST(QoUtils, SizesComeFromTheDisk)
{
    const TempDir dir;
    dir.write("Song.mp3", "12345");
    const LogCapture logged;
    EXPECT_EQ(CQoUtils::getFileSize(fileOf(dir.collPath("song.MP3"))), 5);
    EXPECT_TRUE(logged.lines().empty());
    EXPECT_EQ(CQoUtils::getFileSize(fileOf(dir.collPath("gone.mp3"))), 0);
    EXPECT_EQ(CQoUtils::getFileSize(fileOf(u"\\\\wpd:x\\a.mp3")), 0);
    EXPECT_EQ(logged.count("CQoUtils::getFileSize : GetFileAttributesEx failed for ", 10), 2);
    EXPECT_TRUE(logged.has("gone.mp3 : 2: ")) << logged.all();
}

TEST(QoUtils, OnlyUnsetCellsAreTakenFromTheOtherParents)
{
    CQoUtils::ParentItemsInfo target;
    CQoUtils::ParentItemsInfo source;
    const auto artist = boost::make_shared<CLTArtist>(u"Ann");
    target.m_hasGenre = target.m_hasArtist = true;
    source.m_hasArtist = source.m_hasAlbum = true;
    source.m_artist = artist;
    CQoUtils::copyMissingParentItemsInfo(target, source);
    EXPECT_TRUE(target.m_hasGenre && target.m_hasArtist && target.m_hasAlbum);
    EXPECT_FALSE(target.m_artist) << "set to what has no artist";
    target = {};
    CQoUtils::copyMissingParentItemsInfo(target, source);
    EXPECT_EQ(target.m_artist, artist);
    EXPECT_FALSE(target.m_hasGenre);
}
