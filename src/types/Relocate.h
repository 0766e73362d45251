#pragma once

#include <type_traits>

namespace boost
{
template <class T>
class shared_ptr;
}

namespace qo
{
/// True for types whose objects may be moved to another address by copying their bytes, without
/// calling a constructor or destructor. Containers of such types shift their elements with memmove.
template <class T>
struct IsRelocatable : std::is_trivially_copyable<T>
{
};

template <class T>
struct IsRelocatable<boost::shared_ptr<T>> : std::true_type
{
};
} // namespace qo
