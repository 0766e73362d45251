#pragma once

#include "Logical/LTObject.h"
#include "Physical/Forward.h"
#include "common/PtrListT.h"

/// Text files (lyrics) that belong to one track, or to an album when no track fits. Several files
/// of one track share one object.
class QO_API CLTLyrics final : public CLTObject
{
public:
    CLTLyrics() : CLTObject(CLTObjectType::Lyrics, CString()) {}
    ~CLTLyrics() override;

    CString toString(bool full) const override;
    /// True while there are files.
    bool isUsed() const override { return !m_files.IsEmpty(); }

    const boost::shared_ptr<CLTTrack>& getTrack() const noexcept { return m_track; }
    const boost::shared_ptr<CLTAlbum>& getAlbum() const noexcept { return m_album; }
    const CPtrListT<CHDTextFile>& getFiles() const noexcept { return m_files; }

    // For CLTManager only: each sets one side of a link. Adding what is there and removing what is
    // not there do nothing.
    void setTrack(const boost::shared_ptr<CLTTrack>& track);
    void setAlbum(const boost::shared_ptr<CLTAlbum>& album);
    void addFile(const boost::shared_ptr<CHDTextFile>& file);
    void removeFile(const boost::shared_ptr<CHDTextFile>& file);

private:
    friend class CLTAlbum;

    boost::shared_ptr<CLTTrack> m_track;
    boost::shared_ptr<CLTAlbum> m_album;
    CPtrListT<CHDTextFile> m_files;
    qo::LinkStamp m_albumStamp = qo::neverLinked;
};
