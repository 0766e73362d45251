#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "common/CountedObject.h"
#include "common/Log.h"

#include <boost/smart_ptr/shared_ptr.hpp>

#include <cstdint>
#include <new>

namespace qo
{
/// Whether a record can hold that row id.
bool isRowId(std::int64_t id) noexcept;
/// The same for the row of a file, whose id is its first column; the log says which row cannot be
/// read, as it does not keep the others from being read.
bool hasRecordId(const CSQLiteQueryResult& row);
/// The row id in a column. Records keep ids in an int; an id outside of 1 to 2147483647, which can
/// only come from another program, throws CSQLiteException*: cut to an int it would name another
/// row.
int rowIdField(const CSQLiteQueryResult& row, int column);
int rowIdField(const CSQLiteQueryResult& row, const char16_t* column);
/// The row id of a row that is carried over from another database; 0 for one that no record can
/// have, or without the column.
int storedId(const CSQLiteQueryResult& row, int column);

/// A new record for a row that is being read. When memory runs out, complaint is logged and the
/// result is empty; the reader then stops and keeps what it has.
template <class T>
boost::shared_ptr<T> newRow(const char16_t* complaint)
{
    try
    {
        return makeCounted<T>();
    }
    catch (const std::bad_alloc&)
    {
        log(level::error, complaint);
        return {};
    }
}
} // namespace qo
