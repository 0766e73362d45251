#pragma once

#include "KVTagLib/AudioFile.h"

#include <taglib/tiostream.h>

namespace KVTagLib
{
/// Fills in the play time of a WAV file that was written into a pipe, so that its sizes are 0 or
/// all ones: the sound then goes on to the end of the file.
void completeWav(TagLib::IOStream& file, AudioProperties& properties);
} // namespace KVTagLib
