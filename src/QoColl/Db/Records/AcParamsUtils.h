#pragma once

#include "QoColl/Db/Forward.h"
#include "types/Export.h"
#include "types/Forward.h"

/// Converts between ACTrackStorage and the text that AST_PARAMS holds, in the manner of
/// CVelmoraFileParamsUtils.
class QO_API CAcParamsUtils
{
public:
    static CString initParamsFormatString();
    static CString toString(const AudioCutterCore::ACTrackStorage& params);
    /// False, with params unchanged, for an empty text.
    static bool fromString(const CString& text, AudioCutterCore::ACTrackStorage& params);
};
