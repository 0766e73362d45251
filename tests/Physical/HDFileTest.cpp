#include "Physical/HDFile.h"

#include "Physical/HDMusicFile.h"
#include "Physical/HDOfflineFile.h"
#include "Physical/HDSearchResult.h"
#include "support/Print.h"
#include "support/Records.h"
#include "types/StringArray.h"

#include <gtest/gtest.h>

#include <utility>

TEST(HDFile, ClassFollowsTheExtensionWithoutRegardToCase)
{
    const std::pair<const char16_t*, CHDFile::EHDFileType> rows[] = {
        {u"a.MP3 a.webm .mp3", CHDFile::FT_Music},
        {u"a.Jpg a.gif a.bmp a.PNG", CHDFile::FT_Picture},
        {u"a.TXT a.pdf", CHDFile::FT_Text},
        {u"a.jpeg mp3 a.mp3.bak a.asf a.", CHDFile::FT_Other}};
    for (const auto& [names, type] : rows)
    {
        for (const CString& name : CStringArray::split(names, u' '))
        {
            const auto file = fileOf(u"C:\\m\\" + name);
            const bool isMusic = type == CHDFile::FT_Music;
            EXPECT_EQ(file->getFileType(), type) << testing::PrintToString(name);
            EXPECT_EQ(dynamic_cast<const CHDMusicFile*>(file.get()) != nullptr, isMusic);
            EXPECT_EQ(file->hasMusicFilesRec(), isMusic);
            EXPECT_FALSE(file->getLTAssoc(CLTObjectType::Track));
        }
    }
}

TEST(HDFile, TitleStaysWhenTheRecordGetsAnotherPath)
{
    const auto file = fileOf(u"\\\\lplugin:x\\A\\B\\50%% a%1b.mp3");
    EXPECT_EQ(file->getFileTitle(), u"50% a\\b");
    EXPECT_EQ(file->getFileName(), u"50% a\\b.mp3");
    EXPECT_EQ(file->getExt(), u"mp3");
    file->getDbItem()->path = u"C:\\new.ogg";
    EXPECT_EQ(file->getFileTitle(), u"50% a\\b");
    EXPECT_EQ(file->getFileName(), u"new.ogg");
    EXPECT_EQ(file->toString(true), u"C:\\new.ogg");
}

TEST(HDFile, RecordTextsByAtomTypeAndByLogicalType)
{
    const auto file = fileOf(u"C:\\a.mp3");
    QoFileDbItem& item = *file->getDbItem();
    item.artist = u"artist";
    item.album = u"album";
    item.title = u"title";
    item.trackNumber = u"3/12";
    item.year = u"1999";
    item.genre = u"genre";
    const char16_t* atoms[] = {u"artist", u"album", u"title", u"3/12", u"1999", u"genre"};
    for (int type = -1; type <= 23; ++type)
    {
        CString value;
        const bool named = type >= 2 && type <= 7;
        EXPECT_EQ(file->getAtomValueFromDbFileItem(type, value), named) << type;
        EXPECT_EQ(value, named ? atoms[type - 2] : u"") << type;
    }
    item.year.Empty();
    CString value;
    EXPECT_FALSE(file->getAtomValueFromDbFileItem(6, value));

    file->setLTAssocToDbFileItem(CLTObjectType::Track, u"new");
    file->setLTAssocToDbFileItem(CLTObjectType::Lyrics, u"ignored");
    EXPECT_EQ(item.title, u"new");
    EXPECT_EQ(file->getLTAssocFromDbFileItem(CLTObjectType::Track), u"new");
    EXPECT_EQ(file->getLTAssocFromDbFileItem(CLTObjectType::Album), u"album");
    EXPECT_EQ(file->getLTAssocFromDbFileItem(CLTObjectType::Picture), u"");
    EXPECT_EQ(file->getLTAssocFromDbFileItem(CLTObjectType::Lyrics), u"");
}

TEST(HDFile, PodcastAndLongStreamAreToldByTheParameters)
{
    const auto file = boost::static_pointer_cast<CHDMusicFile>(fileOf(u"C:\\a.mp3"));
    EXPECT_FALSE(file->isPodcast());
    EXPECT_FALSE(file->isLongStream());
    file->getDbItem()->params = u"1:32\n30:5\n";
    EXPECT_TRUE(file->isPodcast());
    EXPECT_TRUE(file->isLongStream());
    file->getDbItem()->params = u"1:8\n29:0\n30:0\n";
    EXPECT_FALSE(file->isPodcast());
    EXPECT_FALSE(file->isLongStream());
}

TEST(HDMusicFile, TagHoldsTheRecordAsTheFilesOwnUntilTheNextTakeOver)
{
    const auto item = recordOf(u"C:\\a.mp3");
    item->artist = u"Ann";
    item->flags |= qo::fileFlag::video;
    const auto file = boost::static_pointer_cast<CHDMusicFile>(CHDFile::createHDFile(item));
    EXPECT_EQ(file->getAudioVideoType(), CHDFile::AV_Video);
    item->flags &= ~qo::fileFlag::mediaMask;
    EXPECT_EQ(file->getAudioVideoType(), CHDFile::AV_Audio);
    EXPECT_EQ(fileOf(u"C:\\a.txt")->getAudioVideoType(), CHDFile::AV_None);

    file->setLTAssocToDbFileItem(CLTObjectType::Artist, u"Found");
    EXPECT_EQ(file->getTag().getArtist(), u"Ann");
    EXPECT_FALSE(file->getTag().isDirty(false));
    file->setFileInfo();
    EXPECT_EQ(file->getTag().getArtist(), u"Found");
}

TEST(HDOfflineFile, HasNoClassByItsExtension)
{
    const auto item = recordOf(u"C:\\m\\a.b.mp3");
    const auto file = CHDOfflineFile::createHDOfflineFile(item);
    EXPECT_EQ(file->getFileTitle(), u"a.b");
    EXPECT_FALSE(file->hasMusicFilesRec());
    EXPECT_EQ(file->getRecFileCount(), 1);
    EXPECT_FALSE(file->isVideo());
    item->flags |= qo::fileFlag::video;
    EXPECT_TRUE(file->isVideo());
}

TEST(HDSearchResult, ClipIsNamedUpToTheFirstUnderscoreBehindTheSource)
{
    const struct
    {
        const char16_t* name;
        const char16_t* uid;
        int index;
        const char16_t* source;
    } rows[] = {{u"tube::abc_7.flv", u"tube::abc", 7, u"tube"},
                {u"my_tube::a_b_2.flv", u"my_tube::a", 0, u"my_tube"},
                {u"tube::abc.flv", u"tube::abc.flv", 0, u"tube"},
                {u"a_1.flv", u"a_1.flv", 0, u"a_1.flv"},
                {u"tube::_3", u"tube::", 3, u"tube"}};
    for (const auto& row : rows)
    {
        const auto item = recordOf(CString(u"\\\\sresult:web\\") + row.name);
        const auto result = CHDSearchResult::createSearchResult(item);
        int index = -1;
        EXPECT_EQ(result->getClipUID(), row.uid);
        EXPECT_TRUE(result->isSameClip(row.uid, index));
        EXPECT_EQ(index, row.index);
        EXPECT_FALSE(result->isSameClip(CString(row.uid) + u"x", index));
        EXPECT_EQ(result->getSource(), row.source);
    }
}

TEST(HDSearchResult, TitleAndKindAreThoseOfItsMaking)
{
    const auto item = recordOf(u"\\\\sresult:web\\tube::abc");
    item->title = u"Clip";
    item->params = u"1:2\n39:<x>1:2</x>\n";
    item->flags = qo::fileFlag::video;
    const auto result = CHDSearchResult::createSearchResult(item);
    item->title = u"other";
    item->flags = 0;
    EXPECT_EQ(result->getTitle(), u"Clip");
    EXPECT_TRUE(result->isVideo());
    EXPECT_EQ(result->getXML(), u"<x>1:2</x>");
    EXPECT_FALSE(result->isDownloading());
    item->velmoraId = u"id";
    EXPECT_TRUE(result->isDownloading());
}
