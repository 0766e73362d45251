#pragma once

#include "QoColl/Db/Forward.h"
#include "QoColl/Db/Records/VelmoraFileParams.h"
#include "types/Export.h"
#include "types/String.h"

/// Converts between VelmoraFileParams and the text that FT_PARAMS and IN_PARAMS hold: one line
/// "<number>:<value>" for each parameter, every one of them in fixed order. A parameter that does
/// not belong to the structure's source is written empty or 0.
class QO_API CVelmoraFileParamsUtils
{
public:
    static CString InitializeFormatString();

    static CString ToDbParam(const QorganizerDef::VelmoraFileParams& params);
    /// False, with params unchanged, for an empty text. A parameter without a line keeps its value,
    /// but for the media type, which starts at 0; an invalid line or number is logged and skipped.
    static bool FromDbParam(const CString& text, QorganizerDef::VelmoraFileParams& params);
    /// The value of the first line of that number, or "".
    static CString ExtractParam(const CString& text, int id);

    /// Each gives 0 for a number outside its enumeration.
    static eItemSource IntToEItemSource(int value);
    static ConvertFiles::EConversionResults IntToEConversionResults(int value);
    static CCutQuality::ECutQuality IntToECutQuality(int value);
    static ConvertFiles::ERecordingMethod IntToERecordingMethod(int value);
    static CVelmoraMediaFileTypes::EType IntToMediaFileType(int value);
};
