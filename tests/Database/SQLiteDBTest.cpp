#include "Database/DbFixture.h"
#include "platform/FileSystem.h"
#include "support/Contains.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <tuple>

namespace
{
using SQLiteDB = OpenDbFixture;
using SQLiteDBFile = DbFixture;

TEST_F(SQLiteDBFile, NewFileOfAnyNameIsPrivateAndHoldsUtf16)
{
    m_dir.write("NEW.DB", "another file, though its name differs in case alone");
    for (const std::string name :
         {"new.db", "a b'\"%s.db", "\xC3\xA9\xF0\x9F\x8E\xB5.db", "\xFF\xFE.db", "back\\slash.db"})
    {
        const mode_t before = ::umask(0);
        CSQLiteDB db(m_dir.collPath(name));
        db.Open();
        db.Execute(u"CREATE TABLE T (A TEXT)");
        ::umask(before);
        EXPECT_EQ(queryText(db, u"PRAGMA encoding"), u"UTF-16le") << name;
        db.Close();
        struct stat info = {};
        ASSERT_EQ(::stat(m_dir.path(name).c_str(), &info), 0) << name;
        EXPECT_EQ(info.st_mode & 0777, 0600U) << name;
        EXPECT_GT(info.st_size, 0) << name;
    }
}

TEST_F(SQLiteDBFile, WhatCannotBeOpenedThrowsAndLeavesTheConnectionClosed)
{
    m_dir.makeFolder("folder");
    for (const CString& path : {m_dir.collPath("folder"),
                                m_dir.collPath("absent/test.db"),
                                CString(),
                                CString(u":memory:")})
    {
        CSQLiteDB db(path);
        const auto exception = thrownBy([&] { db.Open(); });
        ASSERT_TRUE(exception) << qo::toUtf8(path);
        EXPECT_EQ(exception->code(), 14) << qo::toUtf8(path);
        EXPECT_EQ(messageOf([&] { db.Execute(u"SELECT 1"); }),
                  "CSQLiteException: [SQLITE_WRAPPER_ERROR][code 1000][Database not open]");
    }
}

TEST_F(SQLiteDB, ClosingThrowsWhileAStatementLivesAndIsHarmlessTwice)
{
    {
        CSQLiteStatement statement = m_db.CompileStatement(u"SELECT 1");
        EXPECT_EQ(thrownBy([&] { m_db.Close(); })->code(), 5);
        m_db.Execute(u"CREATE TABLE T (A)"); // still open
    }
    m_db.Close();
    m_db.Close();
    EXPECT_EQ(thrownBy([&] { m_db.CompileStatement(u"SELECT 1").ExecuteDML(); })->code(), 1000);
}

TEST_F(SQLiteDB, ExecuteTakesOneStatementWithoutRows)
{
    m_db.Execute(u"CREATE TABLE T (A INTEGER PRIMARY KEY); CREATE TABLE U (A)");
    m_db.Execute(u"INSERT INTO T VALUES (NULL)");
    EXPECT_EQ(m_db.LastInsertRowId(), 1);
    EXPECT_TRUE(contains(messageOf([&] { m_db.Execute(u"SELECT * FROM U"); }), "no such table: U"));
    EXPECT_TRUE(thrownBy([&] { m_db.Execute(u"SELECT 1"); })) << "a row is a failure";
    const auto twice = thrownBy([&] { m_db.Execute(u"INSERT INTO T VALUES (1)"); });
    EXPECT_EQ(twice->sql(), u"INSERT INTO T VALUES (1)");
    EXPECT_EQ(twice->code(), 19 | 6 << 8);
    EXPECT_GE(twice->message().Find(u"[UNKNOWN_ERROR][code 1555]"), 0) << "no name of its own";
    EXPECT_EQ(queryText(m_db, u"SELECT COUNT(*) FROM T"), u"1");
}

TEST_F(SQLiteDB, WaitingForALockEndsWithTheTimeout)
{
    CSQLiteDB other(m_dir.collPath("test.db"));
    other.Open();
    other.Execute(u"BEGIN EXCLUSIVE");
    m_db.SetBusyTimeout(20);
    EXPECT_EQ(
        messageOf([&] { m_db.Execute(u"BEGIN IMMEDIATE"); }),
        "CSQLiteException: [SQLITE_BUSY][code 5][database is locked]\n\tSQL >> BEGIN IMMEDIATE");
    other.Execute(u"ROLLBACK");
    m_db.Execute(u"BEGIN IMMEDIATE");
}

TEST(SQLiteException, MessageHasTextAndSqlOnlyIfThereAreAny)
{
    const std::tuple<int, const char16_t*, const char16_t*, const char*> cases[] = {
        {5, u"", u"", "CSQLiteException: [SQLITE_BUSY][code 5]"},
        {25, u"t", u"", "CSQLiteException: [SQLITE_RANGE][code 25][t]"},
        {26, u"", u"S", "CSQLiteException: [UNKNOWN_ERROR][code 26]\n\tSQL >> S"},
        {101, u"%s", u"%d", "CSQLiteException: [SQLITE_DONE][code 101][%s]\n\tSQL >> %d"},
        {-1, u"t", u"", "CSQLiteException: [UNKNOWN_ERROR][code -1][t]"},
    };
    for (const auto& [code, text, sql, message] : cases)
        EXPECT_EQ(qo::toUtf8(CSQLiteException(code, text, sql).message()), message);
    char16_t buffer[17];
    CSQLiteException exception(5, u"database is locked");
    EXPECT_TRUE(exception.GetErrorMessage(buffer, 17));
    EXPECT_EQ(CString(buffer), u"CSQLiteException") << "cut to the buffer";
    EXPECT_TRUE(exception.GetErrorMessage(nullptr, 0));
}

TEST(SQLiteLog, ProcessWithoutALoggerGetsOneBesideTheDatabase)
{
    // In a process of its own: the logger is started once for all.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            TempDir dir;
            CSQLiteDB(dir.collPath("a.db")).Open();
            int logs = 0;
            for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
                logs += entry.path().filename().string().starts_with("a.db_SimpLog_");
            std::filesystem::remove_all(dir.path());
            ::_exit(logs == 1 && GetSimpleLoggerMaxLevel() == 60 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0),
        "");
}
} // namespace
