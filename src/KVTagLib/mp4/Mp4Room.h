#pragma once

#include <taglib/tfilestream.h>

#include <functional>

namespace KVTagLib
{
/// Gives the new content of a list of tags for the old one, which is empty where there is none.
using ItemListEdit = std::function<TagLib::ByteVector(const TagLib::ByteVector& old)>;

/// Changes an MP4 file's list of tags, moov/udta/meta/ilst, or makes one. Padding beside the list
/// is used up before the file grows. When it does, the positions in its tables that point behind
/// the movie header grow with it.
///
///   ftyp | moov { trak { ... stco 1000 }, udta { meta { ilst 300, free 8 } } } | mdat at 992
///   a list of 304 bytes in place of 300: four bytes do not fit in eight less a header of eight, so
///   ftyp | moov { trak { ... stco 2020 }, udta { meta { ilst 304, free 1024 } } } | mdat at 2012
///
/// Throws TagRefusal when the file is damaged or a position has no room to grow.
void editItemList(TagLib::FileStream& file, const ItemListEdit& edit);
} // namespace KVTagLib
