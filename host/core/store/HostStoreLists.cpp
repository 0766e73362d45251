#include "core/store/HostStore.h"
#include "core/store/StoreSchema.h"

#include <QoKernel/Inside.h>

// The plain lists of the store: one column, one table each.

namespace qo::host
{
namespace
{
/// Calls take with each text of the first column.
template <class Take>
void readTexts(CSQLiteDB& db, const char16_t* query, Take take)
{
    CSQLiteStatement statement = db.CompileStatement(query);
    CSQLiteQueryResult row = statement.ExecuteQuery();
    for (; !row.Eof(); row.NextRow())
        take(CString(row.textView(0)));
}

/// Runs the statement with each text in turn.
template <class Texts>
void forEachText(CSQLiteDB& db, const char16_t* text, const Texts& values)
{
    CSQLiteStatement statement = db.CompileStatement(text);
    for (const auto& value : values)
    {
        statement.BindText(1, CString(value));
        statement.ExecuteDML();
    }
}

/// Adds the unread files of the service's collection, or of the own one, or else of all others.
void readUnread(CSQLiteDB& db, const CString& collection, bool ofIt, CStringArray& files)
{
    const auto isOfIt = [&](const CString& path)
    {
        return collection.IsEmpty() ? CQoCollPath::typeOf(path) != CQoCollPath::physicalPlugin
                                    : CQoCollPath(path).isSubPathOf(CQoCollPath(collection));
    };
    readTexts(db,
              u"SELECT UT_PATH FROM UNREAD_T ORDER BY rowid",
              [&](const CString& path)
              {
                  if (isOfIt(path) == ofIt)
                      files.Add(path);
              });
}
} // namespace

CStringArray HostStore::unreadFiles(const CString& collection) const
{
    CStringArray files;
    read([&](CSQLiteDB& db) { readUnread(db, collection, true, files); });
    return files;
}

void HostStore::setUnreadFiles(const CStringArray& files, const CString& collection)
{
    write(
        [&](CSQLiteDB& db)
        {
            CStringArray all;
            readUnread(db, collection, false, all);
            all.Append(files);
            db.Execute(u"DELETE FROM UNREAD_T");
            forEachText(db, u"INSERT OR IGNORE INTO UNREAD_T (UT_PATH) VALUES (?1)", all);
        });
}

CString HostStore::fact(const char16_t* name) const
{
    CString found;
    read(
        [&](CSQLiteDB& db)
        {
            if (storeSchema::has(db, storeSchema::facts))
                readTexts(db,
                          u"SELECT FA_VALUE FROM FACT_T WHERE FA_NAME = '" + CString(name) + u"'",
                          [&found](const CString& value) { found = value; });
        });
    return found;
}

void HostStore::setFact(const char16_t* name, const CString& value)
{
    write(
        [&](CSQLiteDB& db)
        {
            forEachText(db,
                        u"INSERT OR REPLACE INTO FACT_T (FA_NAME, FA_VALUE) VALUES ('" +
                            CString(name) + u"', ?1)",
                        std::vector<CString>{value});
        });
}

std::unordered_set<LastingId> HostStore::checkedFiles() const
{
    std::unordered_set<LastingId> ids;
    read(
        [&ids](CSQLiteDB& db)
        {
            if (storeSchema::has(db, storeSchema::marks))
                readTexts(db,
                          u"SELECT CT_ID FROM CHECKED_T",
                          [&ids](const CString& id) { ids.insert(id); });
        });
    return ids;
}

void HostStore::changeChecked(const std::vector<LastingId>& gone,
                              const std::vector<LastingId>& added)
{
    write(
        [&](CSQLiteDB& db)
        {
            forEachText(db, u"DELETE FROM CHECKED_T WHERE CT_ID = ?1", gone);
            forEachText(db, u"INSERT OR IGNORE INTO CHECKED_T (CT_ID) VALUES (?1)", added);
        });
}

void HostStore::clearChecked()
{
    write([](CSQLiteDB& db) { db.Execute(u"DELETE FROM CHECKED_T"); });
}

std::map<CString, CString> HostStore::offers() const
{
    std::map<CString, CString> queries;
    read(
        [&queries](CSQLiteDB& db)
        {
            if (!storeSchema::has(db, storeSchema::offers))
                return;
            CSQLiteStatement statement =
                db.CompileStatement(u"SELECT OT_SHARE, OT_QUERY FROM OFFER_T");
            for (CSQLiteQueryResult row = statement.ExecuteQuery(); !row.Eof(); row.NextRow())
                queries[CString(row.textView(0))] = CString(row.textView(1));
        });
    return queries;
}

void HostStore::setOffer(const CString& shareId, const CString& query)
{
    write(
        [&](CSQLiteDB& db)
        {
            CSQLiteStatement statement = db.CompileStatement(
                u"INSERT OR REPLACE INTO OFFER_T (OT_SHARE, OT_QUERY) VALUES (?1, ?2)");
            statement.BindText(1, shareId);
            statement.BindText(2, query);
            statement.ExecuteDML();
        });
}

void HostStore::forgetOffer(const CString& shareId)
{
    write(
        [&](CSQLiteDB& db) {
            forEachText(
                db, u"DELETE FROM OFFER_T WHERE OT_SHARE = ?1", std::vector<CString>{shareId});
        });
}
} // namespace qo::host
