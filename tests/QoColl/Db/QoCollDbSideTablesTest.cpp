#include "QoColl/Db/CollDbFixture.h"
#include "QoColl/Db/Records/AcStreamDbItem.h"
#include "QoColl/Db/Records/CollInfoDbItem.h"
#include "QoColl/Db/Records/QoInplaceFileDbItem.h"
#include "QoColl/Db/Records/QoPlaylistDbItem.h"
#include "QoColl/Db/Records/QoSessionDbItem.h"
#include "QoColl/Db/Records/QoShareDbItem.h"
#include "support/LogCapture.h"

namespace
{
class QoCollDbSideTables : public OpenCollDbFixture
{
protected:
    boost::shared_ptr<QoSessionDbItem> session(const char16_t* name, eItemSource source)
    {
        auto item = boost::make_shared<QoSessionDbItem>();
        item->name = name;
        item->source = source;
        m_db->insertSession(item);
        return item;
    }

    CString sessions(int limit)
    {
        CArray<QoSessionQueryItem> items;
        m_db->getAllSessions(items, limit);
        CString text;
        for (const QoSessionQueryItem& item : items)
            text.AppendFormat(u"%s:%d ", item.session->name, item.fileCount);
        return text;
    }

    CString playlists(const CString& prefix)
    {
        DbItemArray<QoPlaylistDbItem> items;
        m_db->getAllUserPlaylists(items, prefix);
        CString text;
        for (const auto& item : items)
            text += item->name + u"(" + item->tracks.join(u",") + u") ";
        return text;
    }
};

TEST_F(QoCollDbSideTables, SessionsComeBySourceNewestFirstWithTheirFiles)
{
    session(u"b1", IPostProcessingQueue::sourceRadioRecording);
    const auto recorded = session(u"b2", IPostProcessingQueue::sourceRadioRecording);
    session(u"a1", IPostProcessingQueue::sourceNone);
    session(u"b3", IPostProcessingQueue::sourceRadioRecording);
    for (const int id : {recorded->id, recorded->id, 0})
    {
        auto item = file(u"a");
        item->session = id;
        m_db->insertFile(item, u"");
    }
    EXPECT_EQ(sessions(0), u"a1:0 b3:0 b2:2 b1:0 ");
    EXPECT_EQ(sessions(2), u"a1:0 b3:0 b2:2 ");
    m_db->deleteSession(recorded->id);
    EXPECT_EQ(sessions(1), u"a1:0 b3:0 ");
}

TEST_F(QoCollDbSideTables, SessionKeepsItsIdAndChangesItsEndAlone)
{
    auto item = boost::make_shared<QoSessionDbItem>();
    item->id = 42;
    item->name = u"it's";
    item->startTime = qo::fromTicks(5);
    m_db->insertSession(item);
    EXPECT_EQ(item->id, 42);
    EXPECT_EQ(session(u"next", IPostProcessingQueue::sourceNone)->id, 43);
    item->name = u"not written";
    item->endTime = qo::fromTicks(0x1234567890AB);
    m_db->updateSessionEndTime(item);
    boost::shared_ptr<QoSessionDbItem> read;
    ASSERT_TRUE(m_db->getSession(42, read));
    EXPECT_EQ(read->name, u"it's");
    EXPECT_EQ(qo::toTicks(read->startTime), 5);
    EXPECT_EQ(qo::toTicks(read->endTime), 0x1234567890AB);
    EXPECT_FALSE(m_db->getSession(7, read));
    EXPECT_EQ(read->id, 42);
}

TEST_F(QoCollDbSideTables, PlaylistsAreFoundByLikePrefix)
{
    for (const char16_t* name : {u"List 1", u"list 2", u"Other", u"it's"})
    {
        auto item = boost::make_shared<QoPlaylistDbItem>();
        item->name = name;
        item->tracks = CStringArray::split(u"3;1;2", u';');
        m_db->insertPlaylist(item);
    }
    EXPECT_EQ(m_db->getUserPlaylistsCount(), 4);
    EXPECT_EQ(playlists(u"List"), u"List 1(3,1,2) list 2(3,1,2) ");
    EXPECT_EQ(playlists(u"%2"), u"list 2(3,1,2) ");
    EXPECT_TRUE(thrownBy([&] { playlists(u"it's"); })) << "the prefix stands in the statement";
    EXPECT_TRUE(thrownBy([&] { playlists(u"'; DELETE FROM PLAYLIST_T; --"); }) ||
                m_db->getUserPlaylistsCount() == 4);
    EXPECT_EQ(m_db->getUserPlaylistsCount(), 4);

    boost::shared_ptr<QoPlaylistDbItem> item;
    ASSERT_TRUE(m_db->getPlaylist(3, item));
    item->tracks.RemoveAll();
    m_db->updatePlaylist(item);
    EXPECT_EQ(playlists(u"Other"), u"Other() ");
    m_db->deletePlaylist(item);
    EXPECT_FALSE(m_db->getPlaylist(3, item));
}

TEST_F(QoCollDbSideTables, RowsComeBackAsTheyWereWritten)
{
    CSQLiteDB& connection = QoCollDbInspector::connection(*m_db);
    const CString guid(u"0000abcd-0000-0000-0000-000000000000");
    const CString rows[][2] = {
        {u"SESSION_T", u"3, 'it''s', 8, 5, 6"},
        {u"PLAYLIST_T", u"4, 'l', '3;1;2'"},
        {u"INPLACE_T",
         u"5, 'f', 1, 2, 'a', 'b', 't', 'g', '3/12', '99', 'la', 'pic', 4294967296, 9, 'v', 'p'"},
        {u"SHARE_T", u"6, 2, 'ann', 'bob', 3, 1, 's', 'o', 'i', 0, 1"},
        {u"AC_STREAM_T", u"7, '" + guid + u"', 's1', 1, 'h', 1, 2, 'n', 'm', 3, 0, 4"},
        {u"AC_STREAM_TRACK_T", u"8, '" + guid + u"', 's1', 't1', '0:1'"}};
    const auto stored = [&]
    {
        CString text;
        for (const auto& [table, values] : rows)
            text += row(u"SELECT * FROM " + table);
        return text;
    };
    for (const auto& [table, values] : rows)
        connection.Execute(u"INSERT INTO " + table + u" VALUES (" + values + u")");
    const CString before = stored();
    CArray<QoSessionQueryItem> sessions;
    DbItemArray<QoPlaylistDbItem> playlists;
    DbItemArray<QoInplaceFileDbItem> files;
    DbItemArray<QoShareDbItem> shares;
    AcStreamArray streams;
    AcStreamTrackArray tracks;
    m_db->getAllSessions(sessions, 0);
    m_db->getAllUserPlaylists(playlists, u"");
    m_db->getAllInplaceFiles(files);
    m_db->getAllShares(shares);
    ASSERT_TRUE(m_db->getACStreamData(streams, tracks));
    EXPECT_EQ(shares[0]->peer + shares[0]->shareId + streams[0].stationName, u"annsn");
    for (const auto& [table, values] : rows)
        connection.Execute(u"DELETE FROM " + table);
    m_db->insertSession(sessions[0].session);
    m_db->insertPlaylist(playlists[0]);
    m_db->insertInplaceFile(files[0]);
    m_db->insertShare(shares[0]);
    m_db->insertAcStream(boost::make_shared<AcStreamDbItem>(streams[0]));
    m_db->insertAcStreamTrack(boost::make_shared<AcStreamTrackDbItem>(tracks[0]));
    EXPECT_EQ(stored(), before);
    m_db->deleteInplaceFile(files[0]);
    EXPECT_EQ(stored(), before) << "rows of that table stay";

    for (const auto& [table, values] : rows)
        connection.Execute(u"UPDATE " + table + u" SET rowid = 4294967297");
    const auto refused = [](const auto& read)
    { return messageOf(read).find("[Row id out of range: 4294967297]") != std::string::npos; };
    EXPECT_TRUE(refused([&] { m_db->getAllSessions(sessions, 0); }));
    EXPECT_TRUE(refused([&] { m_db->getAllUserPlaylists(playlists, u""); }));
    EXPECT_TRUE(refused([&] { m_db->getAllInplaceFiles(files); }));
    EXPECT_TRUE(refused([&] { m_db->getAllShares(shares); }));
    EXPECT_TRUE(refused([&] { m_db->getAcStreams(streams); }));
    EXPECT_TRUE(refused([&] { m_db->getAcStreamTracks(tracks); }));
}

TEST_F(QoCollDbSideTables, ShareIsUpdatedAndDeletedByItsId)
{
    auto item = boost::make_shared<QoShareDbItem>();
    m_db->insertShare(item);
    auto second = boost::make_shared<QoShareDbItem>();
    m_db->insertShare(second);
    item->initiator = true;
    item->state = 5;
    m_db->updateShare(item);
    DbItemArray<QoShareDbItem> items;
    m_db->getAllShares(items);
    ASSERT_EQ(items.GetSize(), 2);
    EXPECT_TRUE(items[0]->initiator && !items[1]->initiator);
    EXPECT_EQ(items[0]->state, 0) << "not stored";
    m_db->deleteShare(item);
    m_db->getAllShares(items);
    EXPECT_EQ(items.GetSize(), 1);
}

TEST_F(QoCollDbSideTables, CollectionHasOneRow)
{
    CollInfoDbItem info;
    info.collId = u"left over";
    EXPECT_FALSE(m_db->getCollInfo(u"usb", info));
    EXPECT_EQ(info.collId, u"");
    info.scanTime = qo::fromTicks(7);
    info.rootDirs = CStringArray::split(u"C:\\a\nC:\\it's", u'\n');
    info.rootDirTypes.Add(1);
    info.rootDirTypes.Add(-2);
    info.userName = u"ann";
    m_db->setCollInfo(u"usb", info);
    info.modifiedTime = qo::fromTicks(8);
    m_db->setCollInfo(u"usb", info);
    m_db->setCollInfo(u"", CollInfoDbItem());
    EXPECT_EQ(query(u"SELECT COUNT(*) FROM COLL_T"), u"2");
    CollInfoDbItem read;
    ASSERT_TRUE(m_db->getCollInfo(u"usb", read));
    EXPECT_EQ(read.rootDirs.join(u"|"), u"C:\\a|C:\\it's");
    ASSERT_EQ(read.rootDirTypes.GetSize(), 2);
    EXPECT_EQ(read.rootDirTypes[1], -2);
    EXPECT_EQ(read.userName, u"ann");
    EXPECT_EQ(qo::toTicks(read.scanTime), 7);
    EXPECT_EQ(qo::toTicks(read.modifiedTime), 8);

    insert(u"a", u"usb");
    insert(u"b");
    m_db->deleteColl(u"usb");
    EXPECT_FALSE(m_db->getCollInfo(u"usb", read));
    EXPECT_EQ(query(u"SELECT COUNT(*) || FT_PATH FROM FILE_T"), u"1b");
}

TEST_F(QoCollDbSideTables, StreamDataIsReplacedAsAWholeOrNotAtAll)
{
    AcStreamArray streams;
    AcStreamTrackArray tracks;
    streams.Add(AcStreamDbItem());
    tracks.Add(AcStreamTrackDbItem());
    m_db->saveACStreamData(streams, tracks);
    m_db->saveACStreamData(AcStreamArray(), AcStreamTrackArray()); // nothing happens
    EXPECT_EQ(query(u"SELECT COUNT(*) FROM AC_STREAM_TRACK_T"), u"1");
    streams[0].velmoraId = u"s2";
    m_db->saveACStreamData(streams, AcStreamTrackArray());
    EXPECT_EQ(query(u"SELECT COUNT(*) || AS_VELMORA_ID FROM AC_STREAM_T"), u"1s2");
    EXPECT_EQ(query(u"SELECT COUNT(*) FROM AC_STREAM_TRACK_T"), u"0");

    CSQLiteDB& connection = QoCollDbInspector::connection(*m_db);
    connection.Execute(u"ALTER TABLE AC_STREAM_TRACK_T RENAME COLUMN AST_PARAMS TO GONE");
    LogCapture log;
    streams.Add(AcStreamDbItem());
    m_db->saveACStreamData(streams, tracks);
    EXPECT_FALSE(m_db->getACStreamData(streams, tracks));
    EXPECT_TRUE(streams.IsEmpty() && tracks.IsEmpty());
    EXPECT_EQ(log.count("CQoCollDb::saveACStreamData failed.", 10), 2) << log.all();
    EXPECT_EQ(query(u"SELECT COUNT(*) FROM AC_STREAM_T"), u"1");
}

TEST_F(QoCollDbSideTables, SavedStreamAndTrackAreUpdatedByTheirKey)
{
    AcStreamDbItem stream;
    AcStreamTrackDbItem track;
    stream.velmoraId = track.trackVelmoraId = u"key";
    for (const char16_t* text : {u"old", u"new"})
    {
        stream.stationName = track.params = text;
        m_db->saveAcStream(stream);
        m_db->saveAcStreamTrack(track);
    }
    ASSERT_TRUE(m_db->getAcStream(u"key", stream));
    ASSERT_TRUE(m_db->getAcStreamTrack(u"key", track));
    EXPECT_EQ(stream.stationName + track.params, u"newnew");
    EXPECT_EQ(stream.id + track.id, 2);
    EXPECT_FALSE(m_db->getAcStream(u"none", stream));
}
} // namespace
