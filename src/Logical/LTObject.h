#pragma once

#include "Logical/Forward.h"
#include "Logical/LTObjectType.h"
#include "Logical/LinkStamp.h"
#include "Logical/UnusedNotes.h"
#include "Physical/QoCheckObject.h"
#include "types/String.h"

#include <boost/shared_ptr.hpp>

/// An artist, album, genre, track, lyrics or picture, derived from the tags of files. Objects are
/// made, linked, unlinked and let go by CLTManager only. Links are symmetric and hold both ends, so
/// an object ends through CLTManager's release and clean-up, never by dropping handles alone. No
/// locks: the host keeps calls apart.
class QO_API CLTObject : public CQoCheckObject
{
public:
    CLTObject(CLTObjectType::EType type, const CString& name)
        : CQoCheckObject(OT_Logical), m_type(type), m_name(name)
    {
    }

    /// The display name behind a tag for the class; the flag changes nothing.
    CString toString(bool full) const override;
    /// Whether anything still gives the object a reason to exist.
    virtual bool isUsed() const = 0;

    /// Without a name: true of all lyrics and pictures.
    bool isUnknown() const noexcept { return m_name.IsEmpty(); }
    /// The name, or "[unknown]".
    CString getDisplayName() const;
    CLTObjectType::EType getType() const noexcept { return m_type; }
    /// Of the album, artist or genre, or the title of the track.
    const CString& getName() const noexcept { return m_name; }

protected:
    /// To be called after something that counts as use was taken away.
    void noteIfUnused() const noexcept
    {
        if (!isUsed())
            qo::UnusedNotes::instance().add(this, m_type);
    }

private:
    friend class CLTArtist;

    CLTObjectType::EType m_type;
    /// Of the artist's list for the type; here as there is a gap to fill.
    qo::LinkStamp m_artistStamp = qo::neverLinked;
    CString m_name;
};
