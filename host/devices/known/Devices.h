#pragma once

#include "core/load/FarScan.h"

#include <QoKernel/Devices.h>
#include <QoKernel/Kernel.h>

#include <string>
#include <vector>

namespace qo::host
{
/// A disk, stick or portable device that is connected or that the settings name.
struct Device
{
    enum class State
    {
        present,
        away,
        inRoots, ///< it is here, but holds a root folder, or lies in one: it is no device then
        twin     ///< it is here, but so is another one with its id, which came first
    };

    UsbDeviceInfoPtr info; ///< never null
    State state = State::away;
    std::string name;   ///< as users call it
    std::string place;  ///< the system's path of the folder that it is mounted at; "" for none
    std::string source; ///< what is mounted there, such as "/dev/sdb1"

    bool isPortable() const { return info->m_type == UsbDeviceInfo::portableDevice; }
    bool isPresent() const { return state == State::present; }
    CQoUSBManagerBase& manager() const;
    CQoCollPath root() const { return manager().createPath(info->m_id); }
    /// The collection of its files, in the database beside the user's own.
    CString collection() const { return root().toString(); }
    /// The folders that a scan looks through, as collection paths: those that were chosen, or else
    /// its root.
    CStringArray folders() const;
    CQoPathsInfoMap folderKinds() const;
    FarCollection farCollection() const;

private:
    bool hasFolders() const;
};

/// All devices, by name. On the kernel's thread.
///
/// Whoever makes one gives drive letters to the disks that are devices: from then on paths of their
/// files come as "D:\a.mp3", and the next process may give "D:" to another disk. So nothing that is
/// kept may be made of a path afterwards; see lastingPath().
class Devices
{
public:
    enum class Scope
    {
        all,
        adopted ///< a phone is opened only if one was adopted, since that takes a while
    };

    explicit Devices(Scope scope = Scope::all);

    const std::vector<Device>& all() const& { return m_all; }
    /// The device that is called so, has that id or is mounted at that folder. With rest, what
    /// follows a slash after the name, or the rest of the path below the folder, goes there. Throws
    /// HostError for none and for several.
    Device need(const std::string& typed, std::string* rest = nullptr) const;
    /// The same for one that can be used now.
    Device needPresent(const std::string& typed, std::string* rest = nullptr) const;
    std::vector<Device> adopted() const;

private:
    void add(const UsbDeviceInfoPtr& info);
    void addMounted();

    std::vector<Device> m_all;
};

/// Whether the user has taken any device into use. Looks at the settings alone.
bool hasAdoptedDevices();

/// Throws HostError when the folder lies on a disk that was adopted as a device, or the place where
/// that is mounted lies in the folder: its files would have two paths. Gives no letters.
void refuseFolderOfDevice(const CString& folder);
} // namespace qo::host
