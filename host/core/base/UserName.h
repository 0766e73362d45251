#pragma once

#include <QoKernel/Kernel.h>

namespace qo::host
{
/// The login name of the owner of a file or folder, which must be there; the number of the user
/// where the system has no name for it, "" if the owner cannot be asked for.
CString ownerOf(const CString& path);
/// The login name of the user that this process works for; "" if that is the path's owner.
CString userBeside(const CString& path);
} // namespace qo::host
