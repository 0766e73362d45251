#pragma once

#include "types/String.h"

#include <taglib/tbytevector.h>

/// Files that hold the pictures of tags: reading them from tags and loading them for tags.
namespace KVTagLib
{
/// Larger pictures (32 MiB) are neither extracted from tags nor written into them.
constexpr unsigned maxPictureBytes = 32U << 20;

struct PictureKind
{
    const char16_t* extension; ///< with the dot
    const char16_t* mimeType;
};

/// The kind of a picture by its first bytes; null if it is none of JPEG, PNG, GIF, WebP, BMP.
const PictureKind* pictureKindOf(const TagLib::ByteVector& content);
/// The same with a kind for any other content: ".bin".
const PictureKind& anyKindOf(const TagLib::ByteVector& content);

/// Writes the picture, whatever its kind, into the folder, under a name made from a digest of its
/// content, unless it is there already. Gives the path of the file, or "" on failure. Files appear
/// complete or not at all, and the same picture of many tracks is one file.
CString storePicture(const CString& folder, const TagLib::ByteVector& content);

/// Loads a picture file; false if it cannot be read, is too large or of no known kind.
bool loadPicture(const CString& path, TagLib::ByteVector& content);
} // namespace KVTagLib
