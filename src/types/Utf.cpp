#include "types/Utf.h"

#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <limits>
#include <new>

namespace qo
{
namespace
{
constexpr UChar32 replacement = 0xFFFD;

std::int32_t checkedSize(std::size_t size)
{
    // UTF-8 needs up to three bytes for a unit; all products must fit into 32 bits.
    if (size > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max() / 4))
        throw std::bad_alloc();
    return static_cast<std::int32_t>(size);
}
} // namespace

CString fromUtf8(std::string_view text)
{
    CString result;
    const std::int32_t size = checkedSize(text.size());
    if (size == 0)
        return result;
    char16_t small[256];
    const bool fitsSmall = size <= 255;
    char16_t* buffer = fitsSmall ? small : result.GetBuffer(size);
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8WithSub(
        buffer, fitsSmall ? 255 : size, &length, text.data(), size, replacement, nullptr, &error);
    if (U_FAILURE(error))
        length = 0;
    if (fitsSmall)
        return {small, length};
    result.ReleaseBuffer(length);
    return result;
}

bool isUtf8(std::string_view bytes)
{
    const std::int32_t length = checkedSize(bytes.size());
    for (std::int32_t at = 0; at < length;)
    {
        UChar32 c = 0;
        U8_NEXT(bytes.data(), at, length, c);
        if (c < 0)
            return false;
    }
    return true;
}

std::string toUtf8(std::u16string_view text)
{
    const std::int32_t size = checkedSize(text.size());
    std::string result(static_cast<std::size_t>(size) * 3, '\0');
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strToUTF8WithSub(
        result.data(), size * 3, &length, text.data(), size, replacement, nullptr, &error);
    result.resize(U_FAILURE(error) ? 0 : static_cast<std::size_t>(length));
    return result;
}
} // namespace qo
