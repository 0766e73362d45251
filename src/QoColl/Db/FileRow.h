#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "QoColl/Db/Forward.h"
#include "types/String.h"
#include "types/TextPool.h"

/// The mapping between a file record (QoFileDbItem) and a row of FILE_T: the only list of its
/// columns, and the statements that are made from it.
namespace qo
{
/// The position of the one additional column that some statements read after those of the record.
constexpr int extraFileColumn = 22;

/// What bindFileRow() binds in addition to the record's columns; bits of a mask.
constexpr int bindFileId = 1;
constexpr int bindFileLyrics = 2;

/// "SELECT <columns> <extra>FROM   FILE_T <condition>".
CString selectFiles(const char16_t* extraColumn, const char16_t* condition);
/// The collection id is its parameter fileCollIdParameter. Without the names of the columns it is
/// for a table of which hasOtherFileColumns() is false.
CString insertFileText(bool withNames);
constexpr int fileCollIdParameter = 99;
/// Whether the table has more columns than those of this version, or has them in another order.
/// Throws CSQLiteException* if it lacks one. A missing table is left for the statement to find.
bool hasOtherFileColumns(const CSQLiteDB& db);
CString updateFileText(bool withLyrics);

/// Sets the parameters of such a statement from a record.
void bindFileRow(const QoFileDbItem& item, int mask, CSQLiteStatement& statement);

/// Reads many rows into records; texts that rows share (artist, album, year and so on) are stored
/// once. Made for one query; not for several threads at once.
class FileRowReader
{
public:
    /// Out of memory ends in qo::throwOutOfMemory().
    void read(QoFileDbItem& item, const CSQLiteQueryResult& row);

private:
    void readFields(QoFileDbItem& item, const CSQLiteQueryResult& row);
    const CString& shared(const CSQLiteQueryResult& row, int column, CString& last);

    TextPool m_pool;
    CString m_artist;
    CString m_album;
    CString m_genre;
    CString m_trackNumber;
    CString m_year;
    CString m_picturePath;
    CString m_params;
};
} // namespace qo
