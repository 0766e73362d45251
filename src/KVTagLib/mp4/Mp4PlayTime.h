#pragma once

#include "KVTagLib/AudioFile.h"

#include <taglib/tiostream.h>

namespace KVTagLib
{
/// Fills in what TagLib does not find in an MP4 file: the play time where the sound is FLAC, Opus,
/// AC-3 and the like or comes in fragments, or where there is video alone, and sampling rate and
/// channels of such a sound.
void completeMp4(TagLib::IOStream& file, AudioProperties& properties);
} // namespace KVTagLib
