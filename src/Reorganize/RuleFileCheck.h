#pragma once

#include "types/Export.h"

#include <cstddef>
#include <string_view>

namespace qo
{
constexpr std::size_t largestRuleFile = 1 << 20; ///< bytes
constexpr int deepestRuleFile = 256;             ///< nesting of elements, the root included
constexpr int mostRuleFileElements = 10000;
constexpr int mostRuleFileAttributes = 64; ///< for one element

/// Whether the bytes may be given to the XML parser: see isReadableXml(), with the limits above.
QO_API bool isReadableRuleFile(std::string_view bytes);
} // namespace qo
