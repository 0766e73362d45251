#pragma once

#include <QoKernel/Kernel.h>

#include <cstdint>
#include <string>

namespace qo::host
{
/// A folder below a root folder whose files lie on another disk, or elsewhere on this one.
struct FarFolder
{
    CString path; ///< in collection form
    std::uint64_t device = 0;
    bool isLink = false; ///< else the place where a disk is mounted

    bool operator==(const FarFolder&) const = default;
};

/// Why it does not lead to where it led at the last scan, as a clause: its disk is away; "" when it
/// does.
std::string whyAway(const FarFolder& folder);
} // namespace qo::host
