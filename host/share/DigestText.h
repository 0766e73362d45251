#pragma once

#include "core/base/HexText.h"

#include <openssl/sha.h>

#include <string>
#include <string_view>

namespace qo::host
{
/// The SHA-256 of the bytes in 64 digits.
inline std::string digestText(std::string_view bytes)
{
    unsigned char digest[SHA256_DIGEST_LENGTH] = {};
    SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest);
    return hexText({reinterpret_cast<const char*>(digest), sizeof(digest)});
}
} // namespace qo::host
