#pragma once

#include "QoColl/Db/Records/Forward.h"
#include "QoColl/Db/Records/VelmoraFileParams.h"
#include "types/Export.h"
#include "types/String.h"

/// Converts between VelmoraFileParams and its text in FT_PARAMS and IN_PARAMS: one line
/// "<number>:<value>" for each parameter, all of them in a fixed order. A parameter that does not
/// belong to the source is written as "" or 0.
///
///   A podcast of the channel "Night Talks" is written as
///     "0:\n1:32\n38:6\n2:\n3:0\n ... 37:Night Talks\n39:\n43:0\n"
class QO_API CVelmoraFileParamsUtils
{
public:
    /// The format for all parameters; made once by ToDbParam().
    static CString InitializeFormatString();

    static CString ToDbParam(const QorganizerDef::VelmoraFileParams& params);
    /// False, with params unchanged, for an empty text. A parameter without a line keeps its value,
    /// except for the media type, which becomes 0. An invalid line or number is logged and skipped.
    static bool FromDbParam(const CString& text, QorganizerDef::VelmoraFileParams& params);
    /// The value of the first line of that number, or "".
    static CString ExtractParam(const CString& text, int id);

    /// Each returns 0 for a number outside of its enumeration.
    static eItemSource IntToEItemSource(int value);
    static ConvertFiles::EConversionResults IntToEConversionResults(int value);
    static CCutQuality::ECutQuality IntToECutQuality(int value);
    static ConvertFiles::ERecordingMethod IntToERecordingMethod(int value);
    static CVelmoraMediaFileTypes::EType IntToMediaFileType(int value);
};
