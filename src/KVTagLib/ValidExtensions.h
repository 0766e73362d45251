#pragma once

#include "types/StringArray.h"

namespace KVTagLib
{
/// Replaces the array's content by the extensions that can be tagged, in lower case, without dot.
QO_API void GetValidExtensions(CStringArray& extensions);
} // namespace KVTagLib
