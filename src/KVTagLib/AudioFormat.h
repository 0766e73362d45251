#pragma once

#include "types/String.h"

#include <cstdint>
#include <string_view>

namespace KVTagLib
{
/// The file formats whose tags are read and written.
enum class AudioFormat : std::uint8_t
{
    unknown,
    mpeg,
    flac,
    vorbis,
    oggFlac,
    speex,
    opus,
    mp4,
    asf,
    wav,
    aiff,
    ape,
    wavPack,
    musepack,
    trueAudio
};

/// By the extension of a path in collection form; unknown for any other.
AudioFormat formatOfPath(const CString& path);

/// By the first bytes of a file (64 are enough); unknown when they are ambiguous. MPEG audio has no
/// reliable mark, so it is unknown here too.
AudioFormat formatOfContent(std::string_view head);
} // namespace KVTagLib
