#pragma once

#include "plugins/webdav/DavClient.h"
#include "plugins/webdav/DavOperation.h"

namespace qo::host
{
/// A file or folder on the server. The plug-in takes no other results back than its own.
class DavEntry final : public IPhysicalResult
{
public:
    DavEntry(DavAddress address, const CString& name, bool isFolder, std::int64_t size)
        : m_address(std::move(address)), m_name(name), m_isFolder(isFolder), m_size(size)
    {
    }

    CString GetName() const override { return m_name; }
    CString GetPath() const override { return fromUtf8(m_address.url()); }
    bool IsFolder() const override { return m_isFolder; }
    std::int64_t GetSize() const override { return m_size; }
    void SetSize(std::int64_t bytes) override { m_size = bytes; }
    const DavAddress& address() const { return m_address; }

private:
    const DavAddress m_address;
    const CString m_name;
    const bool m_isFolder;
    std::int64_t m_size;
};

/// Fetches a file, or a range of it.
class DavDownload final : public IPluginDownload
{
public:
    DavDownload(std::shared_ptr<DavClient> client, const DavEntry& source, const CString& target);

    bool SetRange(std::int64_t first, std::int64_t end) override;
    bool GetSize(std::int64_t& size) override;
    bool Run(IQoProgress* progress) override;

private:
    /// The cause of a failure; "" when all has come.
    CString fetch(IFile& out, IQoProgress& progress);

    const std::shared_ptr<DavClient> m_client;
    const DavAddress m_source;
    const CString m_target;
    const std::int64_t m_size; ///< 0: the server does not say
    std::int64_t m_first = 0;
    std::int64_t m_end = -1; ///< the one after the last byte; -1: all
};
/// Sends the file under a passing name, which is then changed into the wanted one.
DavOutcome upload(DavClient& client,
                  const CString& source,
                  const DavAddress& folder,
                  const CString& name,
                  bool replace,
                  DavOperation::Link& link);
} // namespace qo::host
