#pragma once

#include "Logical/Forward.h"
#include "Logical/LTObjectType.h"
#include "Logical/LinkStamp.h"
#include "Logical/UnusedNotes.h"
#include "Physical/QoCheckObject.h"
#include "types/String.h"

#include <boost/shared_ptr.hpp>

/// A logical object: an artist, album, genre, track, lyrics or picture, as opposed to the files
/// (CHDObject) that it was derived from. Objects are made, linked, unlinked and released by
/// CLTManager only. Links are symmetric and both ends hold a handle, so an object ends through
/// CLTManager's release and clean-up, never by dropping handles alone. No locks: the host keeps
/// calls apart.
class QO_API CLTObject : public CQoCheckObject
{
public:
    CLTObject(CLTObjectType::EType type, const CString& name)
        : CQoCheckObject(OT_Logical), m_type(type), m_name(name)
    {
    }

    /// The display name with a prefix for the class, such as "Ar:ABBA"; the argument has no effect.
    CString toString(bool full) const override;
    /// True without a name, so for all lyrics and pictures.
    virtual bool isUnknown() const noexcept final { return m_name.IsEmpty(); }
    /// Whether anything still needs the object; each class says what counts.
    virtual bool isUsed() const = 0;

    /// The name, or "[unknown]".
    CString getDisplayName() const;
    CLTObjectType::EType getType() const noexcept { return m_type; }
    /// The name of the album, artist or genre, or the title of the track.
    const CString& getName() const noexcept { return m_name; }

protected:
    /// To be called after the loss of something that counts as use: tells the next clean-up to look
    /// here.
    void noteIfUnused() const noexcept
    {
        if (!isUsed())
            qo::UnusedNotes::instance().add(this, m_type);
    }

private:
    friend class CLTArtist;

    CLTObjectType::EType m_type;
    /// The stamp for the list of the artist that holds the object. It stands in this class because
    /// the bytes after m_type are free here.
    qo::LinkStamp m_artistStamp = qo::neverLinked;
    CString m_name;
};
