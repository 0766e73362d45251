#pragma once

#include "Physical/HDFile.h"

/// A picture, by its extension: a cover or an artist's portrait.
class QO_API CHDPictureFile final : public CHDFile
{
public:
    CHDPictureFile(Key, const boost::shared_ptr<QoFileDbItem>& item) : CHDFile(FT_Picture, item) {}
};
