#pragma once

#include "QoColl/Db/DbRows.h"
#include "QoColl/Db/Forward.h"

/// How a row of a side table becomes a record: the values are found by the names of the columns.
/// What a query or an older table lacks, and NULL, leave the record's default. The row id is not
/// read by readRow().
namespace qo
{
void readRow(QoSessionDbItem& item, const CSQLiteQueryResult& row);
void readRow(QoPlaylistDbItem& item, const CSQLiteQueryResult& row);
void readRow(CollInfoDbItem& item, const CSQLiteQueryResult& row);
void readRow(AcStreamDbItem& item, const CSQLiteQueryResult& row);
void readRow(AcStreamTrackDbItem& item, const CSQLiteQueryResult& row);
void readRow(QoInplaceFileDbItem& item, const CSQLiteQueryResult& row);
void readRow(QoShareDbItem& item, const CSQLiteQueryResult& row);

/// The same with the row id, which must be one that a record can hold: see rowIdField().
template <class T>
void readRow(T& item, const CSQLiteQueryResult& row, const char16_t* idColumn)
{
    item.id = rowIdField(row, idColumn);
    readRow(item, row);
}
} // namespace qo
