#include "KVTagLib/AudioFile.h"

#include "KVTagLib/ByteStream.h"
#include "KVTagLib/TagText.h"
#include "KVTagLib/ape/ApeTag.h"
#include "KVTagLib/asf/AsfHeader.h"
#include "KVTagLib/id3/FrameBounds.h"
#include "KVTagLib/id3/ReadableFrames.h"
#include "KVTagLib/mp4/Mp4PlayTime.h"
#include "KVTagLib/riff/WavPlayTime.h"
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
#include <mutex>
#include <new>

// One table row for each format says how its TagLib file is opened and read. collectFrom() offers
// the tags of an open file, best first; readOpened() adds the properties of the sound; parse()
// detects the format, opens and reads.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr unsigned headBytes = 64;

// TagLib's class has no virtual destructor; nothing deletes one.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
/// INFO lists have texts of the machine that wrote them, which TagLib takes for UTF-8.
class InfoTexts final : public RIFF::Info::StringHandler
{
public:
    String parse(const ByteVector& bytes) const override { return textOfBytes(bytes); }
};
#pragma GCC diagnostic pop

void prepareInfoTexts()
{
    static const InfoTexts texts;
    static std::once_flag once;
    std::call_once(once, [] { RIFF::Info::Tag::setStringHandler(&texts); });
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

/// How the file of a format is opened, and how it is read when open.
using Opener = std::unique_ptr<TagLib::File> (*)(IOStream&, ID3v2::FrameFactory&);
using Collector = void (*)(TagLib::File&, AudioFileContent&);

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

struct FormatRow
{
    Opener open;
    Collector read;
};

template <class SomeFile>
constexpr FormatRow plain{openPlain<SomeFile>, readOpened<SomeFile>};
template <class SomeFile>
constexpr FormatRow withFrames{openWithFrames<SomeFile>, readOpened<SomeFile>};

/// In the order of AudioFormat.
constexpr FormatRow formats[] = {
    {nullptr, nullptr},
    withFrames<MPEG::File>,
    withFrames<FLAC::File>,
    plain<Ogg::Vorbis::File>,
    plain<Ogg::FLAC::File>,
    plain<Ogg::Speex::File>,
    plain<Ogg::Opus::File>,
    plain<MP4::File>,
    plain<ASF::File>,
    plain<RIFF::WAV::File>,
    plain<RIFF::AIFF::File>,
    plain<APE::File>,
    plain<WavPack::File>,
    plain<MPC::File>,
    withFrames<TrueAudio::File>,
};

const FormatRow& rowOf(AudioFormat format)
{
    return formats[static_cast<int>(format)];
}

/// The ID3v2 tag at the start of the file; null without one.
ID3v2::Tag* id3v2TagOf(TagLib::File& opened)
{
    const auto tagOf = [&opened]<class SomeFile>(SomeFile*) -> ID3v2::Tag*
    {
        auto* const file = dynamic_cast<SomeFile*>(&opened);
        return file && file->hasID3v2Tag() ? file->ID3v2Tag() : nullptr;
    };
    if (ID3v2::Tag* const tag = tagOf(static_cast<MPEG::File*>(nullptr)))
        return tag;
    if (ID3v2::Tag* const tag = tagOf(static_cast<FLAC::File*>(nullptr)))
        return tag;
    return tagOf(static_cast<TrueAudio::File*>(nullptr));
}

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
    const ByteVector head = stream.readBlock(headBytes);
    stream.seek(0, IOStream::Beginning);
    // These bytes are in the page that the parser reads first, so looking at them costs nothing.
    const AudioFormat found = formatOfContent({head.data(), head.size()});
    content.format = found != AudioFormat::unknown ? found : expected;
    const bool aiff = content.format == AudioFormat::aiff;
    if ((aiff || content.format == AudioFormat::wav) && hasUnboundedFrames(stream, aiff))
        return false;
    const FormatRow& row = rowOf(content.format);
    if (!row.open)
        return false;
    prepareInfoTexts();
    BoundedFrameFactory factory;
    const std::unique_ptr<TagLib::File> file = row.open(stream, factory);
    if (!file->isValid())
        return false;
    if (ID3v2::Tag* const tag = id3v2TagOf(*file))
        readOn(*tag, factory, stream);
    row.read(*file, content);
    if (content.format == AudioFormat::mp4)
        completeMp4(stream, content.properties);
    else if (content.format == AudioFormat::wav)
        completeWav(stream, content.properties);
    return holdsSomething(*file, content);
}
} // namespace

bool isLackOfMemory(const std::exception& exception)
{
    return dynamic_cast<const std::bad_alloc*>(&exception) &&
           !dynamic_cast<const std::bad_array_new_length*>(&exception);
}

bool readAudioFile(const CString& path,
                   AudioFormat expected,
                   AudioFileContent& content,
                   CString& error)
{
    int number = 0;
    auto file = qo::fileSystem().open(path, qo::OpenMode::read, number);
    if (file)
        return readAudioFile(std::move(file), expected, content, error);
    error = qo::errorText(number);
    return false;
}

bool readAudioFile(std::unique_ptr<qo::IFile> file,
                   AudioFormat expected,
                   AudioFileContent& content,
                   CString& error)
{
    try
    {
        ByteStream stream(std::move(file));
        const bool sound = stream.length() > 0 && parse(stream, expected, content);
        if (sound && !stream.exhausted())
            return true;
        error = stream.length() == 0 ? u"the file is empty"
                : sound              ? u"the file asks for more work than a sound file would"
                                     : u"the file is damaged or of another format";
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
} // namespace KVTagLib
