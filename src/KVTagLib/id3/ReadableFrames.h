#pragma once

#include "KVTagLib/id3/FrameBounds.h"

#include <taglib/id3v2tag.h>
#include <taglib/tbytevector.h>
#include <taglib/tiostream.h>

/// Frames of ID3v2 tags that TagLib cannot read, or that it reads wrongly.
namespace KVTagLib
{
/// The content of a frame so that TagLib reads it, with its flags adjusted. Empty if there is
/// nothing to read.
///
///   a group's byte ahead of the content     goes, with its flag
///   UTF-16 without a byte order mark        gets one: little-endian, unless the other order gives
///                                           more letters
///   a text of an encoding that there is not comes to nothing
TagLib::ByteVector readableFrame(int version,
                                 const TagLib::ByteVector& id,
                                 TagLib::ByteVector& flags,
                                 const TagLib::ByteVector& body);

/// Completes what TagLib has read of the ID3v2 tag at the start of a file with the help of that
/// factory. TagLib ends at the first frame that it does not like (an id with a blank, no content),
/// and mistakes the size of extended headers.
void readOn(TagLib::ID3v2::Tag& tag, const BoundedFrameFactory& factory, TagLib::IOStream& stream);
/// Reads the frames of the tag in these bytes, unless TagLib has read more of them.
void readAgain(TagLib::ID3v2::Tag& tag, const TagLib::ByteVector& bytes);
} // namespace KVTagLib
