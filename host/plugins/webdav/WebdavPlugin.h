#pragma once

#include "plugins/base/StoredPlugin.h"
#include "plugins/http/HttpClient.h"

#include <memory>

namespace qo::host
{
/// A WebDAV server: physical browse with the room that is left, download with ranges, upload, and
/// login.
class WebdavPlugin final : public StoredPlugin
{
public:
    /// Throws HostError for what is no such address.
    WebdavPlugin(const CString& id,
                 const CString& address,
                 KVConfig* store,
                 const std::optional<PasswordStore>& passwords,
                 HttpLimits limits = {});
    ~WebdavPlugin() override;
    /// As HttpClient::trustAuthorities().
    void trustAuthorities(const CString& file) { m_client->trustAuthorities(file); }

    boost::shared_ptr<IPhysicalBrowseWrapper> GetPhysicalBrowse() override { return m_browse; }
    boost::shared_ptr<IPhysicalUploadWrapper> GetPhysicalUpload() override { return m_upload; }
    boost::shared_ptr<IDownloadWrapper> GetDownload() override { return m_download; }
    boost::shared_ptr<ILoginWrapper> GetLogin() override { return m_login; }
    void SetCredentials(const CString& user, const CString& password) override;

private:
    const std::shared_ptr<HttpClient> m_client;
    const boost::shared_ptr<IPhysicalBrowseWrapper> m_browse;
    const boost::shared_ptr<IPhysicalUploadWrapper> m_upload;
    const boost::shared_ptr<IDownloadWrapper> m_download;
    const boost::shared_ptr<ILoginWrapper> m_login;
};
} // namespace qo::host
