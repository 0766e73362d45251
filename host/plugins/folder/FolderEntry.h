#pragma once

#include <QoKernel/Devices.h>
#include <QoKernel/Kernel.h>

namespace qo::host
{
/// A file or folder of the folder plug-in. The plug-in takes no other results back than its own, so
/// that no path leads out of the folder.
class FolderEntry final : public IPhysicalResult
{
public:
    /// The path is one in collection form.
    FolderEntry(const CString& path, const CString& name, bool isFolder, std::int64_t size)
        : m_path(path), m_name(name), m_isFolder(isFolder), m_size(size)
    {
    }

    CString GetName() const override { return m_name; }
    CString GetPath() const override { return m_path; }
    bool IsFolder() const override { return m_isFolder; }
    std::int64_t GetSize() const override { return m_size; }
    void SetSize(std::int64_t bytes) override { m_size = bytes; }

private:
    const CString m_path;
    const CString m_name;
    const bool m_isFolder;
    std::int64_t m_size;
};

/// The entry that a plug-in of that folder once gave; null for any other, and for null.
boost::shared_ptr<FolderEntry> ownEntry(const PluginResultPtr& result, const CString& root);

/// What stands at that path now; null, with the cause, if it is neither a file nor a folder.
boost::shared_ptr<FolderEntry> entryAt(const CString& path, const CString& name, CString& cause);
} // namespace qo::host
