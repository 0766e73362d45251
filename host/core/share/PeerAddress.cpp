#include "core/share/PeerAddress.h"

#include <algorithm>
#include <charconv>

namespace qo::host
{
namespace
{
constexpr std::size_t digestDigits = 64;
constexpr std::size_t longestHost = 255;
constexpr int highestPort = 65535;

bool isDigest(std::string_view text)
{
    return text.size() == digestDigits &&
           text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// A name goes into an address of the web, where other signs would lead elsewhere.
bool isHost(std::string_view host)
{
    if (host.empty() || host.size() > longestHost)
        return false;
    const bool isNumber6 = host.size() > 2 && host.front() == '[' && host.back() == ']';
    const std::string_view bare = isNumber6 ? host.substr(1, host.size() - 2) : host;
    return std::ranges::all_of(bare,
                               [&](char c)
                               {
                                   const bool isPlain = (c >= 'a' && c <= 'z') ||
                                                        (c >= 'A' && c <= 'Z') ||
                                                        (c >= '0' && c <= '9') || c == '.';
                                   return isPlain || c == (isNumber6 ? ':' : '-');
                               });
}
} // namespace

std::string PeerAddress::place() const
{
    return host + ":" + std::to_string(port);
}

std::string PeerAddress::linkText() const
{
    return place() + "," + keyDigest + "," + text;
}

std::optional<PeerAddress> PeerAddress::ofPlace(std::string_view typed)
{
    PeerAddress address;
    // The colons of an IPv6 number stand before its bracket.
    const std::size_t colon = typed.rfind(':');
    const bool hasPort = colon != std::string_view::npos && !typed.ends_with(']');
    address.host = typed.substr(0, hasPort ? colon : typed.size());
    if (hasPort)
    {
        const std::string_view port = typed.substr(colon + 1);
        const auto [end, error] =
            std::from_chars(port.data(), port.data() + port.size(), address.port);
        if (error != std::errc() || end != port.data() + port.size() || address.port < 1 ||
            address.port > highestPort)
            return {};
    }
    return isHost(address.host) ? std::optional(address) : std::nullopt;
}

std::optional<PeerAddress> PeerAddress::ofLinkText(std::string_view text)
{
    const std::size_t first = text.find(',');
    const std::size_t second = first == std::string_view::npos ? first : text.find(',', first + 1);
    if (second == std::string_view::npos)
        return {};
    auto address = ofPlace(text.substr(0, first));
    const std::string_view digest = text.substr(first + 1, second - first - 1);
    if (!address || !isDigest(digest))
        return {};
    address->keyDigest = digest;
    address->text = text.substr(second + 1);
    return address;
}
} // namespace qo::host
