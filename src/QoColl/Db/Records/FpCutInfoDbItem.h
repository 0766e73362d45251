#pragma once

#include "types/String.h"

/// The cuts that a fingerprint found in a file, by its lasting id.
struct FpCutInfoDbItem
{
    CString velmoraId;
    CString fpParams; ///< see CFpParamsUtils
};
