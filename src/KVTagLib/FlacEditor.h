#pragma once

#include "KVTagLib/TagChanges.h"

namespace TagLib
{
class IOStream;
}

namespace KVTagLib
{
/// Changes the comment and the pictures of a FLAC file in place, and the ID3 tags that it has
/// beside them. Blocks that do not change stay as their bytes. False when that cannot be done; the
/// file may then be damaged.
bool editFlac(TagLib::IOStream& file, const TagChanges& changes);
} // namespace KVTagLib
