#pragma once

#include <cstdint>

namespace AudioCutterCore
{
/// The position of a track in the stream that it was recorded from. The kernel stores it for the
/// host. The numbers after the fields are those of the parameters in AST_PARAMS.
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
