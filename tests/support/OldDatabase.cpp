#include "support/OldDatabase.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

namespace
{
constexpr const char16_t* rows[] = {
    // As a scan found them: a song, a film, a text.
    u"INSERT INTO FILE_T VALUES (3, 'C:\\Music\\Ada\\One.mp3', 0, 129067776000000000, "
    u"129067776000000001, 'Ada', 'Dawn', 'One', 'Jazz', '1', '2010', 'la la', 'C:\\c.jpg', 4711, "
    u"215000, 192, 16, 0, 'id-3', '', 1, 0, 'clip-3', '0:1', '')",
    u"INSERT INTO FILE_T VALUES (7, 'C:\\Music\\film.avi', 0, 1, 2, '', '', '', '', '', '', '', "
    u"'', 9, 60000, 0, 0, 0, 'id-7', '0:', 0, 1, '', '', '')",
    u"INSERT INTO FILE_T VALUES (8, 'C:\\Music\\note.txt', 0, 1, 3, '', '', '', '', '', '', '', "
    u"'', 5, 0, 0, 24, 0, 'id-8', '', 0, 0, '', '', '')",
    // Recorded from the radio: a jingle, a song, a show.
    u"INSERT INTO FILE_T VALUES (77, 'C:\\Radio\\j.mp3', 8, 129067776000000000, 4, 'Bob', '', 'J', "
    u"'Pop', '', '', '', '', 10, 5999, 128, 33, 42, 'id-77', '1:8' || char(10), 0, 0, '', '', '')",
    u"INSERT INTO FILE_T VALUES (78, 'C:\\Radio\\s.mp3', 128, 129067776000000000, 5, 'Bob', '', "
    u"'S', 'Pop', '', '', '', '', 11, 6000, 128, 8, 42, 'id-78', '1:128' || char(10), 0, 0, '', "
    u"'', '')",
    u"INSERT INTO FILE_T VALUES (79, 'C:\\Radio\\t.mp3', 8, 0, 6, 'Cy', '', 'T', 'Pop', '', '', "
    u"'', '', 12, 1000, 128, 8, 42, 'id-79', '1:8' || char(10) || '31:1' || char(10), 0, 0, '', "
    u"'', '')",
    // Of other collections.
    u"INSERT INTO FILE_T VALUES (2000000000, '\\\\usb:1234\\a.mp3', 512, 1, 7, 'Ada', '', 'A', "
    u"'unknown', '', '', '', '', 13, 1, 1, 8, 0, 'id-z', '1:512' || char(10), 0, 0, '', '', "
    u"'usb1')",
    u"INSERT INTO SESSION_T VALUES (42, 'Night', 8, 100, 200)",
    u"INSERT INTO PLAYLIST_T VALUES (9, 'Best', '3;77;3')",
    u"INSERT INTO COLL_T VALUES (5, '', 300, 'C:\\Music' || char(10) || 'D:\\', '1' || char(10) || "
    u"'2', 'ann', 400)",
    u"INSERT INTO COLL_T VALUES (6, 'usb1', 500, '\\\\usb:1234\\', '1', '', 600)",
    u"INSERT INTO AC_STREAM_T VALUES (11, '01234567-89ab-cdef-0123-456789abcdef', 'id-s', 1, "
    u"'C:\\h', 2, 3, 'Radio North', 'http://n', 128, 1, 64)",
    u"INSERT INTO AC_STREAM_TRACK_T VALUES (12, '01234567-89ab-cdef-0123-456789abcde0', 'id-s', "
    u"'id-77', '0:5')",
    u"INSERT INTO INPLACE_T VALUES (13, 'C:\\i.mp3', 1, 2, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', "
    u"3, 4, 'id-i', 'p')",
    u"INSERT INTO SHARE_T VALUES (14, 0, 'p0', 'r0', 5, 1, 's0', 'o0', 'link0', 0, 1)",
    u"INSERT INTO SHARE_T VALUES (15, 1, 'p1', 'r1', 6, 0, 's1', 'o1', 'link1', 0, 0)",
    u"INSERT INTO SHARE_T VALUES (16, 2, 'p2', 'r2', 7, 1, 's2', 'o2', 'link2', 1, 0)"};

/// The table whose columns begin like that one.
CString tableOf(const CString& column)
{
    CStringArray tables;
    CQoCollDb::getTables(tables);
    for (const CString& table : tables)
    {
        CStringArray columns;
        CQoCollDb::getColumns(table, columns);
        for (const CString& each : columns)
        {
            if (each == column)
                return table;
        }
    }
    return {};
}
} // namespace

void makeOldDatabase(const CString& path,
                     const CString& version,
                     const std::vector<CString>& without)
{
    CQoCollDb::CreateDatabaseIfNotValid(path, {});
    CSQLiteDB db(path);
    db.Open();
    db.Execute(u"BEGIN");
    for (const char16_t* const row : rows)
        db.Execute(row);
    for (const char16_t* const index : {u"IDX_FT_VELMORA_ID",
                                        u"IDX_FT_CLIP_UID",
                                        u"IDX_FT_CREAT_TIME_FT_SOURCE",
                                        u"IDX_FT_COLL_ID",
                                        u"IDX_FT_SESSION",
                                        u"IDX_AS_VELMORA_ID",
                                        u"IDX_AST_TRACK_VELMORA_ID"})
        db.Execute(CString(u"DROP INDEX ") + index);
    for (const CString& name : without)
        db.Execute(tableOf(name).IsEmpty()
                       ? u"DROP TABLE " + name
                       : u"ALTER TABLE " + tableOf(name) + u" DROP COLUMN " + name);
    db.Execute(u"DELETE FROM VERSION_T");
    if (!version.IsEmpty())
        db.Execute(u"INSERT INTO VERSION_T VALUES ('" + version + u"')");
    db.Execute(u"COMMIT");
}

std::map<std::string, std::string> columnsOf(const CString& database)
{
    std::map<std::string, std::string> columns;
    CSQLiteDB db(database);
    db.Open();
    CSQLiteStatement names = db.CompileStatement(u"SELECT m.name, p.name FROM sqlite_master m, "
                                                 u"pragma_table_info(m.name) p WHERE m.name LIKE "
                                                 u"'%\\_T' ESCAPE '\\' AND m.name <> 'VERSION_T'");
    for (CSQLiteQueryResult name = names.ExecuteQuery(); !name.Eof(); name.NextRow())
    {
        const CString table = name.GetTextField(0);
        const CString column = name.GetTextField(1);
        CSQLiteStatement values = db.CompileStatement(u"SELECT group_concat('[' || " + column +
                                                      u" || ']', '') FROM "
                                                      u"(SELECT * FROM " +
                                                      table + u" ORDER BY rowid)");
        columns[qo::toUtf8(table + u"." + column)] =
            qo::toUtf8(CString(values.ExecuteQuery().GetTextField(0)));
    }
    return columns;
}

std::vector<std::string> changedColumns(const std::map<std::string, std::string>& before,
                                        const std::map<std::string, std::string>& after)
{
    std::vector<std::string> changed;
    for (const auto& [name, values] : before)
    {
        const auto found = after.find(name);
        if (found == after.end() || found->second != values)
            changed.push_back(name);
    }
    return changed;
}
