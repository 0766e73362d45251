#pragma once

#include "QoColl/Db/Records/Forward.h"
#include "QoColl/Db/Records/ItemSource.h"
#include "types/FileTime.h"
#include "types/String.h"

/// A session of recording; the files that were recorded in it have its id.
struct QoSessionDbItem
{
    int id = 0; ///< row id, 0 while not stored
    CString name;
    eItemSource source = IPostProcessingQueue::sourceNone;
    FILETIME startTime;
    FILETIME endTime;
};

/// A session and the number of files with its id.
struct QoSessionQueryItem
{
    boost::shared_ptr<QoSessionDbItem> session;
    int fileCount = 0;
};
