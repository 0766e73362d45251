#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <cstdint>
#include <optional>

namespace KVTagLib
{
/// A digest of the first 64 KiB of a file's sound, without tags and padding, so it stays the same
/// when the file is tagged, moved or renamed. For a file that is not a recognisable sound file it
/// is the digest of its first 64 KiB. Empty if the file cannot be read. Equal digests mean that two
/// files begin with the same sound; with equal sizes as well they are almost certainly the same.
QO_API std::optional<std::uint64_t> digestOfSoundHead(const CString& path);
} // namespace KVTagLib
