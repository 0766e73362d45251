#include "plugins/subsonic/SubsonicReply.h"
#include "plugins/webdav/DavListing.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

/// Any bytes are an answer of a music server and a listing of a WebDAV server, or neither. What a
/// track of a server is kept as gives the same track again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using qo::host::SubsonicItem;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    for (const SubsonicItem& track : qo::host::readSubsonicReply(bytes).tracks)
    {
        const SubsonicItem again = qo::host::subsonicTrackOf(qo::host::subsonicTrackText(track));
        if (again.id != track.id || again.title != track.title || again.album != track.album ||
            again.size != track.size || again.duration != track.duration)
            std::abort();
    }
    qo::host::DavListing listing;
    const std::size_t half = size / 2;
    if (listing.add(bytes.substr(0, half)) && listing.add(bytes.substr(half)))
        (void)listing.finish();
    return 0;
}
