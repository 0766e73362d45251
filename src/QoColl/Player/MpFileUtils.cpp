#include "QoColl/Player/MpFileUtils.h"

#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "common/Paths.h"

namespace
{
/// Recordings and conversions keep the quality of their cut in fields of their own.
CCutQuality::ECutQuality& cutQualityOf(QorganizerDef::VelmoraFileParams& params)
{
    const bool isRecording = params.source == IPostProcessingQueue::sourceRadioRecording ||
                             params.source == IPostProcessingQueue::sourceRadioWish;
    return isRecording ? params.recordingCutQuality : params.conversionCutQuality;
}
} // namespace

void CMpFileUtils::SetManualCutQuality(QoFileDbItemPtr& item)
{
    QorganizerDef::VelmoraFileParams params;
    if (!CVelmoraFileParamsUtils::FromDbParam(item->params, params))
        return;
    CCutQuality::ECutQuality& quality = cutQualityOf(params);
    if (quality == CCutQuality::qualityBest)
        return;
    quality = CCutQuality::qualityBest;
    item->params = CVelmoraFileParamsUtils::ToDbParam(params);
    CQoCollDb(CQoPaths::getQoDbFilePath()).updateFile(item);
}

bool CMpFileUtils::GetFileFromDevice(int id, QoFileDbItemPtr& item)
{
    return CQoCollDb(CQoPaths::getQoDbFilePath()).getFileFromDevice(id, item);
}
