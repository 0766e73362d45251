#pragma once

#include "Physical/HDFile.h"

/// A file that is neither music nor picture nor text; it never has logical objects.
class QO_API CHDOtherFile final : public CHDFile
{
public:
    CHDOtherFile(Key, const boost::shared_ptr<QoFileDbItem>& item) : CHDFile(FT_Other, item) {}
};
