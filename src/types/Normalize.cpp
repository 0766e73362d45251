#include "types/Normalize.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <new>

namespace qo
{
namespace
{
/// ICU's data for NFC, which it loads once and keeps.
const UNormalizer2& composer()
{
    UErrorCode error = U_ZERO_ERROR;
    const UNormalizer2* const instance = unorm2_getNFCInstance(&error);
    if (U_FAILURE(error))
        throw std::bad_alloc();
    return *instance;
}

bool isPlain(std::u16string_view text)
{
    // Below the first combining mark (U+0300) nothing can be composed.
    return std::all_of(text.begin(), text.end(), [](char16_t c) { return c < 0x300; });
}

/// Whether a character begins there, and not a mark that belongs to the one before.
bool isStart(const CString& text, int at)
{
    UChar32 c = 0;
    U16_GET(text.GetString(), 0, at, text.GetLength(), c);
    constexpr UChar32 joiner = 0x200D;
    const bool isSplit = at > 0 && U16_IS_TRAIL(text[at]) && U16_IS_LEAD(text[at - 1]);
    return !isSplit && c != joiner && !u_hasBinaryProperty(c, UCHAR_GRAPHEME_EXTEND) &&
           !(at > 0 && text[at - 1] == joiner);
}
} // namespace

CString toNfc(const CString& text)
{
    if (isPlain(text.view()))
        return text;
    const UNormalizer2& nfc = composer();
    UErrorCode error = U_ZERO_ERROR;
    if (unorm2_isNormalized(&nfc, text.GetString(), text.GetLength(), &error) && U_SUCCESS(error))
        return text;
    CString result;
    error = U_ZERO_ERROR;
    std::int32_t length =
        unorm2_normalize(&nfc, text.GetString(), text.GetLength(), nullptr, 0, &error);
    error = U_ZERO_ERROR;
    length = unorm2_normalize(
        &nfc, text.GetString(), text.GetLength(), result.GetBuffer(length), length, &error);
    result.ReleaseBuffer(U_FAILURE(error) ? 0 : length);
    return U_FAILURE(error) ? text : result;
}

int wholeCharacters(const CString& text, int limit)
{
    if (limit >= text.GetLength())
        return text.GetLength();
    int end = std::max(limit, 0);
    while (end > 0 && !isStart(text, end))
        --end;
    if (end > 0 || limit <= 0)
        return end;
    // All of it is one character. Its marks may be cut off, but half a surrogate pair must not
    // stay.
    return limit > 0 && U16_IS_TRAIL(text[limit]) && U16_IS_LEAD(text[limit - 1]) ? limit - 1
                                                                                  : limit;
}
} // namespace qo
