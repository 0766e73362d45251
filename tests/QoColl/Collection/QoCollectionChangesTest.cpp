#include "CollectionFixture.h"
#include "Database/src/DbFacade/SQLiteException.h"
#include "KVTagLib/Tags.h"
#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTTrack.h"
#include "Physical/HDMusicFile.h"
#include "QoColl/Collection/QoFileChangeInfoList.h"
#include "QoColl/Collection/QoUtils.h"

namespace
{
class Changes : public Collection
{
protected:
    Changes()
    {
        EXPECT_TRUE(load());
        dir.makeFolder("other");
    }
    ~Changes() override { collection.releaseZombieObjects(); }

    CString path(const std::string& name) const { return dir.collPath("music/" + name); }
    void scan(const std::string& name)
    {
        changes.addFileToScan(
            path(name), CQoFileChangeInfo::ordinaryFile, CQoFileChangeInfo::setImportedIfNew);
    }
    bool apply(const CStringArray& dirsToAnalyze = {}, IQoProgress* with = nullptr)
    {
        return collection.applyQoFileChanges(changes, dirsToAnalyze, with ? with : &progress);
    }
    /// What stands in the database, by a collection of its own.
    std::string stored()
    {
        QoFileDbItemArray files;
        CQoCollDb(dbPath).getAllFiles(files, false, u"", true);
        return namesOf(files);
    }
    /// Does it with a cancel at each poll until there is none any more, or until the very last one,
    /// which comes behind the commit; the number of polls.
    template <class Action>
    int cancelEverywhere(Action action)
    {
        const std::string before = stored();
        for (int poll = 1; poll < 1000; ++poll)
        {
            CancelAt cancel(poll);
            action(cancel);
            if (!cancel.wasReached() || stored() != before)
                return poll;
            EXPECT_FALSE(collection.loadedSuccesfully()) << "poll " << poll;
            EXPECT_TRUE(collection.isEmpty());
            EXPECT_EQ(CLTManager::getTracks().GetSize(), 0) << "poll " << poll;
            EXPECT_TRUE(load());
            EXPECT_EQ(stored(), before) << "poll " << poll;
        }
        return 1000;
    }

    CQoFileChangeInfoList changes;
};
} // namespace

TEST_F(Changes, EachActionReachesTreeAndDatabase)
{
    const int movedId = record("a/two.flac")->id;
    const CString movedTitle = record("a/two.flac")->title;
    put("sound.ogg", "music/new/three.ogg");
    fs::create_directories(dir.path("music/there"));
    fs::rename(dir.path("music/a/two.flac"), dir.path("music/there/moved.flac"));
    fs::remove(dir.path("music/b/notes.txt"));
    scan("new/three.ogg");
    changes.addFileToMove(path("a/two.flac"), path("there/moved.flac"), false);
    changes.addFileToDelete(path("b/notes.txt"));
    changes.addFileToDelete(path("not/there.mp3"));
    ASSERT_TRUE(apply());
    const std::string expected = "a\\cover.jpg a\\one.mp3 new\\three.ogg there\\moved.flac ";
    EXPECT_EQ(records(), expected);
    EXPECT_EQ(stored(), expected);
    ASSERT_TRUE(record("there/moved.flac"));
    EXPECT_EQ(record("there/moved.flac")->id, movedId);
    EXPECT_EQ(record("there/moved.flac")->title, movedTitle);
    EXPECT_EQ(collection.getFileByID(movedId)->getPath(), path("there/moved.flac"));
    EXPECT_GT(record("new/three.ogg")->id, 0);
    EXPECT_GT(record("new/three.ogg")->duration, 0);
    EXPECT_TRUE(record("new/three.ogg")->imported);
    // The folder that the last file left is gone, from the disk too.
    EXPECT_FALSE(fs::exists(dir.path("music/b")));
    EXPECT_FALSE(collection.getDir(path("b")));
    EXPECT_TRUE(collection.getZombieFile(CQoCollPath(path("b/notes.txt"))));
    ASSERT_TRUE(load());
    EXPECT_EQ(records(), expected);
}

TEST_F(Changes, NothingChangesForAnUntouchedFileAndANewerOneIsReadAgain)
{
    const QoFileDbItemPtr one = record("a/one.mp3");
    const QoFileDbItemPtr two = record("a/two.flac");
    const auto before = collection.getFileByPath(path("a/one.mp3"));
    one->artist = u"Before";
    setTime("music/a/one.mp3", 4102444800);
    scan("a/one.mp3");
    scan("a/two.flac");
    const LogCapture log;
    ASSERT_TRUE(apply());
    EXPECT_TRUE(log.has("CQoCollection::applyQoFileChanges : 2 files", 40)) << log.all();
    EXPECT_TRUE(log.has(
        "CQoCollection::applyQoFileChanges : creating/destroying data for changed 1 files", 40));
    EXPECT_TRUE(log.has("CQoCollection::saveToDb end (inserted 0, updated 1, deleted 0", 40));
    EXPECT_EQ(record("a/one.mp3"), one);
    EXPECT_EQ(record("a/two.flac"), two);
    EXPECT_NE(one->artist, u"Before");
    EXPECT_EQ(static_cast<CHDMusicFile&>(*before).getTag().getArtist(), u"Before")
        << "whoever still has the file";
}

TEST_F(Changes, ANewFileIsBuiltOnceThoughItIsScannedAndChanged)
{
    put("sound.ogg", "music/a/three.ogg");
    scan("a/three.ogg");
    const LogCapture log;
    ASSERT_TRUE(apply());
    EXPECT_FALSE(log.has("found duplicated db file", 10)) << log.all();
    EXPECT_EQ(stored(), "a\\cover.jpg a\\one.mp3 a\\three.ogg a\\two.flac b\\notes.txt ");
}

TEST_F(Changes, EqualTextsOfReadFilesAreStoredOnce)
{
    KVTagLib::CTags tags;
    tags.AddArtist(u"The Band", false);
    tags.SetAlbum(u"Big Pink");
    tags.SetYear(u"1968");
    for (const char* const name : {"a/three.ogg", "a/four.ogg"})
    {
        put("sound.ogg", std::string("music/") + name);
        ASSERT_TRUE(CMusicTagEx::writeTag(path(name), tags));
        scan(name);
    }
    ASSERT_TRUE(apply());
    const QoFileDbItemPtr three = record("a/three.ogg");
    const QoFileDbItemPtr four = record("a/four.ogg");
    EXPECT_EQ(three->artist, u"The Band");
    for (const auto field : {&QoFileDbItem::artist, &QoFileDbItem::album, &QoFileDbItem::year})
        EXPECT_TRUE(((*three).*field).sharesBufferWith((*four).*field));
    const auto file =
        boost::static_pointer_cast<CHDMusicFile>(collection.getFileByPath(four->path));
    EXPECT_TRUE(file->getTrack()->getYear().sharesBufferWith(three->year));
}

TEST_F(Changes, AMissingFileIsStillRecordedAndAForeignFolderIsNot)
{
    scan("a/gone.mp3");
    changes.addFileToScan(dir.collPath("other/x.mp3"),
                          CQoFileChangeInfo::ordinaryFile,
                          CQoFileChangeInfo::setImportedIfNew);
    const LogCapture log;
    ASSERT_TRUE(apply());
    EXPECT_TRUE(log.has("file not in root dirs, will be removed", 10)) << log.all();
    EXPECT_TRUE(record("a/gone.mp3"));
    EXPECT_EQ(stored(), "a\\cover.jpg a\\gone.mp3 a\\one.mp3 a\\two.flac b\\notes.txt ");
}

TEST_F(Changes, APreparedRecordIsTakenOnceAndAnImportGetsItsMediaType)
{
    put("sound.ogg", "music/a/three.ogg");
    auto prepared = boost::make_shared<QoFileDbItem>();
    prepared->path = path("a/three.ogg");
    prepared->velmoraId = u"mine";
    changes.addVelmoraFile(prepared->path, prepared);
    changes.addVelmoraFile(path("a/one.mp3"), boost::make_shared<QoFileDbItem>());
    changes.addVelmoraFile(path("a/nothing.mp3"), {});
    put("sound.m4a", "music/a/four.m4a");
    changes.addFileToScan(
        path("a/four.m4a"), CQoFileChangeInfo::importedFile, CQoFileChangeInfo::clearImported);
    const LogCapture log;
    ASSERT_TRUE(apply());
    EXPECT_EQ(record("a/three.ogg"), prepared);
    EXPECT_EQ(prepared->velmoraId, CString(u"mine"));
    EXPECT_GT(prepared->duration, 0);
    EXPECT_FALSE(record("a/nothing.mp3"));
    EXPECT_TRUE(log.has(
        "AddVelmoraFile : file " + qo::toUtf8(path("a/one.mp3")) + " already in collection", 10))
        << log.all();
    EXPECT_NE(record("a/four.m4a")->params.Find(u"38:4"), -1);
    EXPECT_FALSE(record("a/four.m4a")->imported);
}

TEST_F(Changes, AMoveOntoAKnownPathKeepsTheMovedRecordWhenTheTargetIsDeletedFirst)
{
    const int id = record("a/one.mp3")->id;
    fs::rename(dir.path("music/a/one.mp3"), dir.path("music/a/two.flac"));
    changes.addFileToDelete(path("a/two.flac"));
    changes.addFileToMove(path("a/one.mp3"), path("a/two.flac"), true);
    ASSERT_TRUE(apply());
    EXPECT_EQ(stored(), "a\\cover.jpg a\\two.flac b\\notes.txt ");
    EXPECT_EQ(record("a/two.flac")->id, id);
}

TEST_F(Changes, CancellingAtAnyPollLeavesTheDatabaseAsItWas)
{
    put("sound.ogg", "music/new/three.ogg");
    scan("new/three.ogg");
    fs::rename(dir.path("music/a/two.flac"), dir.path("music/a/moved.flac"));
    changes.addFileToMove(path("a/two.flac"), path("a/moved.flac"), false);
    EXPECT_GT(cancelEverywhere([&](IQoProgress& with) { EXPECT_TRUE(apply(roots, &with)); }), 15);
    ASSERT_TRUE(load());
    EXPECT_EQ(stored(), "a\\cover.jpg a\\moved.flac a\\one.mp3 b\\notes.txt new\\three.ogg ");
}

TEST_F(Changes, CancellingARootChangeAtAnyPollLeavesTheDatabaseAsItWas)
{
    put("sound.ogg", "other/x/three.ogg");
    CStringArray other;
    other.Add(dir.collPath("other"));
    EXPECT_GT(
        cancelEverywhere([&](IQoProgress& with) { collection.setRootDirs(other, kinds, &with); }),
        8);
    roots = other;
    ASSERT_TRUE(load());
    EXPECT_EQ(stored(), "x\\three.ogg ");
}

TEST_F(Changes, AnUnloadedCollectionRefusesYetCountsAsLoaded)
{
    CQoCollection fresh;
    EXPECT_FALSE(fresh.applyQoFileChanges(changes, {}, &progress));
    EXPECT_TRUE(fresh.loadedSuccesfully());
    fresh.setRootDirs(roots, kinds, &progress);
    EXPECT_TRUE(fresh.isEmpty());
}

TEST_F(Changes, RootsComeAndGoWithTheirFilesAndNoMore)
{
    put("sound.ogg", "other/x/three.ogg");
    const int id = record("a/one.mp3")->id;
    CStringArray both = roots;
    both.Add(dir.collPath("other"));
    CStringArray reversed;
    reversed.Add(both[1]);
    reversed.Add(both[0]);
    const LogCapture log;
    collection.setRootDirs(both, kinds, &progress);
    EXPECT_EQ(collection.getFileCount(), 5);
    EXPECT_EQ(record("a/one.mp3")->id, id);
    EXPECT_FALSE(log.has("no folder changes, stop", 40));
    collection.setRootDirs(reversed, kinds, &progress);
    EXPECT_TRUE(log.has("CQoCollection::setRootDirs : no folder changes, stop", 40)) << log.all();
    CStringArray other;
    other.Add(both[1]);
    collection.setRootDirs(other, kinds, &progress);
    EXPECT_TRUE(
        log.has("CQoCollection::setRootDirs : delete data from dirs : " + qo::toUtf8(both[0]), 40))
        << log.all();
    EXPECT_EQ(collection.getFileCount(), 1);
    EXPECT_EQ(CLTManager::getTracks().GetSize(), 3) << "its tracks live while its files do";
    collection.releaseZombieObjects();
    CLTManager::cleanUp(false);
    EXPECT_EQ(CLTManager::getTracks().GetSize(), 1);
    // The next start finds the folders as they are and walks nothing.
    roots = other;
    const LogCapture loading;
    ASSERT_TRUE(load());
    EXPECT_FALSE(loading.has("will rescan coll", 50)) << loading.all();
    EXPECT_EQ(collection.getFileCount(), 1);
}

TEST_F(Changes, ARescanSpreadsAndPlacesNamesAndBuildsTheLogicalTree)
{
    sql("UPDATE FILE_T SET FT_ARTIST = 'The Band', FT_ALBUM = 'Big Pink' WHERE FT_PATH LIKE "
        "'%one.mp3'");
    const CString artist(u"The Band");
    const CString album(u"Big Pink");
    // A new picture whose name holds the album finds it, and with it its owner.
    const std::string name = "a/Big Pink front.jpg";
    dir.write("music/" + name, "no picture either");
    ASSERT_TRUE(load(true));
    ASSERT_TRUE(record(name.c_str()));
    EXPECT_EQ(record("a/cover.jpg")->artist, CString()) << "nothing in its name tells";
    EXPECT_EQ(record(name.c_str())->artist, artist);
    EXPECT_EQ(record(name.c_str())->album, album);
    ASSERT_TRUE(load());
    EXPECT_EQ(record(name.c_str())->album, album);
    const auto found = CLTManager::findLTArtist(artist);
    ASSERT_TRUE(found);
    EXPECT_FALSE(found->getTracks().IsEmpty());
}

TEST_F(Changes, WhatAFailedSaveLeftIsSavedByTheNextChange)
{
    put("sound.ogg", "music/a/four.ogg");
    sql("CREATE TRIGGER no_insert BEFORE INSERT ON FILE_T BEGIN SELECT RAISE(FAIL, 'full'); END;"
        "CREATE TRIGGER no_delete BEFORE DELETE ON FILE_T BEGIN SELECT RAISE(FAIL, 'full'); END");
    scan("a/four.ogg");
    changes.addFileToDelete(path("a/one.mp3"));
    ASSERT_TRUE(apply());
    EXPECT_EQ(stored(), "a\\cover.jpg a\\one.mp3 a\\two.flac b\\notes.txt ");
    sql("DROP TRIGGER no_insert; DROP TRIGGER no_delete");
    changes.clear();
    fs::rename(dir.path("music/a/four.ogg"), dir.path("music/a/five.ogg"));
    changes.addFileToMove(path("a/four.ogg"), path("a/five.ogg"), false);
    scan("a/one.mp3"); // it is there after all
    ASSERT_TRUE(apply());
    EXPECT_EQ(stored(), "a\\cover.jpg a\\five.ogg a\\one.mp3 a\\two.flac b\\notes.txt ");
    EXPECT_TRUE(record("a/one.mp3"));
    EXPECT_GT(record("a/five.ogg")->id, 0);
}

TEST_F(Changes, AChainOfMovesKeepsEachRecordWithItsFile)
{
    const int one = record("a/one.mp3")->id;
    const int two = record("a/two.flac")->id;
    changes.addFileToMove(path("a/one.mp3"), path("a/two.flac"), false);
    changes.addFileToMove(path("a/two.flac"), path("a/three.flac"), false);
    changes.addFileToMove(path("b/notes.txt"), CString(), false);
    ASSERT_TRUE(apply());
    EXPECT_EQ(stored(), "a\\cover.jpg a\\three.flac a\\two.flac b\\notes.txt ");
    ASSERT_TRUE(record("a/two.flac"));
    EXPECT_EQ(record("a/two.flac")->id, one);
    EXPECT_EQ(record("a/three.flac")->id, two);
}

TEST_F(Changes, AnUnreachableDatabaseIsToldToTheCaller)
{
    changes.addFileToDelete(path("a/one.mp3"));
    fs::rename(dir.path("data"), dir.path("away"));
    try
    {
        apply();
        ADD_FAILURE() << "swallowed";
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        EXPECT_NE(exception->message().Find(u"SQLITE_CANTOPEN"), -1);
    }
    fs::remove_all(dir.path("data"));
    fs::rename(dir.path("away"), dir.path("data"));
    ASSERT_TRUE(load());
    EXPECT_TRUE(record("a/one.mp3"));
}
