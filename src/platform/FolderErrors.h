#pragma once

#include "types/String.h"

#include <map>

namespace qo
{
/// The folders that walks could not list, or only in part.
struct FolderErrors
{
    std::map<CString, int> byFolder; ///< error numbers by path
};
} // namespace qo
