#pragma once

#include "KVTagLib/AudioFile.h"

#include <taglib/tbytevector.h>
#include <taglib/tiostream.h>

namespace KVTagLib
{
// For files that TagLib does not open: these read what there is, and say in the content why such a
// file cannot be written. False if there is nothing.

/// The blocks of a FLAC file ahead of a damaged one, and what there is of that.
bool rescueFlac(TagLib::IOStream& file, AudioFileContent& content);
/// The first stream of sound in an Ogg file with several streams, such as a film.
bool rescueOgg(TagLib::IOStream& file, AudioFileContent& content);

/// By the stream info block of FLAC, in a file of so many bytes.
AudioProperties flacProperties(const TagLib::ByteVector& streamInfo, long bytes);

/// The first two packets of the first stream of sound in an Ogg file; empty where there are none.
struct OggHead
{
    TagLib::ByteVector first;
    TagLib::ByteVector second;
    TagLib::ByteVector comment; ///< the second one without what the codec puts ahead of it
};
OggHead oggHeadOf(TagLib::IOStream& file);
} // namespace KVTagLib
