#pragma once

#include "KVTagLib/AudioFormat.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace qo
{
class IFile;
}

namespace KVTagLib
{
/// A digest (SHA-256) of everything in the file that a change of its tags must leave as it is: the
/// sound, the tables that lead a player to it, and any other bytes that are neither tag nor
/// padding. Their position in the file does not matter as long as the file's own tables still find
/// them. Equal digests before and after a write mean that nothing but tags changed.
///
/// With a limit only that many bytes from the start of the sound count. Empty if the file cannot be
/// read, does not have the structure of the format, or a WriteStop of the calling thread asks to
/// stop.
///
///   MP3:   [ID3v2 tag][frames ........][APE tag][ID3v1 tag]      digest of: frames
///   FLAC:  [fLaC][stream info][comment][padding][frames .....]   digest of: stream info, frames
std::optional<std::string>
digestOfSound(qo::IFile& file,
              AudioFormat format,
              std::int64_t limit = std::numeric_limits<std::int64_t>::max());
} // namespace KVTagLib
