#include "cli/places/DevicePlace.h"
#include "cli/places/TransferProgress.h"
#include "core/base/HostFiles.h"

#include <QoKernel/Collection.h>

#include <set>

namespace qo::cli
{
namespace
{
/// A phone or a player.
class PortablePlace final : public FarPlace
{
public:
    explicit PortablePlace(const host::Device& device)
        : FarPlace(device.name, device.root())
        , m_isWritable(device.info->m_writable)
        , m_uploadRules(uploadRulesOf(*device.info))
    {
    }

    bool find(const CQoCollPath& path, IQoProgress& progress, FarEntry& entry) override
    {
        if (path.isEmpty())
        {
            entry = {{}, true, 0};
            return true;
        }
        CQoWPDManager::ObjectInfo info;
        if (!CQoWPDManager::getPathInfo(path, &progress, info))
            return false;
        entry = {info.m_pathName, info.isFolder(), info.m_size};
        return true;
    }
    bool list(const CQoCollPath& folder,
              Items items,
              int depth,
              IQoProgress& progress,
              QoFileDbItemArray& records) override
    {
        const int types =
            items == Items::files ? CQoWPDManager::deviceFiles : CQoWPDManager::deviceFolders;
        return CQoWPDManager::getFilesFromDevice(
            folder, types | CQoWPDManager::withoutTags, depth > 1, &progress, records);
    }
    std::string takeCause() override { return {}; }

    bool takesFiles() override { return m_isWritable; }
    UploadRules uploadRules() const override { return m_uploadRules; }
    /// Phones keep files where names are those of FAT, whatever the transfer could carry.
    VolumeRules nameRules() const override
    {
        VolumeRules rules;
        rules.ignoresCase = rules.hasWindowsNames = true;
        return rules;
    }
    bool room(std::int64_t& bytes) override
    {
        CArray<CQoCollPath> paths;
        paths.Add(root());
        std::int64_t total = 0;
        return CQoWPDManager::getDeviceFillStateInfo(paths, total, bytes);
    }

    std::string fetch(const CQoCollPath& path,
                      std::int64_t size,
                      const CString& local,
                      IQoProgress& progress) override
    {
        ByteProgress bytes(progress);
        return CQoWPDManager::getFile(path.toString(), local, size, &bytes, true) ? "" : failed();
    }
    std::string send(const CString& local,
                     std::int64_t size,
                     CQoCollPath& path,
                     bool replaces,
                     IQoProgress& progress) override
    {
        FarEntry entry;
        if (replaces && find(path, progress, entry))
        {
            // What cannot come shall not cost what is there.
            int error = 0;
            if (!fileSystem().open(local, OpenMode::read, error))
                return host::errorWords(error);
            GUID content;
            GUID format;
            if (!CWPDUtils::getFormatInfo(path.getFileExt(), content, format))
                return "the device knows no files of this kind";
            if (progress.isCanceled())
                return "interrupted";
            ByteProgress bytes(progress, size);
            if (!CQoWPDManager::replaceFile(local, path.toString(), size, &bytes))
                return failed();
        }
        else
        {
            ByteProgress bytes(progress, size);
            if (!CQoWPDManager::putFile(local, {}, path.toString(), size, &bytes))
                return failed();
        }
        cleanFolder(local, path, progress);
        return "";
    }

private:
    /// Each folder costs one look, unless there is something to clean.
    void cleanFolder(const CString& sent, const CQoCollPath& path, IQoProgress& progress)
    {
        const CString folder = path.getParent().toString();
        if (!m_cleanFolders.contains(folder) &&
            CQoWPDManager::removeLeftParts(sent, path.toString(), &progress) == 0)
            m_cleanFolders.insert(folder);
    }
    static std::string failed() { return "the device did not do it; \"qo log\" says more"; }

    const bool m_isWritable;
    const UploadRules m_uploadRules;
    std::set<CString> m_cleanFolders;
};
} // namespace

std::unique_ptr<FarPlace> portablePlace(const host::Device& device)
{
    return std::make_unique<PortablePlace>(device);
}
} // namespace qo::cli
