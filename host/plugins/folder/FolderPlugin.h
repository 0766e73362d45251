#pragma once

#include "plugins/base/StoredPlugin.h"

namespace qo::host
{
/// Any folder, such as that of a mounted server, as a plug-in: the smallest example of the contract
/// that docs/plugins.md explains. It offers physical browse, download with ranges, and upload.
/// Symbolic links are left out, since they may lead out of the folder.
class FolderPlugin final : public StoredPlugin
{
public:
    /// The folder is a path in collection form.
    FolderPlugin(const CString& id, const CString& folder, KVConfig* store);
    ~FolderPlugin() override;

    boost::shared_ptr<IPhysicalBrowseWrapper> GetPhysicalBrowse() override { return m_browse; }
    boost::shared_ptr<IPhysicalUploadWrapper> GetPhysicalUpload() override { return m_upload; }
    boost::shared_ptr<IDownloadWrapper> GetDownload() override { return m_download; }

private:
    const boost::shared_ptr<IPhysicalBrowseWrapper> m_browse;
    const boost::shared_ptr<IPhysicalUploadWrapper> m_upload;
    const boost::shared_ptr<IDownloadWrapper> m_download;
};
} // namespace qo::host
