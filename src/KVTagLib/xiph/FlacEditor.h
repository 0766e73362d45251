#pragma once

#include "KVTagLib/TagChanges.h"

namespace TagLib
{
class IOStream;
}

namespace KVTagLib
{
/// Changes the comment and the pictures of a FLAC file in place, and ID3 tags if it has any. Blocks
/// that do not change keep their bytes, and padding absorbs a change of size where it can. Throws
/// TagRefusal when that is not possible; the file may be damaged then.
///
///   before: fLaC | stream info | comment, 200 bytes | picture | padding, 4096 | frames
///   after:  fLaC | stream info | comment, 230 bytes | picture | padding, 4066 | frames (not moved)
void editFlac(TagLib::IOStream& file, const TagChanges& changes);
} // namespace KVTagLib
