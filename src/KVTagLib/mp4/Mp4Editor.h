#pragma once

#include "KVTagLib/TagChanges.h"

#include <taglib/tfilestream.h>

namespace KVTagLib
{
/// Changes the tag of an MP4 file in place. The tag is a list of items (atom "ilst") in
/// moov/udta/meta. TagLib adjusts everything that a change of its size moves, but drops items that
/// it has no type for. So the list is built here from the old items, byte for byte, and the new
/// ones, and TagLib only makes room for it:
///
///   1. read:      ilst { \251nam "Low", trkn 3, ---- "itunes data" }
///   2. build:     ilst { \251nam "Low Tide", trkn 3, ---- "itunes data" }, say 150 bytes
///   3. make room: TagLib writes a list of one text item that is 150 bytes long, and moves the rest
///   4. write:     the 150 bytes take the place of that item
///
/// False if the file does not have that structure, or its sound is in fragments.
bool editMp4(TagLib::FileStream& file, const TagChanges& changes);
} // namespace KVTagLib
