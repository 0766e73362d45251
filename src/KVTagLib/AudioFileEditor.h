#pragma once

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/TagChanges.h"

#include <taglib/tfilestream.h>

namespace KVTagLib
{
/// Makes the changes in the file, in place. The kinds of tags that the file has are kept; a new
/// kind is added only if there is none or none of them can hold a value. Throws TagRefusal for a
/// file that cannot be changed without loss. It may be damaged then, so hand over a copy.
void editAudioFile(TagLib::FileStream& stream, AudioFormat format, const TagChanges& changes);
} // namespace KVTagLib
