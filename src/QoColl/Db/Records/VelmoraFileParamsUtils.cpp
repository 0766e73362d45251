#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"

#include "QoColl/Db/Records/ParamField.h"

#include <bit>

// The table of all file parameters in the order in which they are written, with the sources that
// each belongs to. The specialisations above the table limit numbers to their enumerations.

using QorganizerDef::VelmoraFileParams;

template <>
struct qo::ParamNumber<eItemSource>
{
    static eItemSource bounded(int v) { return CVelmoraFileParamsUtils::IntToEItemSource(v); }
};

template <>
struct qo::ParamNumber<CVelmoraMediaFileTypes::EType>
{
    static CVelmoraMediaFileTypes::EType bounded(int v)
    {
        return CVelmoraFileParamsUtils::IntToMediaFileType(v);
    }
};

template <>
struct qo::ParamNumber<ConvertFiles::EConversionResults>
{
    static ConvertFiles::EConversionResults bounded(int v)
    {
        return CVelmoraFileParamsUtils::IntToEConversionResults(v);
    }
};

template <>
struct qo::ParamNumber<CCutQuality::ECutQuality>
{
    static CCutQuality::ECutQuality bounded(int v)
    {
        return CVelmoraFileParamsUtils::IntToECutQuality(v);
    }
};

namespace
{
using VelmoraParamInfo = qo::ParamInfo<VelmoraFileParams>;

constexpr unsigned everySource = ~0U;
constexpr unsigned webSources =
    IPostProcessingQueue::sourceWebRecording | IPostProcessingQueue::sourceWebVideo;
constexpr unsigned conversionSources =
    IPostProcessingQueue::sourceConversion | IPostProcessingQueue::sourceConversionCopy;
constexpr unsigned radioSources =
    IPostProcessingQueue::sourceRadioRecording | IPostProcessingQueue::sourceRadioWish;
constexpr unsigned clipSources =
    IPostProcessingQueue::sourceWebTrack | IPostProcessingQueue::sourceWebClip;

/// Whether the source is one of these. A number with several bits, which can only come from a
/// foreign text, is none.
template <unsigned Sources>
constexpr auto fromSources = [](const VelmoraFileParams& params)
{
    const auto source = static_cast<unsigned>(params.source);
    return Sources == everySource || (std::has_single_bit(source) && (source & Sources) != 0);
};

/// The row of a field that is written for these sources.
template <auto Member, unsigned Sources>
constexpr VelmoraParamInfo velmoraField(int id)
{
    constexpr auto field = [](auto& params) -> auto&
    {
        return params.*Member;
    };
    return qo::paramField<VelmoraFileParams, field, fromSources<Sources>>(id);
}

/// The row of one element of an array.
template <int Index>
constexpr VelmoraParamInfo conversionNumber(int id)
{
    constexpr auto field = [](auto& params) -> auto&
    {
        return params.conversionNumbers[Index];
    };
    return qo::paramField<VelmoraFileParams, field, fromSources<conversionSources>>(id);
}

/// Marks below 1 are written as 0.
template <int Index>
constexpr VelmoraParamInfo mark(int id)
{
    constexpr auto field = [](auto& params) -> auto&
    {
        return params.marks[Index];
    };
    constexpr auto isSet = [](const VelmoraFileParams& params) { return params.marks[Index] > 0; };
    return qo::paramField<VelmoraFileParams, field, isSet>(id);
}

using P = VelmoraFileParams;
using E = QorganizerDef::EVelmoraParam;
constexpr VelmoraParamInfo s_VelmoraParamInfo[] = {
    velmoraField<&P::origin, everySource>(E::VP_Origin),
    velmoraField<&P::source, everySource>(E::VP_Source),
    velmoraField<&P::mediaFileType, everySource>(E::VP_MediaFileType),
    velmoraField<&P::webOrigin, webSources>(E::VP_WebOrigin),
    velmoraField<&P::isConverted, conversionSources>(E::VP_IsConverted),
    velmoraField<&P::originalPath, conversionSources>(E::VP_OriginalPath),
    velmoraField<&P::originalFormat, conversionSources>(E::VP_OriginalFormat),
    velmoraField<&P::conversionResult, conversionSources>(E::VP_ConversionResult),
    velmoraField<&P::conversionSpeed, conversionSources>(E::VP_ConversionSpeed),
    velmoraField<&P::conversionProfile, conversionSources>(E::VP_ConversionProfile),
    velmoraField<&P::wasProtected, conversionSources>(E::VP_WasProtected),
    velmoraField<&P::originalKept, conversionSources>(E::VP_OriginalKept),
    velmoraField<&P::isNormalized, conversionSources>(E::VP_IsNormalized),
    velmoraField<&P::isSplit, conversionSources>(E::VP_IsSplit),
    velmoraField<&P::conversionCutQuality, conversionSources>(E::VP_ConversionCutQuality),
    conversionNumber<0>(E::VP_ConversionNumber1),
    conversionNumber<1>(E::VP_ConversionNumber2),
    conversionNumber<2>(E::VP_ConversionNumber3),
    conversionNumber<3>(E::VP_ConversionNumber4),
    conversionNumber<4>(E::VP_ConversionNumber5),
    conversionNumber<5>(E::VP_ConversionNumber6),
    conversionNumber<6>(E::VP_ConversionNumber7),
    velmoraField<&P::stationName, radioSources>(E::VP_StationName),
    velmoraField<&P::stationUrl, radioSources>(E::VP_StationUrl),
    velmoraField<&P::stationId, radioSources>(E::VP_StationId),
    mark<0>(E::VP_Mark1),
    mark<1>(E::VP_Mark2),
    mark<2>(E::VP_Mark3),
    mark<3>(E::VP_Mark4),
    velmoraField<&P::recordingCutQuality, radioSources>(E::VP_RecordingCutQuality),
    velmoraField<&P::longStreamLength, radioSources>(E::VP_LongStreamLength),
    velmoraField<&P::longStreamPartLength, radioSources>(E::VP_LongStreamPartLength),
    velmoraField<&P::isShow, radioSources>(E::VP_IsShow),
    velmoraField<&P::recordingStart, radioSources>(E::VP_RecordingStart),
    velmoraField<&P::recordingEnd, radioSources>(E::VP_RecordingEnd),
    velmoraField<&P::isJingle, radioSources>(E::VP_IsJingle),
    velmoraField<&P::clipUrl, clipSources>(E::VP_ClipUrl),
    velmoraField<&P::isClipVideo, clipSources>(E::VP_IsClipVideo),
    velmoraField<&P::isClipComplete, clipSources>(E::VP_IsClipComplete),
    velmoraField<&P::searchText, clipSources>(E::VP_SearchText),
    velmoraField<&P::searchPlugin, clipSources>(E::VP_SearchPlugin),
    velmoraField<&P::podcastChannel, IPostProcessingQueue::sourcePodcast>(E::VP_PodcastChannel),
    velmoraField<&P::shareName, IPostProcessingQueue::sourceShare>(E::VP_ShareName),
    velmoraField<&P::isImportedMovie, IPostProcessingQueue::sourceImport>(E::VP_IsImportedMovie),
};

constexpr std::span<const VelmoraParamInfo> velmoraTable(s_VelmoraParamInfo);
} // namespace

CString CVelmoraFileParamsUtils::InitializeFormatString()
{
    return qo::formatOfParams(velmoraTable);
}

CString CVelmoraFileParamsUtils::ToDbParam(const VelmoraFileParams& params)
{
    static const CString format = InitializeFormatString();
    return qo::writeParams(format, velmoraTable, params);
}

bool CVelmoraFileParamsUtils::FromDbParam(const CString& text, VelmoraFileParams& params)
{
    static constexpr qo::ParamReader reader = {
        u"CVelmoraFileParamsUtils::FromDbParam: invalid param [%s] [i=%d] [%s]",
        u"CVelmoraFileParamsUtils::FromDbParam: invalid param [%s] [%d] [%s]"};
    if (text.IsEmpty())
        return false;
    params.mediaFileType = CVelmoraMediaFileTypes::typeNone;
    return qo::readParams(text, reader, velmoraTable, params);
}

CString CVelmoraFileParamsUtils::ExtractParam(const CString& text, int id)
{
    static constexpr qo::ParamReader reader = {
        u"CVelmoraFileParamsUtils::ExtractParam: invalid param [%s] [i=%d] [%s]", nullptr};
    CString found;
    qo::readParams(text,
                   reader,
                   [&](int number, std::u16string_view value)
                   {
                       if (number != id)
                           return qo::ParamTaken::yes;
                       found = CString(value);
                       return qo::ParamTaken::last;
                   });
    return found;
}

eItemSource CVelmoraFileParamsUtils::IntToEItemSource(int value)
{
    return static_cast<eItemSource>(value >= 0 && value <= 0x3FFF ? value : 0);
}

ConvertFiles::EConversionResults CVelmoraFileParamsUtils::IntToEConversionResults(int value)
{
    return static_cast<ConvertFiles::EConversionResults>(value >= 0 && value <= 3 ? value : 0);
}

CCutQuality::ECutQuality CVelmoraFileParamsUtils::IntToECutQuality(int value)
{
    return static_cast<CCutQuality::ECutQuality>(value >= 0 && value <= 4 ? value : 0);
}

ConvertFiles::ERecordingMethod CVelmoraFileParamsUtils::IntToERecordingMethod(int value)
{
    return static_cast<ConvertFiles::ERecordingMethod>(value >= 0 && value <= 2 ? value : 0);
}

CVelmoraMediaFileTypes::EType CVelmoraFileParamsUtils::IntToMediaFileType(int value)
{
    const bool isKnown = (value >= 0 && value <= 9) || value == 11 || value == 12;
    return static_cast<CVelmoraMediaFileTypes::EType>(isKnown ? value : 0);
}
