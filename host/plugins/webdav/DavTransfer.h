#pragma once

#include "plugins/base/ThreadOperation.h"
#include "plugins/http/HttpDownload.h"

namespace qo::host
{
/// A file or folder on the server. The plug-in takes no other results back than its own.
class DavEntry final : public IPhysicalResult
{
public:
    DavEntry(HttpAddress address, const CString& name, bool isFolder, std::int64_t size)
        : m_address(std::move(address)), m_name(name), m_isFolder(isFolder), m_size(size)
    {
    }

    CString GetName() const override { return m_name; }
    CString GetPath() const override { return fromUtf8(m_address.url()); }
    bool IsFolder() const override { return m_isFolder; }
    std::int64_t GetSize() const override { return m_size; }
    void SetSize(std::int64_t bytes) override { m_size = bytes; }
    const HttpAddress& address() const { return m_address; }

private:
    const HttpAddress m_address;
    const CString m_name;
    const bool m_isFolder;
    std::int64_t m_size;
};

/// Fetches a file, or a range of it.
class DavDownload final : public HttpDownload
{
public:
    DavDownload(std::shared_ptr<HttpClient> client, const DavEntry& source, const CString& target)
        : HttpDownload(target, source.GetSize())
        , m_client(std::move(client))
        , m_source(source.address())
    {
    }

private:
    HttpAnswer send(HttpRequest request) override
    {
        request.address = m_source;
        return m_client->run(std::move(request));
    }

    const std::shared_ptr<HttpClient> m_client;
    const HttpAddress m_source;
};

/// Sends the file under a passing name, which is then changed into the wanted one.
PluginOutcome upload(HttpClient& client,
                     const CString& source,
                     const HttpAddress& folder,
                     const CString& name,
                     bool replace,
                     ThreadOperation::Link& link);
} // namespace qo::host
