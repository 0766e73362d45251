#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "QoColl/Db/Forward.h"
#include "types/String.h"
#include "types/TextPool.h"

/// The file record as rows of FILE_T: the one list of its columns and what is made of it.
namespace qo
{
/// The place of the one column that some statements read behind those of the record.
constexpr int extraFileColumn = 22;

/// What bindFileRow() binds besides the record's columns.
constexpr int bindFileId = 1;
constexpr int bindFileLyrics = 2;

/// "SELECT <columns> <extra>FROM   FILE_T <condition>".
CString selectFiles(const char16_t* extraColumn, const char16_t* condition);
/// The collection id is its parameter fileCollIdParameter. Relies on what checkFileColumns()
/// checks.
CString insertFileText();
constexpr int fileCollIdParameter = 99;
/// Throws CSQLiteException* if the table's columns are not those of this version, in their order. A
/// missing table is left for the statement to find.
void checkFileColumns(const CSQLiteDB& db);
CString updateFileText(bool withLyrics);

void bindFileRow(const QoFileDbItem& item, int mask, CSQLiteStatement& statement);

/// Reads the records of many rows; texts that rows share are kept once.
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
