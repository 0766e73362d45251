#include "types/Charset.h"

#include "types/Utf.h"

#include <unicode/ucnv.h>
#include <unicode/ucsdet.h>

#include <algorithm>
#include <memory>

namespace qo
{
namespace
{
constexpr auto whenInDoubt = "windows-1252";
/// In percent. Short texts get about 10 for each encoding that they could have.
constexpr std::int32_t sureFrom = 50;
/// More does not make the detector any surer.
constexpr std::size_t mostBytesLookedAt = 64 << 10;

struct Close
{
    void operator()(UCharsetDetector* detector) const { ucsdet_close(detector); }
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

/// Texts of mainframes and of two bytes a letter are never meant.
bool isLikely(std::string_view name)
{
    return !name.starts_with("IBM") && !name.starts_with("UTF-");
}
} // namespace

std::vector<std::pair<std::string, int>> charsetsOf(std::string_view bytes)
{
    std::vector<std::pair<std::string, int>> list;
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, Close> detector(ucsdet_open(&error));
    ucsdet_setText(detector.get(),
                   bytes.data(),
                   static_cast<std::int32_t>(std::min(bytes.size(), mostBytesLookedAt)),
                   &error);
    std::int32_t count = 0;
    const UCharsetMatch** const matches = ucsdet_detectAll(detector.get(), &count, &error);
    for (std::int32_t i = 0; U_SUCCESS(error) && i < count; ++i)
        list.emplace_back(ucsdet_getName(matches[i], &error),
                          ucsdet_getConfidence(matches[i], &error));
    return list;
}

std::string charsetOf(std::string_view bytes)
{
    if (isUtf8(bytes))
        return "UTF-8";
    const auto found = charsetsOf(bytes);
    if (found.empty() || found.front().second < sureFrom)
        return whenInDoubt;
    const std::string& name = found.front().first;
    // The bytes 0x80 to 0x9F are controls in the one and letters in the other, which people have.
    return name == "ISO-8859-1" || !isLikely(name) ? whenInDoubt : name;
}

CString fromCharset(std::string_view bytes, const std::string& charset)
{
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, Close> converter(ucnv_open(charset.c_str(), &error));
    if (U_FAILURE(error) || bytes.empty())
        return {};
    // No encoding makes more than two units of one byte.
    const auto length = static_cast<std::int32_t>(bytes.size());
    CString text;
    char16_t* const buffer = text.GetBuffer(2 * length);
    const std::int32_t units =
        ucnv_toUChars(converter.get(), buffer, 2 * length, bytes.data(), length, &error);
    text.ReleaseBuffer(U_FAILURE(error) ? 0 : units);
    return text;
}
} // namespace qo
