#pragma once

#include <string>
#include <string_view>

namespace qo::host
{
/// Each byte as two digits in lower case.
inline std::string hexText(std::string_view bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char c : bytes)
    {
        const auto byte = static_cast<unsigned char>(c);
        text += {digits[byte >> 4], digits[byte & 15]};
    }
    return text;
}
} // namespace qo::host
