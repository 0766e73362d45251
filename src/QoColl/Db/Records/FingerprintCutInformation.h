#pragma once

#include <cstdint>

namespace Fingerprint
{
/// Where a fingerprint found the cuts of a file. The kernel stores it for the host. The numbers
/// after the fields are those of the parameters in FT_FP_PARAMS.
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
