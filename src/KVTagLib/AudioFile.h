#pragma once

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/TagValues.h"
#include "platform/FileSystem.h"
#include "types/String.h"

#include <exception>
#include <functional>
#include <memory>

namespace KVTagLib
{
class ByteStream;

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

/// Whether an allocation failed, and not for a size that no memory could hold.
bool isLackOfMemory(const std::exception& exception);

/// What is made of an open file; gives why it cannot be, or null for success.
using FileParser = std::function<const char16_t*(ByteStream&)>;

/// Lets the parser work on the file. False, with one sentence in error, when the file cannot be
/// opened, the parser says so, or the file asks for more work than a sound file would. Throws
/// nothing but std::bad_alloc, when memory is short: that says nothing of the file. The second form
/// takes over an open file.
bool parseFile(const CString& path, const FileParser& parser, CString& error);
bool parseFile(std::unique_ptr<qo::IFile> file, const FileParser& parser, CString& error);

/// The format by the first bytes, else the one that is expected. Leaves the stream at its start.
AudioFormat formatOf(ByteStream& stream, AudioFormat expected);

/// Reads tags and sound properties in one pass, as parseFile(). False also for a file that is
/// neither of the expected format nor of another known one.
bool readAudioFile(const CString& path,
                   AudioFormat expected,
                   AudioFileContent& content,
                   CString& error);
bool readAudioFile(std::unique_ptr<qo::IFile> file,
                   AudioFormat expected,
                   AudioFileContent& content,
                   CString& error);
} // namespace KVTagLib
