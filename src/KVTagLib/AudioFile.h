#pragma once

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/TagValues.h"
#include "platform/FileSystem.h"
#include "types/String.h"

#include <exception>
#include <memory>

namespace KVTagLib
{
/// What a player shows of the sound; 0 where it is not known.
struct AudioProperties
{
    int milliseconds = 0;
    int bitrate = 0;    ///< kbit/s
    int sampleRate = 0; ///< Hz; 0 also says that no sound was found
    int channels = 0;
};

/// The result of reading one file.
struct AudioFileContent
{
    explicit AudioFileContent(TagExtent extent) : values(extent) {}

    AudioFormat format = AudioFormat::unknown; ///< as found, whatever the extension says
    AudioProperties properties;
    TagValues values;
    CString obstacle = {}; ///< why the file can be read but not written; "" for most
};

/// By the stream info block of FLAC, in a file of so many bytes.
AudioProperties flacProperties(const TagLib::ByteVector& streamInfo, long bytes);

/// Whether an allocation failed, and not for a size that no memory could hold.
bool isLackOfMemory(const std::exception& exception);

/// Reads tags and sound properties in one pass. False, with one sentence in error, when the file
/// cannot be opened, is neither of the expected format nor of another known one, or asks for more
/// work than a sound file could. Throws nothing but std::bad_alloc, when memory is short: that says
/// nothing of the file. The second form takes over an open file.
bool readAudioFile(const CString& path,
                   AudioFormat expected,
                   AudioFileContent& content,
                   CString& error);
bool readAudioFile(std::unique_ptr<qo::IFile> file,
                   AudioFormat expected,
                   AudioFileContent& content,
                   CString& error);
} // namespace KVTagLib
