#include "QoColl/Db/Records/ACTrackStorage.h"
#include "QoColl/Db/Records/AcParamsUtils.h"
#include "QoColl/Db/Records/FingerprintCutInformation.h"
#include "QoColl/Db/Records/FpParamsUtils.h"
#include "QoColl/Db/Records/VelmoraFileParams.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace
{
/// What was written once is read and written again without a change.
void require(bool holds)
{
    if (!holds)
        std::abort();
}

void checkFileParams(const CString& text)
{
    QorganizerDef::VelmoraFileParams params;
    if (!CVelmoraFileParamsUtils::FromDbParam(text, params))
        return;
    const CString written = CVelmoraFileParamsUtils::ToDbParam(params);
    QorganizerDef::VelmoraFileParams again;
    require(CVelmoraFileParamsUtils::FromDbParam(written, again));
    require(CVelmoraFileParamsUtils::ToDbParam(again) == written);
    require(CVelmoraFileParamsUtils::ExtractParam(written, 0) == again.origin);
}

void checkTrackStorage(const CString& text)
{
    AudioCutterCore::ACTrackStorage params;
    if (!CAcParamsUtils::fromString(text, params))
        return;
    const CString written = CAcParamsUtils::toString(params);
    require(CAcParamsUtils::fromString(written, params));
    require(CAcParamsUtils::toString(params) == written);
}

void checkCutInformation(const CString& text)
{
    Fingerprint::FingerprintCutInformation params;
    if (!CFpParamsUtils::fromString(text, params))
        return;
    const CString written = CFpParamsUtils::toString(params);
    require(CFpParamsUtils::fromString(written, params));
    require(CFpParamsUtils::toString(params) == written);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Up to the first zero, as a text comes out of a column.
    CString text;
    const int length = static_cast<int>(size / sizeof(char16_t));
    std::memcpy(text.GetBuffer(length), data, static_cast<std::size_t>(length) * sizeof(char16_t));
    text.ReleaseBuffer(length);
    text = CString(text.GetString());
    checkFileParams(text);
    checkTrackStorage(text);
    checkCutInformation(text);
    return 0;
}
