#pragma once

#include "types/String.h"

/// A share with a friend, in either direction.
struct QoShareDbItem
{
    int id = 0; ///< row id, 0 while not stored
    int type = 0;
    CString peer;
    CString peerReceived;
    int files = 0;
    bool enable = false;
    CString shareId;
    CString oppositeShareId;
    CString invitation;
    bool initiator = false;
    bool notify = false;
    int state = 0;    ///< of this run, not stored
    int progress = 1; ///< of this run, not stored
};

using ShareDbItem = QoShareDbItem;
