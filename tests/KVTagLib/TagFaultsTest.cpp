#include "KVTagLib/TagFiles.h"
#include "KVTagLib/sound/AudioRegion.h"
#include "platform/Platform.h"
#include "support/Contains.h"
#include "support/Words.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

using namespace tagfiles;
using namespace std::string_literals;

namespace
{
const auto sounds =
    wordsOf("sound.mp3 sound.flac sound.ogg sound.oga sound.opus sound.spx sound.m4a "
            "sound.wma sound.wav sound.aiff sound.ape sound.wv sound.mpc sound.tta");

std::vector<std::string> namesIn(const TempDir& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

/// What the writer says in a process whose files cannot grow beyond the size given.
std::string writeWithLimit(const std::string& path, const Values& values, std::uintmax_t limit)
{
    int ends[2];
    if (::pipe(ends) != 0)
        return "no pipe";
    const pid_t child = ::fork();
    if (child == 0)
    {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit size{limit, limit};
        const std::string answer =
            ::setrlimit(RLIMIT_FSIZE, &size) == 0 ? write(path, tagsOf(values)) : "no limit";
        ::_exit(::write(ends[1], answer.data(), answer.size()) < 0);
    }
    ::close(ends[1]);
    std::string answer(4096, '\0');
    answer.resize(static_cast<std::size_t>(
        std::max<ssize_t>(::read(ends[0], answer.data(), answer.size()), 0)));
    ::close(ends[0]);
    ::waitpid(child, nullptr, 0);
    return answer;
}

/// Writing the title must be refused for that reason, and nothing must have happened.
void expectRefused(const TempDir& folder, const std::string& path, const std::string& reason)
{
    SCOPED_TRACE(path);
    const std::string before = contentOf(path);
    const auto names = namesIn(folder);
    const std::string said =
        write(path, tagsOf({.title = "New", .lyrics = std::string(5000, 'x')}));
    EXPECT_TRUE(contains(said, reason)) << said;
    EXPECT_TRUE(contentOf(path) == before);
    EXPECT_EQ(namesIn(folder), names);
}

std::string overwritten(std::string content, std::size_t at, const std::string& bytes)
{
    return content.replace(at, bytes.size(), bytes);
}

std::optional<std::string> digestOf(const std::string& path, KVTagLib::AudioFormat format)
{
    int error = 0;
    const auto file = qo::fileSystem().open(qo::fromSystemPath(path), qo::OpenMode::read, error);
    return file ? KVTagLib::digestOfSound(*file, format) : std::nullopt;
}
} // namespace

TEST(TagFaults, FullDiskLeavesTheFileUntouchedAndSaysSo)
{
    struct Row
    {
        std::size_t lyrics;
        std::uintmax_t room;
        bool inPlace;
    };
    // The second has room for the tag, and the end of the sound does not fit any more.
    constexpr Row rows[] = {{100'000, 40'000, false}, {2500, 1000, false}, {2500, 1000, true}};
    const TempDir folder;
    for (const std::string& name : sounds)
    {
        for (const Row& row : rows)
        {
            SCOPED_TRACE(name + " " + std::to_string(&row - rows));
            const std::string path = copySound(folder, name);
            const std::string before = contentOf(path);
            if (row.inPlace)
                std::filesystem::create_hard_link(path, folder.path("twin"));
            const Values values{.title = "New", .lyrics = std::string(row.lyrics, 'x')};
            EXPECT_EQ(writeWithLimit(path, values, before.size() + row.room),
                      qo::toUtf8(qo::errorText(EFBIG)));
            EXPECT_TRUE(contentOf(path) == before);
            std::filesystem::remove(path);
            std::filesystem::remove(folder.path("twin"));
            EXPECT_EQ(namesIn(folder), std::vector<std::string>());
        }
    }
}

TEST(TagFaults, FileThatCannotBeChangedStaysAndTheReasonIsSaid)
{
    const TempDir folder;
    const auto soundOf = [](const char* name) { return contentOf(sound(name)); };
    const std::string wav = soundOf("sound.wav");
    const std::string aiff = soundOf("sound.aiff");
    const std::string open(4, '\xff');
    EXPECT_EQ(write(copySound(folder, "alac.m4a"), tagsOf({.artist = "Ann"})), "");
    const std::string m4a = folder.read("alac.m4a");
    const std::string twoTitles = id3v2Frame("TIT2", "\3A") + "stray" + id3v2Frame("TALB", "\3B");
    struct Row
    {
        const char* name;
        std::string content;
        const char* reason;
    };
    const Row rows[] = {
        {"a.wav", overwritten(wav, wav.find("data") + 4, open), "shorter than its header says"},
        {"b.aiff",
         overwritten(overwritten(aiff, 4, open), aiff.find("SSND") + 4, open),
         "shorter than its header says"},
        {"c.wav", wav.substr(0, wav.size() - 100), "shorter than its header says"},
        {"d.wav", "RF64" + wav.substr(4), "\"ds64\""},
        {"e.wav",
         wav + std::string("LIST\x10\0\0\0INFOIART\xff\0\0\0Ann\0", 24),
         "INFO list is damaged"},
        {"f.mp3", id3v2Tag(4, 0, twoTitles) + soundOf("sound.mp3"), "ID3v2 tag is damaged"},
        {"g.m4a", overwritten(m4a, m4a.find("ilst") + 4, open), "sizes in its list of tags"},
        {"h.m4a",
         m4a.substr(0, m4a.find("moov") - 4) + std::string("\0\0\0\x08sidx", 8) +
             m4a.substr(m4a.find("moov") - 4),
         "index stands ahead"},
    };
    for (const auto& [name, content, reason] : rows)
        expectRefused(folder, folder.write(name, content), reason);
}

TEST(TagFaults, TextsOfAnInfoListKeepTheBytesOfTheirEncoding)
{
    const TempDir folder;
    const std::string list("LIST\x1e\0\0\0INFOIART\x05\0\0\0K\xf6ln\0\0INAM\x04\0\0\0Old\0", 38);
    std::string wav = contentOf(sound("sound.wav")) + list;
    wav[4] = static_cast<char>(wav[4] + 38);
    const std::string path = folder.write("x.wav", wav);
    EXPECT_EQ(read(path), (Values{.artist = "K\u00F6ln", .title = "Old"}));
    EXPECT_EQ(write(path, title(u"New")), "");
    EXPECT_EQ(read(path), (Values{.artist = "K\u00F6ln", .title = "New"}));
    EXPECT_NE(contentOf(path).find("K\xf6ln"), std::string::npos);
}

TEST(TagFaults, EmptyTagOfAWavIsFilled)
{
    const TempDir folder;
    std::string wav = contentOf(sound("sound.wav")) + std::string("ID3 \0\0\0\0", 8);
    wav[4] = static_cast<char>(wav[4] + 8);
    const std::string path = folder.write("x.wav", wav);
    EXPECT_EQ(write(path, title(u"New")), "");
    EXPECT_EQ(read(path).title, "New");
}

TEST(TagFaults, LongSizeOfAWavFollowsAWrite)
{
    const auto bytesOf = [](std::uint64_t size)
    { return std::string(reinterpret_cast<const char*>(&size), sizeof size); };
    const TempDir folder;
    const std::string sound16 = contentOf(sound("sound.wav")).substr(12);
    const std::string head = "RF64" + std::string(4, '\xff') + "WAVE";
    const std::string sizes =
        std::string("ds64\x1c\0\0\0", 8) + bytesOf(sound16.size() + 4 + 36) + std::string(20, '\0');
    const std::string path = folder.write("x.wav", head + sizes + sound16);
    EXPECT_EQ(write(path, title(u"Low Tide")), "");
    EXPECT_EQ(read(path).title, "Low Tide");
    EXPECT_TRUE(contentOf(path).starts_with(head + "ds64"));
    EXPECT_EQ(contentOf(path).substr(20, 8), bytesOf(contentOf(path).size() - 8));
}

TEST(TagFaults, DigestOfTheSoundSeesTheSoundAndNotTheTags)
{
    const TempDir folder;
    for (const std::string& name : sounds)
    {
        SCOPED_TRACE(name);
        const std::string path = copySound(folder, name);
        const auto format = KVTagLib::formatOfPath(qo::fromSystemPath(path));
        const KVTagLib::AudioFormat kind =
            name == "sound.oga" ? KVTagLib::AudioFormat::oggFlac : format;
        const auto before = digestOf(path, kind);
        ASSERT_TRUE(before);
        ASSERT_EQ(write(path, tagsOf({.title = "New", .lyrics = std::string(5000, 'x')})), "");
        EXPECT_TRUE(digestOf(path, kind) == before);

        const std::string base = contentOf(sound(name));
        const std::size_t place =
            name == "sound.m4a" ? base.find("mdat") + 100 : base.size() * 3 / 4;
        folder.write("twisted", overwritten(base, place, {static_cast<char>(~base[place])}));
        EXPECT_FALSE(digestOf(folder.path("twisted"), kind) == before);
        folder.write("cut", base.substr(0, name == "sound.m4a" ? place : base.size() - 10));
        EXPECT_FALSE(digestOf(folder.path("cut"), kind) == before);
    }
    const std::string base = contentOf(sound("sound.m4a"));
    const std::size_t offset = base.find("stco") + 15;
    folder.write("moved", overwritten(base, offset, {static_cast<char>(base[offset] + 1)}));
    constexpr auto mp4 = KVTagLib::AudioFormat::mp4;
    EXPECT_FALSE(digestOf(folder.path("moved"), mp4) == digestOf(sound("sound.m4a"), mp4));
}

TEST(TagFaults, BackupOfACrashedWriteIsNeverOverwritten)
{
    const TempDir folder;
    const std::string longName = std::string(250, 'n') + ".mp3";
    for (const std::string& name : {"song.mp3"s, longName})
    {
        const std::string path = folder.write(name, contentOf(sound("sound.mp3")));
        const std::string backup = (".qo-backup-" + name).substr(0, 254) + "~";
        folder.write(backup, "all that is left");
        std::filesystem::create_hard_link(path, folder.path("twin"));
        EXPECT_EQ(write(path, tagsOf({.title = "New"})), "");
        EXPECT_EQ(folder.read(backup), "all that is left");
        std::filesystem::remove(folder.path("twin"));
    }
    EXPECT_EQ(namesIn(folder).size(), 4U);
}

TEST(TagFaults, AccessListOfTheFolderDoesNotPassToTheFile)
{
    // Version 2, then entries of kind, rights and id: owner, one more user, group, mask, others.
    const std::string list = "\2\0\0\0"
                             "\1\0\7\0\xff\xff\xff\xff"
                             "\2\0\7\0\x39\x30\0\0"
                             "\4\0\5\0\xff\xff\xff\xff"
                             "\x10\0\7\0\xff\xff\xff\xff"
                             "\x20\0\0\0\xff\xff\xff\xff"s;
    const TempDir folder;
    const std::string path = copySound(folder, "sound.mp3");
    if (::setxattr(folder.path().c_str(), "system.posix_acl_default", list.data(), list.size(), 0))
        GTEST_SKIP() << "no access lists here";
    ASSERT_EQ(write(path, tagsOf({.title = "New"})), "");
    EXPECT_LT(::getxattr(path.c_str(), "system.posix_acl_access", nullptr, 0), 0);
}
