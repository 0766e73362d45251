#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "QoColl/Db/Forward.h"
#include "types/FilePath.h"
#include "types/String.h"
#include "types/TextPool.h"

#include <array>

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
    /// For the rows of selectFiles().
    FileRowReader();
    /// For rows of "SELECT * FROM FILE_T" of any version: lyrics, fingerprint values and the
    /// collection are read as well, and a column that the table lacks leaves the record's default.
    explicit FileRowReader(const CSQLiteQueryResult& row);

    /// Out of memory ends in qo::throwOutOfMemory(). The id of a row of any version is 0 if no
    /// record can have it; otherwise such an id throws CSQLiteException*, see rowIdField().
    void read(QoFileDbItem& item, const CSQLiteQueryResult& row);

private:
    static constexpr int absent = -1;
    static constexpr int colLyrics = extraFileColumn;
    static constexpr int colFpParams = extraFileColumn + 1;
    static constexpr int colCollId = extraFileColumn + 2;

    void readFields(QoFileDbItem& item, const CSQLiteQueryResult& row);
    void readExtraFields(QoFileDbItem& item, const CSQLiteQueryResult& row);
    int number(const CSQLiteQueryResult& row, int column, int otherwise = 0) const;
    std::int64_t number64(const CSQLiteQueryResult& row, int column) const;
    std::u16string_view view(const CSQLiteQueryResult& row, int column) const;
    CString text(const CSQLiteQueryResult& row, int column) const;
    const CString& shared(const CSQLiteQueryResult& row, int column, CString& last);

    bool m_isWholeTable = false;
    /// Where each column of the record stands in the query.
    std::array<int, extraFileColumn + 3> m_places;
    TextPool m_pool;
    FilePath m_path; ///< of the last row
    CString m_artist;
    CString m_album;
    CString m_genre;
    CString m_trackNumber;
    CString m_year;
    CString m_picturePath;
    CString m_params;
    CString m_fpParams;
    CString m_collId;
};
} // namespace qo
