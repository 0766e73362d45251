#pragma once

#include "types/String.h"

#include <cstdint>
#include <string_view>

namespace KVTagLib
{
/// The file formats that can be tagged.
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

AudioFormat formatOfPath(const CString& path);

/// By the first bytes of a file (64 are enough); unknown when they do not tell.
AudioFormat formatOfContent(std::string_view head);
} // namespace KVTagLib
