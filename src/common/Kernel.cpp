#include "common/Kernel.h"

#include "common/FileUtils.h"
#include "common/LoggerEx.h"
#include "common/Paths.h"
#include "common/Settings.h"
#include "common/SimpleLogger.h"
#include "common/TraceFile.h"
#include "common/TraceLog.h"

// The start of the kernel in the order in which the parts need each other: settings, folders for
// logs, the two logs of the kernel, and the log of the database layer.

void initQoKernel(KVConfig* config, CKVModule* module)
{
    CQoSettings::declareCommon(config, module);
    CQoSettings::declareFolders();
    CQoSettings::declareQoSettings();

    const CString logDir = CQoPaths::getLogDir();
    qo::TraceLog::setBasePath(qo::combinePath(logDir, u"Trace"));
    // Two files, since two writers would mix their lines in one.
    qo::builtInLogger().setBasePath(qo::combinePath(logDir, u"QoKernel"));

    const int level = qo::levelFromName(CQoSettings::get(CQoSettings::TraceLevel));
    qo::TraceLog::setMaxLevel(level);
    qo::builtInLogger().setMaxLevel(level);
    // The database layer would otherwise start a log of its own, at the highest level.
    InitSimpleLogger(level, qo::combinePath(logDir, u"QoDatabase"));
}
