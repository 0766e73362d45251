#pragma once

#include "Database/src/DbFacade/Forward.h"
#include "common/Log.h"

#include <boost/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>

#include <new>

namespace qo
{
/// The row id in a column. Records hold it in an int; one outside 1 to 2147483647, which only a
/// foreign hand can have stored, throws CSQLiteException*: cut, it would name another row.
int rowIdField(const CSQLiteQueryResult& row, int column);

/// A new record for a row that is being read. Out of memory is logged with the reader's complaint
/// and gives an empty handle, at which the reader stops and keeps what it has.
template <class T>
boost::shared_ptr<T> newRow(const char16_t* complaint)
{
    try
    {
        return boost::make_shared<T>();
    }
    catch (const std::bad_alloc&)
    {
        log(level::error, complaint);
        return {};
    }
}
} // namespace qo
