#include "Logical/LTLyrics.h"

#include "Logical/LTMember.h"

CLTLyrics::~CLTLyrics() = default;

CString CLTLyrics::toString(bool /*full*/) const
{
    return u"Lyr";
}

void CLTLyrics::setTrack(const boost::shared_ptr<CLTTrack>& track)
{
    qo::setLTMember(m_track, track);
}

void CLTLyrics::setAlbum(const boost::shared_ptr<CLTAlbum>& album)
{
    qo::setLTMember(m_album, album);
}

void CLTLyrics::addFile(const boost::shared_ptr<CHDTextFile>& file)
{
    m_files.addUnique(file);
}

void CLTLyrics::removeFile(const boost::shared_ptr<CHDTextFile>& file)
{
    m_files.remove(file);
    noteIfUnused();
}
