#pragma once

#include <QoKernel/Kernel.h>

#include <optional>
#include <string>

namespace qo::host
{
/// An address on a server: scheme, host and port, and a path as the server writes it, with
/// its percent signs.
struct HttpAddress
{
    std::string origin;     ///< "https://nas.example:8443"
    std::string path;       ///< "/dav/Music/"; a folder's ends in a slash
    std::string query = {}; ///< "id=1&f=json"; "" without one

    /// For people and for the log: without the query.
    std::string url() const { return origin + path; }
    std::string fullUrl() const { return query.empty() ? url() : url() + "?" + query; }
    bool isEncrypted() const { return origin.starts_with("https:"); }
    /// Whether it is this machine itself, which no wire leads to.
    bool isLoopback() const;
    /// An entry of this folder. A folder's name gets a slash.
    HttpAddress child(const std::string& name, bool isFolder) const;
    /// What the text, as a server gives it, means seen from here; nothing for another scheme, host
    /// or port, and for what is no address.
    std::optional<HttpAddress> resolve(const std::string& text) const;
    /// The decoded name of an entry of this folder; "" for what is not directly in it, and for what
    /// is no name.
    std::string nameIn(const HttpAddress& folder) const;
};

/// A typed address, of a folder. Throws HostError for another scheme than http and https, and for
/// an address with a user or a password.
HttpAddress parseHttpAddress(const CString& typed);
} // namespace qo::host
