#pragma once

#include "types/String.h"

#include <string_view>

/// Parts of a file's path, the same ones that CQoCollPath gives, without taking the whole path
/// apart. Millions of paths are asked for nothing else.
namespace qo
{
/// The last component; empty when there is none.
QO_API CString fileNameOf(const CString& path);
/// The file name without its extension.
QO_API CString fileTitleOf(const CString& path);
/// What stands behind the last '.' of the file name; empty without one.
QO_API CString fileExtOf(const CString& path);

/// The last component of a drive path that holds no doubled and no closing backslash, as a view
/// into the path; empty for every other path.
QO_API std::u16string_view plainDriveFileName(std::u16string_view path) noexcept;
} // namespace qo
