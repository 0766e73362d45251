#include "host/cli/QoCommand.h"
#include "support/OrdinaryUser.h"

#include <sys/file.h>

#include <fstream>

namespace fs = std::filesystem;

TEST(DatabaseMigrate, CommandsCarryAnOldCollectionOverOnceAndSayItInOneLine)
{
    const QoCommand qo;
    const std::string song = qo.addTrack("a.mp3", {"artist=Ada", "title=One"});
    qo.addSound("b.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    ASSERT_EQ(qo.run({"tag", "set", song, "title=Two"}).code, 0);
    const auto ids = qo.ids();
    const std::vector<std::string> commands[] = {
        {"ls"}, {"load"}, {"scan"}, {"playlist", "ls"}, {"session", "ls"}, {"status"}};
    for (const std::vector<std::string>& command : commands)
    {
        qo.runSql("UPDATE VERSION_T SET VT_VERSION = '2.0.0.20'; UPDATE FILE_T SET FT_FLAGS = 0");
        const bool isOnlyLooking = command[0] == "status";
        const QoCommand::Result first = qo.run(command);
        EXPECT_EQ(first.code, 0) << command[0] << first.err;
        EXPECT_EQ(first.err.find("was carried over from version [2.0.0.20] to version [2.0.0.36]; "
                                 "as it was it is kept in ") != std::string::npos,
                  !isOnlyLooking)
            << command[0] << first.err;
        EXPECT_EQ(qo.run(command).err.find("carried over"), std::string::npos) << command[0];
    }
    qo.expect({"db", "migrate", "--dry-run"}, 0, "would be carried over from version [2.0.0.20]");
    qo.expect({"ls", "--dry-run"}, 1, "\"qo db migrate\" carries it over");
    qo.expect({"scan", "--dry-run"}, 0, "2 changed");
    const auto report = qo.run({"db", "migrate", "--json"}).json().at(0);
    EXPECT_EQ(report["from"], "2.0.0.20");
    EXPECT_EQ(report["rows"]["FILE_T"], 2);
    EXPECT_EQ(report["rows"]["COLL_T"], 0);
    EXPECT_TRUE(fs::exists(report["kept"].get<std::string>()));
    qo.expect({"db", "migrate"}, 0, "has version [2.0.0.36] already");
    // What is kept by lasting ids holds: the edit is still to be written.
    EXPECT_EQ(qo.ids(), ids);
    qo.expect({"status"}, 0, "1 file with tags to write");

    qo.runSql("UPDATE VERSION_T SET VT_VERSION = '9.9.9.9'; ALTER TABLE FILE_T ADD COLUMN X TEXT");
    for (const char* const command : {"ls", "scan", "load"})
        qo.expect({command}, 7, "newer than that of this program, [2.0.0.36]; it was left alone");
    qo.expect({"db", "migrate"}, 7, "qo db migrate --downgrade");
    qo.expect({"db", "migrate", "--downgrade"}, 0, "is left behind: FILE_T.X; as it was");
    EXPECT_EQ(qo.ids(), ids);
}

TEST(DatabaseMigrate, WhoMayNotWriteOrMustWaitLeavesTheOldCollectionAsItIs)
{
    const QoCommand qo;
    qo.addSound("a.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    qo.runSql("UPDATE VERSION_T SET VT_VERSION = '2.0.0.20'");
    const std::string content = qo.dir.read("data/Qorganizer/qodb");
    const int lock = ::open(qo.dir.path("data/Qorganizer/lock").c_str(), O_RDWR);
    ASSERT_EQ(::flock(lock, LOCK_EX | LOCK_NB), 0);
    qo.expect({"ls"}, 5, "the collection is in use by ");
    ::close(lock);
    {
        fs::permissions(qo.dir.path("data/Qorganizer"), fs::perms(0555));
        const OrdinaryUser user(qo.dir.path());
        for (const char* const command : {"ls", "scan"})
            qo.expect({command}, 1, ": Permission denied");
        EXPECT_TRUE(qo.dir.read("data/Qorganizer/qodb") == content);
        fs::permissions(qo.dir.path("data/Qorganizer/qodb"), fs::perms(0444));
        fs::permissions(qo.dir.path("data/Qorganizer"), fs::perms(0755));
        if (!user.isPossible)
            GTEST_SKIP() << "the administrator cannot be another user here";
        EXPECT_EQ(qo.run({"ls"}).code, 0) << "a new file takes the place of one that is locked";
    }
}

TEST(DatabaseMigrate, AnAttemptThatFailsCostsNoSnapshotAndAFileWithoutVersionIsNotOfThisOne)
{
    const QoCommand qo;
    qo.addSound("a.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    qo.runSql("UPDATE VERSION_T SET VT_VERSION = '2.0.0.31'; INSERT INTO SESSION_T (ST_ID) VALUES "
              "(2147483647), (-1)");
    qo.expect({"db", "backup"}, 0, "snapshots/qodb-");
    const std::string before = qo.run({"db", "snapshots"}).out;
    for (int i = 0; i < 6; ++i)
        qo.expect({"ls"}, 1, "SESSION_T would lose");
    EXPECT_EQ(qo.run({"db", "snapshots"}).out, before);
    qo.runSql("DELETE FROM SESSION_T WHERE ST_ID > 0");
    qo.expect({"db", "migrate"}, 0, "; 1 row gets a new id, as no record can have that; as it was");

    qo.runSql("DROP TABLE VERSION_T");
    for (const char* const mode : {"--quiet", "--dry-run"})
        qo.expect({"db", "migrate", mode}, 1, "is damaged (");
}

TEST(DatabaseMigrate, BackupIsASnapshotOrAFileThatIsNotTheDatabase)
{
    const QoCommand qo;
    qo.expect({"db", "backup"}, 4, "there is no database");
    qo.addSound("a.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    qo.expect({"db", "backup", "--dry-run"}, 0, "would copy the database to a new snapshot");
    EXPECT_TRUE(qo.run({"db", "snapshots"}).out.empty());
    qo.expect({"db", "backup"}, 0, "snapshots/qodb-");
    const std::string copy = qo.dir.path("copy.db");
    qo.expect({"db", "backup", copy}, 0, "the database is copied to " + copy);
    qo.expect({"db", "backup", copy}, 7, "will be replaced");
    qo.expect({"db", "backup", copy, "--yes"}, 0, "is copied to");
    qo.expect({"db", "restore", copy}, 0, "with 1 file");
    qo.expect({"db", "backup", qo.database(), "--yes"}, 2, "is the database itself");
    qo.expect({"db", "backup", qo.music(), "--yes"}, 2, "is a folder; name the file to write");
    qo.dir.write("copy.db-wal", "x");
    qo.expect({"db", "backup", copy, "--yes"}, 1, "copy.db-wal belongs to another database");
}
