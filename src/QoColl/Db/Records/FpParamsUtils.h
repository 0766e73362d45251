#pragma once

#include "QoColl/Db/Records/Forward.h"
#include "types/Export.h"
#include "types/Forward.h"

/// Converts between FingerprintCutInformation and its text in FT_FP_PARAMS, as
/// CVelmoraFileParamsUtils does for files.
class QO_API CFpParamsUtils
{
public:
    /// The format for all parameters; made once by toString().
    static CString initParamsFormatString();
    static CString toString(const Fingerprint::FingerprintCutInformation& params);
    /// False, with params unchanged, for an empty text.
    static bool fromString(const CString& text, Fingerprint::FingerprintCutInformation& params);
};
