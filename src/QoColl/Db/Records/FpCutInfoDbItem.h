#pragma once

#include "types/String.h"

/// Where the fingerprint found a file's cuts.
struct FpCutInfoDbItem
{
    CString velmoraId;
    CString fpParams; ///< see CFpParamsUtils
};
