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
/// A digest of everything in the file that a change of its tags must leave as it is: the sound,
/// what leads a player to it, and whatever else stands there that is no tag and no padding. Where
/// the bytes lie in the file does not matter, as long as the file itself still finds them. The same
/// before and after says that nothing but tags changed. With a limit only so many bytes of it
/// count, from its start. Empty if the file cannot be read or has not the structure of the format,
/// and where a WriteStop of the calling thread asks to stop.
std::optional<std::string>
digestOfSound(qo::IFile& file,
              AudioFormat format,
              std::int64_t limit = std::numeric_limits<std::int64_t>::max());
} // namespace KVTagLib
