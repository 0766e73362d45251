#pragma once

#include "QoColl/Devices/DeviceUtils.h"
#include "QoColl/Devices/Forward.h"

/// A device that is known. It stays known as long as the program runs, whether or not it is
/// connected; across starts only when the user has taken it into use.
struct UsbDeviceInfo
{
    enum EType : int
    {
        usbDevice = 0,
        portableDevice = 1
    };

    EType m_type = usbDevice;
    bool m_configured = false; ///< the user took the device into use
    bool m_active = false;     ///< connected now
    CString m_id;              ///< without line feeds; see qo::deviceLine()
    CString m_name;            ///< for display
    CString m_musicPath;       ///< relative to the device, as in qo::DeviceFolders
    CString m_musicUploadRule;
    CString m_moviesPath;
    CString m_moviesUploadRule;
    CStringArray m_extraDirs;
    CQoPathsInfoMap m_pathsInfo; ///< the type of each extra folder
    char16_t m_driveLetter = 0;  ///< 0 if it has none now
    bool m_readable = false;     ///< of a portable device that is connected
    bool m_writable = false;

    qo::DeviceFolders folders() const
    {
        return {m_musicPath, m_moviesPath, m_extraDirs, m_pathsInfo};
    }
};
