#pragma once

#include "types/FilePath.h"

#include <string_view>

/// The parts of a file's path as CQoCollPath gives them, but without parsing the whole path:
/// loading a large collection asks for these parts millions of times.
///
///   "C:\Music\Ann\01 Dawn.mp3": name "01 Dawn.mp3", title "01 Dawn", extension "mp3"
namespace qo
{
/// The last component; "" when there is none.
QO_API CString fileNameOf(const CString& path);
QO_API CString fileNameOf(const FilePath& path);
/// The file name without its extension.
QO_API CString fileTitleOf(const CString& path);
QO_API CString fileTitleOf(const FilePath& path);
/// What follows the last '.' of the file name; "" without one.
QO_API CString fileExtOf(const CString& path);
QO_API CString fileExtOf(const FilePath& path);

/// The last component as a view into the path. Empty where that is not the component itself, which
/// then needs CQoCollPath: the path has a doubled or closing backslash, or the name an escape.
QO_API std::u16string_view plainFileName(std::u16string_view path) noexcept;
QO_API std::u16string_view plainFileName(const FilePath& path) noexcept;
} // namespace qo
