#include "QoColl/Collection/QoUtils.h"

#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Devices/QoUSBManager.h"
#include "common/CollPath.h"
#include "common/FilePathParts.h"
#include "common/ListT.h"
#include "types/StringArray.h"

#include <algorithm>
#include <string_view>

namespace
{
int comparePathTexts(const CString* a, const CString* b)
{
    return CQoUtils::comparePaths(*a, *b);
}

CListT<const CString> sortedPaths(const CStringArray& dirs)
{
    CListT<const CString> sorted;
    for (const CString& dir : dirs)
        sorted.addSorted(&dir, comparePathTexts, false);
    return sorted;
}
} // namespace

bool CQoUtils::getRealPath(const CQoCollPath& path, CString& real)
{
    if (!path.isLocalDisk())
        return false;
    real = path.isUSB() ? theQoUSBManager.getRealPath(path) : path.toString();
    return true;
}

CString CQoUtils::getRealPath(const CQoCollPath& path)
{
    CString real;
    getRealPath(path, real);
    return real;
}

CString CQoUtils::getRealPath(const CString& path)
{
    const CQoCollPath::EDeviceType type = CQoCollPath::typeOf(path);
    if (type == CQoCollPath::usb)
        return theQoUSBManager.getRealPath(CQoCollPath(path));
    return type == CQoCollPath::drive || type == CQoCollPath::network ? path : CString();
}

int CQoUtils::comparePaths(const CString& a, const CString& b)
{
    return a.CompareNoCase(b);
}

void CQoUtils::diffPaths(const CStringArray& oldDirs,
                         const CStringArray& newDirs,
                         CStringArray& added,
                         CStringArray& removed)
{
    CListT<const CString> unmatched = sortedPaths(newDirs);
    for (const CString* dir : sortedPaths(oldDirs))
    {
        if (!unmatched.removeBinary(dir, comparePathTexts))
            added.Add(*dir);
    }
    for (const CString* dir : unmatched)
        removed.Add(*dir);
}

CQoUtils::Dir CQoUtils::getDir(const boost::shared_ptr<CHDObject>& object)
{
    if (auto dir = boost::dynamic_pointer_cast<CHDDirectory>(object))
        return dir;
    const auto* file = dynamic_cast<const CHDFile*>(object.get());
    return file ? file->getParentDir() : CHDDirectory::NullDir;
}

CQoUtils::Dir CQoUtils::getRootDir(const boost::shared_ptr<CHDObject>& object)
{
    return getRootDir(getDir(object));
}

CQoUtils::Dir CQoUtils::getRootDir(const Dir& dir)
{
    const Dir* root = &dir;
    while (*root && !(*root)->isRootDir())
        root = &(*root)->getParentDir();
    return *root;
}
