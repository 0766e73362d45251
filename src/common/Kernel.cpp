#include "common/Kernel.h"

#include "common/FileUtils.h"
#include "common/LoggerEx.h"
#include "common/Paths.h"
#include "common/Settings.h"
#include "common/SimpleLogger.h"
#include "common/TraceFile.h"
#include "common/TraceLog.h"

void initQoKernel(KVConfig* config, CKVModule* module)
{
    CQoSettings::declareCommon(config, module);
    CQoSettings::declareFolders();
    CQoSettings::declareQoSettings();

    const CString logDir = CQoPaths::getLogDir();
    qo::TraceLog::setBasePath(qo::combinePath(logDir, u"Trace"));
    // The two writers keep apart: one file each, or they would cut up each other's lines.
    qo::builtInLogger().setBasePath(qo::combinePath(logDir, u"QoKernel"));

    const int level = qo::levelFromName(CQoSettings::get(CQoSettings::TraceLevel));
    qo::TraceLog::setMaxLevel(level);
    qo::builtInLogger().setMaxLevel(level);
    // The database layer starts a log of its own at the highest level unless it finds one.
    InitSimpleLogger(level, qo::combinePath(logDir, u"QoDatabase"));
}
