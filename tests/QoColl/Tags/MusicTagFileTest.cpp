#include "KVTagLib/Tags.h"
#include "QoColl/Db/QoFileDbItem.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <filesystem>

namespace
{
namespace fs = std::filesystem;
constexpr auto original = CTagAttribValue::SV_Original;
constexpr auto edited = CTagAttribValue::SV_Edited;
constexpr auto current = CTagAttribValue::SV_Current;

/// A sound of the test data in a folder of its own.
class Sound
{
public:
    explicit Sound(const std::string& name) : m_name(name)
    {
        fs::copy_file(std::string(QO_TEST_DATA) + "/sounds/" + name, m_dir.path(name));
    }
    CString path() const { return m_dir.collPath(m_name); }
    std::string systemPath() const { return m_dir.path(m_name); }
    const TempDir& dir() const { return m_dir; }

private:
    TempDir m_dir;
    std::string m_name;
};

/// Extracted pictures go into a folder of the test, not into the user's.
class MusicTagFile : public testing::Test
{
protected:
    MusicTagFile() { qo::specialFolders().setBase(m_base.collPath()); }
    ~MusicTagFile() override { qo::specialFolders().setBase(CString()); }

private:
    TempDir m_base;
};

CString dataPath(const std::string& name)
{
    return qo::fromSystemPath(std::string(QO_TEST_DATA) + "/sounds/" + name);
}
} // namespace

TEST_F(MusicTagFile, EditsGoIntoTheFileAndBecomeItsOwnValues)
{
    for (const char* name : {"sound.mp3", "sound.flac", "sound.ogg", "sound.m4a", "sound.wma"})
    {
        const Sound sound(name);
        CMusicTagEx tag;
        ASSERT_TRUE(tag.readTag(sound.path())) << name;
        EXPECT_FALSE(tag.isDirty(false));
        EXPECT_TRUE(tag.getHasOriginalLyrics());
        EXPECT_GT(tag.getTime(), 0U);
        EXPECT_LT(tag.getTime(), 60000U);
        EXPECT_GT(tag.getBitrate(), 0U);

        tag.setArtist(u"  Bj\u00F6rk\t", edited, true);
        tag.setTrackNumber(u"3/12", edited, true);
        tag.setLyrics(u"la la", false, edited, true);
        tag.setPicture(dataPath("red.jpg"), edited, true);
        ASSERT_TRUE(tag.writeTag(sound.path())) << name;
        EXPECT_FALSE(tag.isDirty(false));
        EXPECT_TRUE(tag.getHasOriginalLyrics());
        EXPECT_EQ(tag.getTrackNumber(), u"3/12");

        CMusicTagEx back;
        ASSERT_TRUE(back.readTag(sound.path())) << name;
        EXPECT_EQ(back.getArtist(), u"Bj\u00F6rk") << name;
        EXPECT_EQ(back.getTrackNumber(), u"3/12") << name;
        EXPECT_EQ(back.getLyrics(), u"la la") << name;
        EXPECT_TRUE(qo::fileSystem().exists(back.getPicture())) << name;
    }
}

TEST_F(MusicTagFile, MissingItemsAreReadAsEmptyValuesAndAMissingPictureAsNone)
{
    const Sound sound("sound.wav");
    CMusicTagEx tag;
    tag.setTitle(u"old", original, true);
    tag.setPicture(u"old", original, true);
    ASSERT_TRUE(tag.readTag(sound.path()));
    CString text = u"x";
    EXPECT_TRUE(tag.getLyrics(original, text));
    EXPECT_EQ(text, u"");
    EXPECT_NE(tag.getTitle(), u"old");
    EXPECT_FALSE(tag.getPicture(original, text));
}

TEST_F(MusicTagFile, FailedWriteLeavesTheTagDirtyAndSaysSoOnce)
{
    const TempDir dir;
    dir.write("broken.mp3", "no sound at all");
    const CString path = dir.collPath("broken.mp3");
    CMusicTagEx tag;
    tag.setTitle(u"old", original, true);
    tag.setTitle(u"new", edited, true);
    LogCapture log(qo::level::error);
    EXPECT_FALSE(tag.writeTag(path));
    EXPECT_TRUE(tag.isDirty(true));
    CString text;
    tag.getTitle(current, text);
    EXPECT_EQ(text, u"new");
    EXPECT_EQ(
        log.count("CMusicTagEx::writeTagKVTagLib : error writing tags for file ", qo::level::error),
        1)
        << log.all();
    EXPECT_EQ(dir.read("broken.mp3"), "no sound at all");

    log.clear();
    EXPECT_FALSE(tag.writeTag(dir.collPath("none.xyz")));
    EXPECT_FALSE(log.has("writeTag")) << log.all();
}

TEST_F(MusicTagFile, LyricsThatARecordLeftOutStayInTheFile)
{
    const Sound sound("sound.mp3");
    CMusicTagEx first;
    first.setLyrics(u"la la", false, edited, true);
    ASSERT_TRUE(first.writeTag(sound.path()));

    const auto record = boost::make_shared<QoFileDbItem>();
    record->path = sound.path();
    CMusicTagEx tag;
    tag.setTag(record);
    tag.setTitle(u"new", edited, true);
    ASSERT_TRUE(tag.writeTag(sound.path()));
    CMusicTagEx back;
    ASSERT_TRUE(back.readTag(sound.path()));
    EXPECT_EQ(back.getTitle(), u"new");
    EXPECT_EQ(back.getLyrics(), u"la la");

    tag.setLyrics(u"", false, edited, true);
    ASSERT_TRUE(tag.writeTag(sound.path()));
    ASSERT_TRUE(back.readTag(sound.path()));
    EXPECT_EQ(back.getLyrics(), u"");
}

TEST_F(MusicTagFile, EditedPictureThatCannotBeLoadedFailsTheWrite)
{
    const Sound sound("sound.mp3");
    for (const CString& picture : {sound.dir().collPath("gone.jpg"), sound.path()})
    {
        CMusicTagEx tag;
        ASSERT_TRUE(tag.readTag(sound.path()));
        const CString old = tag.getTitle();
        tag.setTitle(u"new", edited, true);
        tag.setPicture(picture, edited, true);
        LogCapture log(qo::level::error);
        EXPECT_FALSE(tag.writeTag(sound.path()));
        EXPECT_TRUE(log.has("error writing tags for file ")) << log.all();
        EXPECT_TRUE(tag.isDirty(true));
        CMusicTagEx back;
        ASSERT_TRUE(back.readTag(sound.path()));
        EXPECT_EQ(back.getTitle(), old);
        // The picture that was read may be gone from its folder without harm.
        tag.setPicture(picture, original, true);
        EXPECT_TRUE(tag.writeTag(sound.path()));
        tag.setTitle(old, edited, true);
        EXPECT_TRUE(tag.writeTag(sound.path()));
    }
}

TEST_F(MusicTagFile, FailedReadLeavesNoValues)
{
    const TempDir dir;
    dir.write("empty.mp3", "");
    for (const char* name : {"empty.mp3", "gone.flac", "cover.png"})
    {
        CMusicTagEx tag;
        tag.setTitle(u"old", original, true);
        LogCapture log(qo::level::error);
        EXPECT_FALSE(tag.readTag(dir.collPath(name))) << name;
        CString text;
        EXPECT_FALSE(tag.getTitle(original, text));
        EXPECT_FALSE(tag.getHasOriginalLyrics());
        const bool noReader = std::string(name) == "cover.png";
        EXPECT_EQ(log.count(noReader ? "CMusicTagEx::readTag: CTagsReaderFactory::CreateTagsReader "
                                       "failed for file "
                                     : "CMusicTagEx::readTag: ITagsReader->Read() failed for file ",
                            qo::level::error),
                  1)
            << name << "\n"
            << log.all();
    }
}

TEST_F(MusicTagFile, ReadOnlyFileIsMadeWritable)
{
    const Sound sound("sound.mp3");
    fs::permissions(sound.systemPath(), fs::perms::owner_read);
    CMusicTagEx tag;
    ASSERT_TRUE(tag.readTag(sound.path()));
    tag.setTitle(u"new", edited, true);
    EXPECT_TRUE(tag.writeTag(sound.path()));
    EXPECT_EQ(fs::status(sound.systemPath()).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(MusicTagFile, TimeIsReadAnewWithoutTouchingTheRest)
{
    const Sound sound("sound.mp3");
    CMusicTagEx tag;
    tag.setTitle(u"mine", original, true);
    tag.updateTime(sound.path());
    EXPECT_GT(tag.getTime(), 0U);
    EXPECT_EQ(tag.getBitrate(), 0U);
    EXPECT_EQ(tag.getTitle(), u"mine");
}
