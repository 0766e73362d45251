#pragma once

#include "core/base/HexText.h"

#include <nettle/sha2.h>

#include <string>
#include <string_view>

namespace qo::host
{
/// The SHA-256 of the bytes in 64 digits.
inline std::string digestText(std::string_view bytes)
{
    unsigned char digest[SHA256_DIGEST_SIZE];
    sha256_ctx context;
    ::sha256_init(&context);
    ::sha256_update(&context, bytes.size(), reinterpret_cast<const unsigned char*>(bytes.data()));
    ::sha256_digest(&context, sizeof(digest), digest);
    return hexText({reinterpret_cast<const char*>(digest), sizeof(digest)});
}
} // namespace qo::host
