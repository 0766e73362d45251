#include "bus/SecretService.h"
#include "devices/mtp/MtpDevices.h"
#include "devices/usb/Eject.h"
#include "far/FarEnds.h"
#include "plugins/configured/ConfiguredPlugins.h"
#include "plugins/http/Certificates.h"
#include "plugins/subsonic/SubsonicPlugin.h"
#include "plugins/webdav/WebdavPlugin.h"
#include "share/ShareServer.h"
#include "share/ShareTransport.h"

#include <boost/make_shared.hpp>

#include <string_view>

namespace qo::host
{
namespace
{
class FarModule final : public FarEnds
{
public:
    std::unique_ptr<IPortableDevices>
    portables(std::function<void(const std::string&)> note) const override
    {
        return std::make_unique<MtpDevices>(std::move(note));
    }

    std::string ejectDisk(const Device& device) const override { return host::ejectDisk(device); }

    boost::shared_ptr<StoredPlugin>
    plugin(const PluginEntry& entry,
           KVConfig* store,
           const std::optional<PasswordStore>& passwords) const override
    {
        if (entry.kind == u"subsonic")
            return boost::make_shared<SubsonicPlugin>(entry.name, entry.place, store, passwords);
        if (entry.kind != u"webdav")
            return nullptr;
        const auto plugin =
            boost::make_shared<WebdavPlugin>(entry.name, entry.place, store, passwords);
        if (!entry.authorities.IsEmpty())
            plugin->trustAuthorities(entry.authorities);
        return plugin;
    }

    void needCertificates(const CString& file) const override { host::needCertificates(file); }

    std::unique_ptr<SecretService> secretService(std::function<bool()> isCanceled) const override
    {
        return openSecretService(std::move(isCanceled));
    }

    std::unique_ptr<IVelmoraShareManager> shareTransport() const override
    {
        return std::make_unique<ShareTransport>();
    }

    ShareKey shareKey(const CString& folder, bool isTrial) const override
    {
        return {folder, isTrial};
    }

    std::unique_ptr<ShareServer>
    shareServer(const ShareKey& key,
                const Offers& offers,
                const PeerAddress& address,
                const ShareLimits& limits,
                std::function<void(const ShareVisit&)> visited) const override
    {
        return startShareServer(key, offers, address, limits, std::move(visited));
    }
};
} // namespace

extern "C" __attribute__((visibility("default"))) const FarEnds* qoFarEnds(const char* version)
{
    static const FarModule module;
    return std::string_view(version) == QO_VERSION ? &module : nullptr;
}
} // namespace qo::host
