#pragma once

#include "Physical/HDFile.h"

/// A picture, by its extension: a cover or an artist's portrait.
class QO_API CHDPictureFile final : public CHDFile
{
public:
    CHDPictureFile(Key, const boost::shared_ptr<QoFileDbItem>& item) : CHDFile(FT_Picture, item) {}
    ~CHDPictureFile() override;

    /// The picture object, its album, and the artist of that album or else of the picture.
    boost::shared_ptr<CLTObject> getLTAssoc(CLTObjectType::EType type) const override;
    bool hasLTAssoc(const boost::shared_ptr<CLTObject>& object) const override;
    void clearLTObjects() override;

    /// For CLTManager only: the file's side of the link. See qo::setLTMember for what it refuses.
    void setPicture(const boost::shared_ptr<CLTPicture>& picture);
    const boost::shared_ptr<CLTPicture>& getPicture() const noexcept { return m_picture; }

private:
    boost::shared_ptr<CLTPicture> m_picture;
};
