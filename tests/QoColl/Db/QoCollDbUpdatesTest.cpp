#include "QoColl/Db/CollDbFixture.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "support/LogCapture.h"
#include "support/OldDatabase.h"
#include "support/ScopedVariable.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <set>

namespace fs = std::filesystem;

namespace
{
constexpr const char* steps[] = {"CQoCollDb::applyUpdate1()",
                                 "CQoCollDb::applyUpdateRadioRecordingTimeAndJingleFlag()",
                                 "CQoCollDb::applyUpdateShareLinkNotSavedBefore()",
                                 "CQoCollDb::applyUpdateOppositeShareAndInitiator()",
                                 "CQoCollDb::applyUpdateMusicAndVideoFlags()"};

/// The numbers of the steps that a log has, in its order.
std::string stepsIn(const LogCapture& log)
{
    std::string found;
    for (const LogCapture::Line& line : log.lines())
    {
        const auto at = std::find(std::begin(steps), std::end(steps), line.text);
        if (at != std::end(steps) && line.level == qo::level::step)
            found += std::to_string(at - std::begin(steps) + 1);
    }
    return found;
}

class QoCollDbUpdates : public CollDbFixture
{
protected:
    void migrate() const { CQoCollDb::CreateDatabaseIfNotValid(m_path, {6000}); }

    void execute(const CString& sql) const
    {
        CSQLiteDB db(m_path);
        db.Open();
        db.Execute(sql);
    }

    /// A database of that version as the file, whatever stood there before.
    void make(const CString& version, const std::vector<CString>& without = {}) const
    {
        for (const char* const name : {"coll.db", "coll.db-wal", "coll.db-shm", "coll.db.bak"})
            fs::remove(m_dir.path(name));
        makeOldDatabase(m_path, version, without);
    }
};

TEST_F(QoCollDbUpdates, RowsOfEveryVersionAreCarriedOverAndTheirStepsRun)
{
    const struct
    {
        const char* version;
        const char* steps;
    } cases[] = {{"2.0.0.20", "12345"},
                 {"2.0.0.21", "2345"},
                 {"2.0.0.22", "345"},
                 {"2.0.0.29", "345"},
                 {"2.0.0.30", "45"},
                 {"2.0.0.31", "45"},
                 {"2.0.0.32", "5"},
                 {"2.0.0.33", ""},
                 {"2.0.0.35", ""},
                 // Texts are compared, not numbers.
                 {"2.0.0.9", ""},
                 {"2.0.0.100", "12345"},
                 {"1.9", "12345"},
                 {"10.0.0.0", "12345"},
                 {"9.9.9.9", ""},
                 {"", "12345"}};
    const std::vector<std::string> changes[] = {{"COLL_T.CT_COLL_ID",
                                                 "COLL_T.CT_MODIFIED_TIME",
                                                 "COLL_T.CT_ROOT_DIRS",
                                                 "COLL_T.CT_ROOT_DIRS_TYPE",
                                                 "COLL_T.CT_SCAN_TIME",
                                                 "COLL_T.CT_USER_NAME",
                                                 "FILE_T.FT_MODIF_TIME"},
                                                {"FILE_T.FT_PARAMS"},
                                                {"SHARE_T.SH_INVITATION"},
                                                {"SHARE_T.SH_INITIATOR", "SHARE_T.SH_TYPE"},
                                                {"FILE_T.FT_FLAGS"}};
    for (const auto& each : cases)
    {
        make(qo::fromUtf8(each.version));
        const auto before = columnsOf(m_path);
        LogCapture log;
        migrate();
        EXPECT_EQ(query(u"SELECT group_concat(VT_VERSION) FROM VERSION_T"), u"2.0.0.36");
        EXPECT_EQ(stepsIn(log), each.steps) << each.version << "\n" << log.all();
        EXPECT_EQ(log.count("CQoCollDb::importBackup() from version [" + std::string(each.version) +
                                "] to [2.0.0.36]",
                            50),
                  1);
        EXPECT_EQ(log.count("", 10), 0) << log.all();
        // Collections get new ids.
        std::vector<std::string> expected = {"COLL_T.CT_ID"};
        for (const char step : std::string(each.steps))
            expected.insert(expected.end(), changes[step - '1'].begin(), changes[step - '1'].end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(changedColumns(before, columnsOf(m_path)), expected) << each.version;
        EXPECT_EQ(columnsOf(m_dir.collPath("coll.db.bak")), before) << each.version;
    }
}

TEST_F(QoCollDbUpdates, WhatAnOldVersionHadNotGetsItsDefaultAndAllElseStays)
{
    CStringArray tables;
    CQoCollDb::getTables(tables);
    const std::string nullId = "00000000-0000-0000-0000-000000000000";
    const std::set<std::string> defaults = {"", "0", "00", "000", "0000000", "8888888", nullId};
    // The first round is without the side tables, each further one without a column of each table.
    for (int round = 0; round < 25; ++round)
    {
        std::vector<CString> without;
        std::vector<CString> values;
        for (const CString& table : tables)
        {
            CStringArray names;
            CQoCollDb::getColumns(table, names);
            const bool isWithout = round == 0 ? table != u"FILE_T" : round < names.GetSize();
            // Without their ids all collections would be one.
            if (!isWithout || (round > 0 && names[round] == u"CT_COLL_ID"))
                continue;
            without.push_back(round == 0 ? table : names[round]);
            values.push_back(u"SELECT group_concat(" + names[round] + u", '') FROM " + table);
        }
        make(u"2.0.0.35", without);
        const auto before = columnsOf(m_path);
        migrate();
        const auto changed = changedColumns(before, columnsOf(m_path));
        EXPECT_EQ(changed,
                  round == 0 ? std::vector<std::string>{}
                             : std::vector<std::string>{"COLL_T.CT_ID"});
        for (const CString& sql : values)
            EXPECT_EQ(defaults.count(qo::toUtf8(query(sql))), 1U) << qo::toUtf8(sql);
    }
}

TEST_F(QoCollDbUpdates, StepsGiveFilesAndSharesTheirNewValues)
{
    const ScopedVariable zone("TZ", "UTC0");
    ::tzset();
    make(u"2.0.0.20");
    // One file for each source and what else decides, at ids from 1001 on; the name says the
    // result.
    const struct
    {
        int source;
        const char16_t* params;
        const char16_t* genre;
        const char16_t* path;
        int flags;
        const char16_t* expected;
    } files[] = {{0, u"", u"", u"a.MP3", 48, u"41"},
                 {0, u"", u"", u"none", 17, u"9"},
                 {1, u"", u"Pop", u"a.mp3", 16, u"17"},
                 {1, u"0:", u"Pop", u"a.mp3", 16, u"9"},
                 {1, u"0:", u"uNKNOWN", u"a.mp3", 8, u"17"},
                 {1, u"0:", u"", u"a.mp3", 8, u"17"},
                 {1, u"31:1", u"Pop", u"a.mp3", 8, u"17"},
                 {1, u"43:1", u"Pop", u"a.mp3", 8, u"17"},
                 {4, u"0:", u"Pop", u"a.mp3", 16, u"9"},
                 {4, u"0:", u"Pop", u"a.avi", 8, u"18"},
                 {0x10, u"0:", u"Pop", u"a.jpg", 16, u"8"},
                 {0x20, u"0:", u"Pop", u"a.mp3", 8, u"17"},
                 {0x40, u"0:", u"Pop", u"a.avi", 16, u"10"},
                 {0x100, u"0:", u"Pop", u"a.avi", 17, u"9"},
                 {0x200, u"0:", u"Pop", u"a.mp3", 24, u"9"},
                 {0x400, u"0:", u"Pop", u"a.mp3", 8, u"17"},
                 {0x800, u"0:", u"Pop", u"a.mp3", 24, u"25"},
                 {0x1000, u"0:", u"Pop", u"a.avi", 8, u"18"},
                 {0x2000, u"0:", u"Pop", u"a.avi", 8, u"18"}};
    int id = 1000;
    for (const auto& each : files)
    {
        CString sql;
        sql.Format(u"INSERT INTO FILE_T (FT_ID, FT_PATH, FT_SOURCE, FT_PARAMS, FT_GENRE, FT_FLAGS) "
                   u"VALUES (%d, 'C:\\%s', %d, '%s', '%s', %d)",
                   ++id,
                   each.path,
                   each.source,
                   each.params,
                   each.genre,
                   each.flags);
        execute(sql);
    }
    migrate();
    id = 1000;
    for (const auto& each : files)
    {
        CString sql;
        sql.Format(u"SELECT FT_FLAGS FROM FILE_T WHERE FT_ID = %d", ++id);
        EXPECT_EQ(query(sql), each.expected) << id;
    }
}

TEST_F(QoCollDbUpdates, RecordingsGetTheirTimesAndSharesTheirSides)
{
    const ScopedVariable zone("TZ", "UTC0");
    ::tzset();
    make(u"2.0.0.20");
    migrate();
    const auto paramsOf = [this](const char16_t* file)
    {
        const CString params =
            query(CString(u"SELECT FT_PARAMS FROM FILE_T WHERE FT_ID = ") + file);
        CString text;
        for (const int number : {40, 41, 42})
            text += CVelmoraFileParamsUtils::ExtractParam(params, number) + u" ";
        return text;
    };
    // 2010-01-01 00:00 UTC less the duration; jingles are shorter than six seconds and no shows.
    EXPECT_EQ(paramsOf(u"77"), u"1262303995 1262304000 1 ");
    EXPECT_EQ(paramsOf(u"78"), u"1262303994 1262304000 0 ");
    EXPECT_EQ(paramsOf(u"79"), u"-1 0 0 ") << "no time is before 1900";
    EXPECT_EQ(query(u"SELECT group_concat(SH_ID || ':' || SH_TYPE || SH_INITIATOR || "
                    u"SH_INVITATION) FROM SHARE_T"),
              u"14:00,15:11,16:10");
}

TEST_F(QoCollDbUpdates, OddRowsAreCarriedOverAndAFailedExportLeavesNone)
{
    make(u"2.0.0.35");
    execute(u"UPDATE FILE_T SET FT_ID = -5 WHERE FT_ID = 3");
    execute(u"INSERT INTO FILE_T (FT_ID, FT_PATH) VALUES (4294967299, 'C:\\far')");
    execute(u"DELETE FROM FILE_T WHERE FT_ID = 2000000000");
    execute(u"UPDATE SESSION_T SET ST_ID = 0");
    execute(u"INSERT INTO COLL_T (CT_COLL_ID, CT_USER_NAME) VALUES ('usb1', 'last')");
    migrate();
    EXPECT_EQ(query(u"SELECT group_concat(FT_ID || FT_VELMORA_ID) FROM (SELECT * FROM FILE_T ORDER "
                    u"BY FT_ID)"),
              u"7id-7,8id-8,77id-77,78id-78,79id-79,80id-3,81");
    EXPECT_EQ(query(u"SELECT group_concat(ST_ID) FROM SESSION_T"), u"1");
    EXPECT_EQ(query(u"SELECT group_concat(CT_COLL_ID || CT_USER_NAME) FROM COLL_T"),
              u"ann,usb1last");

    make(u"2.0.0.35", {u"FILE_T"});
    execute(u"CREATE TABLE FILE_T AS SELECT 5 AS FT_ID, 'a' AS FT_PATH UNION ALL SELECT 5, 'b'");
    LogCapture log;
    migrate();
    EXPECT_TRUE(log.has("CQoCollDbImporter::ExportIntoFileTable : error saving to db : ", 10));
    EXPECT_TRUE(log.has("CQoCollDb::importBackup failed, abort!", 10));
    EXPECT_EQ(stepsIn(log), "");
    for (const auto& [column, values] : columnsOf(m_path))
        EXPECT_EQ(values, "") << column;
    EXPECT_EQ(columnsOf(m_dir.collPath("coll.db.bak")).at("FILE_T.FT_PATH"), "[a][b]");
}

TEST_F(QoCollDbUpdates, WithoutABackupTheFormerOneIsImportedOrNone)
{
    for (const bool hasFormer : {false, true})
    {
        make(u"2.0.0.32");
        if (hasFormer)
        {
            fs::copy_file(m_dir.path("coll.db"), m_dir.path("coll.db.bak"));
            execute(u"DELETE FROM FILE_T WHERE FT_ID <> 3");
        }
        m_dir.makeFolder("coll.db.bak.new"); // where the copy is to be made
        m_dir.write("coll.db.bak.new/in the way", "");
        LogCapture log;
        migrate();
        EXPECT_EQ(log.count("CQoCollDb::createBackup(): failed to create a backup of db [", 10), 1);
        EXPECT_EQ(log.count("CQoCollDb::importBackup(): database backup dose not exist [", 10),
                  !hasFormer);
        EXPECT_EQ(stepsIn(log), hasFormer ? "5" : "");
        EXPECT_EQ(query(u"SELECT count(*) FROM FILE_T"), hasFormer ? u"7" : u"0");
        EXPECT_EQ(query(u"SELECT VT_VERSION FROM VERSION_T"), u"2.0.0.36");
    }
}
} // namespace
