#pragma once

#include "devices/mtp/MtpConnection.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace qo::host
{
/// Portable devices over libmtp. A device is known by its maker, its model and its serial number.
/// It stays open from its first use to the end of this object, since opening takes long and some
/// devices do not bear it often.
class MtpDevices final : public IPortableDevices
{
public:
    /// The function, which may be empty, takes sentences for the user about devices that cannot be
    /// used, each once. A test has a root of its own.
    explicit MtpDevices(std::function<void(const std::string&)> note, std::string root = "");
    ~MtpDevices() override;

    DeviceResult devices(std::vector<CString>& ids) override;
    DeviceResult friendlyName(const CString& id, CString& name) override;
    DeviceResult
    open(const CString& id, bool readOnly, std::unique_ptr<IPortableDevice>& device) override;
    /// Nothing is reported: whoever wants to know asks again.
    DeviceResult watch(IPortableWatcher* watcher) override;

private:
    struct Known
    {
        LIBMTP_raw_device_t raw;
        UsbNode node;
        std::string name;
        std::shared_ptr<MtpConnection> connection;
        bool wasNoted = false;
    };

    DeviceResult detect();
    DeviceResult connect(const CString& id, std::shared_ptr<MtpConnection>& connection);
    void note(Known& known, const std::string& sentence);

    const std::function<void(const std::string&)> m_note;
    const std::string m_root; ///< what "/sys" and "/dev" stand below
    std::mutex m_mutex;       ///< guards m_known
    std::map<CString, Known> m_known;
};
} // namespace qo::host
