#pragma once

#include "KVTagLib/TagChanges.h"

#include <taglib/tbytevector.h>
#include <taglib/tiostream.h>

/// The ID3v1 tag, the last 128 bytes of some files: "TAG", title 30, artist 30, album 30, year 4,
/// comment 30 (whose last two bytes may be a zero and the track number), genre 1.
namespace KVTagLib
{
constexpr unsigned id3v1Bytes = 128;
/// So many of the last bytes of a file say whether it has the tag.
constexpr unsigned id3v1TailBytes = id3v1Bytes + 3;

/// The number of bytes of the ID3v1 tag of the file that ends with these bytes: 128, or 0 if it has
/// none. An APE tag of 131 bytes, "APETAGEX...", has the letters "TAG" at the same place.
unsigned id3v1SizeOf(const TagLib::ByteVector& tail);

/// Changes the ID3v1 tag at the end of the file, if there is one. Texts are cut to what it can hold
/// (30 letters), which is no loss where a better tag stands beside it.
void applyToId3v1(const TagChanges& changes, TagLib::IOStream& file);

/// Whether the file's ID3v1 tag can hold the new values completely, so that it need not be
/// accompanied by another one. A comment of 30 letters takes the place of the track number.
bool fitsId3v1(const TagChanges& changes, TagLib::IOStream& file);
} // namespace KVTagLib
