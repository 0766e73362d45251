#pragma once

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/TagChanges.h"

#include <taglib/tfilestream.h>

namespace KVTagLib
{
/// Changes the tags of a WAV or AIFF file in place: its ID3v2 chunk and, in WAV, the list of INFO
/// texts. A missing chunk is made only where the other one cannot hold the change. A WAV file that
/// came out of a pipe, with open sizes, gets the true ones. Throws TagRefusal if a chunk cannot be
/// taken apart without loss.
///
///   before: RIFF WAVE | fmt | data | LIST INFO { INAM "Low", ISFT "Recorder 1.0" }
///   after:  RIFF WAVE | fmt | data | LIST INFO { ISFT "Recorder 1.0", INAM "Low Tide" }
void editRiff(TagLib::FileStream& stream, AudioFormat format, const TagChanges& changes);
} // namespace KVTagLib
