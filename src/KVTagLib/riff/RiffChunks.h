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
    /// In a file with open sizes: whether the sound goes on to the end of the file.
    bool isOpenSound() const { return name == "data" && isOpenSize(size); }

    static bool isOpenSize(long size) { return size == 0 || size == 0xFFFFFFFF; }
};

/// Whether a WAV file that starts with these bytes was written into a pipe, so that nobody could
/// come back to write its sizes.
bool hasOpenSizes(const TagLib::ByteVector& head);

/// Hands over the chunks after the header of the file in their order, until the function returns
/// false. It may move the stream.
void forEachRiffChunk(TagLib::IOStream& stream,
                      bool bigEndian,
                      const std::function<bool(const RiffChunk&)>& work);
} // namespace KVTagLib
