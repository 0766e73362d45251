#include "Logical/LTGenre.h"

#include "Logical/LTTrack.h"

#include <functional>

namespace
{
int compareAddresses(const boost::shared_ptr<CLTTrack>& a, const boost::shared_ptr<CLTTrack>& b)
{
    // std::less orders addresses of unrelated objects, which the operator < need not.
    const std::less<const CLTTrack*> less;
    return static_cast<int>(less(b.get(), a.get())) - static_cast<int>(less(a.get(), b.get()));
}
} // namespace

CLTGenre::CLTGenre(const CString& name)
    : CLTObject(CLTObjectType::Genre, name), m_tracks(compareAddresses)
{
}

CLTGenre::~CLTGenre() = default;

CString CLTGenre::toString(bool full) const
{
    CString text;
    text.Format(u"Ge:%s", CLTObject::toString(full));
    return text;
}

void CLTGenre::addTrack(const boost::shared_ptr<CLTTrack>& track)
{
    // Tracks that are made one after the other usually have ascending addresses.
    if (!m_tracks.IsEmpty() && compareAddresses(m_tracks[m_tracks.GetUpperBound()], track) < 0)
        m_tracks.Add(track);
    else
        m_tracks.addUnique(track);
}

void CLTGenre::removeTrack(const boost::shared_ptr<CLTTrack>& track)
{
    m_tracks.remove(track);
    noteIfUnused();
}
