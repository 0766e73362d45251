#pragma once

#include "Physical/HDFile.h"

/// A text, by its extension: the lyrics of a track.
class QO_API CHDTextFile final : public CHDFile
{
public:
    CHDTextFile(Key, const boost::shared_ptr<QoFileDbItem>& item) : CHDFile(FT_Text, item) {}
};
