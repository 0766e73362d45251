#pragma once

#include "common/MakeObject.h"

#include <memory>
#include <new>
#include <utility>

namespace qo
{
/// A new object with one owner; out of memory ends in throwOutOfMemory().
template <class T, class... Args>
std::unique_ptr<T> makeOwned(const SourcePlace& place, Args&&... args)
{
    try
    {
        return std::make_unique<T>(std::forward<Args>(args)...);
    }
    catch (const std::bad_alloc&)
    {
        throwOutOfMemory(place);
    }
}
} // namespace qo
