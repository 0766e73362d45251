#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <cstdint>

class IQoProgress;

/// What a host is asked to fetch of one file of a peer.
struct ShareFileRequest
{
    CString localPath; ///< where the file goes; begun there already when the offset is not 0
    CString device;    ///< the id of the share, as it stands in paths
    CString fileId;    ///< the row of the file in the peer's database, from his extract
    std::int64_t offset = 0;
    IQoProgress* progress = nullptr; ///< gets the number of bytes, and is asked for a cancel
    bool flag1 = false;              ///< both are passed through from the caller
    bool flag2 = false;
    /// The file as the extract named it, in the share, and its size; "" and -1 where a caller does
    /// not know. The peer may have given the row to another file since.
    CString path = {};
    std::int64_t size = -1;
};

/// The transport to peers, which the host hands over with CQoShareManager. The kernel does no
/// networking. getFile() is called on the threads of downloads, several at once; the others on the
/// thread that works with the kernel. A call that fails says why in the host's own log.
class QO_API IVelmoraShareManager
{
public:
    virtual ~IVelmoraShareManager();
    /// Writes the peer's extract to the local path; not 0 on success.
    virtual int
    getExtract(const CString& device, const CString& localPath, IQoProgress* progress) = 0;
    /// The name of the share for display.
    virtual CString getDeviceName(const CString& device) = 0;
    /// Not 0 on success. After a failure the kernel removes the local file.
    virtual int getFile(const ShareFileRequest& request) = 0;
};
