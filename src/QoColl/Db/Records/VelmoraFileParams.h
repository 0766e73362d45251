#pragma once

#include "QoColl/Db/Records/ItemSource.h"
#include "QoColl/Db/Records/VelmoraMediaFileTypes.h"
#include "types/String.h"

#include <cstdint>

namespace ConvertFiles
{
/// How a conversion ended.
enum EConversionResults : int
{
    conversionNone = 0,
    conversionDone = 1,
    conversionPartly = 2,
    conversionFailed = 3
};

/// How a recording was made.
enum ERecordingMethod : int
{
    recordingAutomatic = 0,
    recordingDirect = 1,
    recordingSoundCard = 2
};
} // namespace ConvertFiles

struct CCutQuality
{
    /// How well the cuts of a recording fit.
    enum ECutQuality : int
    {
        qualityUnknown = 0,
        qualityBad = 1,
        qualityFair = 2,
        qualityGood = 3,
        qualityBest = 4
    };
};

namespace QorganizerDef
{
/// The numbers of the parameters in their text form; named after the fields of VelmoraFileParams.
enum EVelmoraParam : int
{
    VP_Origin = 0,
    VP_Source = 1,
    VP_WebOrigin = 2,
    VP_IsConverted = 3,
    VP_OriginalPath = 4,
    VP_OriginalFormat = 5,
    VP_ConversionResult = 6,
    VP_ConversionSpeed = 7,
    VP_ConversionProfile = 8,
    VP_WasProtected = 9,
    VP_OriginalKept = 10,
    VP_IsNormalized = 11,
    VP_IsSplit = 12,
    VP_ConversionCutQuality = 13,
    VP_ConversionNumber1 = 14,
    VP_ConversionNumber2 = 15,
    VP_ConversionNumber3 = 16,
    VP_ConversionNumber4 = 17,
    VP_ConversionNumber5 = 18,
    VP_ConversionNumber6 = 19,
    VP_ConversionNumber7 = 20,
    VP_StationName = 21,
    VP_StationUrl = 22,
    VP_StationId = 23,
    VP_Mark1 = 24,
    VP_Mark2 = 25,
    VP_Mark3 = 26,
    VP_Mark4 = 27,
    VP_RecordingCutQuality = 28,
    VP_LongStreamLength = 29,
    VP_LongStreamPartLength = 30,
    VP_IsShow = 31,
    VP_ClipUrl = 32,
    VP_IsClipVideo = 33,
    VP_IsClipComplete = 34,
    VP_SearchText = 35,
    VP_SearchPlugin = 36,
    VP_PodcastChannel = 37,
    VP_MediaFileType = 38,
    VP_ShareName = 39,
    VP_RecordingStart = 40,
    VP_RecordingEnd = 41,
    VP_IsJingle = 42,
    VP_IsImportedMovie = 43
};

/// Properties that only some kinds of files have; stored in FT_PARAMS as numbered parameters, whose
/// numbers are given after the fields. The kernel itself reads source, mediaFileType, isShow,
/// isImportedMovie, the lengths of long streams and recordingStart, recordingEnd and isJingle; the
/// others belong to the host.
struct VelmoraFileParams
{
    // Of every file.
    CString origin;                                                                 ///< 0
    eItemSource source = IPostProcessingQueue::sourceNone;                          ///< 1
    CVelmoraMediaFileTypes::EType mediaFileType = CVelmoraMediaFileTypes::typeNone; ///< 38
    int marks[4] = {};                                                              ///< 24-27

    // Of web recordings and web videos.
    CString webOrigin; ///< 2

    // Of conversions.
    bool isConverted = false;                                                         ///< 3
    CString originalPath;                                                             ///< 4
    CString originalFormat;                                                           ///< 5
    ConvertFiles::EConversionResults conversionResult = ConvertFiles::conversionNone; ///< 6
    double conversionSpeed = 0.0;                                                     ///< 7
    CString conversionProfile;                                                        ///< 8
    bool wasProtected = false;                                                        ///< 9
    bool originalKept = false;                                                        ///< 10
    bool isNormalized = false;                                                        ///< 11
    bool isSplit = false;                                                             ///< 12
    CCutQuality::ECutQuality conversionCutQuality = CCutQuality::qualityUnknown;      ///< 13
    int conversionNumbers[7] = {};                                                    ///< 14-20

    // Of radio recordings and wishes.
    CString stationName;                                                        ///< 21
    CString stationUrl;                                                         ///< 22
    int stationId = 0;                                                          ///< 23
    CCutQuality::ECutQuality recordingCutQuality = CCutQuality::qualityUnknown; ///< 28
    int longStreamLength = 0;                                                   ///< 29
    int longStreamPartLength = 0;                                               ///< 30
    bool isShow = false;             ///< 31; no music, and never a jingle
    std::int64_t recordingStart = 0; ///< 40; local time, in seconds since 1970
    std::int64_t recordingEnd = 0;   ///< 41; likewise
    bool isJingle = false;           ///< 42

    // Of web tracks and clips.
    CString clipUrl;             ///< 32
    bool isClipVideo = false;    ///< 33
    bool isClipComplete = false; ///< 34
    CString searchText;          ///< 35
    CString searchPlugin;        ///< 36

    CString podcastChannel;       ///< 37, of podcasts
    CString shareName;            ///< 39, of shares
    bool isImportedMovie = false; ///< 43, of imports: no music
};
} // namespace QorganizerDef
