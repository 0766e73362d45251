#pragma once

#include "types/Guid.h"
#include "types/String.h"

/// A recorded radio stream, identified by its velmoraId. "Ac" stands for audio cutter.
struct AcStreamDbItem
{
    int id = 0; ///< row id, 0 while not stored
    GUID streamId;
    CString velmoraId;
    bool hidden = false;
    CString hiddenPath;
    int streamType = 0;
    int serverId = 0;
    CString stationName;
    CString mirrorUrl;
    int originalBitrate = 0; ///< kbit/s
    bool continuous = false;
    int encBitrate = 0; ///< kbit/s
};

/// A track that was cut from a stream, identified by its trackVelmoraId.
struct AcStreamTrackDbItem
{
    int id = 0; ///< row id, 0 while not stored
    GUID trackId;
    CString streamVelmoraId;
    CString trackVelmoraId;
    CString params; ///< see CAcParamsUtils
};
