#pragma once

#include "types/Export.h"

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <new>
#include <utility>

namespace qo
{
/// Where an object is made: the source's path as the log shows it, and the line.
struct SourcePlace
{
    const char16_t* file;
    int line;
};

/// Logs the failed allocation and throws a CQoException of type 3, as a pointer.
[[noreturn]] QO_API void throwOutOfMemory(const SourcePlace& place);

/// A new object behind a handle; out of memory ends in throwOutOfMemory().
template <class T, class... Args>
boost::shared_ptr<T> makeObject(const SourcePlace& place, Args&&... args)
{
    try
    {
        return boost::make_shared<T>(std::forward<Args>(args)...);
    }
    catch (const std::bad_alloc&)
    {
        throwOutOfMemory(place);
    }
}
} // namespace qo

/// QO_HERE(u".\\Physical\\HDFile")
#define QO_HERE(file)                                                                              \
    ::qo::SourcePlace                                                                              \
    {                                                                                              \
        (file), __LINE__                                                                           \
    }
