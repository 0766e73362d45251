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

/// The bytes again. What is no "%" with two digits stays as it is.
inline std::string percentDecoded(std::string_view text)
{
    const auto valueOf = [](char c)
    {
        return c >= '0' && c <= '9'   ? c - '0'
               : c >= 'A' && c <= 'F' ? c - 'A' + 10
               : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                      : -1;
    };
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const int high = text[i] == '%' && i + 2 < text.size() ? valueOf(text[i + 1]) : -1;
        const int low = high >= 0 ? valueOf(text[i + 2]) : -1;
        bytes += low >= 0 ? static_cast<char>(high * 16 + low) : text[i];
        i += low >= 0 ? 2 : 0;
    }
    return bytes;
}
} // namespace qo
