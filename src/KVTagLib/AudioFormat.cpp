#include "KVTagLib/AudioFormat.h"

#include "KVTagLib/ValidExtensions.h"
#include "types/CharClass.h"

using namespace std::string_view_literals;

namespace KVTagLib
{
namespace
{
struct Extension
{
    std::u16string_view text;
    AudioFormat format;
};

/// Frequent extensions first, since the list is searched from its start.
constexpr Extension extensions[] = {
    {u"mp3"sv, AudioFormat::mpeg},     {u"flac"sv, AudioFormat::flac},
    {u"m4a"sv, AudioFormat::mp4},      {u"ogg"sv, AudioFormat::vorbis},
    {u"opus"sv, AudioFormat::opus},    {u"wma"sv, AudioFormat::asf},
    {u"wav"sv, AudioFormat::wav},      {u"mp2"sv, AudioFormat::mpeg},
    {u"mp1"sv, AudioFormat::mpeg},     {u"m4b"sv, AudioFormat::mp4},
    {u"m4p"sv, AudioFormat::mp4},      {u"m4r"sv, AudioFormat::mp4},
    {u"mp4"sv, AudioFormat::mp4},      {u"m4v"sv, AudioFormat::mp4},
    {u"3gp"sv, AudioFormat::mp4},      {u"3g2"sv, AudioFormat::mp4},
    {u"aax"sv, AudioFormat::mp4},      {u"oga"sv, AudioFormat::vorbis},
    {u"spx"sv, AudioFormat::speex},    {u"asf"sv, AudioFormat::asf},
    {u"wmv"sv, AudioFormat::asf},      {u"aiff"sv, AudioFormat::aiff},
    {u"aif"sv, AudioFormat::aiff},     {u"aifc"sv, AudioFormat::aiff},
    {u"ape"sv, AudioFormat::ape},      {u"wv"sv, AudioFormat::wavPack},
    {u"mpc"sv, AudioFormat::musepack}, {u"mp+"sv, AudioFormat::musepack},
    {u"mpp"sv, AudioFormat::musepack}, {u"tta"sv, AudioFormat::trueAudio},
};

/// The codec of an Ogg stream is named at the start of its first packet.
AudioFormat oggCodec(std::string_view head)
{
    constexpr std::size_t segmentCountAt = 26;
    if (head.size() <= segmentCountAt)
        return AudioFormat::unknown;
    // The first packet starts after the table of segment lengths.
    const std::size_t packetAt =
        segmentCountAt + 1 + static_cast<unsigned char>(head[segmentCountAt]);
    if (packetAt >= head.size())
        return AudioFormat::unknown;
    const std::string_view packet = head.substr(packetAt);
    if (packet.starts_with("\x01vorbis"sv))
        return AudioFormat::vorbis;
    if (packet.starts_with("OpusHead"sv))
        return AudioFormat::opus;
    if (packet.starts_with("Speex   "sv))
        return AudioFormat::speex;
    return packet.starts_with("\x7f"
                              "FLAC"sv)
               ? AudioFormat::oggFlac
               : AudioFormat::unknown;
}
} // namespace

AudioFormat formatOfPath(const CString& path)
{
    const std::u16string_view text = path.view();
    const std::size_t dot = text.find_last_of(u".\\");
    if (dot == std::u16string_view::npos || text[dot] != u'.')
        return AudioFormat::unknown;
    for (const Extension& known : extensions)
    {
        if (qo::compareNoCase(text.substr(dot + 1), known.text) == 0)
            return known.format;
    }
    return AudioFormat::unknown;
}

AudioFormat formatOfContent(std::string_view head)
{
    if (head.starts_with("OggS"sv))
        return oggCodec(head);
    // RIFF and IFF files name their content after their own size.
    const std::string_view kind = head.size() >= 12 ? head.substr(8, 4) : ""sv;
    if ((head.starts_with("RIFF"sv) || head.starts_with("RF64"sv)) && kind == "WAVE"sv)
        return AudioFormat::wav;
    if (head.starts_with("FORM"sv) && (kind == "AIFF"sv || kind == "AIFC"sv))
        return AudioFormat::aiff;
    if (head.size() >= 8 && head.substr(4, 4) == "ftyp"sv)
        return AudioFormat::mp4;
    struct Magic
    {
        std::string_view bytes;
        AudioFormat format;
    };
    static constexpr Magic known[] = {
        {"fLaC"sv, AudioFormat::flac},
        {"\x30\x26\xb2\x75\x8e\x66\xcf\x11\xa6\xd9"sv, AudioFormat::asf},
        {"MAC "sv, AudioFormat::ape},
        {"wvpk"sv, AudioFormat::wavPack},
        {"MPCK"sv, AudioFormat::musepack},
        {"MP+"sv, AudioFormat::musepack},
        {"TTA1"sv, AudioFormat::trueAudio},
    };
    for (const Magic& magic : known)
    {
        if (head.starts_with(magic.bytes))
            return magic.format;
    }
    return AudioFormat::unknown;
}

void GetValidExtensions(CStringArray& result)
{
    result.RemoveAll();
    for (const Extension& known : extensions)
        result.Add(CString(known.text));
}
} // namespace KVTagLib
