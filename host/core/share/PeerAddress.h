#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qo::host
{
/// Where a share is served and how its server is known again, as an invitation carries it in its
/// further text:
///
///   nas.example:4747,9f86d081...0f00a08,my attic
///
/// The middle is the SHA-256 of the server's public key, in 64 lower-case digits, and the last part
/// what the inviting user has to say; it may have commas.
struct PeerAddress
{
    static constexpr int usualPort = 4747;

    std::string host; ///< a name or a number; an IPv6 number stands in brackets
    int port = usualPort;
    std::string keyDigest;
    std::string text;

    /// "host:port".
    std::string place() const;
    std::string linkText() const;
    /// Nothing for a text that is no such address.
    static std::optional<PeerAddress> ofLinkText(std::string_view text);
    /// Reads "host", "host:port" or "[::1]:port"; nothing for anything else.
    static std::optional<PeerAddress> ofPlace(std::string_view typed);
};
} // namespace qo::host
