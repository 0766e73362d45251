#include "KVTagLib/TagFiles.h"

using namespace tagfiles;

TEST(OddContainers, AreWrittenAndTheirSoundStaysAsItWas)
{
    if (!haveDecoder())
        GTEST_SKIP() << "no ffmpeg";
    struct Row
    {
        const char* from;
        const char* arguments;
        const char* name;
        const char* mark; ///< what makes it odd
    };
    const Row rows[] = {
        {"alac.m4a", "-c copy -movflags frag_keyframe+empty_moov", "based.m4a", "tfra"},
        {"alac.m4a",
         "-c copy -movflags frag_every_frame+empty_moov+default_base_moof",
         "cut.m4a",
         "moof"},
        {"alac.m4a", "-c copy -movflags dash", "stream.m4a", "sidx"},
        {"alac.m4a", "-map_metadata -1 -fflags bitexact -c copy", "bare.m4a", "moov"},
        {"alac.m4a", "-c copy -movflags faststart", "front.m4a", "moov"},
        {"sound.wav", "-f wav - >", "pipe.wav", "\xff\xff\xff\xff"},
    };
    const TempDir folder;
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        const std::string path = folder.path(row.name);
        outputOf("ffmpeg -v quiet -i '" + sound(row.from) + "' " + row.arguments + " '" + path +
                 "' 2>&1");
        ASSERT_NE(contentOf(path).find(row.mark), std::string::npos);
        const std::string before = soundChecksum(path);
        const auto lyrics = std::string(5000, 'l');
        EXPECT_EQ(write(path, tagsOf({.artist = "Ann", .title = "New", .lyrics = lyrics})), "");
        EXPECT_EQ(soundChecksum(path), before);
        const auto grown = contentOf(path).size();
        EXPECT_EQ(write(path, title(u"Newer")), "");
        const bool isMp4 = path.ends_with("m4a");
        EXPECT_TRUE(!isMp4 || contentOf(path).size() == grown) << "there was room";
        EXPECT_EQ(read(path), (Values{.artist = "Ann", .title = "Newer", .lyrics = lyrics}));
        EXPECT_EQ(soundChecksum(path), before);
    }
}

TEST(OddContainers, AreReadAsFarAsTheyGoAndNotWritten)
{
    if (!haveDecoder())
        GTEST_SKIP() << "no ffmpeg";
    const TempDir folder;
    const auto film = [&](const char* name, const char* codec)
    {
        std::string command = "ffmpeg -v quiet -f lavfi -i color=size=16x16:duration=1 -i '" +
                              sound("sound.wav") + "' -c:v libtheora -c:a ";
        command += codec + std::string(" -metadata:s:a title=Film -metadata:s:a artist=Ann ");
        outputOf(command + "'" + folder.path(name) + "' 2>&1");
        return contentOf(folder.path(name));
    };
    EXPECT_EQ(write(copySound(folder, "sound.flac"), tagsOf({.artist = "Ann", .title = "Film"})),
              "");
    std::string flac = folder.read("sound.flac");
    flac[flac.find("fLaC") + 4 + 38] = '\x7f'; // the type of the block after the stream info
    const std::string damaged = folder.read("sound.flac").substr(0, flac.rfind("Film") + 5);
    // The last MiB is searched for the last page: here the mark of one stands at its second byte.
    constexpr std::size_t searched = 1U << 20;
    const std::string start = film("a.ogg", "libvorbis").substr(0, 6000);
    const std::string noEnd =
        start + std::string(searched, 'x') + "xOggS" + std::string(searched - 5, 'x');
    struct Row
    {
        const char* name;
        std::string content;
        Values values;
        int milliseconds;
        const char* reason;
    };
    const Values both{.artist = "Ann", .title = "Film"};
    const Row rows[] = {
        {"a.ogg", film("a.ogg", "libvorbis"), both, 300, "several streams"},
        {"b.ogg", film("b.ogg", "libopus"), both, 300, "several streams"},
        {"c.ogg", film("c.ogg", "flac -strict -2"), both, 300, "several streams"},
        {"f.ogg", noEnd, both, 0, "several streams"},
        {"d.flac", flac, {}, 300, "or a block before the sound"},
        {"e.flac", damaged, both, 300, "block before its sound is damaged"},
    };
    for (const auto& [name, content, values, milliseconds, reason] : rows)
    {
        SCOPED_TRACE(name);
        const std::string path = folder.write(name, content);
        EXPECT_EQ(read(path), values);
        EXPECT_NEAR(millisecondsOf(path), milliseconds, 200);
        EXPECT_NE(write(path, title(u"New")).find(reason), std::string::npos);
        EXPECT_TRUE(contentOf(path) == content);
    }
}

TEST(OddContainers, LayerOneIsReadAndWritten)
{
    // A frame of layer 1 without a checksum: 384 kbit/s, 48 kHz, 384 bytes, 8 ms.
    const std::string frame = std::string("\xff\xff\xc4\x00", 4) + std::string(380, '\0');
    std::string content;
    for (int i = 0; i < 50; ++i)
        content += frame;
    const TempDir folder;
    const std::string path = folder.write("a.mp1", content);
    EXPECT_EQ(read(path), Values{});
    EXPECT_EQ(millisecondsOf(path), 400);
    EXPECT_EQ(write(path, title(u"New")), "");
    EXPECT_EQ(read(path).title, "New");
    EXPECT_EQ(millisecondsOf(path), 400);
}
