#include "core/roots/FarFolder.h"

#include "core/base/HostFiles.h"

#include <QoKernel/Kernel.h>

#include <cerrno>

namespace qo::host
{
std::string whyAway(const FarFolder& folder)
{
    FileInfo info;
    if (const int error = fileSystem().info(folder.path, Spelling::exact, info))
        return errorWords(error);
    if (info.kind != FileKind::directory)
        return errorWords(ENOTDIR);
    if (folder.isLink)
        return {};
    FileInfo above;
    const CString parent = CQoCollPath(folder.path).getParent().toString();
    const bool isMounted =
        fileSystem().info(parent, Spelling::exact, above) != 0 || above.device != info.device;
    return isMounted ? std::string() : "no disk is mounted there, as one was at the last scan";
}
} // namespace qo::host
