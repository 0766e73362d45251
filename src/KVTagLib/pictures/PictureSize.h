#pragma once

#include <taglib/tbytevector.h>

namespace KVTagLib
{
struct PictureSize
{
    int width = 0; ///< pixels
    int height = 0;
};

/// The size that a JPEG, PNG, GIF, BMP or WebP picture states in its headers, without unpacking it;
/// zeros where there is none. Safe for any bytes.
PictureSize pictureSizeOf(const TagLib::ByteVector& picture);
} // namespace KVTagLib
