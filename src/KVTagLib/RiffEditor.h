#pragma once

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/TagChanges.h"

#include <taglib/tfilestream.h>

namespace KVTagLib
{
/// Changes the tags of a WAV or AIFF file in place: its ID3v2 chunk and, in WAV, the list of INFO
/// texts. A chunk that is missing is only made where the others cannot hold the change. False if
/// a chunk cannot be taken apart without loss.
bool editRiff(TagLib::FileStream& stream, AudioFormat format, const TagChanges& changes);
} // namespace KVTagLib
