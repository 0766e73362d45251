#include "KVTagLib/TagFiles.h"

using namespace tagfiles;

TEST(PlayTime, IsKnownOfWhatTagLibDoesNotMeasure)
{
    if (!haveDecoder())
        GTEST_SKIP() << "no ffmpeg";
    struct Row
    {
        const char* arguments;
        const char* name;
        int milliseconds; ///< but for the frame that some codecs put ahead
    };
    const std::string from = "-i '" + sound("sound.wav") + "' ";
    const Row rows[] = {
        {"-c:a libopus -strict -2", "opus.mp4", 300},
        {"-c:a ac3", "ac3.mp4", 300},
        {"-c:a eac3", "eac3.mp4", 300},
        {"-c:a aac -movflags frag_keyframe+empty_moov", "cut.m4a", 300},
        {"-c:a aac -movflags frag_every_frame+empty_moov+default_base_moof", "many.m4a", 300},
        {"-f lavfi -i color=size=16x16:duration=2 -map 1:v", "silent.mp4", 2000},
        {"-f wav - >", "pipe.wav", 300},
    };
    const TempDir folder;
    for (const auto& [arguments, name, milliseconds] : rows)
    {
        SCOPED_TRACE(name);
        const std::string path = folder.path(name);
        outputOf("ffmpeg -v quiet " + from + arguments + " '" + path + "' 2>&1");
        EXPECT_NEAR(millisecondsOf(path), milliseconds, 130);
    }
}

TEST(PlayTime, IsTakenFromFragmentsThatSayHowLongTheirSamplesAre)
{
    const auto atom = [](const std::string& name, const std::string& content)
    {
        const auto size = static_cast<char>(content.size() + 8);
        return std::string("\0\0\0", 3) + size + name + content;
    };
    const auto number = [](unsigned value) {
        return std::string{static_cast<char>(value >> 8), static_cast<char>(value)};
    };
    const std::string zeros(64, '\0');
    const auto word = [&](unsigned value) { return zeros.substr(0, 2) + number(value); };
    const std::string track = atom(
        "trak",
        atom("tkhd", zeros.substr(0, 12) + word(7) + zeros.substr(0, 8)) +
            atom("mdia",
                 atom("mdhd", zeros.substr(0, 12) + word(1000) + word(0) + zeros.substr(0, 4)) +
                     atom("hdlr", zeros.substr(0, 8) + "soun" + zeros.substr(0, 12))));
    const std::string defaults =
        atom("mvex", atom("trex", word(0) + word(7) + word(1) + word(20) + word(0) + word(0)));
    const auto fragment = [&](const std::string& header, const std::string& run)
    { return atom("moof", atom("traf", atom("tfhd", header) + atom("trun", run))); };
    const TempDir folder;
    const std::string path = folder.write(
        "x.m4a",
        atom("ftyp", "M4A ") + atom("moov", track + defaults) +
            fragment(word(0) + word(7), word(0) + word(5)) +            // 5 x 20
            fragment(word(8) + word(7) + word(30), word(0) + word(2)) + // 2 x 30
            fragment(word(0) + word(7), word(0x101) + word(2) + word(9) + word(300) + word(41)) +
            fragment(word(0) + word(8), word(0) + word(1000))); // another track
    EXPECT_EQ(millisecondsOf(path), 100 + 60 + 341);
}
