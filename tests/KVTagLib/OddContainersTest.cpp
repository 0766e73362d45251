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
