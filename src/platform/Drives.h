#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qo
{
/// What stands behind a drive letter.
struct DriveInfo
{
    enum class Kind : std::uint8_t
    {
        unknown,
        removable, ///< the medium can be taken out; sticks say so of themselves
        fixed,
        network,
        optical
    };
    enum class Medium : std::uint8_t
    {
        unknown,
        removable, ///< and no floppy
        floppy,
        other
    };
    enum class Bus : std::uint8_t
    {
        other,
        usb
    };

    Kind kind = Kind::unknown;
    Medium medium = Medium::unknown;
    Bus bus = Bus::other;
    /// The same wherever the device is plugged in, and another for each partition; "" if the device
    /// has nothing by which it could be known again.
    CString id;
    CString name;  ///< maker and model
    CString label; ///< of the volume, as its owner named it; may be ""
};

/// A drive that is mounted, be it one that has a letter or not.
struct MountedDrive
{
    DriveInfo info;
    std::string point;  ///< the system's path of the folder that it is mounted at
    std::string source; ///< what is mounted, such as "/dev/sdb1"
    /// This one and all others at which it, or a folder of it, is mounted as well.
    std::vector<std::string> points;
};

/// A drive that came or went. One that is mounted elsewhere than before has come.
struct DriveChange
{
    char16_t letter = 0;
    bool hasCome = false;
};

/// The drives of the system, as an interface that a test can replace. May be called from any
/// thread.
class QO_API IDrives
{
public:
    virtual ~IDrives();
    /// Compares the disks that are there with those of the last call, gives each new one a letter
    /// (see DriveMap) and takes away the places of those that are gone. Returns the differences.
    /// isLeftAlone, which may be empty, is asked at each call for each folder that a disk is
    /// mounted at, in the form below "C:": where it says true, the disk has no letter, also one
    /// that had some before, and its files have their paths below "C:".
    virtual std::vector<DriveChange>
    update(const std::function<bool(const CString& folder)>& isLeftAlone) = 0;
    /// The drive that had the letter, "A" to "Z", at the last update(). False if there was none,
    /// and if it has gone since.
    virtual bool look(char16_t letter, DriveInfo& info) = 0;
    /// What is mounted at this moment, in the order of the mounts: also disks that are left alone,
    /// and all disks of one id. Gives and takes no letters.
    virtual std::vector<MountedDrive> mounted() = 0;
};
} // namespace qo
