#pragma once

#include "LibraryPlan.h"

#include <taglib/tbytevector.h>

namespace library
{
/// The base sound with the track's tag, as the bytes of a file. The cover may be empty.
TagLib::ByteVector
taggedSound(const TagLib::ByteVector& sound, const Track& track, const TagLib::ByteVector& cover);

/// The picture with the name written into it, so that each album's picture is its own.
TagLib::ByteVector namedCover(const TagLib::ByteVector& jpeg, const std::string& name);
} // namespace library
