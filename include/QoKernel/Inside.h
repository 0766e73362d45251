#pragma once

// What the command's own core needs beyond the public face: the facade over SQLite, its backup and
// its settings, work ahead of its turn, what a file system can hold, the replacement of files and
// the check of XML. It is not installed and promises nothing; host/core alone may include it.
#include "Database/src/DbFacade/SQLiteBackup.h"
#include "Database/src/DbFacade/SQLiteThreads.h"
#include "Database/src/DbFacade/SQLiteWrapper.h"
#include "common/XmlCheck.h"
#include "platform/AheadPool.h"
#include "platform/FileReplacement.h"
#include "platform/FolderNames.h"
#include "platform/TemporaryNames.h"
#include "platform/VolumeRules.h"
