#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Devices/QoWPDManager.h"
#include "QoColl/Plugins/FarName.h"
#include "common/Log.h"
#include "common/MakeObject.h"
#include "common/QoProgress.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <algorithm>
#include <deque>
#include <set>

// Names to objects, and the walk over a device. A device may list an object below itself, so a walk
// enters each object once and goes no deeper than a limit.

namespace
{
namespace level = qo::level;
using ObjectInfo = CWPDUtils::ObjectInfo;

constexpr int deepestFolder = 64;

/// The first child of that name; with anyCase, if none has it exactly, the first that differs in
/// case alone.
const ObjectInfo*
findChild(const std::vector<ObjectInfo>& children, const CString& name, bool anyCase)
{
    const ObjectInfo* similar = nullptr;
    for (const ObjectInfo& child : children)
    {
        if (child.m_pathName == name)
            return &child;
        if (anyCase && !similar && child.m_pathName.CompareNoCase(name) == 0)
            similar = &child;
    }
    return similar;
}

/// The file that is exactly there: never another one whose name differs in case, and no folder with
/// all that is in it.
bool findFile(qo::IPortableDevice& device,
              const CQoCollPath& path,
              IQoProgress* progress,
              ObjectInfo& file)
{
    ObjectInfo folder;
    folder.m_id = qo::deviceRootId;
    const CQoCollPath parent = path.getParent();
    std::vector<ObjectInfo> children;
    if (parent.isEmpty() ||
        CQoWPDManager::getPathInfo(device, parent, folder.m_id, progress, folder))
        (void)CWPDUtils::getObjectChildren(device, folder.m_id, children, progress);
    const ObjectInfo* const found = findChild(children, path.getLast(), false);
    if (!found || found->isFolder())
        return false;
    file = *found;
    return true;
}

std::unique_ptr<qo::IPortableDevice> openToRead(const CQoCollPath& path, const char16_t* message)
{
    std::unique_ptr<qo::IPortableDevice> device;
    if (CWPDUtils::openDevice(path.getDevice(), device, true) != qo::deviceResult::ok)
    {
        device.reset();
        qo::log(level::error, message, path.toString());
    }
    return device;
}

QoFileDbItemPtr recordOfObject(const CQoCollPath& path, const ObjectInfo& info)
{
    auto item = qo::makeObject<QoFileDbItem>(QO_HERE(u".\\QoColl\\Devices\\QoWPDManager"));
    item->path = path.toString();
    CQoWPDManager::copyInfo(info, *item);
    return item;
}

/// What can be added to the sum: a device may tell any number.
std::int64_t clampedTo(std::int64_t value, std::int64_t sum)
{
    return std::clamp<std::int64_t>(value, 0, INT64_MAX - sum);
}

struct Walk
{
    int types = 0;
    int depth = 0; ///< levels of folders that are listed
    IQoProgress* progress = nullptr;
};

/// Breadth first below one object; false if something could not be listed.
bool walkObjects(qo::IPortableDevice& device,
                 const CQoCollPath& root,
                 const CString& rootId,
                 const Walk& walk,
                 QoFileDbItemArray& files)
{
    struct Folder
    {
        CQoCollPath path;
        CString id;
        int level;
    };
    std::deque<Folder> pending{{root, rootId, 1}};
    std::set<CString> entered{rootId};
    bool isWhole = true;
    while (!pending.empty())
    {
        const Folder folder = std::move(pending.front());
        pending.pop_front();
        std::vector<ObjectInfo> children;
        qo::DeviceResult result = qo::deviceResult::ok;
        const bool withTags = (walk.types & CQoWPDManager::deviceFiles) != 0 &&
                              (walk.types & CQoWPDManager::withoutTags) == 0;
        const qo::PropertySet wanted = withTags ? qo::PropertySet::all : qo::PropertySet::listing;
        isWhole = CWPDUtils::getObjectChildren(
                      device, folder.id, children, walk.progress, &result, wanted) &&
                  isWhole;
        std::set<CString> names;
        for (const ObjectInfo& child : children)
        {
            if (walk.progress->isCanceled())
                return false;
            // A path leads to the first object of its name, so a later one cannot be reached.
            if (!names.insert(child.m_pathName).second || qo::isPartName(child.m_pathName.view()))
                continue;
            const CQoCollPath path = folder.path.child(child.m_pathName);
            if (!child.isFolder())
            {
                if ((walk.types & CQoWPDManager::deviceFiles) == 0)
                    continue;
                qo::log(level::flow,
                        u"CQoWPDManager::getFilesFromDevice : add file %s",
                        path.toString());
                files.Add(recordOfObject(path, child));
                continue;
            }
            if ((walk.types & CQoWPDManager::deviceFolders) != 0)
            {
                qo::log(level::flow,
                        u"CQoWPDManager::getFilesFromDevice : add dir %s",
                        path.toString());
                files.Add(recordOfObject(path, child));
            }
            if (folder.level >= walk.depth || !entered.insert(child.m_id).second)
                continue;
            isWhole = isWhole && folder.level < deepestFolder;
            if (folder.level < deepestFolder)
                pending.push_back({path, child.m_id, folder.level + 1});
        }
        if (result == qo::deviceResult::notConnected)
            return false;
    }
    return isWhole;
}

bool listBelow(const CQoCollPath& path, const Walk& walk, QoFileDbItemArray& files)
{
    const auto device =
        openToRead(path, u"CQoWPDManager::getFilesFromDevice : error opening device %s");
    if (!device)
        return false;
    ObjectInfo info;
    info.m_id = qo::deviceRootId;
    if (!path.isEmpty() &&
        !CQoWPDManager::getPathInfo(*device, path, CString(qo::deviceRootId), walk.progress, info))
    {
        qo::log(level::error,
                u"CQoWPDManager::getFilesFromDevice : %s not found on device",
                path.toString());
        return false;
    }
    return walkObjects(*device, path, info.m_id, walk, files);
}
} // namespace

bool CQoWPDManager::getPathInfo(qo::IPortableDevice& content,
                                const CQoCollPath& path,
                                const CString& parent,
                                IQoProgress* progress,
                                ObjectInfo& info)
{
    ObjectInfo found;
    found.m_id = parent;
    for (const CString& name : path.getComponents())
    {
        if (progress->isCanceled())
            return false;
        std::vector<ObjectInfo> children;
        (void)CWPDUtils::getObjectChildren(content, found.m_id, children, progress);
        const ObjectInfo* const child = findChild(children, name, true);
        if (!child)
            return false;
        found = ObjectInfo(*child);
    }
    return !path.isEmpty() && CWPDUtils::getObjectInfo(content, found.m_id, info);
}

bool CQoWPDManager::getPathInfo(const CQoCollPath& path, IQoProgress* progress, ObjectInfo& info)
{
    const auto device = openToRead(path, u"CQoWPDManager::getPathInfo : error opening device %s");
    return device && getPathInfo(*device, path, CString(qo::deviceRootId), progress, info);
}

bool CQoWPDManager::getFilesFromDevice(const CQoCollPath& path,
                                       int types,
                                       bool recursive,
                                       IQoProgress* progress,
                                       QoFileDbItemArray& files)
{
    return listBelow(path, {types, recursive ? wholeDepth : 1, progress}, files);
}

bool CQoWPDManager::getDirSubDirs(const CQoCollPath& path,
                                  int depth,
                                  IQoProgress* progress,
                                  QoFileDbItemArray& dirs)
{
    return listBelow(path, {deviceFolders, depth, progress}, dirs);
}

void CQoWPDManager::copyInfo(const ObjectInfo& info, QoFileDbItem& item)
{
    item.createTime = info.m_created;
    item.modifTime = info.m_modified;
    item.artist = info.m_artist;
    item.album = info.m_album;
    item.title = info.m_title;
    item.genre = info.m_genre;
    item.trackNumber = info.m_trackNumber;
    item.year = info.m_year;
    item.lyrics = info.m_lyrics;
    item.lyricsLoaded = info.m_lyricsLoaded;
    item.size = info.m_size;
    item.duration = info.m_duration;
    item.bitrate = info.m_bitrate;
}

bool CQoWPDManager::getDeviceFillStateInfo(const CArray<CQoCollPath>& paths,
                                           std::int64_t& total,
                                           std::int64_t& free)
{
    total = free = 0;
    std::set<std::pair<CString, CString>> counted;
    for (const CQoCollPath& path : paths)
    {
        const auto device =
            openToRead(path, u"CQoWPDManager::getDeviceFillStateInfo : error opening device %s");
        if (!device)
            return false;
        std::vector<ObjectInfo> storages;
        if (!CWPDUtils::getObjectChildren(*device, CString(qo::deviceRootId), storages))
            return false;
        const ObjectInfo* const only =
            path.isEmpty() ? nullptr : findChild(storages, path.getComponents()[0], true);
        if (!path.isEmpty() && !only)
        {
            qo::log(level::error,
                    u"CQoWPDManager::getDeviceFillStateInfo : no storage of that name: %s",
                    path.toString());
            return false;
        }
        for (const ObjectInfo& storage : storages)
        {
            std::int64_t size = 0;
            std::int64_t room = 0;
            if ((only && only != &storage) ||
                !counted.emplace(path.getDevice(), storage.m_id).second)
                continue;
            if (!CWPDUtils::getDeviceFillStateInfo(*device, storage.m_id, size, room))
                return false;
            total += clampedTo(size, total);
            free += clampedTo(room, free);
        }
    }
    return true;
}

bool CQoWPDManager::checkCreateDir(const CQoCollPath& path,
                                   qo::IPortableDevice& content,
                                   IQoProgress* progress,
                                   CString& objectId)
{
    CString id(qo::deviceRootId);
    for (const CString& name : path.getComponents())
    {
        if (progress->isCanceled())
            return false;
        // Unless all names there are known, another folder of this name could come beside it.
        std::vector<ObjectInfo> children;
        if (!CWPDUtils::getObjectChildren(content, id, children, progress))
            return false;
        const ObjectInfo* const known = findChild(children, name, true);
        if (known && !known->isFolder())
        {
            qo::log(level::error,
                    u"CQoWPDManager::checkCreateDir : %s in %s is a file",
                    name,
                    path.toString());
            return false;
        }
        CString next = known ? known->m_id : CString();
        if (!known && !CWPDUtils::createDir(content, id, name, next))
            return false;
        id = next;
    }
    objectId = id;
    return true;
}

bool CQoWPDManager::createDir(const CQoCollPath& path, IQoProgress* progress, CString& objectId)
{
    std::unique_ptr<qo::IPortableDevice> device;
    const qo::DeviceResult result = CWPDUtils::openDevice(path.getDevice(), device, false);
    if (result != qo::deviceResult::ok)
    {
        qo::log(
            level::error, u"CQoWPDManager::createDir : error opening device %s", path.toString());
        return false;
    }
    return checkCreateDir(path, *device, progress, objectId);
}

bool CQoWPDManager::deleteFile(const CString& path, IQoProgress* progress)
{
    const CQoCollPath parsed(path);
    std::unique_ptr<qo::IPortableDevice> device;
    if (CWPDUtils::openDevice(parsed.getDevice(), device, false) != qo::deviceResult::ok)
    {
        qo::log(level::error, u"CQoWPDManager::deleteFile : error opening device device: %s", path);
        return false;
    }
    ObjectInfo file;
    if (!findFile(*device, parsed, progress, file))
    {
        if (!progress->isCanceled())
            qo::log(level::error,
                    u"CQoWPDManager::deleteFile : couldn't find file on device: %s",
                    path);
        return false;
    }
    if (const qo::DeviceResult result = device->remove({file.m_id}); result != qo::deviceResult::ok)
    {
        qo::log(level::error,
                u"CQoWPDManager::deleteFile : failed to delete file %s, hr = 0x%lx",
                path,
                result);
        return false;
    }
    return true;
}

bool CQoWPDManager::replaceFile(const CString& source,
                                const CString& target,
                                std::int64_t total,
                                IQoProgress* progress)
{
    const CQoCollPath path(target);
    std::unique_ptr<qo::IPortableDevice> device;
    ObjectInfo former;
    if (CWPDUtils::openDevice(path.getDevice(), device, false) != qo::deviceResult::ok ||
        !findFile(*device, path, progress, former))
        return false;
    if (!device->canRename(former.m_id))
        return deleteFile(target, progress) && putFile(source, {}, target, total, progress);

    const CQoCollPath part = path.getParent().child(qo::partName() + u"." + path.getFileExt());
    qo::FileInfo info;
    if (qo::fileSystem().info(source, qo::Spelling::exact, info) != 0 ||
        !putFile(source, {}, part.toString(), total, progress))
        return false;
    // The rest takes no time worth a cancel, which would leave two files.
    CDummyProgress toItsEnd;
    ObjectInfo sent;
    const bool isWhole = findFile(*device, part, &toItsEnd, sent) && sent.m_size == info.size;
    if (!isWhole || !deleteFile(target, &toItsEnd))
    {
        (void)deleteFile(part.toString(), &toItsEnd);
        return false;
    }
    const qo::DeviceResult result = device->rename(sent.m_id, path.getLast());
    if (result == qo::deviceResult::ok)
        return true;
    qo::log(level::error,
            u"CQoWPDManager::replaceFile : failed to rename %s to %s, hr = 0x%lx",
            part.toString(),
            path.getLast(),
            result);
    // What is there under the passing name stays until there is another one.
    return putFile(source, {}, target, total, progress) && deleteFile(part.toString(), &toItsEnd);
}
