#pragma once

#include "core/share/Offers.h"
#include "share/ShareKey.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace qo::host
{
/// What somebody has asked the server for, and what came of it.
struct ShareVisit
{
    std::string from;   ///< the number of the other machine
    CString friendName; ///< "" for a wrong share id
    CString path;       ///< of a file; "" for the extract
    std::int64_t bytes = 0;
    bool isWhole = false;
    int times = 1; ///< a wrong share id is told of once a second for each machine
};

/// Bounds that keep strangers from wearing the server out; tests take others.
struct ShareLimits
{
    unsigned connections = 256;
    unsigned connectionsOfOne = 64; ///< from one address
    unsigned stallSeconds = 30;     ///< no byte moves for so long
    unsigned requestSeconds = 10;   ///< a request, with what precedes it, is complete
    unsigned wrongIdPause = 2000;   ///< milliseconds until a wrong share id is answered
    unsigned waitingWrongIds = 32;  ///< more of them are cut off at once
};

/// Offers extracts and files over HTTPS. A request carries the share id ("Authorization: Bearer
/// ID"), so that it stands in no list of addresses:
///
///   GET /1/extract        the extract of that share
///   GET /1/files/17       the file in row 17 of that extract, also from a byte on ("Range")
///
/// A request for a file may say which one it means ("Qo-File", as fileMark() makes it); 410 when
/// the row has another one by now. Everything else is 403 for a wrong share id, and else 404 or
/// 405. A path never comes from
/// outside. It stands on libmicrohttpd, since a few threads then wait for any number of slow
/// clients, and its memory and connections are bounded; a server with a thread for each client is
/// stopped by as many clients as it has threads.
class ShareServer
{
public:
    /// Ends what is under way.
    virtual ~ShareServer() = default;

    virtual int port() const = 0;
};

/// Begins to serve at the number of one of this machine's own addresses. visited is called from the
/// server's threads, several at once, must not wait, and may be empty. The offers outlive the
/// server. Throws HostError.
std::unique_ptr<ShareServer> startShareServer(const ShareKey& key,
                                              const Offers& offers,
                                              const PeerAddress& address,
                                              const ShareLimits& limits,
                                              std::function<void(const ShareVisit&)> visited);
} // namespace qo::host
