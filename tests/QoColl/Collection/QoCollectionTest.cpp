#include "CollectionFixture.h"
#include "support/HungryFiles.h"

TEST_F(Collection, AFirstLoadScansAndASecondTrustsTheDatabase)
{
    const LogCapture log;
    ASSERT_TRUE(load());
    EXPECT_EQ(result.m_opType, CQoCollection::OpResultInfo::newCollection);
    EXPECT_EQ(counts(), "4+ 0~ 0-");
    EXPECT_TRUE(log.has("will rescan coll because : it was never scanned", 50)) << log.all();
    EXPECT_TRUE(log.has("CQoCollection::saveToDb end (inserted 4, updated 0, deleted 0", 40));
    EXPECT_EQ(records(), "a\\cover.jpg a\\one.mp3 a\\two.flac b\\notes.txt ");
    const QoFileDbItemPtr first = record("a/one.mp3");
    ASSERT_TRUE(first);
    const CString velmoraId = first->velmoraId;
    const CString title = first->title;
    const int duration = first->duration;
    EXPECT_EQ(first->flags, 9U);
    EXPECT_EQ(record("a/cover.jpg")->flags, 16U);
    EXPECT_TRUE(first->imported);
    EXPECT_GT(duration, 0);

    // With the folder gone a plain start still shows everything.
    fs::rename(dir.path("music"), dir.path("away"));
    ASSERT_TRUE(load());
    EXPECT_EQ(counts(), "0+ 0~ 0-");
    EXPECT_EQ(result.m_opType, CQoCollection::OpResultInfo::asItWas);
    ASSERT_TRUE(record("a/one.mp3"));
    EXPECT_EQ(record("a/one.mp3")->velmoraId, velmoraId);
    EXPECT_EQ(record("a/one.mp3")->title, title);
    EXPECT_EQ(record("a/one.mp3")->duration, duration);
    EXPECT_EQ(collection.getFileByID(record("a/one.mp3")->id),
              collection.getFileByVelmoraID(velmoraId));
    EXPECT_EQ(collection.getFileCount(), 4);
    EXPECT_EQ(collection.getFileByID(4711), nullptr);
}

TEST_F(Collection, ARescanSeesExactlyWhatChanged)
{
    ASSERT_TRUE(load());
    const int id = record("a/two.flac")->id;
    const CString velmoraId = record("a/two.flac")->velmoraId;
    fs::remove(dir.path("music/a/one.mp3"));
    put("sound.ogg", "music/c/three.ogg");
    setTime("music/a/two.flac", 4'000'000'000);
    setTime("music/b/notes.txt", 1'000'000); // older: not seen as modified
    dir.write("music/b/notes.txt", "words of another length");
    setTime("music/b/notes.txt", 1'000'000);
    const LogCapture log;
    ASSERT_TRUE(load(true));
    EXPECT_EQ(result.m_opType, CQoCollection::OpResultInfo::existingRescanned);
    EXPECT_EQ(counts(), "1+ 1~ 1-") << log.all();
    EXPECT_EQ(records(), "a\\cover.jpg a\\two.flac b\\notes.txt c\\three.ogg ");
    EXPECT_EQ(record("a/two.flac")->id, id);
    EXPECT_EQ(record("a/two.flac")->velmoraId, velmoraId);
    EXPECT_EQ(record("b/notes.txt")->size, 5);
    ASSERT_TRUE(load(true));
    EXPECT_EQ(counts(), "0+ 0~ 0-");
}

TEST_F(Collection, ACaseOnlyRenameKeepsTheRecordUnderTheNewSpelling)
{
    ASSERT_TRUE(load());
    const int id = record("a/one.mp3")->id;
    fs::rename(dir.path("music/a/one.mp3"), dir.path("music/a/ONE.mp3"));
    ASSERT_TRUE(load(true));
    EXPECT_EQ(counts(), "0+ 1~ 0-");
    ASSERT_TRUE(load());
    EXPECT_EQ(record("a/one.mp3")->id, id);
    EXPECT_EQ(record("a/one.mp3")->path, dir.collPath("music/a/ONE.mp3"));
}

TEST_F(Collection, TwoSpellingsOfOneNameGiveOneRecordThatIsTheSameInEveryScan)
{
    put("sound.mp3", "music/a/ONE.mp3");
    const LogCapture log;
    ASSERT_TRUE(load());
    EXPECT_EQ(records(), "a\\cover.jpg a\\ONE.mp3 a\\two.flac b\\notes.txt ");
    ASSERT_TRUE(load(true));
    EXPECT_EQ(counts(), "0+ 0~ 0-") << log.all();
    ASSERT_TRUE(fs::exists(dir.path("music/a/one.mp3")));
}

TEST_F(Collection, ChangedRootsAreScannedAgainAndFilesOutsideLeave)
{
    ASSERT_TRUE(load());
    roots.RemoveAll();
    roots.Add(dir.collPath("music/a"));
    roots.Add(dir.collPath("music/a/inner"));
    {
        const LogCapture log;
        ASSERT_TRUE(load());
        EXPECT_EQ(counts(), "0+ 0~ 1-");
        EXPECT_TRUE(log.has("root dirs changed", 50)) << log.all();
        EXPECT_TRUE(log.has("file not in root dirs, will be deleted from db", 40));
    }
    EXPECT_EQ(collection.getRootDirs().GetSize(), 1) << "the inner folder is part of the outer";
    EXPECT_EQ(collection.getFileCount(), 3);
    roots.Add(u"");
    ASSERT_TRUE(load());
    const LogCapture second;
    ASSERT_TRUE(load());
    EXPECT_FALSE(second.has("root dirs changed")) << "no valid path is passed over";
    EXPECT_EQ(collection.getFileCount(), 3);
}

TEST_F(Collection, KindsOfRootsDecideWhatIsMusic)
{
    put("sound.m4a", "music/a/clip.mp4");
    struct Case
    {
        CQoPathInfo::EType kind;
        unsigned audio;
        unsigned video;
        unsigned text;
    };
    for (const Case& c : {Case{CQoPathInfo::allIsMusic, 8 | 1, 8 | 2, 16},
                          Case{CQoPathInfo::nothingIsMusic, 16 | 1, 16 | 2, 16},
                          Case{CQoPathInfo::audioIsMusic, 8 | 1, 16 | 2, 16}})
    {
        sql("DELETE FROM FILE_T; DELETE FROM COLL_T;");
        kinds.SetAt(roots[0], c.kind);
        ASSERT_TRUE(load());
        EXPECT_EQ(record("a/one.mp3")->flags, c.audio) << c.kind;
        EXPECT_EQ(record("a/clip.mp4")->flags, c.video) << c.kind;
        EXPECT_EQ(record("b/notes.txt")->flags, c.text) << c.kind;
    }
}

TEST_F(Collection, RecordsOutsideTheRootsAndDuplicatesLeaveTheDatabase)
{
    ASSERT_TRUE(load());
    sql("INSERT INTO FILE_T (FT_PATH, FT_COLL_ID) SELECT FT_PATH, FT_COLL_ID FROM FILE_T WHERE "
        "FT_PATH LIKE '%one.mp3';"
        "INSERT INTO FILE_T (FT_PATH, FT_COLL_ID) VALUES ('C:\\elsewhere\\x.mp3', '');");
    const LogCapture log;
    ASSERT_TRUE(load());
    EXPECT_EQ(counts(), "0+ 0~ 2-");
    EXPECT_TRUE(log.has("found duplicated db file: ", 10));
    EXPECT_TRUE(log.has("file not in root dirs, will be removed: C:\\elsewhere\\x.mp3", 10));
    EXPECT_EQ(collection.getFileCount(), 4);
}

TEST_F(Collection, CancellingAtAnyPollLeavesTheDatabaseAsItWas)
{
    ASSERT_TRUE(load());
    put("sound.ogg", "music/c/three.ogg");
    fs::remove(dir.path("music/a/one.mp3"));
    int poll = 1;
    for (;; ++poll)
    {
        CancelAt cancel(poll);
        const bool done = load(true, &cancel);
        ASSERT_EQ(done, !cancel.wasReached()) << "poll " << poll;
        if (done)
            break;
        EXPECT_TRUE(collection.isEmpty()) << "poll " << poll;
        EXPECT_FALSE(collection.loadedSuccesfully());
        ASSERT_TRUE(load());
        ASSERT_EQ(collection.getFileCount(), 4) << "poll " << poll;
    }
    EXPECT_GT(poll, 10);
    EXPECT_EQ(records(), "a\\cover.jpg a\\two.flac b\\notes.txt c\\three.ogg ");
}

TEST_F(Collection, AFailedSaveKeepsWhatIsToBeSaved)
{
    ASSERT_TRUE(load());
    put("sound.ogg", "music/c/three.ogg");
    sql("CREATE TRIGGER refuse BEFORE UPDATE ON COLL_T BEGIN SELECT RAISE(ABORT, 'no'); END;");
    const LogCapture log;
    EXPECT_TRUE(load(true));
    EXPECT_TRUE(log.has("CQoCollection::saveToDb : error saving to db ", 10)) << log.all();
    EXPECT_EQ(record("c/three.ogg")->dbState, qo::dbState::added);
    EXPECT_EQ(record("c/three.ogg")->id, 0);
    sql("DROP TRIGGER refuse;");
    ASSERT_TRUE(load(true));
    EXPECT_EQ(counts(), "1+ 0~ 0-");
}

TEST_F(Collection, LackOfMemoryWhileATagIsReadEndsTheLoadAndStoresNothing)
{
    {
        const HungryFiles files;
        EXPECT_FALSE(load());
    }
    EXPECT_TRUE(collection.isEmpty());
    ASSERT_TRUE(load());
    EXPECT_EQ(counts(), "4+ 0~ 0-");
    EXPECT_GT(record("a/one.mp3")->duration, 0);
}

TEST_F(Collection, ACancelledLoadKeepsTheCollectionsOwnRow)
{
    ASSERT_TRUE(load());
    const FILETIME scanned = collection.getCollInfo().scanTime;
    CancelAt cancel(1);
    EXPECT_FALSE(load(false, &cancel));
    EXPECT_EQ(qo::toTicks(collection.getCollInfo().scanTime), qo::toTicks(scanned));
    CDummyProgress none;
    collection.setRootDirs(roots, kinds, &none);
    EXPECT_NE(qo::toTicks(collection.getCollInfo().scanTime), 0);
    EXPECT_FALSE(
        collection.load(dir.collPath("none/qodb"), u"", roots, kinds, false, &none, &result));
    EXPECT_EQ(qo::toTicks(collection.getCollInfo().scanTime), 0) << "of another collection";
}

TEST_F(Collection, AMissingDatabaseTableIsAFailureWithOneLine)
{
    sql("DROP TABLE FILE_T;");
    const LogCapture log;
    EXPECT_FALSE(load());
    EXPECT_EQ(log.count("CQoCollection::load : error loading collection", 10), 1) << log.all();
    EXPECT_TRUE(collection.isEmpty());
}

TEST_F(Collection, NestedRootsJoinIntoOneTree)
{
    CStringArray paths;
    paths.Add(u"C:\\a\\b\\c");
    paths.Add(u"C:\\a");
    paths.Add(u"C:\\a\\x");
    CQoCollection other;
    other.addRootDirs(paths, kinds);
    ASSERT_EQ(other.getRootDirs().GetSize(), 1);
    EXPECT_EQ(other.getRootDirs()[0]->getPath().toString(), CString(u"C:\\a"));
    EXPECT_TRUE(other.getDir(u"c:\\A\\B\\C"));
    EXPECT_EQ(other.getParentDir(CQoCollPath(u"C:\\a\\b\\c\\d\\e"))->getShortName(), CString(u"c"));
    EXPECT_FALSE(other.getDir(u"C:\\a\\x"));
    EXPECT_TRUE(other.isRootDirInCollection(CQoCollPath(u"C:\\A")));
}

TEST(CollectionGlobals, CleaningUpSaysItsStepsInOrderAndLeavesBothUsable)
{
    const LogCapture log;
    CQoCollection::initGlobal();
    CQoCollection::cleanUpGlobal();
    const char* const steps[] = {"CQoCollection::cleanUpGlobal start",
                                 "CQoCollection::cleanUpGlobal clear own collection",
                                 "CQoCollection::cleanUpGlobal clear foreign collection",
                                 "clearSubsets",
                                 "CLTManager::cleanUp",
                                 "CQoCollection::cleanUpGlobal end"};
    std::size_t step = 0;
    for (const LogCapture::Line& line : log.lines())
        step += step < std::size(steps) && line.text == steps[step] ? 1 : 0;
    EXPECT_EQ(step, std::size(steps)) << log.all();
    EXPECT_FALSE(CQoCollection::existForeignCollection());
}

TEST_F(Collection, ASecondSpellingDoesNotStealTheRecordOfTheFirst)
{
    ASSERT_TRUE(load());
    const int id = record("b/notes.txt")->id;
    dir.write("music/b/NOTES.txt", "somebody else's words, and older");
    setTime("music/b/NOTES.txt", 1'000'000);
    const LogCapture log;
    ASSERT_TRUE(load(true));
    EXPECT_EQ(counts(), "0+ 0~ 0-") << log.all();
    EXPECT_EQ(record("b/notes.txt")->path, dir.collPath("music/b/notes.txt"));
    EXPECT_TRUE(log.has("found duplicated db file: ", 10));

    // Once the first is gone, the other is a new content under the old id.
    fs::remove(dir.path("music/b/notes.txt"));
    ASSERT_TRUE(load(true));
    EXPECT_EQ(counts(), "0+ 1~ 0-");
    EXPECT_EQ(record("b/notes.txt")->id, id);
    EXPECT_EQ(record("b/notes.txt")->size, 32);
}
