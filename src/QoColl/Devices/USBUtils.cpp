#include "QoColl/Devices/USBUtils.h"

#include "common/Log.h"
#include "platform/Drives.h"
#include "platform/Platform.h"

namespace
{
namespace level = qo::level;

/// In upper case; 0 for what is no drive letter.
char16_t driveLetterOf(char16_t c)
{
    if (c >= u'a' && c <= u'z')
        return static_cast<char16_t>(c - u'a' + u'A');
    return c >= u'A' && c <= u'Z' ? c : u'\0';
}
} // namespace

CString CUSBUtils::GetDeviceName(const CString& id)
{
    for (char16_t letter = u'A'; letter <= u'Z'; ++letter)
    {
        qo::DriveInfo drive;
        if (qo::drives().look(letter, drive) && drive.id == id)
            return drive.name;
    }
    return {};
}

bool GetDriveInfoByLetter(char16_t letter, CString& deviceInfo, CString& deviceId)
{
    const char16_t drive = driveLetterOf(letter);
    if (drive == 0)
    {
        qo::log(level::error, u"GetDriveInfoByLetter: invalid drive letter [%c]", letter);
        return false;
    }
    qo::DriveInfo info;
    if (!qo::drives().look(drive, info))
    {
        qo::log(level::error, u"GetDriveInfoByLetter: failed to open storage volume");
        return false;
    }
    bool isFloppy = false;
    if (!IsFloppyAdv(info, isFloppy))
        qo::log(level::error,
                u"GetDriveInfoByLetter: failed to check if it's a floppy. We will \"tell\" it's "
                u"not a FDD.");
    return !isFloppy && GetDriveInfoByDeviceNumber(info, deviceInfo, deviceId);
}

bool GetDriveInfoByDeviceNumber(const qo::DriveInfo& drive, CString& deviceInfo, CString& deviceId)
{
    if (drive.id.IsEmpty())
    {
        qo::log(level::error, u"GetDriveInfoByLetter: failed to get the device number");
        return false;
    }
    deviceInfo = drive.name;
    deviceId = drive.id;
    return true;
}

bool IsFloppyAdv(const qo::DriveInfo& drive, bool& isFloppy)
{
    if (drive.medium == qo::DriveInfo::Medium::unknown)
        return false;
    isFloppy = drive.medium == qo::DriveInfo::Medium::floppy;
    return true;
}
