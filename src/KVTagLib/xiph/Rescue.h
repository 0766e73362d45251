#pragma once

#include <taglib/tiostream.h>

namespace KVTagLib
{
struct AudioFileContent;

// For files that TagLib does not open: these read what there is, and say in the content why such a
// file cannot be written. False if there is nothing.

/// The blocks of a FLAC file ahead of a damaged one, and what there is of that.
bool rescueFlac(TagLib::IOStream& file, AudioFileContent& content);
/// The first stream of sound in an Ogg file with several streams, such as a film.
bool rescueOgg(TagLib::IOStream& file, AudioFileContent& content);
} // namespace KVTagLib
