#pragma once

#include "QoColl/Devices/QoUSBManagerBase.h"

#include <cstdint>

namespace qo
{
/// The event of a drive, as deviceChanged() takes it.
struct VolumeEvent
{
    enum EEvent : int
    {
        arrival = 0x8000,
        removal = 0x8004
    };
    static constexpr int volumeType = 2;

    int deviceType = volumeType; ///< others are ignored
    std::uint32_t unitMask = 0;  ///< bit 0 is "A"; the lowest bit that is set counts
};
} // namespace qo

/// Disks and sticks by USB. A device has the letter of the drive that it is mounted as, and paths
/// in the collection have its id instead: \\usb:1234-ABCD\Music\a.mp3 stays what it is when the
/// stick comes back under another letter. The settings UsbDevicesCount, UsbDevice0, UsbDevice1 ...
/// keep those that the user took into use.
class QO_API CQoUSBManager : public CQoUSBManagerBase
{
public:
    CQoUSBManager();

    /// Loads the devices from the settings and looks which are there.
    void init();
    /// The former alone: no device is connected then, and no disk gets a letter.
    void loadDevices();
    void saveDevices() override;
    void refreshDevices() override;
    bool detectMusicAndMoviesDirs(UsbDeviceInfoPtr& device,
                                  bool& foundMusic,
                                  bool& foundMovies) override;

    /// Looks which drives have come or gone since the last time, and calls deviceChanged() for
    /// each. To be called when the system reports a change of its mounts.
    void checkDrives();
    /// event: a VolumeEvent::EEvent, others are ignored; broadcast may be null. Listeners hear of a
    /// drive that came and was accepted, and of a known one that went.
    void deviceChanged(int event, const qo::VolumeEvent* broadcast);

    /// The path on the drive of the device's present letter; "" for an unknown device, and for one
    /// that is not connected.
    CString getRealPath(const CQoCollPath& path) const;
    CString getRealPath(const CString& id, const CString& path) const;

    /// Whether the device of the path is connected at this moment, whatever was reported so far.
    bool isConnected(const CQoCollPath& path) const;

    /// The index of the device that has the letter now, or -1.
    int getDeviceByLetter(char16_t letter) const;
    bool getDeviceByLetter(char16_t letter, UsbDeviceInfoPtr& device) const;
    /// Enters that the device has that letter, 0 if it has gone.
    void updateDevice(const CString& id, const CString& name, char16_t letter);
    /// Looks at one drive. Whoever had its letter has it no more. True, with the device, for a
    /// removable drive and for a fixed one by USB; false for others, and where there is no drive.
    bool refreshDevice(char16_t letter, UsbDeviceInfoPtr& device);

private:
    void forgetLetter(char16_t letter);
};

extern QO_API CQoUSBManager theQoUSBManager;
