#include "QoColl/Devices/LocalStream.h"
#include "QoColl/Devices/QoWPDManager.h"
#include "QoColl/Plugins/FarName.h"
#include "common/Log.h"
#include "common/QoProgress.h"

#include <algorithm>
#include <cstring>
#include <vector>

// What transfers leave behind that were cut off: files under passing names, which no listing shows.

namespace
{
namespace level = qo::level;
using ObjectInfo = CWPDUtils::ObjectInfo;

/// Fills the buffer as far as the stream goes; how many bytes, or -1 after a failure.
std::int64_t readBlock(qo::IByteStream& stream, std::vector<char>& buffer)
{
    std::size_t filled = 0;
    while (filled < buffer.size())
    {
        std::size_t count = 0;
        const std::size_t room = buffer.size() - filled;
        if (stream.read(&buffer[filled], room, count) != qo::deviceResult::ok)
            return -1;
        if (count == 0)
            break;
        filled += std::min(count, room);
    }
    return static_cast<std::int64_t>(filled);
}

/// Whether all bytes of the object are also the first ones of the local file. A device that gives
/// fewer than it has said has more than is seen.
bool isStartOf(qo::IPortableDevice& device,
               const ObjectInfo& object,
               const CString& source,
               IQoProgress* progress)
{
    qo::DeviceResult result = qo::deviceResult::ok;
    const std::unique_ptr<qo::IByteStream> whole =
        qo::LocalStream::open(source, qo::OpenMode::read, result);
    std::unique_ptr<qo::IByteStream> part;
    if (!whole || device.read(object.m_id, part) != qo::deviceResult::ok || !part)
        return false;
    std::vector<char> partBlock(CQoWPDManager::transferBuffer);
    std::vector<char> wholeBlock(CQoWPDManager::transferBuffer);
    std::int64_t read = 0;
    while (!progress->isCanceled())
    {
        const std::int64_t count = readBlock(*part, partBlock);
        if (count <= 0)
            return count == 0 && read == object.m_size;
        read += count;
        if (readBlock(*whole, wholeBlock) < count ||
            std::memcmp(partBlock.data(), wholeBlock.data(), static_cast<std::size_t>(count)) != 0)
            return false;
    }
    return false;
}

/// Whether the object is a file under a name that replaceFile() gives.
bool isLeftPart(const ObjectInfo& info)
{
    const auto name = info.m_pathName.view();
    const auto length = static_cast<std::size_t>(qo::partName().GetLength());
    return !info.isFolder() && qo::isPartName(name) && name.size() > length &&
           name.find(u'.', 1) == length;
}
} // namespace

int CQoWPDManager::removeLeftParts(const CString& source,
                                   const CString& target,
                                   IQoProgress* progress)
{
    const CQoCollPath folder = CQoCollPath(target).getParent();
    std::unique_ptr<qo::IPortableDevice> device;
    ObjectInfo info;
    info.m_id = qo::deviceRootId;
    std::vector<ObjectInfo> children;
    const bool isListed =
        CWPDUtils::openDevice(folder.getDevice(), device, false) == qo::deviceResult::ok &&
        (folder.isEmpty() || getPathInfo(*device, folder, info.m_id, progress, info)) &&
        CWPDUtils::getObjectChildren(*device, info.m_id, children, progress);
    if (!isListed)
        return -1;
    int left = 0;
    for (const ObjectInfo& child : children)
    {
        if (!isLeftPart(child))
            continue;
        const bool isRemoved = isStartOf(*device, child, source, progress) &&
                               device->remove({child.m_id}) == qo::deviceResult::ok;
        left += isRemoved ? 0 : 1;
        qo::log(level::flow,
                isRemoved ? u"CQoWPDManager::removeLeftParts : removed %s, of which %s has all"
                          : u"CQoWPDManager::removeLeftParts : left %s, which is no part of %s",
                child.m_pathName,
                target);
    }
    return left;
}
