#include "QoColl/Db/Records/AcParamsUtils.h"

#include "QoColl/Db/Records/ACTrackStorage.h"
#include "QoColl/Db/Records/ParamField.h"

using AudioCutterCore::ACTrackStorage;

namespace
{
using ParamInfo = qo::ParamInfo<ACTrackStorage>;

template <auto Member>
constexpr ParamInfo row(int id)
{
    constexpr auto field = [](auto& params) -> auto&
    {
        return params.*Member;
    };
    constexpr auto always = [](const ACTrackStorage&) { return true; };
    return qo::paramField<ACTrackStorage, field, always>(id);
}

constexpr ParamInfo m_paramsFormatInfo[] = {
    row<&ACTrackStorage::startPosition>(0),
    row<&ACTrackStorage::endPosition>(1),
    row<&ACTrackStorage::startOffset>(2),
    row<&ACTrackStorage::endOffset>(3),
    row<&ACTrackStorage::fadeIn>(4),
    row<&ACTrackStorage::fadeOut>(5),
    row<&ACTrackStorage::cutQuality>(6),
    row<&ACTrackStorage::state>(7),
};

constexpr std::span<const ParamInfo> table(m_paramsFormatInfo);
} // namespace

CString CAcParamsUtils::initParamsFormatString()
{
    return qo::formatOfParams(table);
}

CString CAcParamsUtils::toString(const ACTrackStorage& params)
{
    static const CString format = initParamsFormatString();
    return qo::writeParams(format, table, params);
}

bool CAcParamsUtils::fromString(const CString& text, ACTrackStorage& params)
{
    static constexpr qo::ParamReader reader = {
        u"CAcParamsUtils::fromString: invalid param [%s] [i=%d] [%s]",
        u"CAcParamsUtils::fromString: invalid param [%s] [%d] [%s]"};
    return qo::readParams(text, reader, table, params);
}
