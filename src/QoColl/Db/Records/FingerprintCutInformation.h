#pragma once

#include <cstdint>

namespace Fingerprint
{
/// Where a fingerprint found a file's cuts. The kernel stores it for the host; the numbers of the
/// parameters stand behind the fields.
struct FingerprintCutInformation
{
    int state = 0;             ///< 0
    int startCut = 0;          ///< 1
    int endCut = 0;            ///< 2
    int startQuality = 0;      ///< 3
    int endQuality = 0;        ///< 4
    std::int64_t startPos = 0; ///< 5
    std::int64_t endPos = 0;   ///< 6
};
} // namespace Fingerprint
