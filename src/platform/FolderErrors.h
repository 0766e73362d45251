#pragma once

#include "types/String.h"

#include <map>

namespace qo
{
/// What walks could not list, or only in part.
struct FolderErrors
{
    std::map<CString, int> byFolder; ///< error numbers
};
} // namespace qo
