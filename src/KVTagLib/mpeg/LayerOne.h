#pragma once

#include "KVTagLib/AudioFile.h"

#include <taglib/tiostream.h>

namespace KVTagLib
{
/// Fills in the properties of MPEG audio of layer 1, whose frames TagLib does not find unless they
/// have a checksum: without one they begin with twelve set bits and four more, where it takes a
/// second byte of all ones for no frame.
void completeMpeg(TagLib::IOStream& file, AudioProperties& properties);
} // namespace KVTagLib
