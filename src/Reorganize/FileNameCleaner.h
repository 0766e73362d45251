#pragma once

#include "types/Export.h"
#include "types/String.h"

namespace qo
{
/// What happens to characters that must not be in the name of a file: control characters and \ / :
/// * ? " < > | anywhere, blanks at the start, blanks and points at the end.
///
///   " AC/DC. "   drop: "ACDC"   replace: "_AC_DC._"
enum class CleanMode : int
{
    drop = 0,
    replace = 1 ///< each becomes "_"; only the first and the last character count as start and end
};

/// The text as a single name, possibly "".
QO_API CString cleanFileName(const CString& text, CleanMode mode);

/// The text as a path: a double backslash counts as one, and every component is cleaned by itself.
/// A component that becomes empty stays as such between its backslashes.
QO_API CString cleanFilePath(const CString& text, CleanMode mode);
} // namespace qo
