#pragma once

#include "types/String.h"

#include <string>
#include <string_view>

/// Conversion between UTF-8, which files and systems use, and UTF-16, which the library uses. May
/// be called from any thread. A failed allocation throws std::bad_alloc.
namespace qo
{
/// Ill-formed sequences become U+FFFD.
QO_API CString fromUtf8(std::string_view text);

/// Whether the bytes are well-formed, so that fromUtf8() loses nothing.
QO_API bool isUtf8(std::string_view bytes);

/// Lone surrogates become U+FFFD.
QO_API std::string toUtf8(std::u16string_view text);
inline std::string toUtf8(const CString& text)
{
    return toUtf8(text.view());
}
} // namespace qo
