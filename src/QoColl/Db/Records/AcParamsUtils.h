#pragma once

#include "QoColl/Db/Records/Forward.h"
#include "types/Export.h"
#include "types/Forward.h"

/// Converts between ACTrackStorage and its text in AST_PARAMS, as CVelmoraFileParamsUtils does for
/// files.
class QO_API CAcParamsUtils
{
public:
    /// The format for all parameters; made once by toString().
    static CString initParamsFormatString();
    static CString toString(const AudioCutterCore::ACTrackStorage& params);
    /// False, with params unchanged, for an empty text.
    static bool fromString(const CString& text, AudioCutterCore::ACTrackStorage& params);
};
