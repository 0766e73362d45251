#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <string>
#include <string_view>

namespace qo
{
/// Files and folders that stand beside the user's for a moment, such as the copy of a file whose
/// tag is being written, are named ".qo-tmp-", the machine in 8 hexadecimal digits, "-", the
/// process in hexadecimal digits, "-" and 6 random letters or digits. No listing shows them. One
/// that stays, because its process was killed, is removed by the next write into its folder and by
/// clearTemporaries(). All calls are safe from any thread.

/// Whether a name, without the folders above it, is of that form.
QO_API bool isTemporaryName(std::string_view name);

/// The path for mkstemp() or mkdtemp() of a temporary file or folder of this process beside the
/// target, which is a system path. Removes what others left in that folder first, at most once in a
/// while for a folder.
std::string temporaryBeside(const std::string& target);

/// A path that is free, of the same form, for a file that will become the target by a rename; both
/// in collection form. Removes what others left there likewise.
QO_API CString temporaryPathBeside(const CString& target);

/// Removes the temporary files and folders in a folder, not those below it, whose process runs no
/// longer on this machine or which have not changed for a day. How many went. Looks at the names in
/// the folder, and at nothing else as long as none is of the form.
QO_API int clearTemporaries(const CString& folder);
/// How many clearTemporaries() would remove.
QO_API int countTemporaries(const CString& folder);

/// Whether a process of that number runs on this machine.
QO_API bool isProcessRunning(unsigned process);
} // namespace qo
