#pragma once

#include "QoColl/Devices/UsbDeviceInfo.h"
#include "common/CollPath.h"
#include "common/PathsInfoMap.h"
#include "types/List.h"

#include <functional>

/// Hears of devices that come and go, on the thread that looks for them.
class QO_API IUsbDeviceChangedListener
{
public:
    virtual ~IUsbDeviceChangedListener();
    /// It may remove itself, or another listener, from the manager meanwhile.
    virtual void usbDeviceChanged(const UsbDeviceInfoPtr& device, bool hasCome) = 0;
};

/// The list of known devices of one kind. The settings keep those that the user took into use as
/// one text each, the fields separated by line feeds: id, name, music folder and upload rule,
/// movies folder and upload rule, then each extra folder and its type:
///
///   1234-ABCD|My stick|Music|_artist_track.ext|||Talks|1        (| is a line feed)
///
/// Ids are compared exactly. An unknown id gives false, -1 or an invalid path. No locks: the host
/// must not let calls overlap. Before any call that saves, the host must have called init() of the
/// subclass, or the stored devices are lost.
class QO_API CQoUSBManagerBase
{
public:
    explicit CQoUSBManagerBase(UsbDeviceInfo::EType type);
    CQoUSBManagerBase(const CQoUSBManagerBase&) = delete;
    CQoUSBManagerBase& operator=(const CQoUSBManagerBase&) = delete;
    virtual ~CQoUSBManagerBase();

    virtual void saveDevices() = 0;
    /// Looks which devices are connected now.
    virtual void refreshDevices() = 0;
    /// Chooses the device's folders for music and movies by their names: a chosen one that is there
    /// stays; without a valid pair both become the root. The flags say whether any folder has such
    /// a name; they stay false when both were there. False, with the device as it was, while it is
    /// not connected. Saves nothing.
    virtual bool
    detectMusicAndMoviesDirs(UsbDeviceInfoPtr& device, bool& foundMusic, bool& foundMovies) = 0;

    /// Replaces the list; what is connected shows the next refresh. Records with fewer than four
    /// fields are left out; in those with four, which earlier versions wrote, music folder and rule
    /// are also those of movies.
    void loadDevicesFromCfg(const CStringArray& records);
    void saveDevicesToCfg(CStringArray& records) const;

    /// A listener is added once. It is not owned, and must live until it is removed.
    void addUsbDeviceChangedListener(IUsbDeviceChangedListener* listener);
    void removeUsbDeviceChangedListener(IUsbDeviceChangedListener* listener);
    void notifyUsbDeviceChanged(const UsbDeviceInfoPtr& device, bool hasCome);

    /// The root of the device, and a folder or file on it; the id need not be known.
    CQoCollPath createPath(const CString& id) const;
    CQoCollPath getFullPath(const CString& id, const CString& path) const;
    // The device's folders as full paths; for the flag see qo::deviceFullPaths().
    void getFullPaths(const UsbDeviceInfoPtr& device,
                      bool rootIfEmpty,
                      CArray<CQoCollPath>& paths) const;
    bool getDeviceFullPaths(const CString& id, bool rootIfEmpty, CArray<CQoCollPath>& paths) const;
    bool getDeviceQoPathsInfoMap(const CString& id, bool rootIfEmpty, CQoPathsInfoMap& info) const;
    bool
    getDeviceTargetDirs(const CString& id, bool rootIfEmpty, CString& music, CString& movies) const;

    /// The index, or -1.
    int getDevice(const CString& id) const;
    bool getDevice(const CString& id, UsbDeviceInfoPtr& device) const;
    void resetActiveDevices();
    /// Appends the devices that are configured, or those that are not; with onlyActive those of
    /// them that are connected. The fourth argument has no effect.
    void
    getDevices(UsbDeviceInfoArray& devices, bool configured, bool onlyActive, bool = false) const;
    void getConfiguredDevices(UsbDeviceInfoArray& devices) const;

    // These save the devices.
    bool setDeviceConfigured(const CString& id);
    /// The device stays known until the program ends.
    bool removeDevice(const CString& id);
    /// The types of extra folders that stay are kept; new ones hold audio as music.
    bool setDevicePaths(const CString& id,
                        const CString& music,
                        const CString& movies,
                        const CStringArray& extra);
    bool setDeviceUploadRules(const CString& id, const CString& music, const CString& movies);
    bool getDeviceUploadRules(const CString& id, CString& music, CString& movies) const;

    /// A folder that is there already gets the type.
    static void
    addExtraDir(const UsbDeviceInfoPtr& device, const CString& path, CQoPathInfo::EType type);
    static void removeExtraDir(const UsbDeviceInfoPtr& device, const CString& path);

protected:
    /// The device of that id, a new one that is not configured if it was not known, with the name.
    UsbDeviceInfoPtr findOrAddDevice(const CString& id, const CString& name);
    /// The steps of detectMusicAndMoviesDirs(); folders are relative to the device.
    static void detectDirs(UsbDeviceInfo& device,
                           const std::function<bool(const CString& dir)>& exists,
                           const std::function<CStringArray()>& list,
                           bool& foundMusic,
                           bool& foundMovies);

    UsbDeviceInfoArray m_devices;

private:
    UsbDeviceInfoPtr deviceOfRecord(const CString& record) const;

    CList<IUsbDeviceChangedListener*> m_listeners;
    CQoCollPath::EDeviceType m_pathType;
    UsbDeviceInfo::EType m_type;
};

namespace qo
{
/// A text of a device as it can stand in a record: line feeds become U+F00A, which is what they are
/// in names of files.
QO_API CString deviceLine(const CString& text);
} // namespace qo
