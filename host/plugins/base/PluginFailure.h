#pragma once

#include <QoKernel/Kernel.h>

namespace qo::host
{
/// Logs why something failed, and keeps it for whoever tells the user: the kernel's answers about
/// plug-ins say no more than that it failed. One sentence with the place and the cause, and no
/// password. From any thread.
void setPluginFailure(const CString& cause);
/// "PATH: cause", for a local file.
CString failureAt(const CString& path, int error);
/// The latest cause since the last call; "" without one.
CString takePluginFailure();
} // namespace qo::host
