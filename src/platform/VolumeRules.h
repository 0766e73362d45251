#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <cstdint>

namespace qo
{
/// What names a file system can hold, in one of its folders.
struct VolumeRules
{
    enum class Length : std::uint8_t
    {
        bytes, ///< of the name in UTF-8
        utf16Units
    };

    int longestName = 255; ///< of one component
    Length countedIn = Length::bytes;
    bool ignoresCase = false; ///< names that differ in case alone are one
    /// No control characters, none of :*?"<>| and the backslash, no blank or point at the end, and
    /// no names of devices such as CON or LPT1, with or without extension.
    bool hasWindowsNames = false;

    bool operator==(const VolumeRules&) const noexcept = default;
};

/// Those of the folder, or, where it does not exist yet, of the nearest one above it, in which it
/// would be made. What the system does not tell is as on most POSIX file systems. The path is taken
/// as it is spelled and in collection form. Safe from any thread.
QO_API VolumeRules volumeRulesOf(const CString& folder);

/// The longest system path that system calls take, in bytes.
QO_API int longestSystemPath() noexcept;
} // namespace qo
