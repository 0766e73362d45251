#include "QoColl/Db/FileRow.h"

#include "Database/src/DbFacade/SQLiteDB.h"
#include "Database/src/DbFacade/SQLiteException.h"
#include "Database/src/DbFacade/SQLiteQueryResult.h"
#include "Database/src/DbFacade/SQLiteStatement.h"
#include "QoColl/Db/DbRows.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "common/MakeObject.h"

#include <new>

// One list of columns, from which the texts of all statements on file records are made. A new
// column is added to Column, columnNames, bindFileRow() and readFields(), and to the schema.

namespace qo
{
namespace
{
/// The columns that a record is read from, by their position in the query. In statements that
/// write, a column's parameter is its position plus 1.
enum Column : int
{
    colId,
    colPath,
    colSource,
    colCreateTime,
    colModifTime,
    colArtist,
    colAlbum,
    colTitle,
    colGenre,
    colTrackNumber,
    colYear,
    colPicturePath,
    colSize,
    colDuration,
    colBitrate,
    colFlags,
    colSession,
    colVelmoraId,
    colParams,
    colReviewed,
    colImported,
    colClipUid,
    colCount
};

constexpr const char16_t* columnNames[colCount] = {
    u"FT_ID",       u"FT_PATH",         u"FT_SOURCE",     u"FT_CREAT_TIME", u"FT_MODIF_TIME",
    u"FT_ARTIST",   u"FT_ALBUM",        u"FT_TITLE",      u"FT_GENRE",      u"FT_TRACK_NUMBER",
    u"FT_YEAR",     u"FT_PICTURE_PATH", u"FT_SIZE",       u"FT_DURATION",   u"FT_BITRATE",
    u"FT_FLAGS",    u"FT_SESSION",      u"FT_VELMORA_ID", u"FT_PARAMS",     u"FT_REVIEWED",
    u"FT_IMPORTED", u"FT_CLIP_UID"};

static_assert(colCount == extraFileColumn);

constexpr int parameterOf(Column column)
{
    return column + 1;
}
constexpr int paramFpParams = colCount + 1;
constexpr int paramLyrics = colCount + 2;

/// Calls take(name, parameter) for each column in the order of the table, which differs from that
/// of the query: the lyrics come after the year, the rest at the end.
template <class Take>
void forEachTableColumn(Take take)
{
    for (int column = colId; column < colCount; ++column)
    {
        take(columnNames[column], column + 1);
        if (column == colYear)
            take(u"FT_LYRICS", paramLyrics);
    }
    take(u"FT_FP_PARAMS", paramFpParams);
    take(u"FT_COLL_ID", fileCollIdParameter);
}

/// The beginning of a query, with a blank at its end.
CString selectColumns()
{
    CString sql(u"SELECT FT_ID");
    for (int column = colPath; column < colCount; ++column)
        sql.AppendFormat(u", %s", columnNames[column]);
    return sql += u' ';
}
} // namespace

CString selectFiles(const char16_t* extraColumn, const char16_t* condition)
{
    return selectColumns() + extraColumn + u"FROM   FILE_T " + condition;
}

CString insertFileText(bool withNames)
{
    CString names;
    CString sql;
    forEachTableColumn(
        [&](const char16_t* name, int parameter)
        {
            names += (names.IsEmpty() ? CString() : CString(u",")) + name;
            sql.AppendFormat(sql.IsEmpty() ? u"?%d" : u",?%d", parameter);
        });
    // Compiling the names as well takes longer than storing the row.
    return u"INSERT INTO FILE_T " + (withNames ? u"(" + names + u") " : CString()) + u"VALUES (" +
           sql + u")";
}

bool hasOtherFileColumns(const CSQLiteDB& db)
{
    CString found;
    {
        CSQLiteStatement statement = db.CompileStatement(u"PRAGMA table_info(FILE_T)");
        for (CSQLiteQueryResult row = statement.ExecuteQuery(); !row.Eof(); row.NextRow())
            found += u" " + CString(row.textView(1)) + u" ";
    }
    CString expected;
    bool isComplete = true;
    forEachTableColumn(
        [&](const char16_t* name, int)
        {
            const CString padded = u" " + CString(name) + u" ";
            expected += padded;
            isComplete = isComplete && found.Find(padded) >= 0;
        });
    if (found == expected || found.IsEmpty())
        return false;
    if (isComplete)
        return true;
    qo::throwDatabaseError(u"FILE_T of " + db.path() +
                           u" has other columns than its version says:" + found);
}

/// Lyrics are written only when they were loaded, or an update would delete them.
CString updateFileText(bool withLyrics)
{
    CString sql(u"UPDATE FILE_T SET ");
    for (int column = colPath; column < colCount; ++column)
        sql.AppendFormat(u"%s = ?%d, ", columnNames[column], column + 1);
    sql.AppendFormat(u"FT_FP_PARAMS = ?%d ", paramFpParams);
    if (withLyrics)
        sql.AppendFormat(u" , FT_LYRICS = ?%d ", paramLyrics);
    return sql + u"WHERE   FT_ID = ?1 ;";
}

void bindFileRow(const QoFileDbItem& item, int mask, CSQLiteStatement& statement)
{
    if (mask & bindFileId)
        statement.BindInt(parameterOf(colId), item.id);
    statement.BindText(parameterOf(colPath), item.path.text());
    statement.BindInt(parameterOf(colSource), item.source);
    statement.BindInt64(parameterOf(colCreateTime), toTicks(item.createTime));
    statement.BindInt64(parameterOf(colModifTime), toTicks(item.modifTime));
    statement.BindText(parameterOf(colArtist), item.artist);
    statement.BindText(parameterOf(colAlbum), item.album);
    statement.BindText(parameterOf(colTitle), item.title);
    statement.BindText(parameterOf(colGenre), item.genre);
    statement.BindText(parameterOf(colTrackNumber), item.trackNumber);
    statement.BindText(parameterOf(colYear), item.year);
    statement.BindText(parameterOf(colPicturePath), item.picturePath);
    statement.BindInt64(parameterOf(colSize), item.size);
    statement.BindInt(parameterOf(colDuration), item.duration);
    statement.BindInt(parameterOf(colBitrate), item.bitrate);
    statement.BindInt(parameterOf(colFlags), static_cast<int>(item.flags));
    statement.BindInt(parameterOf(colSession), item.session);
    statement.BindText(parameterOf(colVelmoraId), item.velmoraId.text());
    statement.BindText(parameterOf(colParams), item.params);
    statement.BindBool(parameterOf(colReviewed), item.reviewed);
    statement.BindBool(parameterOf(colImported), item.imported);
    statement.BindText(parameterOf(colClipUid), item.clipUid);
    statement.BindText(paramFpParams, item.fpParams);
    if (mask & bindFileLyrics)
        statement.BindText(paramLyrics, item.lyrics);
}

FileRowReader::FileRowReader()
{
    for (int column = 0; column < colCount; ++column)
        m_places[column] = column;
    m_places[colLyrics] = m_places[colFpParams] = m_places[colCollId] = absent;
}

FileRowReader::FileRowReader(const CSQLiteQueryResult& row) : m_isWholeTable(true)
{
    for (int column = 0; column < colCount; ++column)
        m_places[column] = row.FieldIndex(columnNames[column]);
    m_places[colLyrics] = row.FieldIndex(u"FT_LYRICS");
    m_places[colFpParams] = row.FieldIndex(u"FT_FP_PARAMS");
    m_places[colCollId] = row.FieldIndex(u"FT_COLL_ID");
}

void FileRowReader::read(QoFileDbItem& item, const CSQLiteQueryResult& row)
{
    try
    {
        readFields(item, row);
        if (m_isWholeTable)
            readExtraFields(item, row);
    }
    catch (const std::bad_alloc&)
    {
        throwOutOfMemory(QO_HERE(u".\\QoColl\\Db\\QoCollDbFiles"));
    }
}

void FileRowReader::readFields(QoFileDbItem& item, const CSQLiteQueryResult& row)
{
    item.id = m_isWholeTable ? storedId(row, m_places[colId]) : rowIdField(row, colId);
    item.path = m_path = FilePath(view(row, colPath), m_path);
    item.source = CVelmoraFileParamsUtils::IntToEItemSource(number(row, colSource));
    item.createTime = fromTicks(number64(row, colCreateTime));
    item.modifTime = fromTicks(number64(row, colModifTime));
    item.artist = shared(row, colArtist, m_artist);
    item.album = shared(row, colAlbum, m_album);
    item.title = text(row, colTitle);
    item.genre = shared(row, colGenre, m_genre);
    item.trackNumber = shared(row, colTrackNumber, m_trackNumber);
    item.year = shared(row, colYear, m_year);
    item.picturePath = shared(row, colPicturePath, m_picturePath);
    item.size = number64(row, colSize);
    item.duration = number(row, colDuration);
    item.bitrate = number(row, colBitrate);
    item.flags = static_cast<unsigned>(
        number(row, colFlags, m_isWholeTable ? static_cast<int>(item.flags) : 0));
    item.session = number(row, colSession);
    item.velmoraId = LastingId(view(row, colVelmoraId));
    item.params = shared(row, colParams, m_params);
    item.reviewed = number(row, colReviewed) != 0;
    item.imported = number(row, colImported) != 0;
    item.clipUid = text(row, colClipUid);
}

void FileRowReader::readExtraFields(QoFileDbItem& item, const CSQLiteQueryResult& row)
{
    item.lyrics = text(row, colLyrics);
    item.lyricsLoaded = true;
    item.fpParams = shared(row, colFpParams, m_fpParams);
    item.collId = shared(row, colCollId, m_collId);
}

int FileRowReader::number(const CSQLiteQueryResult& row, int column, int otherwise) const
{
    const int place = m_places[column];
    return place == absent ? otherwise : row.GetIntField(place, otherwise);
}

std::int64_t FileRowReader::number64(const CSQLiteQueryResult& row, int column) const
{
    const int place = m_places[column];
    return place == absent ? 0 : row.GetInt64Field(place);
}

std::u16string_view FileRowReader::view(const CSQLiteQueryResult& row, int column) const
{
    const int place = m_places[column];
    return place == absent ? std::u16string_view() : row.textView(place);
}

CString FileRowReader::text(const CSQLiteQueryResult& row, int column) const
{
    return CString(view(row, column));
}

/// Neighbouring rows mostly have the same artist, album and year, so the last text is compared
/// before the pool is searched.
const CString& FileRowReader::shared(const CSQLiteQueryResult& row, int column, CString& last)
{
    const int place = m_places[column];
    const char16_t* const text = place == absent ? u"" : row.GetTextField(place);
    if (last != text)
        last = m_pool.intern(text);
    return last;
}
} // namespace qo
