#pragma once

#include "types/String.h"

#include <taglib/tbytevector.h>

/// Pictures inside tags and the files that hold them outside.
namespace KVTagLib
{
/// Larger pictures are neither extracted nor attached.
constexpr unsigned maxPictureBytes = 32U << 20;

struct PictureKind
{
    const char16_t* extension; ///< with the dot
    const char16_t* mimeType;
};

/// By the first bytes; null for what is no picture of a known kind.
const PictureKind* pictureKindOf(const TagLib::ByteVector& content);

/// Writes the picture into the folder under a name made from its content, unless it is there
/// already. The path of the file, empty on failure. Files appear complete or not at all.
CString storePicture(const CString& folder, const TagLib::ByteVector& content);

/// The content of a picture file; false if it cannot be read, is too large or of no known kind.
bool loadPicture(const CString& path, TagLib::ByteVector& content);
} // namespace KVTagLib
