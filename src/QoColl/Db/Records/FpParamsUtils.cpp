#include "QoColl/Db/Records/FpParamsUtils.h"

#include "QoColl/Db/Records/FingerprintCutInformation.h"
#include "QoColl/Db/Records/ParamField.h"

using Fingerprint::FingerprintCutInformation;

namespace
{
using ParamInfo = qo::ParamInfo<FingerprintCutInformation>;

template <auto Member>
constexpr ParamInfo row(int id)
{
    constexpr auto field = [](auto& params) -> auto&
    {
        return params.*Member;
    };
    constexpr auto always = [](const FingerprintCutInformation&) { return true; };
    return qo::paramField<FingerprintCutInformation, field, always>(id);
}

constexpr ParamInfo m_paramsFormatInfo[] = {
    row<&FingerprintCutInformation::state>(0),
    row<&FingerprintCutInformation::startCut>(1),
    row<&FingerprintCutInformation::endCut>(2),
    row<&FingerprintCutInformation::startQuality>(3),
    row<&FingerprintCutInformation::endQuality>(4),
    row<&FingerprintCutInformation::startPos>(5),
    row<&FingerprintCutInformation::endPos>(6),
};

constexpr std::span<const ParamInfo> table(m_paramsFormatInfo);
} // namespace

CString CFpParamsUtils::initParamsFormatString()
{
    return qo::formatOfParams(table);
}

CString CFpParamsUtils::toString(const FingerprintCutInformation& params)
{
    static const CString format = initParamsFormatString();
    return qo::writeParams(format, table, params);
}

bool CFpParamsUtils::fromString(const CString& text, FingerprintCutInformation& params)
{
    static constexpr qo::ParamReader reader = {
        u"CFpParamsUtils::fromString: invalid param [%s] [i=%d] [%s]",
        u"CFpParamsUtils::fromString: invalid param [%s] [%d] [%s]"};
    return qo::readParams(text, reader, table, params);
}
