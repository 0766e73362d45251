#include "core/load/DatabaseGuard.h"
#include "core/load/DatabaseRepair.h"
#include "core/load/DatabaseSwap.h"
#include "core/load/Snapshots.h"
#include "host/core/MessageOf.h"
#include "support/Contains.h"
#include "support/OldDatabase.h"
#include "support/Print.h"
#include "support/TempDir.h"
#include "support/TestFileSystem.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <set>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
using Columns = std::map<std::string, std::string>;

void execute(const CString& database, const CString& sql)
{
    CSQLiteDB db(database);
    db.Open();
    db.Execute(sql);
}

class DatabaseMigrationTest : public testing::Test
{
protected:
    DatabaseMigrationTest() { InitSimpleLogger(0, u""); }

    /// A database of that version, and what is in it.
    void make(const CString& version, const std::vector<CString>& without = {})
    {
        fs::remove_all(m_dir.path("x"));
        m_dir.makeFolder("x");
        makeOldDatabase(m_path, version, without);
        m_before = columnsOf(m_path);
    }
    /// The same one again, from its copy.
    void makeAgain() const
    {
        if (!fs::exists(m_dir.path("copy")))
            fs::copy_file(m_dir.path("x/qodb"), m_dir.path("copy"));
        fs::remove_all(m_dir.path("x"));
        m_dir.makeFolder("x");
        fs::copy_file(m_dir.path("copy"), m_dir.path("x/qodb"));
    }

    std::vector<std::string> prepare(const MigrationOptions& options = {}) const
    {
        return DatabaseGuard(m_path).prepare(options);
    }

    /// That the database is the old one with all in it, or the new one with no column changed but
    /// for those of collections; and that nothing is left beside it.
    void expectWhole(bool isNew, const std::string& what) const
    {
        const std::set<std::string> expected =
            isNew ? std::set<std::string>{"qodb", "qodb.bak", "snapshots"}
                  : std::set<std::string>{"qodb", "snapshots"};
        std::set<std::string> found;
        for (const auto& entry : fs::directory_iterator(m_dir.path("x")))
        {
            const std::string name = entry.path().filename();
            if (!name.ends_with("-wal") && !name.ends_with("-shm"))
                found.insert(name);
        }
        found.insert("snapshots");
        EXPECT_EQ(found, expected) << what;
        EXPECT_EQ(DatabaseMigration::otherVersion(m_path).has_value(), !isNew) << what;
        const std::vector<std::string> changed = changedColumns(m_before, columnsOf(m_path));
        EXPECT_EQ(changed,
                  isNew ? std::vector<std::string>{"COLL_T.CT_ID"} : std::vector<std::string>{})
            << what;
    }

    /// After whatever happened: the next start finds all rows, and carries them over.
    void expectRecovery(const std::string& what) const
    {
        EXPECT_NO_THROW(prepare()) << what;
        expectWhole(true, what);
    }

    const TempDir m_dir;
    const CString m_path = m_dir.collPath("x/qodb");
    Columns m_before;
};

/// The calls that change something on the disk.
const std::set<std::string> changing = {
    "open", "removeFile", "moveFile", "moveFileNoReplace", "copyFile", "makeDirectories", "sync"};

/// Leaves what it writes in the log alone, as a writer does that is killed.
void writeAndDie(const CString& database)
{
    const pid_t child = ::fork();
    if (child == 0)
    {
        CSQLiteDB db(database);
        db.Open();
        db.Execute(u"UPDATE FILE_T SET FT_TITLE = 'in the log' WHERE FT_ID = 3");
        db.Execute(u"INSERT INTO PLAYLIST_T VALUES (50, 'last', '')");
        db.Execute(u"DELETE FROM PLAYLIST_T WHERE PL_ID = 50");
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
}
} // namespace

TEST_F(DatabaseMigrationTest, EveryRowComesAlongAndTheFormerDatabaseIsKept)
{
    for (const char* const mode : {"wal", "delete", "killed"})
    {
        make(u"2.0.0.35", {u"FT_COLL_ID", u"INPLACE_T", u"SH_INITIATOR"});
        execute(m_path, u"CREATE TABLE DIARY (A TEXT)");
        execute(m_path, u"INSERT INTO DIARY VALUES ('rain')");
        if (mode == std::string("delete"))
        {
            CSQLiteDB db(m_path);
            db.Open();
            (void)db.CompileStatement(u"PRAGMA journal_mode = DELETE").ExecuteQuery();
        }
        else if (mode == std::string("killed"))
        {
            writeAndDie(m_path);
            ASSERT_GT(fs::file_size(m_dir.path("x/qodb-wal")), 0U);
        }
        // Read from a copy: looking at the database would move the log into it.
        fs::copy(m_dir.path("x"), m_dir.path("copy"), fs::copy_options::recursive);
        m_before = columnsOf(m_dir.collPath("copy/qodb"));
        EXPECT_EQ(contains(m_before.at("FILE_T.FT_TITLE"), "in the log"),
                  mode == std::string("killed"));
        fs::remove_all(m_dir.path("copy"));

        const auto tried = DatabaseGuard(m_path).tryMigration({});
        ASSERT_TRUE(tried);
        EXPECT_EQ(tried->rows.at("FILE_T"), 7);
        EXPECT_EQ(fs::exists(m_dir.path("x/snapshots")), false) << "a trial changes nothing";

        const auto notes = prepare();
        ASSERT_EQ(notes.size(), 1U) << mode;
        EXPECT_TRUE(
            contains(notes[0], "was carried over from version [2.0.0.35] to version [2.0.0.36]"));
        expectWhole(true, mode);
        const CStringArray snapshots = Snapshots(m_path).list();
        ASSERT_EQ(snapshots.GetSize(), 1);
        for (const CString& kept : {snapshots[0], m_path + u".bak"})
            EXPECT_EQ(columnsOf(kept), m_before) << mode;
        EXPECT_EQ(DatabaseGuard::countRows(m_path).at("DIARY"), 1);
        EXPECT_TRUE(DatabaseGuard(m_path).findDamage(true).empty());
        // Ids that were given out are not given out again.
        execute(m_path, u"INSERT INTO PLAYLIST_T (PL_NAME) VALUES ('next')");
        EXPECT_TRUE(contains(columnsOf(m_path).at("PLAYLIST_T.PL_ID"),
                             mode == std::string("killed") ? "[51]" : "[10]"));
        EXPECT_TRUE(prepare().empty()) << "once";
    }
}

TEST_F(DatabaseMigrationTest, WhatWouldLoseRowsOrIsNotOursIsLeftAsItWas)
{
    const struct
    {
        const char* what;
        const char16_t* version;
        std::vector<CString> sql;
        ExitCode code;
        const char* message;
    } cases[] = {
        {"two rows of one id",
         u"2.0.0.20",
         {u"ALTER TABLE FILE_T RENAME TO OLD_T",
          u"CREATE TABLE FILE_T AS SELECT * FROM OLD_T UNION ALL SELECT * FROM OLD_T WHERE FT_ID = "
          u"8"},
         ExitCode::failed,
         "cannot be carried over from version [2.0.0.20]: "},
        {"no files at all",
         u"2.0.0.20",
         {u"DROP TABLE FILE_T"},
         ExitCode::failed,
         "the table FILE_T is missing"},
        {"newer", u"9.9.9.9", {}, ExitCode::refused, "is newer than that of this program"},
        {"newer by its numbers", u"2.0.0.100", {}, ExitCode::refused, "qo db migrate --downgrade"},
        {"no numbers", u"beta", {}, ExitCode::refused, "is newer than that of this program"}};
    for (const auto& each : cases)
    {
        make(each.version);
        for (const CString& sql : each.sql)
            execute(m_path, sql);
        m_before = columnsOf(m_path);
        const std::string content = m_dir.read("x/qodb");
        for (int i = 0; i < 2; ++i)
        {
            const std::string message = messageOf([this] { prepare(); }, each.code);
            EXPECT_TRUE(contains(message, each.message)) << each.what;
            messageOf([this] { (void)DatabaseGuard(m_path).tryMigration({}); }, each.code);
        }
        EXPECT_TRUE(m_dir.read("x/qodb") == content) << each.what;
        expectWhole(false, each.what);
        // Whoever only reads is refused as well.
        messageOf([this] { (void)DatabaseGuard(m_path).check(); });
    }
    make(u"9.9.9.9");
    execute(m_path, u"ALTER TABLE FILE_T ADD COLUMN FT_NEW TEXT");
    MigrationOptions options;
    options.mayDowngrade = true;
    EXPECT_TRUE(contains(prepare(options).at(0), "is left behind: FILE_T.FT_NEW; as it was it is"));
    make(u"2.0.0.9"); // a smaller number, though the text is greater
    EXPECT_EQ(prepare().size(), 1U);
    expectWhole(true, "2.0.0.9");
}

TEST_F(DatabaseMigrationTest, LostRowsAreNamedByTableAndId)
{
    make(u"2.0.0.35");
    execute(m_path, u"INSERT INTO COLL_T (CT_COLL_ID) VALUES ('usb1')"); // becomes one with another
    execute(m_path, u"UPDATE FILE_T SET FT_ID = -1 WHERE FT_ID = 7");    // gets another id
    EXPECT_EQ(prepare().size(), 1U);
    make(u"2.0.0.35", {u"SHARE_T", u"PLAYLIST_T"});
    execute(m_path, u"CREATE TABLE SHARE_T (SH_ID INTEGER, SH_PEER TEXT)");
    execute(m_path, u"INSERT INTO SHARE_T VALUES (4, 'a'), (4, 'b')");
    const std::string message = messageOf([this] { prepare(); });
    for (const char* const loss :
         {"SHARE_T would lose 2 of 2 rows (row 4, 4)",
          "FILE_T would lose 7 of 7 rows (row 3, 7, 8, 77, 78, 79, 2000000000)",
          "COLL_T would lose 2 of 2 rows",
          "it is as it was before"})
        EXPECT_TRUE(contains(message, loss)) << message;
}

TEST_F(DatabaseMigrationTest, DamagedPageEndsInARefusalUntilItIsRepaired)
{
    make(u"2.0.0.20");
    for (int i = 0; i < 9; ++i)
        execute(m_path,
                u"INSERT INTO FILE_T SELECT FT_ID + (SELECT max(FT_ID) FROM FILE_T WHERE FT_ID < "
                u"100000), FT_PATH || FT_ID, FT_SOURCE, FT_CREAT_TIME, FT_MODIF_TIME, FT_ARTIST, "
                u"FT_ALBUM, FT_TITLE, FT_GENRE, FT_TRACK_NUMBER, FT_YEAR, FT_LYRICS, "
                u"FT_PICTURE_PATH, FT_SIZE, FT_DURATION, FT_BITRATE, FT_FLAGS, FT_SESSION, "
                u"FT_VELMORA_ID || FT_ID, FT_PARAMS, FT_REVIEWED, FT_IMPORTED, FT_CLIP_UID, "
                u"FT_FP_PARAMS, FT_COLL_ID FROM FILE_T WHERE FT_ID < 100000");
    const auto files = DatabaseGuard::countRows(m_path).at("FILE_T");
    std::string content = m_dir.read("x/qodb");
    content.replace(content.size() / 2 / 4096 * 4096, 4096, 4096, '\xFF');
    m_dir.write("x/qodb", content);
    EXPECT_TRUE(contains(messageOf([this] { prepare(); }), "is damaged ("));
    EXPECT_TRUE(m_dir.read("x/qodb") == content);

    const DatabaseSwap swap(m_path);
    const DatabaseRepair::Report report = DatabaseRepair(m_path).copyTo(swap.draft());
    (void)swap.replace(u"damaged");
    EXPECT_EQ(DatabaseMigration::otherVersion(m_path), u"2.0.0.20");
    EXPECT_EQ(prepare().size(), 1U);
    EXPECT_FALSE(report.isCertain);
    EXPECT_LT(DatabaseGuard::countRows(m_path).at("FILE_T"), files);
    EXPECT_GT(DatabaseGuard::countRows(m_path).at("FILE_T"), files * 9 / 10);
}

TEST_F(DatabaseMigrationTest, LockedDatabaseIsBusyAndOneThatIsWrittenToMeanwhileIsLeftAlone)
{
    make(u"2.0.0.35");
    CSQLiteDB other(m_path);
    other.Open();
    other.Execute(u"BEGIN IMMEDIATE;");
    messageOf([this] { prepare(); }, ExitCode::busy);
    other.Execute(u"ROLLBACK;");
    // The copy is there when its folder is asked for.
    const TestFileSystem files(
        [&](const std::string& call, const CString& path)
        {
            if (call == "moveFile" && path.Right(8) == u".bak.new")
                other.Execute(u"INSERT INTO FILE_T (FT_ID, FT_PATH) VALUES (500, 'late')");
            return 0;
        });
    EXPECT_TRUE(
        contains(messageOf([this] { prepare(); }, ExitCode::busy), "was changed by another"));
    EXPECT_TRUE(contains(columnsOf(m_path).at("FILE_T.FT_ID"), "[500]"));
}

TEST_F(DatabaseMigrationTest, FailureOfAnyCallToTheDiskLosesNothing)
{
    make(u"2.0.0.35");
    int failed = 0;
    bool isDone = false;
    for (int n = 0; !isDone; ++n)
    {
        makeAgain();
        int left = n;
        bool isNew = true;
        {
            const TestFileSystem files(
                [&](const std::string& call, const CString& path)
                {
                    const bool isHere = path.Find(u"\\x") > 0 && changing.contains(call);
                    return isHere && left-- == 0 ? EIO : 0;
                });
            try
            {
                prepare();
            }
            catch (const HostError& error)
            {
                ++failed;
                isNew = false;
                EXPECT_FALSE(contains(error.what(), "CSQLite")) << error.what();
            }
            isDone = left >= 0;
        }
        SCOPED_TRACE(n);
        if (!isNew && !fs::exists(m_dir.path("x/qodb.replacement")))
        {
            EXPECT_EQ(columnsOf(m_path), m_before);
        }
        EXPECT_NO_THROW(prepare());
        EXPECT_FALSE(DatabaseMigration::otherVersion(m_path));
        EXPECT_EQ(changedColumns(m_before, columnsOf(m_path)),
                  std::vector<std::string>{"COLL_T.CT_ID"});
    }
    EXPECT_GT(failed, 3);
}

TEST_F(DatabaseMigrationTest, FullDiskLosesNothing)
{
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit former = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &former), 0);
    make(u"2.0.0.35");
    execute(m_path, u"UPDATE INPLACE_T SET IN_LYRICS = hex(zeroblob(100000))");
    m_before = columnsOf(m_path);
    int failed = 0;
    for (rlim_t size = 0; size < 900000; size += 60000)
    {
        makeAgain();
        const rlimit limit = {size, former.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
        bool isNew = true;
        try
        {
            prepare();
        }
        catch (const HostError&)
        {
            isNew = false;
            ++failed;
        }
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &former), 0);
        SCOPED_TRACE(size);
        expectWhole(isNew, "a file of " + std::to_string(size));
        expectRecovery("afterwards");
    }
    EXPECT_GT(failed, 5);
    EXPECT_LT(failed, 15);
}

TEST_F(DatabaseMigrationTest, KilledAtAnyCallToTheDiskTheNextStartCarriesOn)
{
    make(u"2.0.0.35");
    bool isKilled = true;
    int n = 0;
    for (; isKilled; ++n)
    {
        makeAgain();
        const pid_t child = ::fork();
        if (child == 0)
        {
            int left = n;
            const TestFileSystem files(
                [&left](const std::string& call, const CString&)
                {
                    if (changing.contains(call) && left-- == 0)
                        ::kill(::getpid(), SIGKILL);
                    return 0;
                });
            prepare();
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        isKilled = WIFSIGNALED(status);
        SCOPED_TRACE(n);
        expectRecovery("killed at call " + std::to_string(n));
    }
    EXPECT_GT(n, 20);
}
