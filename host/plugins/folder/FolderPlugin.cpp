#include "plugins/folder/FolderPlugin.h"

#include "plugins/base/FinishedOperation.h"
#include "plugins/base/PluginFailure.h"
#include "plugins/folder/FolderTransfer.h"

#include <boost/make_shared.hpp>

#include <cerrno>
#include <filesystem>

namespace qo::host
{
namespace
{
class FolderFillState final : public IFillStateResult
{
public:
    FolderFillState(std::int64_t total, std::int64_t free) : m_total(total), m_free(free) {}
    std::int64_t GetTotal() const override { return m_total; }
    std::int64_t GetFree() const override { return m_free; }

private:
    const std::int64_t m_total;
    const std::int64_t m_free;
};

PluginOperationPtr refuse()
{
    return FinishedOperation::failed(u"this is no folder of the plug-in");
}

class FolderBrowse final : public IPhysicalBrowseWrapper
{
public:
    explicit FolderBrowse(const CString& root) : m_root(root) {}

    PluginOperationPtr GetRootFolder() override
    {
        if (!fileSystem().isDirectory(m_root))
            return FinishedOperation::failed(failureAt(m_root, ENOTDIR));
        return FinishedOperation::withResult(
            boost::make_shared<FolderEntry>(m_root, CString(), true, 0));
    }
    PluginOperationPtr GetSubFoldersAndFiles(const PhysicalResultPtr& folder) override
    {
        const auto own = ownEntry(folder, m_root);
        if (!own || !own->IsFolder())
            return refuse();
        std::vector<DirEntry> entries;
        if (const int error = fileSystem().list(own->GetPath(), entries))
            return FinishedOperation::failed(failureAt(own->GetPath(), error));
        PluginResultArray results;
        for (const DirEntry& entry : entries)
        {
            const bool isPlain = !entry.info.isLink && entry.info.kind != FileKind::other;
            if (isPlain && !isPartName(entry.name.view()))
                results.Add(boost::make_shared<FolderEntry>(combinePath(own->GetPath(), entry.name),
                                                            entry.name,
                                                            entry.info.kind == FileKind::directory,
                                                            entry.info.size));
        }
        return FinishedOperation::withResults(std::move(results));
    }
    PluginOperationPtr GetFillState() override
    {
        std::error_code error;
        const auto space = std::filesystem::space(toSystemPath(m_root), error);
        if (error)
            return FinishedOperation::failed(failureAt(m_root, error.value()));
        return FinishedOperation::withResult(boost::make_shared<FolderFillState>(
            static_cast<std::int64_t>(space.capacity), static_cast<std::int64_t>(space.available)));
    }

private:
    const CString m_root;
};

class FolderUploads final : public IPhysicalUploadWrapper
{
public:
    explicit FolderUploads(const CString& root) : m_root(root) {}

    PluginOperationPtr UploadFile(const CString& source,
                                  const PhysicalResultPtr& parent,
                                  const CString& name,
                                  bool replace) override
    {
        const auto own = ownEntry(parent, m_root);
        if (!own || !own->IsFolder())
            return refuse();
        return boost::make_shared<FolderUpload>(
            source, own->GetPath(), safeLocalName(name), replace);
    }
    PluginOperationPtr CreateFolder(const PhysicalResultPtr& parent, const CString& name) override
    {
        const auto own = ownEntry(parent, m_root);
        if (!own || !own->IsFolder())
            return refuse();
        const CString safe = safeLocalName(name);
        const CString path = combinePath(own->GetPath(), safe);
        // One that is there already was asked for by a name that no folder can have.
        const int error = fileSystem().makeDirectory(path);
        CString cause = failureAt(path, error);
        const auto entry = error == 0 || error == EEXIST ? entryAt(path, safe, cause) : nullptr;
        if (!entry || !entry->IsFolder())
            return FinishedOperation::failed(cause);
        return FinishedOperation::withResult(entry);
    }
    PluginOperationPtr RemoveItems(const PluginResultArray& items) override
    {
        for (const PluginResultPtr& item : items)
        {
            const auto own = ownEntry(item, m_root);
            if (!own || own->GetPath() == m_root)
                return refuse();
            const CString path = own->GetPath();
            if (!own->IsFolder())
            {
                if (const int error = fileSystem().removeFile(path))
                    return FinishedOperation::failed(failureAt(path, error));
            }
            else if (!CFileUtils::RemoveDirectoryRec(path))
            {
                return FinishedOperation::failed(path + u": not all of it could be removed");
            }
        }
        return FinishedOperation::withResults({});
    }
    bool CanUploadToRoot(bool& can) override
    {
        can = true;
        return true;
    }

private:
    const CString m_root;
};

class FolderDownloads final : public IDownloadWrapper
{
public:
    explicit FolderDownloads(const CString& root) : m_root(root) {}

    boost::shared_ptr<IPluginDownload> CreateDownload(const PluginResultPtr& source,
                                                      const CString& target) override
    {
        const auto own = ownEntry(source, m_root);
        if (!own || own->IsFolder())
            return {};
        return boost::make_shared<FolderDownload>(own->GetPath(), target);
    }
    bool CanSetRanges(bool& can) override
    {
        can = true;
        return true;
    }

private:
    const CString m_root;
};
} // namespace

FolderPlugin::FolderPlugin(const CString& id, const CString& folder, KVConfig* store)
    : StoredPlugin(id, store)
    , m_browse(boost::make_shared<FolderBrowse>(removeBackslash(folder)))
    , m_upload(boost::make_shared<FolderUploads>(removeBackslash(folder)))
    , m_download(boost::make_shared<FolderDownloads>(removeBackslash(folder)))
{
}

FolderPlugin::~FolderPlugin() = default;
} // namespace qo::host
