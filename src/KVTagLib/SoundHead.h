#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <cstdint>
#include <optional>

namespace KVTagLib
{
/// A digest of the first 64 KiB of a file's sound, tags and padding left out, so that it stays the
/// same when the file is tagged, moved or renamed; of the first 64 KiB of the file when it is no
/// sound file that can be made out. Empty if the file cannot be read. The same for two files says
/// that they begin alike, and with an equal size that they are most likely the same.
QO_API std::optional<std::uint64_t> digestOfSoundHead(const CString& path);
} // namespace KVTagLib
