#pragma once

#include "types/String.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Texts of other encodings than UTF-8. May be called from any thread.
namespace qo
{
/// The name of the encoding that the bytes most likely have: "UTF-8" if they are that, else what
/// ICU finds, "windows-1252" (Latin-1 with the signs that it lacks) when in doubt. A few letters
/// are always in doubt: give as much text of one source as there is.
QO_API std::string charsetOf(std::string_view bytes);

/// The encodings that ICU takes into consideration for the bytes, with its confidence in percent,
/// the highest first.
QO_API std::vector<std::pair<std::string, int>> charsetsOf(std::string_view bytes);

/// The text of these bytes; "" if there is no encoding of that name. Bytes that the encoding does
/// not know become U+FFFD.
QO_API CString fromCharset(std::string_view bytes, const std::string& charset);
} // namespace qo
