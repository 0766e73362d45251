#pragma once

#include <taglib/tbytevector.h>
#include <taglib/tiostream.h>

#include <functional>

/// Chunks, of which WAV and AIFF files consist: a name, a size, and a content.
namespace KVTagLib
{
struct RiffChunk
{
    static constexpr unsigned headerBytes = 8;

    TagLib::ByteVector name;
    long start = 0; ///< of the content
    long size = 0;  ///< that it claims to have; the file may end before

    bool isId3() const { return name == "ID3 " || name == "id3 "; }
};

/// Hands over the chunks after the header of the file in their order, until the function returns
/// false. It may move the stream.
void forEachRiffChunk(TagLib::IOStream& stream,
                      bool bigEndian,
                      const std::function<bool(const RiffChunk&)>& work);
} // namespace KVTagLib
