#include "Physical/HDMusicFile.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/QoInplaceFileDbItem.h"
#include "QoColl/Db/Records/QoPlaylistDbItem.h"
#include "QoColl/Db/Records/QoSessionDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "QoColl/Player/MpFileUtils.h"
#include "QoColl/Player/MpInplaceUtils.h"
#include "QoColl/Player/MpPlaylistUtils.h"
#include "QoColl/Player/MpSessionUtils.h"
#include "common/Paths.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/Print.h"
#include "support/Records.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace
{
using Queue = IPostProcessingQueue;

/// The usual database, in a folder of the test.
class MpUtils : public testing::Test
{
protected:
    MpUtils()
    {
        qo::specialFolders().setBase(m_dir.collPath("base"));
        CQoCollDb::CreateDatabaseIfNotValid(CQoPaths::getQoDbFilePath(), CQoCollDb::ConfigInfo());
    }
    ~MpUtils() override { qo::specialFolders().setBase(CString()); }

    static QoFileDbItemPtr insert(const CString& path, int session = 0, const char16_t* coll = u"")
    {
        QoFileDbItemPtr item = recordOf(path);
        item->session = session;
        item->source = Queue::sourceRadioRecording;
        item->flags |= qo::fileFlag::audio;
        CQoCollDb(CQoPaths::getQoDbFilePath()).insertFile(item, coll);
        return item;
    }

    const TempDir m_dir;
};

TEST_F(MpUtils, PlaylistHoldsTheRowIdsOfItsFilesInTheirOrder)
{
    const QoFileDbItemPtr first = insert(u"C:\\a.mp3");
    const QoFileDbItemPtr second = insert(u"C:\\b.mp3");
    QoFileDbItemArray records;
    CPtrListT<CHDMusicFile> files;
    for (const QoFileDbItemPtr& item : {second, first, second})
    {
        records.Add(item);
        files.Add(boost::dynamic_pointer_cast<CHDMusicFile>(CHDFile::createHDFile(item)));
    }
    const auto ofRecords = CMpPlaylistUtils::NewPlaylist(u"It's 100%", records);
    const auto ofFiles = CMpPlaylistUtils::NewPlaylist(u"It's 100%", files);
    const auto empty = CMpPlaylistUtils::NewPlaylist(u"none", QoFileDbItemArray());
    EXPECT_EQ(CMpPlaylistUtils::GetUserPlaylistsCount(), 3);
    boost::shared_ptr<QoPlaylistDbItem> read;
    for (const int id : {ofRecords->id, ofFiles->id})
    {
        ASSERT_TRUE(CMpPlaylistUtils::GetPlaylist(id, read));
        EXPECT_EQ(read->name, u"It's 100%");
        EXPECT_EQ(read->tracks.join(u";"), u"2;1;2");
    }
    ASSERT_TRUE(CMpPlaylistUtils::GetPlaylist(empty->id, read));
    EXPECT_TRUE(read->tracks.IsEmpty());
    read->name = u"some";
    read->tracks.Add(u"7");
    CMpPlaylistUtils::UpdatePlaylist(read);
    CMpPlaylistUtils::DeletePlaylist(const_cast<boost::shared_ptr<QoPlaylistDbItem>&>(ofFiles));
    DbItemArray<QoPlaylistDbItem> all;
    CMpPlaylistUtils::GetAllUserPlaylists(all);
    ASSERT_EQ(all.GetSize(), 2);
    EXPECT_EQ(all[1]->name + all[1]->tracks.join(u";"), u"some7");
}

TEST_F(MpUtils, NextDefaultNameHasTheFirstFreePositiveNumber)
{
    const auto add = [](const char16_t* name)
    { CMpPlaylistUtils::NewPlaylist(name, QoFileDbItemArray()); };
    EXPECT_EQ(CMpPlaylistUtils::GetNextDefaultPlaylist(u"List"), u"List1");
    for (const char16_t* name : {u"Listen", u"List", u"List-4", u"List0"})
        add(name);
    EXPECT_EQ(CMpPlaylistUtils::GetNextDefaultPlaylist(u"List"), u"List1");
    for (const char16_t* name : {u"list1", u"List3", u"List3"})
        add(name);
    EXPECT_EQ(CMpPlaylistUtils::GetNextDefaultPlaylist(u"List"), u"List2");
    add(u"List2 and more");
    EXPECT_EQ(CMpPlaylistUtils::GetNextDefaultPlaylist(u"List"), u"List4");
    EXPECT_EQ(CMpPlaylistUtils::GetNextDefaultPlaylist(u"L_st"), u"L_st4") << "a wild character";
}

TEST_F(MpUtils, EmptySessionsAreCleared)
{
    EXPECT_FALSE(CMpPlaylistUtils::HasLastFiles());
    const int kept = CMpSessionUtils::startSession(Queue::sourceRadioRecording, u"kept");
    const int empty = CMpSessionUtils::startSession(Queue::sourcePodcast, u"empty");
    insert(u"C:\\a.mp3", kept);
    insert(u"C:\\b.mp3");
    CMpSessionUtils::endSession(kept);
    CMpSessionUtils::clearEmptySessions();
    CArray<QoSessionQueryItem> sessions;
    CMpSessionUtils::getAllSessions(sessions, 0);
    ASSERT_EQ(sessions.GetSize(), 1);
    const QoSessionDbItem& session = *sessions[0].session;
    EXPECT_EQ(session.name, u"kept");
    EXPECT_EQ(session.source, Queue::sourceRadioRecording);
    EXPECT_GT(qo::toTicks(session.startTime), qo::unixEpochTicks);
    EXPECT_GE(qo::toTicks(session.endTime), qo::toTicks(session.startTime));
    boost::shared_ptr<QoSessionDbItem> read;
    EXPECT_FALSE(CMpSessionUtils::getSession(empty, read));
    QoFileDbItemArray files;
    CMpPlaylistUtils::GetSessionFiles(kept, files);
    ASSERT_EQ(files.GetSize(), 1);
    EXPECT_EQ(files[0]->path, u"C:\\a.mp3");
    CMpPlaylistUtils::GetLastFiles(5, files);
    EXPECT_EQ(files.GetSize(), 2);
    EXPECT_TRUE(CMpPlaylistUtils::HasLastFiles());
}

TEST_F(MpUtils, InplaceFileHasTheTagAndTheStateOfItsFile)
{
    std::filesystem::copy_file(std::string(QO_TEST_DATA) + "/sounds/sound.mp3",
                               m_dir.path("sound.mp3"));
    CMusicTagEx tag;
    tag.setTitle(u"Low Tide", CTagAttribValue::SV_Edited, true);
    ASSERT_TRUE(tag.writeTag(m_dir.collPath("sound.mp3")));
    QorganizerDef::VelmoraFileParams params;
    params.source = Queue::sourceConversion;
    params.originalPath = m_dir.collPath("sound.mp3");
    const auto found = CMpInplaceUtils::AddInplaceFile(params);
    params.originalPath = m_dir.collPath("away.mp3");
    const auto away = CMpInplaceUtils::AddInplaceFile(params);
    EXPECT_GT(found->id, 0);
    EXPECT_EQ(found->title, u"Low Tide");
    EXPECT_EQ(found->size,
              static_cast<std::int64_t>(std::filesystem::file_size(m_dir.path("sound.mp3"))));
    EXPECT_TRUE(away->title.IsEmpty() && away->size == 0);
    DbItemArray<QoInplaceFileDbItem> all;
    CMpInplaceUtils::GetAllInplaceFiles(all);
    ASSERT_EQ(all.GetSize(), 2);
    EXPECT_EQ(all[0]->title, found->title) << "the last created one comes first";
    EXPECT_EQ(all[0]->duration, found->duration);
    EXPECT_EQ(qo::toTicks(all[0]->createTime), qo::toTicks(found->createTime));
    EXPECT_EQ(CVelmoraFileParamsUtils::ExtractParam(all[1]->params, QorganizerDef::VP_OriginalPath),
              params.originalPath);
    boost::shared_ptr<QoInplaceFileDbItem> one = all[1];
    EXPECT_FALSE(CMpInplaceUtils::GetInplaceFile(one->id, one));
    CMpInplaceUtils::DeleteInplaceFile(one);
    CMpInplaceUtils::GetAllInplaceFiles(all);
    EXPECT_EQ(all.GetSize(), 2);
}

TEST_F(MpUtils, ManualCutIsNotedInTheFieldOfTheSourceAndWrittenOnce)
{
    struct Case
    {
        eItemSource source;
        int field;
    };
    for (const auto& [source, field] :
         {Case{Queue::sourceRadioRecording, QorganizerDef::VP_RecordingCutQuality},
          Case{Queue::sourceRadioWish, QorganizerDef::VP_RecordingCutQuality},
          Case{Queue::sourceConversion, QorganizerDef::VP_ConversionCutQuality}})
    {
        QoFileDbItemPtr item = insert(u"C:\\a.mp3", 0, u"a device");
        QorganizerDef::VelmoraFileParams params;
        params.source = source;
        item->params = CVelmoraFileParamsUtils::ToDbParam(params);
        CMpFileUtils::SetManualCutQuality(item);
        QoFileDbItemPtr read;
        ASSERT_TRUE(CMpFileUtils::GetFileFromDevice(item->id, read));
        EXPECT_EQ(CVelmoraFileParamsUtils::ExtractParam(read->params, field), u"4") << source;

        item->title = u"not written";
        CMpFileUtils::SetManualCutQuality(item);
        item->params.Empty();
        CMpFileUtils::SetManualCutQuality(item);
        ASSERT_TRUE(CMpFileUtils::GetFileFromDevice(item->id, read));
        EXPECT_TRUE(read->title.IsEmpty()) << source;
        EXPECT_FALSE(read->params.IsEmpty()) << source;
    }
}
} // namespace
