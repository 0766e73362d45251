#pragma once

#include "common/CountedObject.h"
#include "types/Export.h"

#include <boost/shared_ptr.hpp>

#include <new>
#include <utility>

namespace qo
{
/// The place in the sources where an object is made, for the log: path and line.
struct SourcePlace
{
    const char16_t* file;
    int line;
};

/// Logs a failed allocation and throws a CQoException* of type outOfMemory.
[[noreturn]] QO_API void throwOutOfMemory(const SourcePlace& place);

/// What the steps answer; a failed allocation in them ends in throwOutOfMemory().
template <class Steps>
auto orOutOfMemory(const SourcePlace& place, Steps steps)
{
    try
    {
        return steps();
    }
    catch (const std::bad_alloc&)
    {
        throwOutOfMemory(place);
    }
}

/// A new object with a handle; lack of memory ends in throwOutOfMemory().
template <class T, class... Args>
boost::shared_ptr<T> makeObject(const SourcePlace& place, Args&&... args)
{
    try
    {
        return makeCounted<T>(std::forward<Args>(args)...);
    }
    catch (const std::bad_alloc&)
    {
        throwOutOfMemory(place);
    }
}
} // namespace qo

/// The present place: QO_HERE(u".\\Physical\\HDFile").
#define QO_HERE(file)                                                                              \
    ::qo::SourcePlace                                                                              \
    {                                                                                              \
        (file), __LINE__                                                                           \
    }
