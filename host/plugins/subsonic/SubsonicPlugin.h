#pragma once

#include "plugins/base/StoredPlugin.h"
#include "plugins/subsonic/SubsonicClient.h"

#include <memory>

namespace qo::host
{
/// A music server that speaks the Subsonic interface, version 1.8 or later: logical browse,
/// download with ranges, search, and login. Such a server takes no files, so there is no upload.
class SubsonicPlugin final : public StoredPlugin
{
public:
    /// Throws HostError for what is no such address.
    SubsonicPlugin(const CString& id,
                   const CString& address,
                   KVConfig* store,
                   const std::optional<PasswordStore>& passwords,
                   HttpLimits limits = {});
    ~SubsonicPlugin() override;

    boost::shared_ptr<ILogicalBrowseWrapper> GetLogicalBrowse() override { return m_browse; }
    boost::shared_ptr<IDownloadWrapper> GetDownload() override { return m_download; }
    boost::shared_ptr<ILoginWrapper> GetLogin() override { return m_login; }
    boost::shared_ptr<ISearchWrapper> GetSearch() override { return m_search; }
    void SetCredentials(const CString& user, const CString& password) override;
    CString GetTrackWebSource() override { return GetId(); }

private:
    const std::shared_ptr<SubsonicClient> m_client;
    const boost::shared_ptr<ILogicalBrowseWrapper> m_browse;
    const boost::shared_ptr<IDownloadWrapper> m_download;
    const boost::shared_ptr<ILoginWrapper> m_login;
    const boost::shared_ptr<ISearchWrapper> m_search;
};
} // namespace qo::host
