#include "Physical/HDMusicFile.h"

#include "QoColl/Db/QoFileDbItem.h"
#include "QoColl/Db/VelmoraFileParams.h"
#include "QoColl/Db/VelmoraFileParamsUtils.h"

CHDMusicFile::CHDMusicFile(Key, const boost::shared_ptr<QoFileDbItem>& item)
    : CHDFile(FT_Music, item)
{
}

bool CHDMusicFile::hasMusicFilesRec() const
{
    return true;
}

void CHDMusicFile::setFileInfo()
{
    CHDFile::setFileInfo();
    m_tag.setTag(getDbItem());
}

int CHDMusicFile::getAudioVideoType() const
{
    return isVideo() ? AV_Video : AV_Audio;
}

bool CHDMusicFile::isVideo() const noexcept
{
    return (getDbItem()->flags & qo::fileFlag::video) != 0;
}

bool CHDMusicFile::isPodcast() const
{
    QorganizerDef::VelmoraFileParams params;
    return CVelmoraFileParamsUtils::FromDbParam(getDbItem()->params, params) &&
           params.source == IPostProcessingQueue::sourcePodcast;
}
