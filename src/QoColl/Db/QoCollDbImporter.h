#pragma once

#include "Database/src/DbFacade/SQLiteDB.h"
#include "QoColl/Db/Forward.h"

/// Carries the rows of a copy of a database, of any version, over to a new one. Values are found by
/// the names of their columns; what the copy lacks gets its default. An import that fails is
/// logged and keeps the rows read so far, so a missing table is imported as empty. An export
/// inserts the records with their ids, those of collections excepted; a failure is logged, and the
/// result is false. A row whose id no record can have gets another one.
class CQoCollDbImporter
{
public:
    /// Opens the copy; a failure throws CSQLiteException*.
    explicit CQoCollDbImporter(const CString& path);

    void ImportFileTable(QoFileDbItemArray& items);
    void ImportSessionTable(DbItemArray<QoSessionDbItem>& items);
    void ImportPlaylistTable(DbItemArray<QoPlaylistDbItem>& items);
    void ImportCollectionTable(DbItemArray<CollInfoDbItem>& items);
    void ImportAcStreamTable(DbItemArray<AcStreamDbItem>& items);
    void ImportAcStreamTrackTable(DbItemArray<AcStreamTrackDbItem>& items);
    void ImportInplaceTable(DbItemArray<QoInplaceFileDbItem>& items);
    void ImportShareTable(DbItemArray<QoShareDbItem>& items);

    bool ExportIntoFileTable(CQoCollDb& db, QoFileDbItemArray& items);
    bool ExportSessionTable(CQoCollDb& db, DbItemArray<QoSessionDbItem>& items);
    bool ExportPlaylistTable(CQoCollDb& db, DbItemArray<QoPlaylistDbItem>& items);
    /// A collection has one row: of several with the same id the last one stays.
    bool ExportCollectionTable(CQoCollDb& db, DbItemArray<CollInfoDbItem>& items);
    bool ExportAcStreamTable(CQoCollDb& db, DbItemArray<AcStreamDbItem>& items);
    bool ExportAcStreamTrackTable(CQoCollDb& db, DbItemArray<AcStreamTrackDbItem>& items);
    bool ExportInplaceTable(CQoCollDb& db, DbItemArray<QoInplaceFileDbItem>& items);
    bool ExportShareTable(CQoCollDb& db, DbItemArray<QoShareDbItem>& items);

private:
    CSQLiteDB m_db;
};
