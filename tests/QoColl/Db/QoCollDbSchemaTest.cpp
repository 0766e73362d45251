#include "QoColl/Db/CollDbFixture.h"
#include "QoColl/Db/DbTransaction.h"
#include "QoColl/Db/SetAside.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/DocExample.h"
#include "support/LogCapture.h"
#include "support/OldDatabase.h"
#include "support/Words.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <thread>

namespace fs = std::filesystem;

namespace
{
class QoCollDbSchema : public CollDbFixture
{
protected:
    /// The names in the folder that begin with the text.
    int filesNamed(const std::string& start) const
    {
        int count = 0;
        for (const auto& entry : fs::directory_iterator(m_dir.path()))
            count += entry.path().filename().string().starts_with(start);
        return count;
    }

    void execute(const CString& sql) const
    {
        CSQLiteDB db(m_path);
        db.Open();
        db.Execute(sql);
    }

    /// Runs the work in a process of its own that is killed in the middle of it.
    template <class Work>
    static void runAndKill(Work work)
    {
        const pid_t child = ::fork();
        if (child == 0)
        {
            work();
            ::kill(::getpid(), SIGKILL);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    }
};

TEST_F(QoCollDbSchema, FreshDatabaseIsTheOneOfTheDocument)
{
    create();
    const CString schema = query(u"SELECT group_concat(sql, '; ') || ';' FROM (SELECT sql FROM "
                                 u"sqlite_master WHERE sql NOT NULL AND name NOT LIKE 'sqlite_%' "
                                 u"ORDER BY rowid)");
    EXPECT_EQ(wordsOf(qo::toUtf8(schema)), wordsOf(docExample("database.md", "sql")));
    EXPECT_EQ(query(u"SELECT VT_VERSION FROM VERSION_T"), u"2.0.0.36");
    EXPECT_EQ(query(u"PRAGMA journal_mode"), u"wal");
}

TEST_F(QoCollDbSchema, QueryOfTheDocumentGivesItsAnswer)
{
    create();
    auto item = file(u"C:\\Music\\Ada\\Morning Song.mp3");
    item->artist = u"Ada";
    item->title = u"Morning Song";
    item->duration = 215000;
    item->modifTime = qo::fromUnixTime(1714564800, 0);
    item->flags = qo::fileFlag::music | qo::fileFlag::audio;
    CQoCollDb(m_path).insertFile(item, u"");
    EXPECT_EQ(qo::toUtf8(row(qo::fromUtf8(docExample("database.md", "query")))),
              docExampleLines("database.md", "answer").at(0) + "|");
}

TEST_F(QoCollDbSchema, DatabaseOfThisVersionIsNotTouched)
{
    create();
    execute(u"INSERT INTO FILE_T (FT_PATH) VALUES ('a')");
    const std::string before = m_dir.read("coll.db");
    create();
    EXPECT_EQ(m_dir.read("coll.db"), before);
    EXPECT_EQ(filesNamed("coll.db"), 1);
    for (const CString version : {u"2.0.0.36", u"2.0.0.31", u"2.0.0.36 "})
    {
        execute(u"UPDATE VERSION_T SET VT_VERSION = '" + version + u"'");
        CString stored;
        EXPECT_TRUE(CQoCollDb::readVersion(m_path, stored));
        EXPECT_EQ(stored, version);
        bool exists = false;
        EXPECT_EQ(CQoCollDb::checkVersion(m_path, exists), version == u"2.0.0.36");
        EXPECT_TRUE(exists);
    }
}

TEST_F(QoCollDbSchema, VersionOfWhatIsNoDatabaseIsNotFound)
{
    CString version;
    for (const char* other : {"", "COLL.DB"})
    {
        EXPECT_FALSE(CQoCollDb::readVersion(m_path, version)) << other;
        EXPECT_EQ(filesNamed("coll.db"), 0) << "reading makes no file beside " << other;
        m_dir.write("COLL.DB", "another one");
    }
    for (const std::size_t size : {0, 5000})
    {
        m_dir.write("coll.db", std::string(size, 'x'));
        EXPECT_FALSE(CQoCollDb::readVersion(m_path, version)) << size;
    }
    bool exists = true;
    EXPECT_FALSE(CQoCollDb::checkVersion(m_path, exists));
    EXPECT_FALSE(exists);
}

TEST_F(QoCollDbSchema, WhatIsNoSoundDatabaseIsSetAsideAsItWas)
{
    // The first page keeps its header and loses the schema below it.
    create();
    std::string damaged = m_dir.read("coll.db");
    damaged.replace(100, 3000, 3000, '\xFF');
    const std::string diary = "my diary, " + std::string(5000, 'x');
    std::multiset<std::string> contents;
    for (const std::string& content : {damaged, diary, diary})
    {
        m_dir.write("coll.db", content);
        m_dir.write("coll.db-wal", "no log either");
        LogCapture log;
        create();
        EXPECT_TRUE(log.has("is no sound database, it was renamed to ", 10)) << log.all();
        EXPECT_EQ(query(u"SELECT VT_VERSION FROM VERSION_T"), u"2.0.0.36");
        EXPECT_EQ(query(u"SELECT COUNT(*) FROM FILE_T"), u"0");
        EXPECT_EQ(filesNamed("coll.db.bak"), 0);
        contents.insert(content);
    }
    std::multiset<std::string> kept;
    for (const auto& entry : fs::directory_iterator(m_dir.path()))
    {
        const std::string name = entry.path().filename();
        if (name.starts_with("coll.db.unreadable-") && !name.ends_with("-wal"))
            kept.insert(m_dir.read(name));
    }
    EXPECT_TRUE(kept == contents) << kept.size() << " files";
}

TEST_F(QoCollDbSchema, OnlyTheExaminedFileIsSetAsideAndOverwritesNothing)
{
    m_dir.write("coll.db", "examined");
    m_dir.write("coll.db-wal", "its log");
    qo::FileInfo examined;
    ASSERT_EQ(qo::fileSystem().info(m_path, qo::Spelling::exact, examined), 0);
    fs::rename(m_dir.path("coll.db"), m_dir.path("elsewhere"));
    m_dir.write("coll.db", "put there since");
    EXPECT_FALSE(qo::setAside(m_path, examined));
    EXPECT_EQ(m_dir.read("coll.db") + m_dir.read("coll.db-wal"), "put there sinceits log");
    EXPECT_EQ(filesNamed("coll.db"), 2);

    fs::rename(m_dir.path("elsewhere"), m_dir.path("coll.db"));
    m_dir.makeFolder("coll.db-journal"); // moves like a file
    EXPECT_TRUE(qo::setAside(m_path, examined));
    EXPECT_EQ(filesNamed("coll.db.unreadable-"), 3);
    EXPECT_EQ(filesNamed("coll.db"), 3);
}

TEST_F(QoCollDbSchema, HalfMadeDatabaseIsMadeAgain)
{
    execute(u"CREATE TABLE FILE_T (FT_ID INTEGER, OLD TEXT)");
    execute(u"CREATE TABLE KEPT (A TEXT)");
    create();
    CQoCollDb db(m_path);
    auto item = file(u"a");
    db.insertFile(item, u"");
    EXPECT_EQ(query(u"SELECT COUNT(*) FROM KEPT"), u"0");
}

TEST_F(QoCollDbSchema, FailingDiskWhileTablesAreDroppedLosesNone)
{
    execute(u"CREATE TABLE SESSION_T AS SELECT 'kept' AS A");
    execute(u"CREATE TABLE FILE_T AS WITH N(I) AS (SELECT 1 UNION ALL SELECT I + 1 FROM N LIMIT "
            u"500) SELECT hex(randomblob(1000)) FROM N");
    runAndKill(
        [this]
        {
            // The journal of the large table does not fit, those of the others would.
            ::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit = {65536, 65536};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            if (!thrownBy([this] { create(); }))
                ::_exit(1);
        });
    EXPECT_EQ(query(u"SELECT A FROM SESSION_T"), u"kept");
    EXPECT_EQ(query(u"SELECT COUNT(*) FROM FILE_T"), u"500");
}

TEST_F(QoCollDbSchema, FolderInItsPlaceThrows)
{
    m_dir.makeFolder("coll.db");
    EXPECT_EQ(thrownBy([&] { create(); })->code(), 14);
    bool exists = true;
    EXPECT_TRUE(CQoCollDb::checkVersion(m_path, exists)) << "nothing to do";
    EXPECT_TRUE(exists);
    EXPECT_TRUE(fs::is_directory(m_dir.path("coll.db")));
}

TEST_F(QoCollDbSchema, LockedDatabaseIsNotTakenForAnEmptyOne)
{
    create();
    execute(u"INSERT INTO FILE_T (FT_PATH) VALUES ('a')");
    CSQLiteDB other(m_path);
    other.Open();
    queryText(other, u"PRAGMA locking_mode = EXCLUSIVE");
    other.Execute(u"BEGIN EXCLUSIVE");
    CQoCollDb db(m_path);
    QoCollDbInspector::connection(db).SetBusyTimeout(10);
    bool exists = false;
    EXPECT_EQ(thrownBy([&] { QoCollDbInspector::checkVersion(db, exists); })->code() & 0xFF, 5);
    other.Execute(u"ROLLBACK");
    other.Close();
    EXPECT_EQ(query(u"SELECT COUNT(*) FROM FILE_T"), u"1");
}

TEST_F(QoCollDbSchema, ThoseWhoStartTogetherMakeOneDatabase)
{
    const int starters = 6;
    for (int round = 0; round < 12; ++round)
    {
        const std::string name = "together" + std::to_string(round);
        const CString path = m_dir.collPath(name);
        const bool isUnreadable = round % 4 == 1;
        const bool isOld = round % 4 == 3;
        if (isOld)
            makeOldDatabase(path, u"2.0.0.20");
        else if (round % 4 != 0) // else it is absent
            m_dir.write(name, std::string(isUnreadable ? 5000 : 0, 'x'));
        const auto start = [&]
        {
            CQoCollDb::CreateDatabaseIfNotValid(path, {});
            CQoCollDb db(path);
            auto item = file(u"a");
            db.insertFile(item, u"");
        };
        {
            std::vector<std::jthread> threads;
            for (int i = 0; i < starters; ++i)
                threads.emplace_back([&] { EXPECT_EQ(messageOf(start), ""); });
        }
        CQoCollDb db(path);
        QoFileDbItemArray items;
        db.getAllFiles(items, false, u"", false);
        EXPECT_EQ(items.GetSize(), starters + (isOld ? 7 : 0));
        EXPECT_EQ(filesNamed(name + ".bak"), isOld);
        EXPECT_EQ(filesNamed(name + ".unreadable-"), isUnreadable);
    }
}

TEST_F(QoCollDbSchema, BackupHoldsWhatStandsInTheLogAloneEvenBesideAReader)
{
    create();
    m_dir.write("coll.db.bak", "old");
    m_dir.write("coll.db.bak-wal", "of the old one");
    CQoCollDb db(m_path);
    CSQLiteDB reader(m_path);
    reader.Open();
    CSQLiteStatement reading = reader.CompileStatement(u"SELECT * FROM VERSION_T");
    const CSQLiteQueryResult row = reading.ExecuteQuery();
    auto item = file(u"a");
    db.insertFile(item, u"");
    QoCollDbInspector::createBackup(db);
    EXPECT_EQ(filesNamed("coll.db.bak"), 1);
    CSQLiteDB copy(m_dir.collPath("coll.db.bak"));
    copy.Open();
    EXPECT_EQ(queryText(copy, u"SELECT FT_PATH FROM FILE_T"), u"a");
}

TEST_F(QoCollDbSchema, FailedBackupIsLoggedAndKeepsTheOldOne)
{
    create();
    m_dir.write("coll.db.bak/in the way", "");
    CQoCollDb db(m_path);
    LogCapture log;
    QoCollDbInspector::createBackup(db);
    EXPECT_TRUE(log.has("CQoCollDb::createBackup(): failed to create a backup of db [21]", 10));
    fs::remove_all(m_dir.path("coll.db.bak"));
    m_dir.write("coll.db.bak", "old");
    m_dir.write("coll.db.bak-wal", "of the old one");
    m_dir.write("coll.db", std::string(5000, 'x'));
    QoCollDbInspector::createBackup(db);
    EXPECT_TRUE(log.has("CQoCollDb::createBackup(): failed to create a backup of db [5]", 10));
    EXPECT_EQ(m_dir.read("coll.db.bak"), "old");
    EXPECT_EQ(filesNamed("coll.db.bak"), 2);
}

TEST_F(QoCollDbSchema, KilledSaveLeavesTheFormerState)
{
    create();
    execute(u"INSERT INTO FILE_T (FT_PATH) VALUES ('former')");
    const auto save = [this](bool commit)
    {
        return [this, commit]
        {
            CQoCollDb db(m_path);
            // A cache this small writes pages of the unfinished transaction to the log.
            queryText(QoCollDbInspector::connection(db), u"PRAGMA cache_size = 5");
            auto* transaction = new qo::DbTransaction(db);
            for (int i = 0; i < 500; ++i)
            {
                auto item = file(u"C:\\a path of some length, so that pages fill soon");
                db.insertFile(item, u"");
            }
            if (commit)
                transaction->commit();
            ::kill(::getpid(), SIGKILL);
        };
    };
    runAndKill(save(false));
    EXPECT_EQ(query(u"SELECT COUNT(*) || FT_PATH FROM FILE_T"), u"1former");
    EXPECT_EQ(query(u"PRAGMA integrity_check"), u"ok");
    runAndKill(save(true));
    EXPECT_EQ(query(u"SELECT COUNT(*) FROM FILE_T"), u"501");
}

TEST_F(QoCollDbSchema, FailedCommitTakesThePointerAndThrows)
{
    create();
    CQoCollDb db(m_path);
    CSQLiteDB& connection = QoCollDbInspector::connection(db);
    CSQLiteDbTransaction* transaction =
        db.beginTransaction(eSQLiteTransactionType::immediate, eSQLiteEndTransaction::rollback);
    connection.Execute(u"ROLLBACK"); // as SQLite does by itself in some failures
    EXPECT_TRUE(thrownBy([&] { db.commitTransaction(transaction); }));
    EXPECT_EQ(transaction, nullptr);
    transaction =
        db.beginTransaction(eSQLiteTransactionType::deferred, eSQLiteEndTransaction::commit);
    connection.Execute(u"ROLLBACK");
    db.abandonTransaction(transaction);
    EXPECT_EQ(transaction, nullptr);
    db.rollbackTransaction(transaction);
}
} // namespace
