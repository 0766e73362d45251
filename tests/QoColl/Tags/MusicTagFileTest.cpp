#include "KVTagLib/Tags.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "QoColl/Tags/TagSources.h"
#include "common/QoException.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/HungryFiles.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <utility>

namespace
{
namespace fs = std::filesystem;
using namespace tagsources;

std::string dataPath(const std::string& name)
{
    return std::string(QO_TEST_DATA) + "/sounds/" + name;
}

/// Everything lies in a folder of the test, also the pictures that are extracted.
class MusicTagFile : public testing::Test
{
protected:
    MusicTagFile() { qo::specialFolders().setBase(dir.collPath("base")); }
    ~MusicTagFile() override { qo::specialFolders().setBase(CString()); }

    /// The path of a fresh copy of a sound of the test data.
    CString sound(const char* name) const
    {
        fs::copy_file(dataPath(name), dir.path(name));
        return dir.collPath(name);
    }

    const TempDir dir;
};
} // namespace

TEST_F(MusicTagFile, EditsGoIntoTheFileWhichIsMadeWritableAndBecomeItsOwnValues)
{
    constexpr fs::perms readAndWrite = fs::perms::owner_read | fs::perms::owner_write;
    for (const char* name : {"sound.mp3", "sound.flac", "sound.ogg", "sound.m4a", "sound.wma"})
    {
        const CString path = sound(name);
        CMusicTagEx tag;
        ASSERT_TRUE(tag.readTag(path)) << name;
        EXPECT_FALSE(tag.isDirty(false));
        EXPECT_TRUE(tag.getHasOriginalLyrics());
        EXPECT_TRUE(tag.getTime() > 0 && tag.getBitrate() > 0) << name;

        tag.setArtist(u"  Bj\u00F6rk\t", edited, true);
        tag.setTrackNumber(u"3/12", edited, true);
        tag.setLyrics(u"la la", false, edited, true);
        tag.setPicture(qo::fromSystemPath(dataPath("red.jpg")), edited, true);
        fs::permissions(dir.path(name), fs::perms::owner_read);
        ASSERT_TRUE(tag.writeTag(path)) << name;
        EXPECT_EQ(fs::status(dir.path(name)).permissions(), readAndWrite) << name;
        EXPECT_FALSE(tag.isDirty(false));
        EXPECT_TRUE(tag.getHasOriginalLyrics());
        EXPECT_EQ(tag.getTrackNumber(), u"3/12");

        CMusicTagEx back;
        ASSERT_TRUE(back.readTag(path)) << name;
        EXPECT_EQ(back.getArtist(), u"Bj\u00F6rk") << name;
        EXPECT_EQ(back.getTrackNumber(), u"3/12") << name;
        EXPECT_EQ(back.getLyrics(), u"la la") << name;
        EXPECT_TRUE(qo::fileSystem().exists(back.getPicture())) << name;
    }
}

TEST_F(MusicTagFile, MissingItemsAreReadAsEmptyValuesAndAMissingPictureAsNone)
{
    const CString path = sound("sound.wav");
    CMusicTagEx tag;
    tag.setTitle(u"old", original, true);
    tag.setPicture(u"old", original, true);
    ASSERT_TRUE(tag.readTag(path));
    CString text = u"x";
    EXPECT_TRUE(tag.getLyrics(original, text));
    EXPECT_EQ(text, u"");
    EXPECT_NE(tag.getTitle(), u"old");
    EXPECT_FALSE(tag.getPicture(original, text));
}

TEST_F(MusicTagFile, FailedWriteLeavesTheTagDirtyAndSaysSoOnce)
{
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
    const CString path = sound("sound.mp3");
    CMusicTagEx first;
    first.setLyrics(u"la la", false, edited, true);
    ASSERT_TRUE(first.writeTag(path));

    const auto record = boost::make_shared<QoFileDbItem>();
    record->path = path;
    CMusicTagEx tag;
    tag.setTag(record);
    tag.setTitle(u"new", edited, true);
    ASSERT_TRUE(tag.writeTag(path));
    CMusicTagEx back;
    ASSERT_TRUE(back.readTag(path));
    EXPECT_EQ(back.getTitle(), u"new");
    EXPECT_EQ(back.getLyrics(), u"la la");

    tag.setLyrics(u"", false, edited, true);
    ASSERT_TRUE(tag.writeTag(path));
    ASSERT_TRUE(back.readTag(path));
    EXPECT_EQ(back.getLyrics(), u"");
}

TEST_F(MusicTagFile, EditedPictureThatCannotBeLoadedFailsTheWrite)
{
    const CString path = sound("sound.mp3");
    for (const CString& picture : {dir.collPath("gone.jpg"), path})
    {
        CMusicTagEx tag;
        ASSERT_TRUE(tag.readTag(path));
        tag.setTitle(u"new", edited, true);
        tag.setPicture(picture, edited, true);
        LogCapture log(qo::level::error);
        EXPECT_FALSE(tag.writeTag(path));
        EXPECT_TRUE(log.has("error writing tags for file ")) << log.all();
        EXPECT_TRUE(tag.isDirty(true));
        CMusicTagEx back;
        ASSERT_TRUE(back.readTag(path));
        EXPECT_NE(back.getTitle(), u"new");
        // The picture that was read may be gone from its folder without harm.
        tag.setPicture(picture, original, true);
        tag.setTitle(u"newer", edited, true);
        EXPECT_TRUE(tag.writeTag(path));
    }
}

TEST_F(MusicTagFile, FailedReadLeavesNoValues)
{
    dir.write("empty.mp3", "");
    const std::pair<const char*, std::string> cases[] = {
        {"empty.mp3", "ITagsReader->Read()"},
        {"gone.flac", "ITagsReader->Read()"},
        {"cover.png", "CTagsReaderFactory::CreateTagsReader"}};
    for (const auto& [name, step] : cases)
    {
        CMusicTagEx tag;
        tag.setTitle(u"old", original, true);
        LogCapture log(qo::level::error);
        EXPECT_FALSE(tag.readTag(dir.collPath(name))) << name;
        CString text;
        EXPECT_FALSE(tag.getTitle(original, text));
        EXPECT_FALSE(tag.getHasOriginalLyrics());
        EXPECT_EQ(log.count("CMusicTagEx::readTag: " + step + " failed for file ", 10), 1)
            << name << "\n"
            << log.all();
    }
}

TEST_F(MusicTagFile, LackOfMemoryIsNoFailedRead)
{
    const CString path = sound("sound.mp3");
    const HungryFiles files;
    CMusicTagEx tag;
    const LogCapture log(qo::level::error);
    try
    {
        tag.readTag(path);
        ADD_FAILURE() << "taken for a file without a tag";
    }
    catch (CQoException* raw)
    {
        const std::unique_ptr<CQoException> exception(raw);
        EXPECT_EQ(exception->getType(), CQoException::outOfMemory);
    }
    EXPECT_TRUE(log.has("not enough memory: file: .\\QoColl\\MusicTagEx, line: ")) << log.all();
}

TEST_F(MusicTagFile, TimeIsReadAnewWithoutTouchingTheRest)
{
    const CString path = sound("sound.mp3");
    CMusicTagEx tag;
    tag.setTitle(u"mine", original, true);
    tag.updateTime(path);
    EXPECT_GT(tag.getTime(), 0U);
    EXPECT_EQ(tag.getBitrate(), 0U);
    EXPECT_EQ(tag.getTitle(), u"mine");
}
