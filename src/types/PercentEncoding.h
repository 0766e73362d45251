#pragma once

#include <string>
#include <string_view>

namespace qo
{
/// "/a/b%20c": all bytes but letters and digits of ASCII, and the signs named plain, as two digits.
inline std::string percentEncoded(std::string_view bytes, std::string_view plainSigns)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes)
    {
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                             (c >= '0' && c <= '9') || plainSigns.find(c) != std::string_view::npos;
        if (isPlain)
        {
            text += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        text += {'%', digits[byte >> 4], digits[byte & 15]};
    }
    return text;
}
} // namespace qo
