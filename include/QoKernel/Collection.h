#pragma once

// The collection (CQoCollection), what a host changes in it, and its database (CQoCollDb).
#include "Database/src/DbFacade/SQLiteBackup.h"
#include "Database/src/DbFacade/SQLiteThreads.h"
#include "Database/src/DbFacade/SQLiteWrapper.h"
#include "QoColl/Collection/FileFinder.h"
#include "QoColl/Collection/FolderOfFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/QoFileChangeInfoList.h"
#include "QoColl/Collection/QoFileUtils.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "common/FilePathParts.h"
