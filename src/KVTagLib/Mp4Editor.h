#pragma once

#include "KVTagLib/TagChanges.h"

#include <taglib/tfilestream.h>

namespace KVTagLib
{
/// Changes the tag of an MP4 file in place. TagLib moves everything that a change of size moves,
/// but drops the items it has no type for; so the list of items is made here from the old items,
/// byte for byte, and the new ones, and TagLib is only asked for room of that size. False if the
/// file has not the structure of such a file.
bool editMp4(TagLib::FileStream& file, const TagChanges& changes);
} // namespace KVTagLib
