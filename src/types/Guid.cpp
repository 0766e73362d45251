#include "types/Guid.h"

#include "types/String.h"

// The first three groups of the text are numbers, the other two are bytes in their order.

namespace qo
{
namespace
{
constexpr int guidTextLength = 36;

bool isDashAt(int i)
{
    return i == 8 || i == 13 || i == 18 || i == 23;
}

int hexValue(char16_t c)
{
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    return c >= u'A' && c <= u'F' ? c - u'A' + 10 : -1;
}
} // namespace

CString guidToText(const GUID& id)
{
    CString text;
    text.Format(
        u"%08x-%04x-%04x-%02x%02x-", id.Data1, id.Data2, id.Data3, id.Data4[0], id.Data4[1]);
    for (int i = 2; i < 8; ++i)
        text.AppendFormat(u"%02x", id.Data4[i]);
    return text;
}

bool guidFromText(const CString& text, GUID& id)
{
    id = GUID();
    if (text.GetLength() != guidTextLength)
        return false;
    std::uint8_t bytes[16] = {};
    int digit = 0;
    for (int i = 0; i < guidTextLength; ++i)
    {
        if (isDashAt(i))
        {
            if (text[i] != u'-')
                return false;
            continue;
        }
        const int value = hexValue(text[i]);
        if (value < 0)
            return false;
        bytes[digit / 2] = static_cast<std::uint8_t>(bytes[digit / 2] << 4 | value);
        ++digit;
    }
    id.Data1 = std::uint32_t(bytes[0]) << 24 | std::uint32_t(bytes[1]) << 16 |
               std::uint32_t(bytes[2]) << 8 | bytes[3];
    id.Data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
    id.Data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
    for (int i = 0; i < 8; ++i)
        id.Data4[i] = bytes[8 + i];
    return true;
}
} // namespace qo
