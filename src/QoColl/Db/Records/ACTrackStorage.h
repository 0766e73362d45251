#pragma once

#include <cstdint>

namespace AudioCutterCore
{
/// Where a track lies in its recorded stream. The kernel stores it for the host; the numbers of
/// the parameters stand behind the fields.
struct ACTrackStorage
{
    std::int64_t startPosition = 0; ///< 0
    std::int64_t endPosition = 0;   ///< 1
    int startOffset = 0;            ///< 2
    int endOffset = 0;              ///< 3
    int fadeIn = 0;                 ///< 4
    int fadeOut = 0;                ///< 5
    int cutQuality = 0;             ///< 6
    int state = 0;                  ///< 7
};
} // namespace AudioCutterCore
