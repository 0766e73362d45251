#pragma once

#include "types/Export.h"

#include <cstddef>
#include <string_view>

namespace qo
{
constexpr std::size_t largestRuleFile = 1 << 20; ///< bytes
constexpr int deepestRuleFile = 256;             ///< elements inside one another, with the root
constexpr int mostRuleFileElements = 10000;
constexpr int mostRuleFileAttributes = 64; ///< of one element

/// Whether the bytes may be given to the XML parser, which recurses with the nesting, searches
/// attributes one by one and has no defence against texts that are no UTF-8 or end too early. They
/// must keep to the limits above, be UTF-8 without controls, and consist of complete tags with
/// quoted attributes, comments, CDATA sections, instructions and declarations. Tags need not match:
/// the parser sees to that. Takes time in proportion to the bytes.
QO_API bool isReadableRuleFile(std::string_view bytes);
} // namespace qo
