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
constexpr VelmoraParamInfo s_VelmoraParamInfo[] = {
    velmoraField<&P::origin, everySource>(0),
    velmoraField<&P::source, everySource>(1),
    velmoraField<&P::mediaFileType, everySource>(38),
    velmoraField<&P::webOrigin, webSources>(2),
    velmoraField<&P::isConverted, conversionSources>(3),
    velmoraField<&P::originalPath, conversionSources>(4),
    velmoraField<&P::originalFormat, conversionSources>(5),
    velmoraField<&P::conversionResult, conversionSources>(6),
    velmoraField<&P::conversionSpeed, conversionSources>(7),
    velmoraField<&P::conversionProfile, conversionSources>(8),
    velmoraField<&P::wasProtected, conversionSources>(9),
    velmoraField<&P::originalKept, conversionSources>(10),
    velmoraField<&P::isNormalized, conversionSources>(11),
    velmoraField<&P::isSplit, conversionSources>(12),
    velmoraField<&P::conversionCutQuality, conversionSources>(13),
    conversionNumber<0>(14),
    conversionNumber<1>(15),
    conversionNumber<2>(16),
    conversionNumber<3>(17),
    conversionNumber<4>(18),
    conversionNumber<5>(19),
    conversionNumber<6>(20),
    velmoraField<&P::stationName, radioSources>(21),
    velmoraField<&P::stationUrl, radioSources>(22),
    velmoraField<&P::stationId, radioSources>(23),
    mark<0>(24),
    mark<1>(25),
    mark<2>(26),
    mark<3>(27),
    velmoraField<&P::recordingCutQuality, radioSources>(28),
    velmoraField<&P::longStreamLength, radioSources>(29),
    velmoraField<&P::longStreamPartLength, radioSources>(30),
    velmoraField<&P::isShow, radioSources>(31),
    velmoraField<&P::recordingStart, radioSources>(40),
    velmoraField<&P::recordingEnd, radioSources>(41),
    velmoraField<&P::isJingle, radioSources>(42),
    velmoraField<&P::clipUrl, clipSources>(32),
    velmoraField<&P::isClipVideo, clipSources>(33),
    velmoraField<&P::isClipComplete, clipSources>(34),
    velmoraField<&P::searchText, clipSources>(35),
    velmoraField<&P::searchPlugin, clipSources>(36),
    velmoraField<&P::podcastChannel, IPostProcessingQueue::sourcePodcast>(37),
    velmoraField<&P::shareName, IPostProcessingQueue::sourceShare>(39),
    velmoraField<&P::isImportedMovie, IPostProcessingQueue::sourceImport>(43),
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
    bool isFound = false;
    qo::readParams(text,
                   reader,
                   [&](int number, std::u16string_view value)
                   {
                       if (number == id && !isFound)
                       {
                           found = CString(value);
                           isFound = true;
                       }
                       return true;
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
