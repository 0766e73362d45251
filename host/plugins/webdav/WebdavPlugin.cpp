#include "plugins/webdav/WebdavPlugin.h"

#include "plugins/base/FinishedOperation.h"
#include "plugins/webdav/DavListing.h"
#include "plugins/webdav/DavTransfer.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <limits>

namespace qo::host
{
namespace
{
using ClientPtr = std::shared_ptr<HttpClient>;

constexpr long multiStatus = 207;

class DavFillState final : public IFillStateResult
{
public:
    DavFillState(std::int64_t total, std::int64_t free) : m_total(total), m_free(free) {}
    std::int64_t GetTotal() const override { return m_total; }
    std::int64_t GetFree() const override { return m_free; }

private:
    const std::int64_t m_total;
    const std::int64_t m_free;
};

template <class Work>
PluginOperationPtr begin(const ClientPtr& client, Work work, std::int64_t total = 0)
{
    return boost::make_shared<ThreadOperation>(
        [client, work](ThreadOperation::Link& link) { return work(*client, link); }, total);
}

boost::shared_ptr<DavEntry> ownDavEntry(const PluginResultPtr& result)
{
    return boost::dynamic_pointer_cast<DavEntry>(result);
}

PluginOperationPtr refuseDav()
{
    return FinishedOperation::failed(u"this is no entry of the plug-in");
}

/// Asks for the properties of a folder, and with depth 1 of what is in it.
HttpAnswer askProperties(HttpClient& client,
                         const HttpAddress& folder,
                         const char* depth,
                         ThreadOperation::Link& link,
                         DavListing& listing)
{
    std::size_t bytes = 0;
    bool isRead = true;
    HttpRequest request = {"PROPFIND", folder};
    request.headers = {std::string("Depth: ") + depth,
                       "Content-Type: application/xml; charset=utf-8"};
    request.body = "<?xml version=\"1.0\" encoding=\"utf-8\"?><propfind xmlns=\"DAV:\"><prop>"
                   "<resourcetype/><getcontentlength/><quota-available-bytes/><quota-used-bytes/>"
                   "</prop></propfind>";
    request.isCanceled = [&link] { return link.isCanceled.load(); };
    request.sink = [&](const HttpHead&, std::string_view part)
    {
        bytes += part.size();
        isRead = bytes <= mostAnswerBytes && listing.add(part);
        return isRead;
    };
    HttpAnswer answer = client.run(request);
    const bool isWhole = isRead && (!answer.isDone() || listing.finish());
    if (answer.isDone() && answer.status != multiStatus)
        answer.failure = fromUtf8(folder.url() + ": this is no WebDAV server");
    else if (!isWhole)
        answer.failure = fromUtf8(folder.url() + ": the server's list is damaged or too large");
    return answer;
}

PluginOutcome listFolder(HttpClient& client, const HttpAddress& folder, ThreadOperation::Link& link)
{
    DavListing listing;
    const HttpAnswer answer = askProperties(client, folder, "1", link, listing);
    PluginOutcome outcome = {answer.failure, {}};
    if (!answer.isDone())
        return outcome;
    for (const DavProperties& each : listing.entries())
    {
        auto address = folder.resolve(each.href);
        const std::string name = address ? address->nameIn(folder) : std::string();
        if (name.empty() || isPartName(fromUtf8(name).view()))
            continue;
        if (each.isFolder && !address->path.ends_with('/'))
            address->path += '/';
        outcome.results.Add(boost::make_shared<DavEntry>(
            *address, fromUtf8(name), each.isFolder, each.isFolder ? 0 : each.size));
    }
    return outcome;
}

class DavBrowse final : public IPhysicalBrowseWrapper
{
public:
    explicit DavBrowse(ClientPtr client) : m_client(std::move(client)) {}

    PluginOperationPtr GetRootFolder() override
    {
        return FinishedOperation::withResult(
            boost::make_shared<DavEntry>(m_client->root(), CString(), true, 0));
    }
    PluginOperationPtr GetSubFoldersAndFiles(const PhysicalResultPtr& folder) override
    {
        const auto own = ownDavEntry(folder);
        if (!own || !own->IsFolder())
            return refuseDav();
        return begin(m_client,
                     [address = own->address()](HttpClient& client, ThreadOperation::Link& link)
                     { return listFolder(client, address, link); });
    }
    PluginOperationPtr GetFillState() override
    {
        return begin(m_client,
                     [](HttpClient& client, ThreadOperation::Link& link)
                     {
                         DavListing listing;
                         PluginOutcome outcome = {
                             askProperties(client, client.root(), "0", link, listing).failure, {}};
                         if (!outcome.failure.IsEmpty())
                             return outcome;
                         const auto& entries = listing.entries();
                         if (entries.empty() || entries.front().available < 0)
                             outcome.failure = u"the server does not say how much room is left";
                         else
                             outcome.results.Add(fillState(entries.front()));
                         return outcome;
                     });
    }

private:
    static boost::shared_ptr<DavFillState> fillState(const DavProperties& root)
    {
        constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
        const std::int64_t used = std::clamp<std::int64_t>(root.used, 0, most - root.available);
        return boost::make_shared<DavFillState>(root.available + used, root.available);
    }

    const ClientPtr m_client;
};

class DavUploads final : public IPhysicalUploadWrapper
{
public:
    explicit DavUploads(ClientPtr client) : m_client(std::move(client)) {}

    PluginOperationPtr UploadFile(const CString& source,
                                  const PhysicalResultPtr& parent,
                                  const CString& name,
                                  bool replace) override
    {
        const auto own = ownDavEntry(parent);
        FileInfo info;
        if (!own || !own->IsFolder())
            return refuseDav();
        fileSystem().info(source, Spelling::exact, info);
        return begin(
            m_client,
            [=, folder = own->address(), safe = safeLocalName(name)](HttpClient& client,
                                                                     ThreadOperation::Link& link)
            { return upload(client, source, folder, safe, replace, link); },
            info.size);
    }
    PluginOperationPtr CreateFolder(const PhysicalResultPtr& parent, const CString& name) override
    {
        const auto own = ownDavEntry(parent);
        if (!own || !own->IsFolder())
            return refuseDav();
        const CString safe = safeLocalName(name);
        return begin(m_client,
                     [safe, address = own->address().child(toUtf8(safe), true)](
                         HttpClient& client, ThreadOperation::Link& link)
                     {
                         HttpRequest request = {"MKCOL", address};
                         request.isCanceled = [&link] { return link.isCanceled.load(); };
                         PluginOutcome outcome = {client.run(request).failure, {}};
                         outcome.results.Add(boost::make_shared<DavEntry>(address, safe, true, 0));
                         return outcome;
                     });
    }
    PluginOperationPtr RemoveItems(const PluginResultArray& items) override
    {
        std::vector<HttpAddress> addresses;
        for (const PluginResultPtr& item : items)
        {
            const auto own = ownDavEntry(item);
            if (!own || own->address().path == m_client->root().path)
                return refuseDav();
            addresses.push_back(own->address());
        }
        return begin(m_client,
                     [addresses](HttpClient& client, ThreadOperation::Link& link)
                     { return removeAll(client, addresses, link); });
    }

private:
    static PluginOutcome removeAll(HttpClient& client,
                                   const std::vector<HttpAddress>& addresses,
                                   ThreadOperation::Link& link)
    {
        for (const HttpAddress& address : addresses)
        {
            HttpRequest request = {"DELETE", address};
            request.isCanceled = [&link] { return link.isCanceled.load(); };
            const HttpAnswer answer = client.run(request);
            if (!answer.isDone())
                return {answer.failure, {}};
            if (answer.status == multiStatus)
                return {fromUtf8(address.url() + ": not all of it could be removed"), {}};
        }
        return {};
    }

    const ClientPtr m_client;
};

class DavDownloads final : public IDownloadWrapper
{
public:
    explicit DavDownloads(ClientPtr client) : m_client(std::move(client)) {}

    boost::shared_ptr<IPluginDownload> CreateDownload(const PluginResultPtr& source,
                                                      const CString& target) override
    {
        const auto own = ownDavEntry(source);
        if (!own || own->IsFolder())
            return {};
        return boost::make_shared<DavDownload>(m_client, *own, target);
    }
    bool CanSetRanges(bool& can) override
    {
        can = true;
        return true;
    }

private:
    const ClientPtr m_client;
};

class DavLogin final : public ILoginWrapper
{
public:
    explicit DavLogin(ClientPtr client) : m_client(std::move(client)) {}

    PluginOperationPtr CheckCredentials(const CString& user, const CString& password) override
    {
        m_client->setCredentials(user, password);
        return begin(m_client,
                     [](HttpClient& client, ThreadOperation::Link& link)
                     {
                         DavListing listing;
                         const HttpAnswer answer =
                             askProperties(client, client.root(), "0", link, listing);
                         const bool isElsewhere =
                             answer.status == 404 || answer.status == 405 ||
                             (answer.status >= 200 && answer.status < 300 && !answer.isDone());
                         return PluginOutcome{
                             isElsewhere ? CString(u"Wrong server path") : answer.failure, {}};
                     });
    }
    bool CanTryCredentials(const CString&, const CString&) override { return true; }

private:
    const ClientPtr m_client;
};
} // namespace

WebdavPlugin::WebdavPlugin(const CString& id,
                           const CString& address,
                           KVConfig* store,
                           const std::optional<PasswordStore>& passwords,
                           HttpLimits limits)
    : StoredPlugin(id, store, passwords)
    , m_client(std::make_shared<HttpClient>(parseHttpAddress(address), limits))
    , m_browse(boost::make_shared<DavBrowse>(m_client))
    , m_upload(boost::make_shared<DavUploads>(m_client))
    , m_download(boost::make_shared<DavDownloads>(m_client))
    , m_login(boost::make_shared<DavLogin>(m_client))
{
    m_client->setLogin(login());
}

WebdavPlugin::~WebdavPlugin() = default;

void WebdavPlugin::SetCredentials(const CString& user, const CString& password)
{
    StoredPlugin::SetCredentials(user, password);
    m_client->setCredentials(user, password);
}
} // namespace qo::host
