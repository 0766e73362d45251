#pragma once

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/TagValues.h"
#include "platform/FileSystem.h"
#include "types/String.h"

#include <memory>

namespace KVTagLib
{
struct AudioProperties
{
    int milliseconds = 0;
    int bitrate = 0; ///< kbit/s
    int sampleRate = 0;
    int channels = 0;
};

/// What one look into a file gives.
struct AudioFileContent
{
    explicit AudioFileContent(bool withPictures) : values(withPictures) {}

    AudioFormat format = AudioFormat::unknown; ///< as found, whatever the extension says
    AudioProperties properties;
    TagValues values;
};

/// Reads tags and properties in one pass. False with a sentence when the file cannot be opened, is
/// not of the format and of no other known one, or asks for more work than a sound file could.
/// Never throws.
bool readAudioFile(const CString& path,
                   AudioFormat expected,
                   AudioFileContent& content,
                   CString& error);
bool readAudioFile(std::unique_ptr<qo::IFile> file,
                   AudioFormat expected,
                   AudioFileContent& content,
                   CString& error);
} // namespace KVTagLib
