#pragma once

#include "types/Export.h"
#include "types/String.h"

namespace qo
{
/// What becomes of characters that do not belong into the name of a file: controls and \ / : * ? "
/// < > | anywhere, blanks at the start, blanks and points at the end.
enum class CleanMode : int
{
    drop = 0,
    replace = 1 ///< each becomes "_"; at the start and at the end only one character is looked at
};

/// The text as one name. It may come to nothing.
QO_API CString cleanFileName(const CString& text, CleanMode mode);

/// The text as a path: a double backslash counts as one, and every component is cleaned by itself.
/// One that comes to nothing stays, empty, between its backslashes.
QO_API CString cleanFilePath(const CString& text, CleanMode mode);
} // namespace qo
