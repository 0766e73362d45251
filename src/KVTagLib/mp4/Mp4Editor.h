#pragma once

#include "KVTagLib/TagChanges.h"

#include <taglib/tfilestream.h>

namespace KVTagLib
{
/// Changes the tag of an MP4 file in place, in fragments or not. The tag is a list of items (atom
/// "ilst") in moov/udta/meta. TagLib drops items that it has no type for, so the list is built here
/// from the old items, byte for byte, and the new ones:
///
///   before:  ilst { \251nam "Low", trkn 3, ---- "itunes data" }
///   after:   ilst { \251nam "Low Tide", trkn 3, ---- "itunes data" }
///
/// Throws TagRefusal if the file does not have that structure.
void editMp4(TagLib::FileStream& file, const TagChanges& changes);
} // namespace KVTagLib
