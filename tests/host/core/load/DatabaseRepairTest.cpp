#include "core/load/DatabaseRepair.h"

#include "core/base/HostError.h"
#include "core/load/DatabaseGuard.h"
#include "core/load/DatabaseSwap.h"
#include "core/load/Snapshots.h"
#include "core/session/KernelThread.h"
#include "support/Contains.h"
#include "support/OrdinaryUser.h"
#include "support/Print.h"
#include "support/Records.h"
#include "support/TempDir.h"

#include <QoKernel/Inside.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
constexpr int fileRows = 400;
constexpr std::size_t pageSize = 4096;

using Rows = std::map<int, std::string>; ///< what a row holds, by its id

Rows rowsOf(const CString& database)
{
    QoFileDbItemArray items;
    CQoCollDb(database).getAllFiles(items, true, u"", true);
    Rows rows;
    for (const QoFileDbItemPtr& item : items)
        rows[item->id] = qo::toUtf8(item->path + u"|" + item->artist + u"|" + item->velmoraId +
                                    u"|" + item->lyrics);
    return rows;
}

/// A database with gaps in its ids, lyrics that need pages of their own and rows in other tables.
std::string makeWhole(const TempDir& dir)
{
    const CString path = dir.collPath("whole");
    CQoCollDb::CreateDatabaseIfNotValid(path, CQoCollDb::ConfigInfo());
    {
        CQoCollDb db(path);
        CSQLiteDbTransaction* transaction =
            db.beginTransaction(eSQLiteTransactionType::immediate, eSQLiteEndTransaction::rollback);
        for (int i = 0; i < fileRows; ++i)
        {
            CString name;
            name.Format(u"C:\\music\\%04d.mp3", i);
            QoFileDbItemPtr item = recordOf(name);
            item->id = i * 3 + 1;
            CString id;
            id.Format(u"%08d-0000-0000-0000-000000000000", i);
            item->velmoraId = id;
            item->artist.Format(u"Artist \u00e9\u4e00 %d", i % 40);
            item->lyrics = i % 50 == 0 ? CString(std::u16string(3000, u'l')) : CString();
            db.insertFile(item, u"");
        }
        db.commitTransaction(transaction);
    }
    CSQLiteDB db(path);
    db.Open();
    db.Execute(u"INSERT INTO COLL_T VALUES (1, '', 1, 'C:\\music', '3', '', 5)");
    db.Execute(u"INSERT INTO PLAYLIST_T VALUES (7, 'mine', '1;4;7')");
    db.Execute(u"INSERT INTO SESSION_T VALUES (9, 'radio', 8, 5, 6)");
    db.Close();
    return dir.read("whole");
}

/// What each page is for: the name of its table or index, a kind, and how many cells it has.
struct Page
{
    std::string name;
    std::string kind;
    int cells = 0;
};

std::map<int, Page> pagesOf(const CString& database)
{
    std::map<int, Page> pages;
    CSQLiteDB db(database);
    db.Open();
    CSQLiteStatement statement =
        db.CompileStatement(u"SELECT pageno, name, pagetype, ncell FROM dbstat");
    for (CSQLiteQueryResult row = statement.ExecuteQuery(); !row.Eof(); row.NextRow())
        pages[row.GetIntField(0)] = {qo::toUtf8(CString(row.GetTextField(1))),
                                     qo::toUtf8(CString(row.GetTextField(2))),
                                     row.GetIntField(3)};
    return pages;
}

struct Damage
{
    std::string name;
    std::function<void(std::string&)> apply;
    int mayLose = fileRows; ///< rows of files at most
    /// Within a long text nothing shows that letters have changed.
    bool isWithinText = false;
};

/// Bytes of a page, or of the whole file's end, in which nothing sound is left.
std::vector<Damage> damagesOf(const std::map<int, Page>& pages, std::size_t size)
{
    std::vector<Damage> list;
    for (const auto& [number, page] : pages)
    {
        const std::size_t start = static_cast<std::size_t>(number - 1) * pageSize;
        const bool isOfFiles = page.name == "FILE_T";
        const int mayLose = !isOfFiles || page.kind == "internal" ? 0
                            : page.kind == "leaf"                 ? page.cells
                                                                  : 1;
        const std::string where =
            std::to_string(number) + " (" + page.name + ", " + page.kind + ")";
        // Every page once, in one of three ways, and those of the files in all three.
        if (isOfFiles || number % 3 == 0)
            list.push_back({"first bytes of page " + where,
                            [start](std::string& file) { file.replace(start, 16, 16, '\xFF'); },
                            mayLose,
                            page.kind == "overflow"});
        if ((isOfFiles && number % 4 == 0) || number % 3 == 1)
            list.push_back({"page of zeros " + where,
                            [start](std::string& file)
                            { file.replace(start, pageSize, pageSize, '\0'); },
                            mayLose,
                            page.kind == "overflow"});
        if ((isOfFiles && number % 4 == 1) || number % 3 == 2)
            list.push_back({"noise in page " + where,
                            [start](std::string& file)
                            {
                                for (std::size_t i = 0; i < pageSize; ++i)
                                    file[start + i] = static_cast<char>(i * 7919 >> 3);
                            },
                            mayLose,
                            page.kind == "overflow"});
    }
    for (const int part : {1, 2, 3})
        list.push_back({"cut to " + std::to_string(part) + " quarters",
                        [size, part](std::string& file)
                        { file.resize(size / 4 * static_cast<std::size_t>(part)); }});
    list.push_back({"last page gone", [size](std::string& file) { file.resize(size - pageSize); }});
    list.push_back(
        {"header of text", [](std::string& file) { file.replace(0, 100, 100, 'x'); }, 0});
    return list;
}

bool areSame(const Rows& found, const Rows& all, const Damage& damage)
{
    const auto haveSameId = [](const auto& a, const auto& b) { return a.first == b.first; };
    return damage.isWithinText
               ? std::equal(found.begin(), found.end(), all.begin(), all.end(), haveSameId)
               : found == all;
}

/// The guard's refusal before a scan; nothing when it takes the database for sound.
std::optional<std::string> refusal(const CString& database)
{
    try
    {
        DatabaseGuard guard(database);
        guard.prepare();
        guard.checkPages();
        return std::nullopt;
    }
    catch (const HostError& error)
    {
        return error.what();
    }
}

class DatabaseDamage : public testing::Test
{
protected:
    void put(const std::string& bytes) const
    {
        for (const char* const side : {"-wal", "-shm", "-journal"})
            fs::remove(dir.path(std::string("db") + side));
        dir.write("db", bytes);
    }
    DatabaseRepair::Report repair(const CString& damaged) const
    {
        for (const char* const end : {"", "-wal", "-shm"})
            fs::remove(dir.path(std::string("new") + end));
        try
        {
            return DatabaseRepair(damaged).copyTo(dir.collPath("new"));
        }
        catch (...)
        {
            KernelThread::rethrowAsHostError(damaged);
        }
    }

    TempDir dir;
    CString database = dir.collPath("db");
};
} // namespace

TEST_F(DatabaseDamage, IsRefusedAndRepairKeepsEveryReadableRowWithItsId)
{
    const std::string whole = makeWhole(dir);
    const Rows all = rowsOf(dir.collPath("whole"));
    ASSERT_EQ(all.size(), static_cast<std::size_t>(fileRows));
    const std::vector<Damage> damages = damagesOf(pagesOf(dir.collPath("whole")), whole.size());
    EXPECT_GE(damages.size(), 60U);
    for (const Damage& damage : damages)
    {
        std::string bytes = whole;
        damage.apply(bytes);
        put(bytes);
        const std::optional<std::string> refused = refusal(database);
        if (!refused)
        {
            EXPECT_TRUE(areSame(rowsOf(database), all, damage)) << damage.name;
            continue;
        }
        EXPECT_TRUE(contains(*refused, "qo db repair")) << damage.name << *refused;
        EXPECT_EQ(dir.read("db"), bytes) << damage.name;
        const DatabaseRepair::Report report = repair(database);
        const Rows kept = rowsOf(dir.collPath("new"));
        for (const auto& [id, row] : kept)
            EXPECT_TRUE(damage.isWithinText || row == all.at(id)) << damage.name << ": " << id;
        const std::set<std::int64_t> lost(report.lostIds.begin(), report.lostIds.end());
        for (const auto& [id, row] : all)
            EXPECT_TRUE(kept.contains(id) || lost.contains(id) || !report.isCertain)
                << damage.name << ": " << id << " is lost silently";
        EXPECT_GE(static_cast<int>(kept.size()), fileRows - damage.mayLose) << damage.name;
        EXPECT_EQ(refusal(dir.collPath("new")), std::nullopt) << damage.name;
    }
}

TEST_F(DatabaseDamage, OtherTablesAndTheirSequencesAreKept)
{
    std::string bytes = makeWhole(dir);
    bytes.replace(0, 100, 100, 'x');
    put(bytes);
    (void)repair(database);
    const auto counts = DatabaseGuard::countRows(dir.collPath("new"));
    EXPECT_EQ(counts.at("PLAYLIST_T"), 1);
    EXPECT_EQ(counts.at("SESSION_T"), 1);
    EXPECT_EQ(counts.at("COLL_T"), 1);
}

TEST_F(DatabaseDamage, WhatDoesNotConcernTheRowsMakesNothingUnusable)
{
    const std::string whole = makeWhole(dir);
    const struct
    {
        const char* name;
        std::vector<const char16_t*> statements;
        int rows;
    } cases[] = {
        {"dropped index", {u"DROP INDEX IDX_FT_COLL_ID"}, fileRows},
        {"added column", {u"ALTER TABLE FILE_T ADD COLUMN FT_MOOD TEXT"}, fileRows},
        {"view of nothing", {u"CREATE VIEW v AS SELECT x FROM nowhere"}, fileRows},
        {"view that cannot be parsed",
         {u"PRAGMA writable_schema = ON",
          u"INSERT INTO sqlite_master VALUES ('view', 'v', 'v', 0, 'CREATE VIEW v AS SELEKT')"},
         fileRows},
        {"ids that no record can bear",
         {u"UPDATE FILE_T SET FT_ID = 0 WHERE FT_ID = 1",
          u"UPDATE FILE_T SET FT_ID = -5 WHERE FT_ID = 4",
          u"UPDATE FILE_T SET FT_ID = 4294967297 WHERE FT_ID = 7"},
         fileRows}};
    for (const auto& c : cases)
    {
        put(whole);
        {
            CSQLiteDB db(database);
            db.Open();
            for (const char16_t* const sql : c.statements)
                (void)db.CompileStatement(sql).ExecuteQuery();
        }
        EXPECT_EQ(refusal(database), std::nullopt) << c.name;
        EXPECT_EQ(static_cast<int>(rowsOf(database).size()), c.rows) << c.name;
        CQoCollDb db(database);
        QoFileDbItemPtr item = recordOf(u"C:\\music\\new.mp3");
        item->velmoraId = u"new";
        EXPECT_NO_THROW(db.insertFile(item, u"")) << c.name;
        QoFileDbItemPtr found;
        EXPECT_TRUE(db.getFile(u"new", found)) << c.name;
        EXPECT_EQ(found->path, item->path) << c.name;
    }
}

TEST_F(DatabaseDamage, WhatALoadWouldFailOverIsRefusedAndRepaired)
{
    const std::string whole = makeWhole(dir);
    const struct
    {
        const char* words;
        std::vector<const char16_t*> statements;
    } cases[] = {
        {"FT_CLIP_UID is missing", {u"ALTER TABLE FILE_T RENAME COLUMN FT_CLIP_UID TO FT_OTHER"}},
        {"CT_USER_NAME is missing", {u"ALTER TABLE COLL_T DROP COLUMN CT_USER_NAME"}},
        {"COLL_T has a row whose id", {u"UPDATE COLL_T SET CT_ID = 0"}},
        {"PLAYLIST_T has a row whose id", {u"UPDATE PLAYLIST_T SET PL_ID = 4294967296"}},
        {"PLAYLIST_T is missing",
         {u"DROP TABLE PLAYLIST_T",
          u"PRAGMA writable_schema = ON",
          u"INSERT INTO sqlite_master VALUES ('view', 'v', 'v', 0, 'CREATE VIEW v AS SELEKT')"}}};
    for (const auto& [words, statements] : cases)
    {
        put(whole);
        {
            CSQLiteDB db(database);
            db.Open();
            for (const char16_t* const sql : statements)
                (void)db.CompileStatement(sql).ExecuteQuery();
        }
        EXPECT_TRUE(contains(refusal(database).value_or("taken for sound"), words));
        EXPECT_EQ(repair(database).lostIds.size(), 0U) << words;
        EXPECT_EQ(refusal(dir.collPath("new")), std::nullopt) << words;
        EXPECT_EQ(rowsOf(dir.collPath("new")), rowsOf(dir.collPath("whole"))) << words;
        EXPECT_EQ(DatabaseGuard::countRows(dir.collPath("new")).at("COLL_T"), 1) << words;
    }
}

TEST_F(DatabaseDamage, RowsInTheLogAreRepairedToo)
{
    put(makeWhole(dir));
    CSQLiteDB db(database);
    db.Open();
    db.Execute(u"UPDATE FILE_T SET FT_ARTIST = 'in the log' WHERE FT_ID = 1");
    for (const char* const side : {"", "-wal"})
        fs::copy_file(dir.path(std::string("db") + side), dir.path(std::string("torn") + side));
    std::string bytes = dir.read("torn");
    bytes.replace(bytes.size() - pageSize, pageSize, pageSize, '\xFF');
    dir.write("torn", bytes);
    (void)repair(dir.collPath("torn"));
    EXPECT_TRUE(contains(rowsOf(dir.collPath("new")).at(1), "|in the log|"));
}

TEST_F(DatabaseDamage, ReplacementThatWasCutShortIsBroughtToItsEnd)
{
    put(makeWhole(dir));
    fs::rename(dir.path("whole"), dir.path("db.replacement"));
    dir.write("db", "the damaged one");
    dir.write("db-wal", "its log");
    EXPECT_THROW((void)DatabaseGuard(database).check(), HostError);
    EXPECT_EQ(dir.read("db-wal"), "its log") << "who only reads changes nothing";
    DatabaseGuard(database).prepare();
    EXPECT_EQ(rowsOf(database).size(), static_cast<std::size_t>(fileRows));
    dir.write("db.replacement", "half of it");
    EXPECT_TRUE(contains(*refusal(database), "move it away"));
    EXPECT_EQ(rowsOf(database).size(), static_cast<std::size_t>(fileRows));
}

TEST_F(DatabaseDamage, FolderAndFileThatCannotBeWrittenAreReadAndNothingIsPutBeside)
{
    put(makeWhole(dir));
    for (const bool isFolder : {true, false})
    {
        const OrdinaryUser user(dir.path());
        if (!user.isPossible)
            GTEST_SKIP() << "there is no other user here";
        fs::permissions(dir.path("db"), fs::perms::owner_read);
        fs::permissions(dir.path(),
                        isFolder ? fs::perms::owner_read | fs::perms::owner_exec
                                 : fs::perms::owner_all);
        EXPECT_TRUE(DatabaseGuard(database).check());
        EXPECT_EQ(rowsOf(database).size(), static_cast<std::size_t>(fileRows));
        for (const char* const side : {"-wal", "-shm", "-journal"})
            EXPECT_FALSE(fs::exists(dir.path(std::string("db") + side))) << side;
        fs::permissions(dir.path(), fs::perms::owner_all);
    }
}

TEST_F(DatabaseDamage, DayIsKeptOnceAndOnlyAfterAChange)
{
    put(makeWhole(dir));
    const DatabaseGuard guard(database);
    const auto count = [this] { return Snapshots(database).list().GetSize(); };
    EXPECT_EQ(guard.keepDay(), "");
    EXPECT_EQ(guard.keepDay(), "");
    EXPECT_EQ(count(), 1) << "one a day";
    // As if it had been taken on another day.
    const std::string folder = dir.path("snapshots");
    const std::string name = fs::directory_iterator(folder)->path().filename();
    fs::rename(folder + "/" + name, folder + "/qodb-20200101_000000");
    EXPECT_EQ(guard.keepDay(), "");
    EXPECT_EQ(count(), 1) << "nothing has changed since";
    fs::last_write_time(dir.path("db"), fs::file_time_type::clock::now() + std::chrono::seconds(1));
    EXPECT_EQ(guard.keepDay(), "");
    EXPECT_EQ(count(), 2);
}
