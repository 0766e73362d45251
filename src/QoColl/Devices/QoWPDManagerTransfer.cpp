#include "QoColl/Devices/LocalStream.h"
#include "QoColl/Devices/QoWPDDownloadItem.h"
#include "QoColl/Devices/QoWPDManager.h"
#include "common/FileUtils.h"
#include "common/Log.h"
#include "common/PartFile.h"
#include "common/QoProgress.h"
#include "platform/Platform.h"

#include <algorithm>
#include <memory>
#include <new>

// Files from and to a device, block by block.

namespace
{
namespace level = qo::level;
using qo::DeviceResult;
using qo::IByteStream;
constexpr DeviceResult done = qo::deviceResult::ok;

/// The content of an object; null after a failure.
std::unique_ptr<IByteStream> openObject(qo::IPortableDevice& device,
                                        const CString& id,
                                        const CString& path,
                                        const CString& target)
{
    std::unique_ptr<IByteStream> stream;
    if (const DeviceResult result = device.read(id, stream); result != done)
    {
        qo::log(level::error,
                u"CQoWPDManager::getFile : pDeviceContent->Transfer() failed, %s -> %s, hr = 0x%lx",
                path,
                target,
                result);
        return nullptr;
    }
    if (!stream)
        qo::log(level::error,
                u"CQoWPDManager::getFile : failed to get IStream for source file %s, hr = 0x%lx",
                path,
                qo::deviceResult::failed);
    return stream;
}

struct NewFile
{
    CString source;
    CString folderId;
    CQoCollPath path;
};

/// An object that waits for its content; null after a failure.
std::unique_ptr<IByteStream> makeObject(qo::IPortableDevice& device,
                                        const NewFile& file,
                                        const IByteStream& content,
                                        const QoFileDbItemPtr& record)
{
    qo::PropertyBag values;
    if (!CWPDUtils::getReqPropsForFile(
            file.folderId, file.path.getLast(), file.path.getFileExt(), content, values))
    {
        qo::log(level::error,
                u"CQoWPDManager::putFile : failed to get required properties needed to transfer "
                u"file %s to device, hr = 0x%lx",
                file.source,
                qo::deviceResult::failed);
        return nullptr;
    }
    if (record)
        CWPDUtils::addMusicProperties(values, record);
    std::unique_ptr<IByteStream> out;
    if (const DeviceResult result = device.createObjectWithData(values, out); result != done)
    {
        qo::log(level::error,
                u"CQoWPDManager::putFile : failed to create device object for file %s, hr = 0x%lx",
                file.source,
                result);
        return nullptr;
    }
    if (!out)
        qo::log(level::error,
                u"CQoWPDManager::putFile : failed to QueryInterface for IPortableDeviceDataStream, "
                u"hr = 0x%lx",
                qo::deviceResult::failed);
    return out;
}
} // namespace

bool CQoWPDManager::streamCopy(IByteStream& dest,
                               IByteStream& source,
                               int bufferSize,
                               std::int64_t base,
                               IQoProgress* progress,
                               bool absolute)
{
    const std::unique_ptr<char[]> buffer(
        bufferSize > 0 ? new (std::nothrow) char[static_cast<std::size_t>(bufferSize)] : nullptr);
    if (!buffer)
    {
        qo::log(level::error,
                u"CQoWPDManager::streamCopy : failed to allocate %d bytes for the temporary "
                u"transfer buffer",
                bufferSize);
        return false;
    }
    std::int64_t copied = 0;
    while (!progress->isCanceled())
    {
        std::size_t count = 0;
        const auto size = static_cast<std::size_t>(bufferSize);
        if (const DeviceResult result = source.read(buffer.get(), size, count); result != done)
        {
            qo::log(level::error,
                    u"CQoWPDManager::streamCopy : pSourceStream->Read() failed, hr = 0x%lx",
                    result);
            return false;
        }
        if (count == 0)
            return true;
        count = std::min(count, size);
        std::size_t written = 0;
        if (const DeviceResult result = dest.write(buffer.get(), count, written); result != done)
        {
            qo::log(level::error,
                    u"CQoWPDManager::streamCopy : pDestStream->Write failed, hr = 0x%lx",
                    result);
            return false;
        }
        copied += static_cast<std::int64_t>(count);
        if (absolute || base > 0)
            progress->setPosition(
                static_cast<std::uintptr_t>(absolute ? copied : copied * 100 / base));
    }
    return false;
}

bool CQoWPDManager::getFile(const CString& devicePath,
                            const CString& target,
                            std::int64_t total,
                            IQoProgress* progress,
                            bool absolute)
{
    const CQoCollPath path(devicePath);
    std::unique_ptr<qo::IPortableDevice> device;
    if (CWPDUtils::openDevice(path.getDevice(), device, true) != done)
    {
        qo::log(level::error, u"CQoWPDManager::getFile : error opening device %s", devicePath);
        return false;
    }
    ObjectInfo info;
    if (!getPathInfo(*device, path, CString(qo::deviceRootId), progress, info))
    {
        if (!progress->isCanceled())
            qo::log(
                level::error, u"CQoWPDManager::getFile : file %s not found on device", devicePath);
        return false;
    }
    if (info.isFolder())
    {
        qo::log(level::error, u"CQoWPDManager::getFile : %s is a folder", devicePath);
        return false;
    }
    const std::unique_ptr<IByteStream> source = openObject(*device, info.m_id, devicePath, target);
    if (!source)
        return false;
    DeviceResult result = done;
    std::unique_ptr<IByteStream> dest =
        qo::LocalStream::open(target, qo::OpenMode::createAlways, result);
    if (!dest)
    {
        qo::log(level::error,
                u"CQoWPDManager::getFile : failed to create dest IStream%s, hr = 0x%lx",
                target,
                result);
        return false;
    }
    qo::PartFile file(target, level::error, u"CQoWPDManager::getFile : %s cannot be removed");
    if (streamCopy(*dest, *source, transferBuffer, total, progress, absolute))
    {
        file.keep();
        return true;
    }
    if (!progress->isCanceled())
        qo::log(
            level::error, u"CQoWPDManager::getFile : failed to copy %s -> %s", devicePath, target);
    dest.reset();
    return false;
}

bool CQoWPDManager::putFile(const CString& source,
                            const QoFileDbItemPtr& record,
                            const CString& target,
                            std::int64_t total,
                            IQoProgress* progress)
{
    const CQoCollPath path(target);
    std::unique_ptr<qo::IPortableDevice> device;
    DeviceResult result = CWPDUtils::openDevice(path.getDevice(), device, false);
    if (result != done)
    {
        qo::log(level::error, u"CQoWPDManager::putFile : error opening device %s", target);
        return false;
    }
    CString folderId;
    if (!checkCreateDir(path.getParent(), *device, progress, folderId))
    {
        if (!progress->isCanceled())
            qo::log(level::error,
                    u"CQoWPDManager::putFile : couldn't create destination dir %s",
                    path.getParent().toString());
        return false;
    }
    const std::unique_ptr<IByteStream> in =
        qo::LocalStream::open(source, qo::OpenMode::read, result);
    if (!in)
    {
        qo::log(level::error,
                u"CQoWPDManager::putFile : failed to open src file %s, hr = 0x%lx",
                source,
                result);
        return false;
    }
    const std::unique_ptr<IByteStream> out =
        makeObject(*device, {source, folderId, path}, *in, record);
    if (!out)
        return false;
    if (!streamCopy(*out, *in, transferBuffer, total, progress, false))
    {
        if (!progress->isCanceled())
            qo::log(level::error,
                    u"CQoWPDManager::putFile : failed to copy file %s to %s, hr = 0x%lx",
                    source,
                    target,
                    qo::deviceResult::failed);
        return false;
    }
    result = out->commit();
    if (result != done)
        qo::log(level::error,
                u"CQoWPDManager::putFile : failed to commit file %s, hr = 0x%lx",
                target,
                result);
    return result == done;
}

boost::shared_ptr<IDownloadItem> CQoWPDManager::getPlayDownloadItem(const CString& id)
{
    const CString target = qo::uniqueTempPath(CFileUtils::tempLivePlay, CQoCollPath(id).getLast());
    return IQoDownloadItem::make<CQoWPDDownloadItem>(id, target);
}
