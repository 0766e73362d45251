#pragma once

#include <QoKernel/Devices.h>
#include <QoKernel/Kernel.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

class IVelmoraShareManager;

namespace qo::host
{
class Offers;
class PasswordStore;
class SecretService;
class ShareKey;
class ShareServer;
class StoredPlugin;
struct Device;
struct PeerAddress;
struct PluginEntry;
struct ShareLimits;
struct ShareVisit;

/// What talks to other machines, phones and the system's bus. The libraries for that, with all that
/// they bring along, take three times as long to load as everything else, so they stand in a module
/// of their own, which most commands never open. Everything that these functions make may be used
/// to the end of the process.
class FarEnds
{
public:
    virtual ~FarEnds() = default;

    /// See MtpDevices.
    virtual std::unique_ptr<IPortableDevices>
    portables(std::function<void(const std::string&)> note) const = 0;
    /// See ejectDisk() in devices/usb.
    virtual std::string ejectDisk(const Device& device) const = 0;
    /// A plug-in over HTTP. Null for a kind that there is not. Throws HostError for a place that
    /// cannot be one of the kind.
    virtual boost::shared_ptr<StoredPlugin>
    plugin(const PluginEntry& entry,
           KVConfig* store,
           const std::optional<PasswordStore>& passwords) const = 0;
    /// Throws HostError unless the file can be read and has certificates (PEM).
    virtual void needCertificates(const CString& file) const = 0;
    /// See openSecretService().
    virtual std::unique_ptr<SecretService>
    secretService(std::function<bool()> isCanceled) const = 0;
    /// See ShareTransport.
    virtual std::unique_ptr<IVelmoraShareManager> shareTransport() const = 0;
    /// See ShareKey.
    virtual ShareKey shareKey(const CString& folder, bool isTrial) const = 0;
    /// See startShareServer().
    virtual std::unique_ptr<ShareServer>
    shareServer(const ShareKey& key,
                const Offers& offers,
                const PeerAddress& address,
                const ShareLimits& limits,
                std::function<void(const ShareVisit&)> visited) const = 0;
};

/// Opens the module when it is first asked for. Throws HostError when it is missing or of another
/// version. From any thread.
const FarEnds& farEnds();

/// What the module says it is made for: its own version, and null unless that is the asked one.
using FarEndsOf = const FarEnds*(const char* version);
} // namespace qo::host
