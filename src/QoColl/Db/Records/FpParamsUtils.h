#pragma once

#include "QoColl/Db/Forward.h"
#include "types/Export.h"
#include "types/Forward.h"

/// Converts between FingerprintCutInformation and the text that FT_FP_PARAMS holds, in the manner
/// of CVelmoraFileParamsUtils.
class QO_API CFpParamsUtils
{
public:
    static CString initParamsFormatString();
    static CString toString(const Fingerprint::FingerprintCutInformation& params);
    /// False, with params unchanged, for an empty text.
    static bool fromString(const CString& text, Fingerprint::FingerprintCutInformation& params);
};
