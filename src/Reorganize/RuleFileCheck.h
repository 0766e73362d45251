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

/// Whether the bytes may be given to the XML parser, which recurses with the nesting, searches
/// attributes linearly, and is not safe against invalid UTF-8 or texts that end too early. They
/// must be within the limits above, be UTF-8 without control characters, and consist of complete
/// tags with quoted attributes, comments, CDATA sections, instructions and declarations. Whether
/// start and end tags match is left to the parser. Takes time in proportion to the size.
QO_API bool isReadableRuleFile(std::string_view bytes);
} // namespace qo
