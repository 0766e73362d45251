#pragma once

#include <string>
#include <vector>

namespace qo
{
/// A line of the system's table of mounts.
struct MountEntry
{
    std::string device; ///< "8:17", major and minor number
    std::string root;   ///< what of the file system is shown: "/" but for bind mounts
    std::string point;
    std::string type;
    std::string source; ///< "/dev/sdb1"
};

/// The mounts that can be reached, in the order of the table: of several on one point the last.
/// None if the table cannot be read. Lines that are cut are left out.
std::vector<MountEntry> readMounts(const std::string& table = "/proc/self/mountinfo");
} // namespace qo
