#pragma once

#include "types/Export.h"

#include <cstddef>
#include <string_view>

namespace qo
{
/// What a document may have at most.
struct XmlLimits
{
    std::size_t bytes;
    int depth; ///< nesting of elements, the root included
    int elements;
    int attributes; ///< of one element
};

/// Whether the bytes may be given to the XML parser, which recurses with the nesting, searches
/// attributes linearly, and is not safe against invalid UTF-8 or texts that end too early. They
/// must be within the limits, be UTF-8 without control characters, and consist of complete tags
/// with quoted attributes, comments, CDATA sections, instructions and declarations. Whether start
/// and end tags match is left to the parser. Takes time in proportion to the size.
QO_API bool isReadableXml(std::string_view bytes, const XmlLimits& limits);
} // namespace qo
