#include "QoColl/Db/QoCollDbImporter.h"

#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "QoColl/Db/FileRow.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/AcStreamDbItem.h"
#include "QoColl/Db/Records/CollInfoDbItem.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/QoInplaceFileDbItem.h"
#include "QoColl/Db/Records/QoPlaylistDbItem.h"
#include "QoColl/Db/Records/QoSessionDbItem.h"
#include "QoColl/Db/Records/QoShareDbItem.h"
#include "QoColl/Db/SideRows.h"
#include "common/MakeObject.h"
#include "common/QoException.h"

#include <memory>
#include <optional>

namespace
{
constexpr const char16_t* importerPlace = u".\\QoColl\\Db\\QoCollDbImporter";

/// Calls take(row) for each row of the table.
template <class Take>
void readTable(const CSQLiteDB& db, const char16_t* table, const char16_t* failure, Take take)
{
    try
    {
        CSQLiteStatement statement = db.CompileStatement(CString(u"SELECT * FROM ") + table);
        for (CSQLiteQueryResult row = statement.ExecuteQuery(); !row.Eof(); row.NextRow())
            take(row);
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        qo::logException(failure, *exception);
    }
}

template <class T>
void importTable(const CSQLiteDB& db,
                 const char16_t* table,
                 const char16_t* idColumn,
                 const char16_t* failure,
                 DbItemArray<T>& items)
{
    items.RemoveAll();
    readTable(db,
              table,
              failure,
              [&items, idColumn](const CSQLiteQueryResult& row)
              {
                  const auto item = qo::makeObject<T>(QO_HERE(importerPlace));
                  item->id = qo::storedId(row, row.FieldIndex(idColumn));
                  qo::readRow(*item, row);
                  items.Add(item);
              });
}

/// Whether the work went without a failure of the database; one is logged.
template <class Work>
bool succeeds(const char16_t* failure, Work work)
{
    try
    {
        work();
        return true;
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        qo::logException(failure, *exception);
        return false;
    }
}

/// Inserts those without an id last, as the id that SQLite chooses must not be that of another.
template <class T, class Insert>
bool exportTable(const char16_t* failure, DbItemArray<T>& items, Insert insert)
{
    return succeeds(failure,
                    [&items, insert]
                    {
                        for (auto& item : items)
                        {
                            if (item->id != 0)
                                insert(item);
                        }
                        for (auto& item : items)
                        {
                            if (item->id == 0)
                                insert(item);
                        }
                    });
}
} // namespace

CQoCollDbImporter::CQoCollDbImporter(const CString& path) : m_db(path)
{
    m_db.Open();
}

void CQoCollDbImporter::ImportFileTable(QoFileDbItemArray& items)
{
    items.RemoveAll();
    std::optional<qo::FileRowReader> reader;
    readTable(m_db,
              u"FILE_T",
              u"CQoCollection::ImportFileTable : error ",
              [&items, &reader](const CSQLiteQueryResult& row)
              {
                  if (!reader)
                      reader.emplace(row);
                  const auto item = qo::makeObject<QoFileDbItem>(QO_HERE(importerPlace));
                  reader->read(*item, row);
                  items.Add(item);
              });
}

void CQoCollDbImporter::ImportSessionTable(DbItemArray<QoSessionDbItem>& items)
{
    importTable(m_db, u"SESSION_T", u"ST_ID", u"CQoCollection::ImportSessionTable : error ", items);
}

void CQoCollDbImporter::ImportPlaylistTable(DbItemArray<QoPlaylistDbItem>& items)
{
    importTable(
        m_db, u"PLAYLIST_T", u"PL_ID", u"CQoCollection::ImportPlaylistTable : error ", items);
}

void CQoCollDbImporter::ImportCollectionTable(DbItemArray<CollInfoDbItem>& items)
{
    importTable(m_db, u"COLL_T", u"CT_ID", u"CQoCollection::ImportCollectionTable : error ", items);
}

void CQoCollDbImporter::ImportAcStreamTable(DbItemArray<AcStreamDbItem>& items)
{
    importTable(
        m_db, u"AC_STREAM_T", u"AS_ID", u"CQoCollection::ImportAcStreamTable : error ", items);
}

void CQoCollDbImporter::ImportAcStreamTrackTable(DbItemArray<AcStreamTrackDbItem>& items)
{
    importTable(m_db,
                u"AC_STREAM_TRACK_T",
                u"AST_ID",
                u"CQoCollection::ImportAcStreamTrackTable : error ",
                items);
}

void CQoCollDbImporter::ImportInplaceTable(DbItemArray<QoInplaceFileDbItem>& items)
{
    importTable(m_db, u"INPLACE_T", u"IN_ID", u"CQoCollection::ImportInplaceTable : error ", items);
}

void CQoCollDbImporter::ImportShareTable(DbItemArray<QoShareDbItem>& items)
{
    importTable(m_db, u"SHARE_T", u"SH_ID", u"CQoCollection::ImportShareTable : error ", items);
}

bool CQoCollDbImporter::ExportIntoFileTable(CQoCollDb& db, QoFileDbItemArray& items)
{
    return succeeds(u"CQoCollDbImporter::ExportIntoFileTable : error saving to db ",
                    [&db, &items] { db.insertFiles(items); });
}

bool CQoCollDbImporter::ExportSessionTable(CQoCollDb& db, DbItemArray<QoSessionDbItem>& items)
{
    return exportTable(u"CQoCollDbImporter::ExportSessionTable : error saving to db ",
                       items,
                       [&db](auto& item) { db.insertSession(item); });
}

bool CQoCollDbImporter::ExportPlaylistTable(CQoCollDb& db, DbItemArray<QoPlaylistDbItem>& items)
{
    return exportTable(u"CQoCollDbImporter::ExportPlaylistTable : error saving to db ",
                       items,
                       [&db](auto& item) { db.insertPlaylist(item); });
}

bool CQoCollDbImporter::ExportCollectionTable(CQoCollDb& db, DbItemArray<CollInfoDbItem>& items)
{
    return exportTable(u"CQoCollDbImporter::ExportCollectionTable : error saving to db ",
                       items,
                       [&db](auto& item) { db.setCollInfo(item->collId, *item); });
}

bool CQoCollDbImporter::ExportAcStreamTable(CQoCollDb& db, DbItemArray<AcStreamDbItem>& items)
{
    return exportTable(u"CQoCollDbImporter::ExportAcStreamTable : error saving to db ",
                       items,
                       [&db](auto& item) { db.insertAcStream(item); });
}

bool CQoCollDbImporter::ExportAcStreamTrackTable(CQoCollDb& db,
                                                 DbItemArray<AcStreamTrackDbItem>& items)
{
    return exportTable(u"CQoCollDbImporter::ExportAcStreamTrackTable : error saving to db ",
                       items,
                       [&db](auto& item) { db.insertAcStreamTrack(item); });
}

bool CQoCollDbImporter::ExportInplaceTable(CQoCollDb& db, DbItemArray<QoInplaceFileDbItem>& items)
{
    return exportTable(u"CQoCollDbImporter::ExportInplaceTable : error saving to db ",
                       items,
                       [&db](auto& item) { db.insertInplaceFile(item); });
}

bool CQoCollDbImporter::ExportShareTable(CQoCollDb& db, DbItemArray<QoShareDbItem>& items)
{
    return exportTable(u"CQoCollDbImporter::ExportShareTable : error saving to db ",
                       items,
                       [&db](auto& item) { db.insertShare(item); });
}
