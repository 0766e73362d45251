#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <cstdint>

namespace qo
{
/// Which names a file system can hold in one of its folders.
struct VolumeRules
{
    enum class Length : std::uint8_t
    {
        bytes, ///< bytes of the name in UTF-8
        utf16Units
    };

    int longestName = 255; ///< for one component
    Length countedIn = Length::bytes;
    bool ignoresCase = false; ///< names that differ in case alone are the same
    /// True: no control characters, none of :*?"<>| and the backslash, no blank or point at the
    /// end, and no names of devices such as CON or LPT1, with or without extension.
    bool hasWindowsNames = false;

    bool operator==(const VolumeRules&) const noexcept = default;
};

/// The rules in a folder or, if it does not exist, in the nearest existing folder above it. What
/// the system does not tell is as on most POSIX file systems. The path must be exact and in
/// collection form. May be called from any thread.
QO_API VolumeRules volumeRulesOf(const CString& folder);

/// The longest path that system calls accept, in bytes.
QO_API int longestSystemPath() noexcept;
} // namespace qo
