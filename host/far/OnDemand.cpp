#include "far/OnDemand.h"

#include "core/base/HostError.h"
#include "far/FarEnds.h"
#include "plugins/base/PluginFailure.h"

#include <mutex>
#include <type_traits>
#include <utility>

namespace qo::host
{
namespace
{
/// Makes something by the module when it is first asked for, and says once why that cannot be.
template <class Made>
class OnDemand
{
public:
    using Make = std::function<std::unique_ptr<Made>()>;
    using Complain = std::function<void(const std::string&)>;

    OnDemand(Make make, Complain complain)
        : m_make(std::move(make)), m_complain(std::move(complain))
    {
    }

    /// What the made object answers, or the failure when it cannot be made. From any thread.
    template <class Result, class... Arguments>
    Result ask(std::type_identity_t<Result> failure,
               Result (Made::*question)(Arguments...),
               std::type_identity_t<Arguments>... arguments)
    {
        std::call_once(m_once, [this] { make(); });
        return m_made ? ((*m_made).*question)(arguments...) : failure;
    }

private:
    void make()
    {
        try
        {
            m_made = m_make();
        }
        catch (const HostError& error)
        {
            m_complain(error.what());
        }
    }

    const Make m_make;
    const Complain m_complain;
    std::once_flag m_once;
    std::unique_ptr<Made> m_made;
};

class PortablesOnDemand final : public IPortableDevices
{
public:
    explicit PortablesOnDemand(const std::function<void(const std::string&)>& note)
        : m_devices([note] { return farEnds().portables(note); },
                    [note](const std::string& cause)
                    {
                        if (note)
                            note(cause);
                    })
    {
    }

    DeviceResult devices(std::vector<CString>& ids) override
    {
        return m_devices.ask(failed, &IPortableDevices::devices, ids);
    }
    DeviceResult friendlyName(const CString& id, CString& name) override
    {
        return m_devices.ask(failed, &IPortableDevices::friendlyName, id, name);
    }
    DeviceResult
    open(const CString& id, bool readOnly, std::unique_ptr<IPortableDevice>& device) override
    {
        return m_devices.ask(failed, &IPortableDevices::open, id, readOnly, device);
    }
    DeviceResult watch(IPortableWatcher* watcher) override
    {
        return m_devices.ask(failed, &IPortableDevices::watch, watcher);
    }

private:
    static constexpr DeviceResult failed = deviceResult::failed;

    OnDemand<IPortableDevices> m_devices;
};

class SharesOnDemand final : public IVelmoraShareManager
{
public:
    SharesOnDemand()
        : m_shares([] { return farEnds().shareTransport(); },
                   [](const std::string& cause) { setPluginFailure(fromUtf8(cause)); })
    {
    }

    int getExtract(const CString& device, const CString& localPath, IQoProgress* progress) override
    {
        return m_shares.ask(0, &IVelmoraShareManager::getExtract, device, localPath, progress);
    }
    CString getDeviceName(const CString& device) override
    {
        return m_shares.ask({}, &IVelmoraShareManager::getDeviceName, device);
    }
    int getFile(const ShareFileRequest& request) override
    {
        return m_shares.ask(0, &IVelmoraShareManager::getFile, request);
    }

private:
    OnDemand<IVelmoraShareManager> m_shares;
};
} // namespace

std::unique_ptr<IPortableDevices> portablesOnDemand(std::function<void(const std::string&)> note)
{
    return std::make_unique<PortablesOnDemand>(note);
}

std::unique_ptr<IVelmoraShareManager> sharesOnDemand()
{
    return std::make_unique<SharesOnDemand>();
}
} // namespace qo::host
