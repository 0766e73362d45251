#include "QoColl/Db/Records/AcParamsUtils.h"

#include "QoColl/Db/Records/ACTrackStorage.h"
#include "QoColl/Db/Records/ParamField.h"

// The table of the parameters of cut tracks, in the order in which they are written. All are always
// written.

using AudioCutterCore::ACTrackStorage;

namespace
{
using AcParamInfo = qo::ParamInfo<ACTrackStorage>;

template <auto Member>
constexpr AcParamInfo acField(int id)
{
    constexpr auto field = [](auto& params) -> auto&
    {
        return params.*Member;
    };
    constexpr auto always = [](const ACTrackStorage&) { return true; };
    return qo::paramField<ACTrackStorage, field, always>(id);
}

constexpr AcParamInfo acFields[] = {
    acField<&ACTrackStorage::startPosition>(0),
    acField<&ACTrackStorage::endPosition>(1),
    acField<&ACTrackStorage::startOffset>(2),
    acField<&ACTrackStorage::endOffset>(3),
    acField<&ACTrackStorage::fadeIn>(4),
    acField<&ACTrackStorage::fadeOut>(5),
    acField<&ACTrackStorage::cutQuality>(6),
    acField<&ACTrackStorage::state>(7),
};

constexpr std::span<const AcParamInfo> acTable(acFields);
} // namespace

CString CAcParamsUtils::initParamsFormatString()
{
    return qo::formatOfParams(acTable);
}

CString CAcParamsUtils::toString(const ACTrackStorage& params)
{
    static const CString format = initParamsFormatString();
    return qo::writeParams(format, acTable, params);
}

bool CAcParamsUtils::fromString(const CString& text, ACTrackStorage& params)
{
    static constexpr qo::ParamReader reader = {
        u"CAcParamsUtils::fromString: invalid param [%s] [i=%d] [%s]",
        u"CAcParamsUtils::fromString: invalid param [%s] [%d] [%s]"};
    return qo::readParams(text, reader, acTable, params);
}
