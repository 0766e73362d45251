#pragma once

#include "types/Export.h"
#include "types/String.h"

namespace qo
{
struct DriveInfo;
} // namespace qo

/// Questions about drives, asked of qo::drives(). A false result has a line in the log.
class QO_API CUSBUtils
{
public:
    /// The name that the maker gave the device which is connected under that id; "" for another.
    static CString GetDeviceName(const CString& id);
};

/// The device behind a drive letter, which may be in either case. False for a letter that has no
/// drive, for floppies, and for a device that could not be known again.
QO_API bool GetDriveInfoByLetter(char16_t letter, CString& deviceInfo, CString& deviceId);
/// The same for a drive that was looked at.
QO_API bool
GetDriveInfoByDeviceNumber(const qo::DriveInfo& drive, CString& deviceInfo, CString& deviceId);
/// Whether the medium is a floppy disk; false, with isFloppy as it was, if that cannot be told.
QO_API bool IsFloppyAdv(const qo::DriveInfo& drive, bool& isFloppy);
