#include "QoColl/Db/Records/FpParamsUtils.h"

#include "QoColl/Db/Records/FingerprintCutInformation.h"
#include "QoColl/Db/Records/ParamField.h"

// The table of the parameters of fingerprints, in the order in which they are written. All are
// always written.

using Fingerprint::FingerprintCutInformation;

namespace
{
using FpParamInfo = qo::ParamInfo<FingerprintCutInformation>;

template <auto Member>
constexpr FpParamInfo fpField(int id)
{
    constexpr auto field = [](auto& params) -> auto&
    {
        return params.*Member;
    };
    constexpr auto always = [](const FingerprintCutInformation&) { return true; };
    return qo::paramField<FingerprintCutInformation, field, always>(id);
}

constexpr FpParamInfo fpFields[] = {
    fpField<&FingerprintCutInformation::state>(0),
    fpField<&FingerprintCutInformation::startCut>(1),
    fpField<&FingerprintCutInformation::endCut>(2),
    fpField<&FingerprintCutInformation::startQuality>(3),
    fpField<&FingerprintCutInformation::endQuality>(4),
    fpField<&FingerprintCutInformation::startPos>(5),
    fpField<&FingerprintCutInformation::endPos>(6),
};

constexpr std::span<const FpParamInfo> fpTable(fpFields);
} // namespace

CString CFpParamsUtils::initParamsFormatString()
{
    return qo::formatOfParams(fpTable);
}

CString CFpParamsUtils::toString(const FingerprintCutInformation& params)
{
    static const CString format = initParamsFormatString();
    return qo::writeParams(format, fpTable, params);
}

bool CFpParamsUtils::fromString(const CString& text, FingerprintCutInformation& params)
{
    static constexpr qo::ParamReader reader = {
        u"CFpParamsUtils::fromString: invalid param [%s] [i=%d] [%s]",
        u"CFpParamsUtils::fromString: invalid param [%s] [%d] [%s]"};
    return qo::readParams(text, reader, fpTable, params);
}
