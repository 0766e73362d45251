#include "KVTagLib/AudioFile.h"

#include "KVTagLib/ByteStream.h"
#include "KVTagLib/TagText.h"
#include "KVTagLib/ape/ApeTag.h"
#include "KVTagLib/asf/AsfHeader.h"
#include "KVTagLib/id3/FrameBounds.h"
#include "KVTagLib/id3/ReadableFrames.h"
#include "KVTagLib/mp4/Mp4PlayTime.h"
#include "KVTagLib/mpeg/LayerOne.h"
#include "KVTagLib/riff/RiffChunks.h"
#include "KVTagLib/riff/WavPlayTime.h"
#include "KVTagLib/xiph/Rescue.h"
#include "platform/Platform.h"

#include <taglib/aifffile.h>
#include <taglib/apefile.h>
#include <taglib/asffile.h>
#include <taglib/flacfile.h>
#include <taglib/mp4file.h>
#include <taglib/mpcfile.h>
#include <taglib/mpegfile.h>
#include <taglib/oggflacfile.h>
#include <taglib/oggpageheader.h>
#include <taglib/opusfile.h>
#include <taglib/speexfile.h>
#include <taglib/trueaudiofile.h>
#include <taglib/vorbisfile.h>
#include <taglib/wavfile.h>
#include <taglib/wavpackfile.h>

#include <exception>
#include <limits>
#include <new>
#include <type_traits>

// One table row for each format says how its TagLib file is opened and read. collectFrom() offers
// the tags of an open file, best first; readOpened() adds the properties of the sound; parse()
// detects the format, opens and reads.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
// TagLib's class has no virtual destructor; nothing deletes one.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
/// INFO lists have texts of the machine that wrote them, which TagLib takes for UTF-8.
class InfoTexts final : public RIFF::Info::StringHandler
{
public:
    /// Lets TagLib ask this object.
    InfoTexts() { RIFF::Info::Tag::setStringHandler(this); }

    String parse(const ByteVector& bytes) const override { return textOfBytes(bytes); }
};
#pragma GCC diagnostic pop

/// Once for all formats and threads.
void useInfoTexts()
{
    static const InfoTexts texts;
}

/// For tags that a file may not have.
template <class Tag>
void collectIf(Tag* tag, TagValues& values)
{
    if (tag)
        collect(*tag, values);
}

/// TagLib leaves out what it does not like in these tags. Of a damaged one everything before the
/// damage is read.
template <class SomeFile>
void collectApe(SomeFile& file, TagValues& values)
{
    if (!file.hasAPETag())
        return;
    ApeTag tag;
    tag.load(file);
    collect(tag, values);
}

// Where a file has several tags, the one that can hold most is offered first.

void collectFrom(MPEG::File& file, TagValues& values)
{
    collectIf(file.hasID3v2Tag() ? file.ID3v2Tag() : nullptr, values);
    collectApe(file, values);
    collectIf(file.hasID3v1Tag() ? file.ID3v1Tag() : nullptr, values);
}

void collectFrom(FLAC::File& file, TagValues& values)
{
    if (values.wantsPictures())
    {
        for (const FLAC::Picture* picture : file.pictureList())
            collect(*picture, values);
    }
    collectIf(file.hasXiphComment() ? file.xiphComment() : nullptr, values);
    collectIf(file.hasID3v2Tag() ? file.ID3v2Tag() : nullptr, values);
    collectIf(file.hasID3v1Tag() ? file.ID3v1Tag() : nullptr, values);
}

void collectFrom(RIFF::WAV::File& file, TagValues& values)
{
    collectIf(file.hasID3v2Tag() ? file.ID3v2Tag() : nullptr, values);
    collectIf(file.hasInfoTag() ? file.InfoTag() : nullptr, values);
}

void collectFrom(RIFF::AIFF::File& file, TagValues& values)
{
    collectIf(file.hasID3v2Tag() ? file.tag() : nullptr, values);
}

void collectFrom(TrueAudio::File& file, TagValues& values)
{
    collectIf(file.hasID3v2Tag() ? file.ID3v2Tag() : nullptr, values);
    collectIf(file.hasID3v1Tag() ? file.ID3v1Tag() : nullptr, values);
}

/// Monkey's Audio, WavPack and Musepack.
template <class FileOfApeTag>
requires requires(FileOfApeTag& file)
{
    file.APETag(false);
}
void collectFrom(FileOfApeTag& file, TagValues& values)
{
    collectApe(file, values);
    collectIf(file.hasID3v1Tag() ? file.ID3v1Tag() : nullptr, values);
}

/// Of a damaged header everything before the damage is read.
void collectFrom(ASF::File& file, TagValues& values)
{
    AsfHeader header;
    header.load(file);
    collect(header, values);
}

/// Formats with one kind of tag.
template <class FileOfOneTag>
void collectFrom(FileOfOneTag& file, TagValues& values)
{
    collectIf(file.tag(), values);
}

template <class SomeFile>
void readOpened(TagLib::File& opened, AudioFileContent& content)
{
    auto& file = static_cast<SomeFile&>(opened);
    collectFrom(file, content.values);
    if (const auto* found = file.audioProperties())
        content.properties = {found->lengthInMilliseconds(),
                              found->bitrate(),
                              found->sampleRate(),
                              found->channels()};
}

/// Some encoders do not store the number of samples; then the position on the last page gives the
/// play time.
template <>
void readOpened<Ogg::FLAC::File>(TagLib::File& opened, AudioFileContent& content)
{
    auto& file = static_cast<Ogg::FLAC::File&>(opened);
    collectFrom(file, content.values);
    const FLAC::Properties* found = file.audioProperties();
    if (!found)
        return;
    AudioProperties& properties = content.properties;
    properties = {
        found->lengthInMilliseconds(), found->bitrate(), found->sampleRate(), found->channels()};
    const Ogg::PageHeader* last = file.lastPageHeader();
    if (properties.milliseconds > 0 || properties.sampleRate <= 0 || !last)
        return;
    const double milliseconds =
        1000.0 * static_cast<double>(last->absoluteGranularPosition()) / properties.sampleRate;
    if (milliseconds < 1 || milliseconds > std::numeric_limits<int>::max())
        return;
    properties.milliseconds = static_cast<int>(milliseconds);
    properties.bitrate = static_cast<int>(static_cast<double>(file.length()) * 8 / milliseconds);
}

template <class SomeFile>
std::unique_ptr<TagLib::File> openPlain(IOStream& stream, ID3v2::FrameFactory&)
{
    return std::make_unique<SomeFile>(&stream);
}

template <class SomeFile>
std::unique_ptr<TagLib::File> openWithFrames(IOStream& stream, ID3v2::FrameFactory& factory)
{
    return std::make_unique<SomeFile>(&stream, &factory);
}

template <class SomeFile>
constexpr bool isBigEndian = std::is_same_v<SomeFile, RIFF::AIFF::File>;

/// Null if a tag asks for more work than a sound file would.
template <class SomeFile>
std::unique_ptr<TagLib::File> openChunks(IOStream& stream, ID3v2::FrameFactory&)
{
    useInfoTexts();
    return hasUnboundedFrames(stream, isBigEndian<SomeFile>) ? nullptr
                                                             : std::make_unique<SomeFile>(&stream);
}

ID3v2::Tag* id3v2TagOf(RIFF::AIFF::File& file)
{
    return file.hasID3v2Tag() ? file.tag() : nullptr;
}
template <class SomeFile>
ID3v2::Tag* id3v2TagOf(SomeFile& file)
{
    return file.hasID3v2Tag() ? file.ID3v2Tag() : nullptr;
}

template <class SomeFile>
void readOnAtStart(TagLib::File& opened, const BoundedFrameFactory& factory, IOStream& stream)
{
    if (ID3v2::Tag* const tag = id3v2TagOf(static_cast<SomeFile&>(opened)))
        readOn(*tag, factory, stream);
}

/// Here TagLib takes no factory that could say how far it came, so the tag is always read again.
template <class SomeFile>
void readOnInChunks(TagLib::File& opened, const BoundedFrameFactory&, IOStream& stream)
{
    ID3v2::Tag* const tag = id3v2TagOf(static_cast<SomeFile&>(opened));
    if (!tag)
        return;
    const auto look = [&](const RiffChunk& chunk)
    {
        if (!chunk.isId3())
            return true;
        stream.seek(chunk.start);
        readAgain(*tag, stream.readBlock(static_cast<unsigned long>(chunk.size)));
        return false;
    };
    forEachRiffChunk(stream, isBigEndian<SomeFile>, look);
}

/// How the file of a format is opened, and how it is read when open. The last three may be null.
struct FormatRow
{
    std::unique_ptr<TagLib::File> (*open)(IOStream&, ID3v2::FrameFactory&);
    void (*read)(TagLib::File&, AudioFileContent&);
    /// Completes what TagLib read of an ID3v2 tag.
    void (*readOn)(TagLib::File&, const BoundedFrameFactory&, IOStream&);
    /// Completes the properties of the sound.
    void (*complete)(IOStream&, AudioProperties&);
    /// Reads what there is of a file that TagLib does not open.
    bool (*rescue)(IOStream&, AudioFileContent&);
};

template <class SomeFile>
constexpr FormatRow plain{openPlain<SomeFile>, readOpened<SomeFile>, nullptr, nullptr, nullptr};
template <class SomeFile>
constexpr FormatRow withFrames{
    openWithFrames<SomeFile>, readOpened<SomeFile>, readOnAtStart<SomeFile>, nullptr, nullptr};
template <class SomeFile>
constexpr FormatRow ofChunks{
    openChunks<SomeFile>, readOpened<SomeFile>, readOnInChunks<SomeFile>, nullptr, nullptr};

constexpr FormatRow completed(FormatRow row, void (*complete)(IOStream&, AudioProperties&))
{
    row.complete = complete;
    return row;
}

constexpr FormatRow rescued(FormatRow row, bool (*rescue)(IOStream&, AudioFileContent&))
{
    row.rescue = rescue;
    return row;
}

/// In the order of AudioFormat.
constexpr FormatRow formats[] = {
    {},
    completed(withFrames<MPEG::File>, completeMpeg),
    rescued(withFrames<FLAC::File>, rescueFlac),
    rescued(plain<Ogg::Vorbis::File>, rescueOgg),
    rescued(plain<Ogg::FLAC::File>, rescueOgg),
    rescued(plain<Ogg::Speex::File>, rescueOgg),
    rescued(plain<Ogg::Opus::File>, rescueOgg),
    completed(plain<MP4::File>, completeMp4),
    plain<ASF::File>,
    completed(ofChunks<RIFF::WAV::File>, completeWav),
    ofChunks<RIFF::AIFF::File>,
    plain<APE::File>,
    plain<WavPack::File>,
    plain<MPC::File>,
    withFrames<TrueAudio::File>,
};

/// TagLib accepts anything as MPEG audio, so there must be a frame or a tag.
bool holdsSomething(TagLib::File& file, const AudioFileContent& content)
{
    if (content.format != AudioFormat::mpeg)
        return true;
    const auto& mpeg = static_cast<MPEG::File&>(file);
    return content.properties.sampleRate > 0 || mpeg.hasID3v2Tag() || mpeg.hasID3v1Tag() ||
           mpeg.hasAPETag();
}

bool parse(ByteStream& stream, AudioFormat expected, AudioFileContent& content)
{
    content.format = formatOf(stream, expected);
    const FormatRow& row = formats[static_cast<int>(content.format)];
    BoundedFrameFactory factory;
    const std::unique_ptr<TagLib::File> file = row.open ? row.open(stream, factory) : nullptr;
    if (!file || !file->isValid())
        return file && row.rescue && row.rescue(stream, content);
    if (row.readOn)
        row.readOn(*file, factory, stream);
    row.read(*file, content);
    if (row.complete)
        row.complete(stream, content.properties);
    return holdsSomething(*file, content);
}
} // namespace

bool isLackOfMemory(const std::exception& exception)
{
    return dynamic_cast<const std::bad_alloc*>(&exception) &&
           !dynamic_cast<const std::bad_array_new_length*>(&exception);
}

bool parseFile(const CString& path, const FileParser& parser, CString& error)
{
    int number = 0;
    auto file = qo::fileSystem().open(path, qo::OpenMode::read, number);
    if (file)
        return parseFile(std::move(file), parser, error);
    error = qo::errorText(number);
    return false;
}

bool parseFile(std::unique_ptr<qo::IFile> file, const FileParser& parser, CString& error)
{
    try
    {
        ByteStream stream(std::move(file));
        const char16_t* const cause = parser(stream);
        if (!cause && !stream.exhausted())
            return true;
        error = cause ? cause : u"the file asks for more work than a sound file would";
    }
    catch (const std::exception& exception)
    {
        if (isLackOfMemory(exception))
            throw;
        // TagLib does not throw by itself: this is a failed allocation, of a size that the file
        // stated.
        error = u"the file is damaged";
    }
    return false;
}

AudioFormat formatOf(ByteStream& stream, AudioFormat expected)
{
    constexpr unsigned headBytes = 64;
    // These bytes are in the page that a parser reads first, so looking at them costs nothing.
    const ByteVector head = stream.readBlock(headBytes);
    stream.seek(0, IOStream::Beginning);
    const AudioFormat found = formatOfContent({head.data(), head.size()});
    return found != AudioFormat::unknown ? found : expected;
}

namespace
{
FileParser parserInto(AudioFileContent& content, AudioFormat expected)
{
    return [&content, expected](ByteStream& stream) -> const char16_t*
    {
        if (stream.length() == 0)
            return u"the file is empty";
        return parse(stream, expected, content) ? nullptr
                                                : u"the file is damaged or of another format";
    };
}
} // namespace

bool readAudioFile(const CString& path,
                   AudioFormat expected,
                   AudioFileContent& content,
                   CString& error)
{
    return parseFile(path, parserInto(content, expected), error);
}

bool readAudioFile(std::unique_ptr<qo::IFile> file,
                   AudioFormat expected,
                   AudioFileContent& content,
                   CString& error)
{
    return parseFile(std::move(file), parserInto(content, expected), error);
}
} // namespace KVTagLib
