#include "QoColl/Db/CollDbFixture.h"
#include "QoColl/Db/Records/FpCutInfoDbItem.h"
#include "common/LogLevel.h"
#include "common/SimpleLogger.h"
#include "support/Contains.h"
#include "support/LogCapture.h"

#include <algorithm>
#include <filesystem>
#include <tuple>

namespace
{
class QoCollDbFiles : public OpenCollDbFixture
{
protected:
    QoFileDbItemArray all(bool withLyrics = false)
    {
        QoFileDbItemArray items;
        m_db->getAllFiles(items, withLyrics, u"", false);
        return items;
    }

    static CString paths(const QoFileDbItemArray& items)
    {
        CString text;
        for (const QoFileDbItemPtr& item : items)
            text += item->path + u"|";
        return text;
    }
};

/// A record with another value in each field.
QoFileDbItemPtr fullRecord()
{
    auto item = boost::make_shared<QoFileDbItem>();
    item->path = u"C:\\M\u00FCsic\\'quoted' \"%s\" \U0001F3B5.mp3";
    item->source = IPostProcessingQueue::sourceWebClip;
    item->createTime = qo::fromTicks(0x01DA000000000001);
    item->modifTime = qo::fromTicks(-2);
    item->artist = u"artist";
    item->album = u"album";
    item->title = u"it's; -- 'a' title";
    item->genre = u"genre";
    item->trackNumber = u"3/12";
    item->year = u"99";
    item->lyrics = u"line\r\nline";
    item->lyricsLoaded = true;
    item->picturePath = u"C:\\p.jpg";
    item->size = 0x123456789AB;
    item->duration = 215000;
    item->flags = 0xFFFFFFFF;
    item->session = 4;
    item->velmoraId = u"velmora";
    item->params = u"0:\n1:2\n";
    item->reviewed = true;
    item->imported = true;
    item->clipUid = u"clip";
    item->fpParams = u"0:1\n";
    item->bitrate = 320;
    return item;
}

TEST_F(QoCollDbFiles, RecordComesBackAsItWasWritten)
{
    QoFileDbItemPtr item = fullRecord();
    m_db->insertFile(item, u"own");
    EXPECT_EQ(item->id, 1);
    const CString select(u"SELECT * FROM FILE_T WHERE FT_ID = 1");
    const CString stored = row(select);
    EXPECT_EQ(
        stored,
        u"1|" + item->path +
            u"|2|133419138960850945|-2|artist|album|it's; -- 'a' title|genre|3/12|99|"
            u"line\r\nline|C:\\p.jpg|1250999896491|215000|320|-1|4|velmora|0:\n1:2\n|1|1|clip|"
            u"0:1\n|own|");
    QoFileDbItemPtr read = all(true)[0];
    EXPECT_EQ(read->id, 1);
    EXPECT_TRUE(read->lyricsLoaded);
    EXPECT_EQ(read->fpParams, u"") << "not part of a read record";
    EXPECT_EQ(read->collId, u"");
    m_db->deleteFile(item);
    read->fpParams = item->fpParams;
    m_db->insertFile(read, u"own");
    EXPECT_EQ(row(select), stored);
}

TEST_F(QoCollDbFiles, GivenIdIsKeptAndOneBeyondAnIntIsRefused)
{
    auto item = file(u"a");
    item->id = 77;
    m_db->insertFile(item, u"");
    EXPECT_EQ(insert(u"b")->id, 78);
    CSQLiteDB& connection = QoCollDbInspector::connection(*m_db);
    connection.Execute(u"UPDATE FILE_T SET FT_ID = 2147483647 WHERE FT_ID = 78");
    EXPECT_TRUE(thrownBy([&] { insert(u"c"); }));
    EXPECT_EQ(paths(all()), u"a|b|");
    for (const char16_t* id : {u"4294967297", u"0", u"-1"})
    {
        connection.Execute(CString(u"UPDATE FILE_T SET FT_ID = ") + id + u" WHERE FT_PATH = 'b'");
        EXPECT_EQ(paths(all()), u"a|") << qo::toUtf8(CString(id)) << " is left out";
    }
}

TEST(DatabaseError, FoundInWhatWasReadIsLoggedAsOneOfSQLites)
{
    if (IsSimpleLoggerInitialized())
        GTEST_SKIP() << "another test of this process has started the database's log";
    const TempDir dir;
    InitSimpleLogger(qo::level::warning, dir.collPath("Database"));
    EXPECT_TRUE(thrownBy([] { qo::throwDatabaseError(u"Row id out of range"); }));
    std::string text;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        text = dir.read(entry.path().filename());
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    EXPECT_TRUE(contains(text,
                         "WRN: SQLITE_LOGGING: CSQLiteException: [SQLITE_WRAPPER_ERROR][code 1000]"
                         "[Row id out of range] for SQL: "));
}

TEST_F(QoCollDbFiles, ColumnsAreFoundByNameAndNoneMayBeMissing)
{
    CSQLiteDB& connection = QoCollDbInspector::connection(*m_db);
    connection.Execute(u"ALTER TABLE FILE_T ADD COLUMN FT_MOOD TEXT");
    connection.Execute(u"ALTER TABLE FILE_T RENAME COLUMN FT_ALBUM TO X");
    connection.Execute(u"ALTER TABLE FILE_T RENAME COLUMN FT_ARTIST TO FT_ALBUM");
    connection.Execute(u"ALTER TABLE FILE_T RENAME COLUMN X TO FT_ARTIST");
    auto item = file(u"a");
    item->artist = u"artist";
    item->album = u"album";
    m_db->insertFile(item, u"");
    EXPECT_EQ(query(u"SELECT FT_ARTIST || FT_ALBUM FROM FILE_T"), u"artistalbum");
    connection.Execute(u"ALTER TABLE FILE_T RENAME COLUMN FT_ALBUM TO X");
    CQoCollDb other(connection.path());
    EXPECT_TRUE(contains(messageOf(
                             [&]
                             {
                                 auto next = file(u"b");
                                 other.insertFile(next, u"");
                             }),
                         "has other columns than its version says"));
}

TEST_F(QoCollDbFiles, UpdateIsAWholeRecordButForLyricsThatWereNotLoaded)
{
    QoFileDbItemPtr item = fullRecord();
    m_db->insertFile(item, u"own");
    QoFileDbItemPtr read;
    ASSERT_TRUE(m_db->getFile(u"velmora", read));
    EXPECT_EQ(read->fpParams, u"");
    read->artist = u"other";
    m_db->updateFile(read);
    EXPECT_EQ(query(u"SELECT FT_ARTIST || '|' || FT_LYRICS || '|' || FT_FP_PARAMS || '|' || "
                    u"FT_COLL_ID FROM FILE_T"),
              u"other|line\r\nline||own");
    read->lyricsLoaded = true;
    m_db->updateFile(read);
    EXPECT_EQ(query(u"SELECT '[' || FT_LYRICS || ']' FROM FILE_T"), u"[]");
}

TEST_F(QoCollDbFiles, PartialUpdatesTouchTheirColumnAlone)
{
    QoFileDbItemPtr item = fullRecord();
    m_db->insertFile(item, u"");
    QoFileDbItemPtr second = insert(u"second");
    item->artist = u"not written";
    item->flags = 9;
    m_db->updateFileFlags(item);
    item->params = u"new";
    m_db->updateFileParams(item);
    m_db->setReviewed(u"velmora", false);
    EXPECT_EQ(query(u"SELECT FT_ARTIST || FT_FLAGS || FT_PARAMS || FT_REVIEWED FROM FILE_T WHERE "
                    u"FT_ID = 1"),
              u"artist9new0");
    m_db->deleteFile(item);
    EXPECT_EQ(paths(all()), u"second|");
}

TEST_F(QoCollDbFiles, LookUpsKeepToTheirRows)
{
    auto clip = file(u"clip");
    clip->clipUid = u"uid";
    clip->source = IPostProcessingQueue::sourceWebTrack;
    m_db->insertFile(clip, u"");
    QoFileDbItemPtr found;
    EXPECT_FALSE(m_db->getFileByClipID(u"uid", found));
    EXPECT_FALSE(m_db->getFile(u"unknown", found));
    EXPECT_FALSE(m_db->getFileFromDevice(clip->id, found)) << "a row of the user's own";
    EXPECT_FALSE(found);
    clip->source = IPostProcessingQueue::sourceWebClip;
    m_db->updateFile(clip);
    EXPECT_TRUE(m_db->getFileByClipID(u"uid", found));
    EXPECT_EQ(found->id, clip->id);
    const auto device = insert(u"device", u"usb");
    EXPECT_TRUE(m_db->getFileFromDevice(device->id, found));
    EXPECT_EQ(found->path, u"device");
}

TEST_F(QoCollDbFiles, AllFilesAreSortedAndKeepDuplicates)
{
    LogCapture log;
    EXPECT_EQ(all().GetSize(), 0);
    EXPECT_TRUE(log.has("CQoCollDb::getAllFiles took ", 30));
    EXPECT_FALSE(m_db->hasOwnCollFiles());
    insert(u"b", u"usb");
    EXPECT_FALSE(m_db->hasOwnCollFiles());
    insert(u"C");
    insert(u"a");
    insert(u"B", u"it's");
    EXPECT_TRUE(m_db->hasOwnCollFiles());
    EXPECT_EQ(paths(all()), u"a|B|b|C|");
    QoFileDbItemArray items;
    m_db->getAllFiles(items, false, u"it's", true);
    EXPECT_EQ(paths(items), u"B|");
    m_db->getAllFiles(items, false, u"", true);
    EXPECT_EQ(paths(items), u"a|C|");
    EXPECT_FALSE(items[0]->lyricsLoaded);
}

TEST_F(QoCollDbFiles, LyricsAreReadForExactlyOneRecordAndEqualTextsShareOneBuffer)
{
    for (const char16_t* path : {u"a", u"b"})
    {
        auto item = file(path);
        item->lyrics = u"la";
        item->artist = u"artist";
        item->album = path;
        m_db->insertFile(item, u"");
    }
    QoFileDbItemArray items = all();
    EXPECT_TRUE(items[0]->artist.sharesBufferWith(items[1]->artist));
    EXPECT_EQ(items[1]->album, u"b");
    m_db->getLyrics(items);
    EXPECT_FALSE(items[0]->lyricsLoaded || items[1]->lyricsLoaded);
    items.RemoveAt(0);
    m_db->getLyrics(items);
    EXPECT_TRUE(items[0]->lyricsLoaded);
    EXPECT_EQ(items[0]->lyrics, u"la");
    items.RemoveAll();
    m_db->getLyrics(items);
}

TEST_F(QoCollDbFiles, LastTracksAreChosenByTimeAndGivenByPath)
{
    const std::tuple<const char16_t*, int, int, unsigned, const char16_t*> rows[] = {
        {u"d oldest", 1, 1, 9, u""},
        {u"c", 2, 1, 10, u""},
        {u"b", 3, 2, 9, u""},
        {u"no source", 9, 0, 9, u""},
        {u"no media", 9, 1, 8, u""},
        {u"foreign", 9, 1, 9, u"usb"}};
    for (const auto& [path, time, source, flags, collId] : rows)
    {
        auto item = file(path);
        item->createTime = qo::fromTicks(time);
        item->source = static_cast<eItemSource>(source);
        item->flags = flags;
        item->session = time;
        m_db->insertFile(item, collId);
    }
    QoFileDbItemArray items;
    m_db->getLastTracks(2, items);
    EXPECT_EQ(paths(items), u"b|c|");
    m_db->getSessionTracks(9, items);
    EXPECT_EQ(paths(items), u"foreign|no media|no source|");
}

TEST_F(QoCollDbFiles, FingerprintIsStoredForEveryRowOfItsIdentity)
{
    LogCapture log;
    FpCutInfoDbItem info;
    EXPECT_FALSE(m_db->getFPCutInfo(u"id", info));
    info.velmoraId = u"id";
    info.fpParams = u"0:1\n";
    m_db->setFPCutInfo(info);
    EXPECT_TRUE(log.has("CQoCollDb::setFPCutInfo : velmora ID not found in db : 'id'", 10));
    for (const char16_t* path : {u"a", u"b"})
    {
        auto item = file(path);
        item->velmoraId = u"id";
        m_db->insertFile(item, path);
    }
    m_db->setFPCutInfo(info);
    EXPECT_EQ(query(u"SELECT COUNT(*) FROM FILE_T WHERE FT_FP_PARAMS = '0:1' || char(10)"), u"2");
    FpCutInfoDbItem read;
    EXPECT_TRUE(m_db->getFPCutInfo(u"id", read));
    EXPECT_EQ(read.fpParams, u"0:1\n");
}
} // namespace
