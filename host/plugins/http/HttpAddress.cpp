#include "plugins/http/HttpAddress.h"

#include "core/base/HostError.h"

#include <curl/curl.h>

#include <memory>

namespace qo::host
{
namespace
{
using UrlHandle = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

std::string partOf(CURLU* url, CURLUPart part, unsigned flags = 0)
{
    char* text = nullptr;
    if (curl_url_get(url, part, &text, flags) != CURLUE_OK)
        return {};
    std::string copy = text;
    curl_free(text);
    return copy;
}

HttpAddress addressOf(CURLU* url)
{
    return {partOf(url, CURLUPART_SCHEME) + "://" + partOf(url, CURLUPART_HOST) + ":" +
                partOf(url, CURLUPART_PORT, CURLU_DEFAULT_PORT),
            partOf(url, CURLUPART_PATH),
            partOf(url, CURLUPART_QUERY)};
}
} // namespace

bool HttpAddress::isLoopback() const
{
    const std::string host = origin.substr(origin.find("//") + 2);
    return host.starts_with("127.0.0.1:") || host.starts_with("localhost:") ||
           host.starts_with("[::1]:");
}

HttpAddress HttpAddress::child(const std::string& name, bool isFolder) const
{
    return {origin, path + percentEncoded(name, "-._~") + (isFolder ? "/" : ""), {}};
}

std::optional<HttpAddress> HttpAddress::resolve(const std::string& text) const
{
    const UrlHandle base(curl_url(), curl_url_cleanup);
    if (!base || curl_url_set(base.get(), CURLUPART_URL, url().c_str(), 0) != CURLUE_OK ||
        curl_url_set(base.get(), CURLUPART_URL, text.c_str(), CURLU_URLENCODE) != CURLUE_OK)
        return {};
    HttpAddress address = addressOf(base.get());
    if (address.origin != origin)
        return {};
    return address;
}

std::string HttpAddress::nameIn(const HttpAddress& folder) const
{
    const std::string bare = path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
    const std::size_t slash = bare.rfind('/');
    // The two may spell the same letter in two ways, as "(" and "%28".
    if (slash == std::string::npos ||
        percentDecoded(bare.substr(0, slash + 1)) != percentDecoded(folder.path) ||
        path == folder.path)
        return {};
    std::string name = percentDecoded(bare.substr(slash + 1));
    if (name.find('\0') != std::string::npos || name == "." || name == "..")
        return {};
    for (char& c : name)
        c = c == '/' ? '_' : c;
    return name;
}

HttpAddress parseHttpAddress(const CString& typed)
{
    const std::string text = toUtf8(typed);
    const UrlHandle url(curl_url(), curl_url_cleanup);
    if (!url || curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_URLENCODE) != CURLUE_OK)
        throw HostError(ExitCode::usage, "the address cannot be read");
    const std::string scheme = partOf(url.get(), CURLUPART_SCHEME);
    if (scheme != "https" && scheme != "http")
        throw HostError(ExitCode::usage, "the address of a server begins with https:// or http://");
    if (!partOf(url.get(), CURLUPART_USER).empty() ||
        !partOf(url.get(), CURLUPART_PASSWORD).empty())
        throw HostError(ExitCode::usage,
                        "leave the user and the password out of the address; --user names the "
                        "user");
    HttpAddress address = addressOf(url.get());
    address.query.clear();
    if (!address.path.ends_with('/'))
        address.path += '/';
    return address;
}
} // namespace qo::host
