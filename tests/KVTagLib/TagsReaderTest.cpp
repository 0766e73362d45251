#include "KVTagLib/AudioFile.h"
#include "KVTagLib/TagFiles.h"
#include "KVTagLib/ValidExtensions.h"
#include "KVTagLib/layout/FilePart.h"

#include <sys/stat.h>

#include <chrono>
#include <random>
#include <tuple>

using namespace tagfiles;
using KVTagLib::CTags;

namespace
{
struct SoundCase
{
    const char* file;
    int milliseconds;
    int leastBitrate;
};

/// Lossy formats count whole frames, so their time may be up to two frames longer.
constexpr int frameTolerance = 80;

const SoundCase soundCases[] = {
    {"sound.mp3", 600, 20},
    {"vbr.mp3", 600, 10},
    {"sound.mp2", 500, 30},
    {"sound.flac", 400, 50},
    {"sound.ogg", 500, 5},
    {"sound.oga", 400, 50},
    {"sound.opus", 500, 10},
    {"sound.spx", 500, 5},
    {"sound.m4a", 500, 20},
    {"alac.m4a", 400, 50},
    {"sound.wma", 500, 20},
    {"sound.wav", 300, 128},
    {"sound.aiff", 300, 128},
    {"sound.ape", 500, 1},
    {"sound.wv", 300, 50},
    {"sound.mpc", 500, 20},
    {"sound.tta", 300, 100},
};

/// A big-endian number of four bytes with seven bits each.
std::string synchSafe(std::size_t size)
{
    std::string bytes;
    for (int shift = 21; shift >= 0; shift -= 7)
        bytes += static_cast<char>((size >> shift) & 127);
    return bytes;
}

std::string frame23(const std::string& id, const std::string& body)
{
    const auto size = static_cast<char>(body.size());
    return id + std::string(3, '\0') + size + std::string(2, '\0') + body;
}

std::string latin(const std::string& text)
{
    return std::string(1, '\0') + text;
}

std::string mp3With(const std::string& frames, char version = 3)
{
    return std::string("ID3") + version + std::string(2, '\0') + synchSafe(frames.size()) + frames +
           contentOf(sound("sound.mp3"));
}
} // namespace

TEST(TagsReader, EachFormatTellsItsPlayTimeAndBitrate)
{
    for (const SoundCase& row : soundCases)
    {
        SCOPED_TRACE(row.file);
        CTags tags;
        ASSERT_TRUE(readInto(sound(row.file), tags));
        int time = -1;
        int bitrate = -1;
        ASSERT_TRUE(tags.GetTime(time));
        ASSERT_TRUE(tags.GetBitrate(bitrate));
        EXPECT_NEAR(time, row.milliseconds + frameTolerance / 2, frameTolerance / 2 + 10);
        EXPECT_GE(bitrate, row.leastBitrate);
        EXPECT_LE(bitrate, 200);
        EXPECT_EQ(valuesOf(tags), Values());
    }
}

TEST(TagsReader, FactoryDecidesByTheExtensionWithoutLookingAtTheDisk)
{
    for (const char* path : {"/none/x.MP3", "/none/x.Flac", "/no.ne/x.m4a"})
        EXPECT_TRUE(readerFor(path)) << path;
    for (const char* path : {"/x.jpg", "/x.txt", "/x", "/mp3", "/a.mp3/x", ""})
        EXPECT_FALSE(readerFor(path)) << path;
    CStringArray extensions;
    KVTagLib::GetValidExtensions(extensions);
    for (const CString& extension : extensions)
        EXPECT_TRUE(readerFor("/x." + qo::toUtf8(extension)));
}

TEST(TagsReader, OlderTagTextsAreShownInOneForm)
{
    const std::tuple<const char*, std::string, Values> cases[] = {
        {"number in brackets", frame23("TCON", latin("(17)")), {.genre = "Rock"}},
        {"bare number", frame23("TCON", latin("148")), {.genre = "Abstract"}},
        {"last number", frame23("TCON", latin("(191)")), {.genre = "Psybient"}},
        {"unknown number", frame23("TCON", latin("222")), {.genre = "222"}},
        {"number and name", frame23("TCON", latin("(17)Krautrock")), {.genre = "Rock"}},
        {"two-digit year", frame23("TYER", latin("97")), {.year = "97"}},
        {"year and day",
         frame23("TYER", latin("1997")) + frame23("TDAT", latin("1705")),
         {.year = "1997"}},
        {"padded number", frame23("TRCK", latin("03/012")), {.track = "03/012"}},
        {"artist behind an empty one",
         frame23("TPE1", latin(std::string("\0Second", 7))),
         {.artist = "Second"}},
        {"blank text", frame23("TIT2", latin("   ")), {}},
        {"lone surrogate",
         frame23("TIT2", std::string("\1\xff\xfe\x3d\xd8\x41\x00", 7)),
         {.title = "\xEF\xBF\xBD"
                   "A"}},
        {"lyrics",
         frame23("USLT", latin("engwords") + std::string(1, '\0') + "la la"),
         {.lyrics = "la la"}},
    };
    const TempDir folder;
    for (const auto& [name, frames, expected] : cases)
    {
        SCOPED_TRACE(name);
        EXPECT_EQ(read(folder.write("x.mp3", mp3With(frames))), expected);
    }
}

TEST(TagsReader, ContentWinsOverAWrongExtension)
{
    const TempDir folder;
    for (const char* name : {"sound.flac", "sound.m4a", "sound.ogg", "sound.opus", "sound.wav"})
    {
        SCOPED_TRACE(name);
        CTags tags;
        ASSERT_TRUE(readInto(folder.write("wrong.mp3", contentOf(sound(name))), tags));
        int time = 0;
        EXPECT_TRUE(tags.GetTime(time));
        EXPECT_NEAR(time, 450, 200);
    }
}

TEST(TagsReader, EqualPicturesShareOneFile)
{
    const TempDir folder;
    const TempDir covers;
    for (const char* name : {"sound.mp3", "sound.flac", "sound.m4a"})
    {
        ASSERT_EQ(write(copySound(folder, name), withPicture({}, "blue.png")), "");
    }
    std::string first;
    for (const char* name : {"sound.mp3", "sound.flac", "sound.m4a"})
    {
        CTags tags(covers.collPath());
        ASSERT_TRUE(readInto(folder.path(name), tags));
        CArray<KVTagLib::CPictureTag> pictures;
        ASSERT_TRUE(tags.GetPictures(pictures));
        ASSERT_EQ(pictures.GetSize(), 1);
        EXPECT_EQ(pictures[0].m_mimeType, u"image/png");
        const std::string path = qo::toSystemPath(pictures[0].GetFilePath());
        EXPECT_EQ(contentOf(path), contentOf(sound("blue.png")));
        first = first.empty() ? path : first;
        EXPECT_EQ(path, first);
        EXPECT_EQ(std::filesystem::path(path).filename().string().size(), 44U);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(covers.path()), {}), 1);

    CTags without;
    ASSERT_TRUE(readInto(folder.path("sound.mp3"), without));
    EXPECT_EQ(without.GetPictureCount(), 0);
}

TEST(TagsReader, UnusableFilesAreRefusedWithAReason)
{
    const TempDir folder;
    folder.makeFolder("folder.mp3");
    folder.write("empty.mp3", "");
    folder.write("text.mp3", std::string(5000, 'x'));
    folder.write("text.flac", std::string(5000, 'x'));
    ASSERT_EQ(::mkfifo(folder.path("pipe.mp3").c_str(), 0600), 0);
    for (const char* name :
         {"missing.mp3", "folder.mp3", "pipe.mp3", "empty.mp3", "text.mp3", "text.flac"})
    {
        SCOPED_TRACE(name);
        CTags tags;
        tags.SetTitle(u"kept");
        const auto reader = readerFor(folder.path(name));
        EXPECT_FALSE(reader->Read(tags, -1, -1));
        EXPECT_FALSE(reader->GetError().IsEmpty());
        EXPECT_EQ(valuesOf(tags).title, "kept");
    }
}

TEST(TagsReader, AFormatThatNothingOpensIsRefused)
{
    const TempDir dir;
    dir.write("words", "no sound at all");
    KVTagLib::AudioFileContent content(KVTagLib::TagExtent::texts);
    CString error;
    EXPECT_FALSE(KVTagLib::readAudioFile(
        dir.collPath("words"), KVTagLib::AudioFormat::unknown, content, error));
    EXPECT_EQ(error, CString(u"the file is damaged or of another format"));
}

TEST(TagsReader, CutAndTwistedFilesNeitherCrashNorHang)
{
    const TempDir folder;
    const TempDir covers;
    const auto start = std::chrono::steady_clock::now();
    std::mt19937 random(7);
    for (const SoundCase& row : soundCases)
    {
        SCOPED_TRACE(row.file);
        const std::string path = copySound(folder, row.file);
        const Values full{"a", "b", "c", "d", "1/2", "1999", "e"};
        ASSERT_EQ(write(path, withPicture(tagsOf(full), "red.jpg")), "");
        const std::string whole = contentOf(path);
        const auto look = [&](const std::string& bytes)
        {
            folder.write(row.file, bytes);
            CTags tags(covers.collPath());
            readInto(path, tags);
            std::vector<KVTagLib::FilePart> parts;
            CString error;
            if (!KVTagLib::readFileParts(qo::fromSystemPath(path), parts, error))
                return;
            std::int64_t sum = 0;
            for (const KVTagLib::FilePart& part : parts)
                sum += part.depth == 0 ? part.size : 0;
            EXPECT_EQ(sum, static_cast<std::int64_t>(bytes.size()));
        };
        for (std::size_t size = 0; size < whole.size(); size += 1 + whole.size() / 40)
            look(whole.substr(0, size));
        for (int i = 0; i < 40; ++i)
        {
            std::string twisted = whole;
            for (int n = 0; n < 8; ++n)
                twisted[random() % std::min<std::size_t>(whole.size(), 1500)] =
                    static_cast<char>(random());
            look(twisted);
        }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}
