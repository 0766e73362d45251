#pragma once

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/TagChanges.h"

#include <taglib/tfilestream.h>

namespace KVTagLib
{
/// Puts the changes into the file, in place. The kinds of tags stay those the file has, unless none
/// of them can hold a value or there is none. False when the file cannot be changed; it may then be
/// damaged, so hand in a copy.
bool editAudioFile(TagLib::FileStream& stream, AudioFormat format, const TagChanges& changes);
} // namespace KVTagLib
