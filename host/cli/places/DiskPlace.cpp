#include "cli/places/DevicePlace.h"
#include "cli/places/TransferProgress.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"

#include <QoKernel/Collection.h>

#include <cerrno>
#include <deque>

namespace qo::cli
{
namespace
{
/// A disk or stick. Its files are reached by the letter that it has in this process. Before each
/// file is asked whether it is still there: what is written to the folder in which a stick was
/// mounted would lie on the system's own disk.
class DiskPlace final : public FarPlace
{
public:
    explicit DiskPlace(const host::Device& device)
        : FarPlace(device.name, device.root())
        , m_place(device.place)
        , m_uploadRules(uploadRulesOf(*device.info))
    {
        NameInfo info;
        if (fileSystem().look(real(root()), info) == 0)
            m_mount = info.mount;
    }

    CString componentOf(const std::string& name) const override
    {
        return DriveMap::nameFromSystem(name);
    }
    std::string nameOf(const CString& component) const override
    {
        return toSystemPath(u"C:\\" + component).substr(1);
    }
    /// The disk's own names are names of files; what they hold besides stays.
    CString localNameOf(const CString& component) const override { return component; }

    bool find(const CQoCollPath& path, IQoProgress&, FarEntry& entry) override
    {
        NameInfo info;
        const int error = isThere() ? fileSystem().look(real(path), info) : ENODEV;
        const bool isPlain = error == 0 && (info.kind == NameInfo::Kind::regular || isFolder(info));
        m_cause =
            error == 0 || error == ENOENT || error == ENOTDIR ? m_cause : causeOf(path, error);
        if (error == 0 && !isPlain)
            m_cause = "it is neither a file nor a folder";
        if (isPlain)
            entry = {path.getLast(), isFolder(info), isFolder(info) ? 0 : info.size};
        return isPlain;
    }
    bool list(const CQoCollPath& folder,
              Items items,
              int depth,
              IQoProgress& progress,
              QoFileDbItemArray& records) override
    {
        std::deque<std::pair<CQoCollPath, int>> waiting = {{folder, depth}};
        bool isWhole = true;
        while (!waiting.empty() && !progress.isCanceled())
        {
            const auto [path, left] = waiting.front();
            waiting.pop_front();
            std::vector<DirEntry> entries;
            if (const int error = isThere() ? fileSystem().list(real(path), entries) : ENODEV)
            {
                m_cause = causeOf(path, error);
                isWhole = false;
            }
            for (const DirEntry& entry : entries)
            {
                // Links may lead out of the disk.
                if (entry.info.isLink)
                    continue;
                const bool isFolder = entry.info.kind == FileKind::directory;
                const CQoCollPath below = path.child(entry.name);
                if (isFolder ? items == Items::folders
                             : items == Items::files && entry.info.kind == FileKind::regular)
                    addRecord(below, entry.info.size, records);
                if (isFolder && left > 1)
                    waiting.emplace_back(below, left - 1);
            }
        }
        return isWhole && !progress.isCanceled();
    }
    std::string takeCause() override { return std::exchange(m_cause, {}); }

    bool takesFiles() override { return true; }
    UploadRules uploadRules() const override { return m_uploadRules; }
    VolumeRules nameRules() const override { return volumeRulesOf(real(root())); }
    bool room(std::int64_t& bytes) override
    {
        std::uint64_t left = 0;
        if (fileSystem().room(real(root()), left) != 0)
            return false;
        bytes = static_cast<std::int64_t>(left);
        return true;
    }

    void clearBefore(const CQoCollPath& folder) override
    {
        if (isThere() && needOnDisk(folder) == 0)
            host::clearPassingFiles(real(folder));
    }

    std::string fetch(const CQoCollPath& path,
                      std::int64_t,
                      const CString& local,
                      IQoProgress& progress) override
    {
        if (!isThere())
            return causeOf(path, ENODEV);
        const int error = copy(real(path), local, local, progress);
        return error == 0 ? "" : causeOf(path, error);
    }
    std::string send(const CString& local,
                     std::int64_t,
                     CQoCollPath& path,
                     bool replaces,
                     IQoProgress& progress) override
    {
        if (!isThere())
            return causeOf(path, ENODEV);
        const CString folder = real(path.getParent());
        int error = makeFolder(path.getParent());
        const CString part = host::passingPathBeside(real(path));
        if (error == 0)
            error = copy(local, part, part, progress);
        if (error != 0)
            return causeOf(path, error);
        error = replaces ? fileSystem().moveFile(part, real(path))
                         : fileSystem().moveFileNoReplace(part, real(path));
        if (error != 0)
            fileSystem().removeFile(part);
        else
            error = fileSystem().sync(folder);
        // FAT has no names with "?" or ":", for instance.
        if (error == EINVAL)
            return "the file system of " + name() + " can hold no such name";
        return error == 0 ? "" : causeOf(path, error);
    }

private:
    static bool isFolder(const NameInfo& info) { return info.kind == NameInfo::Kind::directory; }

    bool isThere() const { return theQoUSBManager.isConnected(root()); }
    CString real(const CQoCollPath& path) const
    {
        const CString real = theQoUSBManager.getRealPath(path);
        return path.isEmpty() ? addBackslash(real) : real;
    }
    /// The folder with its parents. Nothing goes to another disk: not to the one below the mount
    /// point, which a disk that was taken out leaves bare, nor through a link. So the first folder
    /// upwards that exists is looked at before anything is made, and the made one after.
    int makeFolder(const CQoCollPath& folder) const
    {
        int error = ENOENT;
        for (CQoCollPath there = folder; error == ENOENT; there = there.getParent())
        {
            error = needOnDisk(there);
            if (there.isEmpty())
                break;
        }
        if (error == 0)
            error = fileSystem().makeDirectories(real(folder));
        return error == 0 ? needOnDisk(folder) : error;
    }
    int needOnDisk(const CQoCollPath& folder) const
    {
        NameInfo info;
        const int error = fileSystem().lookThrough(real(folder), info);
        return error == 0 && info.mount != m_mount ? EXDEV : error;
    }
    /// A disk that left in the middle fails with any error.
    std::string causeOf(const CQoCollPath& path, int error) const
    {
        if (!isThere())
            return "the device " + name() + " is not connected any more";
        if (error == EXDEV)
            return "its folder lies on another disk";
        return m_place + "/" + shown(path) + ": " + host::errorWords(error);
    }

    /// A copy that is verified, with the size that it has so far as the progress.
    static int
    copy(const CString& from, const CString& to, const CString& growing, IQoProgress& progress)
    {
        constexpr std::uint32_t interval = 100; // milliseconds
        std::uint32_t last = systemClock().tickCount();
        const auto stop = [&]
        {
            NameInfo info;
            const std::uint32_t now = systemClock().tickCount();
            if (now - last >= interval && fileSystem().look(growing, info) == 0)
            {
                last = now;
                showDone(progress, static_cast<std::uint64_t>(info.size));
            }
            return progress.isCanceled();
        };
        return fileSystem().copyAsNew(from, to, stop);
    }

    const std::string m_place;
    const UploadRules m_uploadRules;
    std::uint64_t m_mount = 0; ///< by which its files are told from those of other disks
    std::string m_cause;
};
} // namespace

std::unique_ptr<FarPlace> diskPlace(const host::Device& device)
{
    return std::make_unique<DiskPlace>(device);
}
} // namespace qo::cli
