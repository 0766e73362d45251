#include "KVTagLib/TagsAhead.h"

#include "KVTagLib/TagFiles.h"
#include "common/FilePathParts.h"
#include "support/SlowDisk.h"

#include <condition_variable>
#include <mutex>
#include <vector>

using namespace tagfiles;
using KVTagLib::CTags;
using KVTagLib::TagsAhead;

namespace
{
/// What a reader says of a file, with the names of its pictures.
struct Outcome
{
    bool isRead = false;
    std::string error;
    Values values;
    int time = 0;
    std::string picture;
    bool operator==(const Outcome&) const = default;
};

Outcome outcomeOf(KVTagLib::ITagsReader* created, const CString& pictureDir)
{
    const std::unique_ptr<KVTagLib::ITagsReader> reader(created);
    CTags tags(pictureDir);
    Outcome outcome;
    outcome.isRead = reader->Read(tags, -1, -1);
    outcome.error = qo::toUtf8(reader->GetError());
    outcome.values = valuesOf(tags);
    tags.GetTime(outcome.time);
    KVTagLib::CPictureTag picture;
    if (tags.GetPicture(0, picture))
        outcome.picture = qo::toUtf8(qo::fileNameOf(picture.GetFilePath()));
    return outcome;
}

class TagsAheadTest : public testing::Test
{
protected:
    /// Files of many formats with tags and a picture, damaged and empty ones, and one that has
    /// gone.
    std::vector<CString> makeFiles(int count)
    {
        const char* const sounds[] = {
            "sound.mp3", "sound.flac", "sound.m4a", "sound.opus", "sound.wav"};
        std::vector<CString> files;
        for (int i = 0; i < count; ++i)
        {
            const std::string sound = sounds[i % std::size(sounds)];
            const std::string name = std::to_string(i) + sound;
            std::string content = contentOf(tagfiles::sound(sound));
            if (i % 11 == 7)
                content.resize(static_cast<std::size_t>(i % 3));
            dir.write(name, content);
            if (i % 13 == 5)
                std::filesystem::remove(dir.path(name));
            else if (i % 11 != 7)
                tag(dir.collPath(name), i);
            files.push_back(dir.collPath(name));
        }
        return files;
    }
    void tag(const CString& path, int number) const
    {
        CTags tags;
        tags.SetTitle(qo::fromUtf8("title " + std::to_string(number)));
        tags.AddPicture(
            qo::fromSystemPath(tagfiles::sound(number % 2 == 0 ? "red.jpg" : "blue.png")));
        const std::unique_ptr<KVTagLib::ITagsWriter> writer(
            KVTagLib::CTagsWriterFactory::CreateTagsWriter(path));
        ASSERT_TRUE(writer->Write(tags)) << qo::toUtf8(writer->GetError());
    }

    TempDir dir;
    const CString pictures = qo::fromSystemPath(dir.makeFolder("pictures"));
};

/// A file system on which one file does not open until it is let go, and which counts what is open
/// at a time.
class StuckFile
{
public:
    explicit StuckFile(const CString& path) : m_path(path) {}
    ~StuckFile() { letGo(); }
    StuckFile(const StuckFile&) = delete;
    StuckFile& operator=(const StuckFile&) = delete;

    void letGo()
    {
        std::unique_lock lock(m_mutex);
        m_isLetGo = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_waiting == 0; });
    }

private:
    int before(const std::string& call, const CString& path)
    {
        std::unique_lock lock(m_mutex);
        if (call != "open" || path != m_path)
            return 0;
        ++m_waiting;
        m_changed.wait(lock, [this] { return m_isLetGo; });
        --m_waiting;
        m_changed.notify_all();
        return EIO;
    }

    const CString m_path;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_waiting = 0;
    bool m_isLetGo = false;
    TestFileSystem m_files{[this](const std::string& call, const CString& path)
                           { return before(call, path); }};
};
} // namespace

TEST_F(TagsAheadTest, GivesWhatAReaderOfEachFileGives)
{
    const std::vector<CString> files = makeFiles(120);
    std::vector<Outcome> expected;
    for (const CString& file : files)
        expected.push_back(
            outcomeOf(KVTagLib::CTagsReaderFactory::CreateTagsReader(file), pictures));
    for (const int threads : {0, 1, 2, 16})
    {
        TagsAhead ahead(files, pictures, {}, {.threads = threads});
        for (std::size_t i = 0; i < files.size(); ++i)
        {
            if (i % 9 == 4)
                continue; // nobody asks for it after all
            EXPECT_EQ(outcomeOf(ahead.createTagsReader(files[i]), pictures), expected[i])
                << threads << " threads, " << qo::toUtf8(files[i]);
            EXPECT_FALSE(ahead.hasGivenUp());
        }
        // Neither what was never given nor what was asked for before comes from the pool.
        EXPECT_EQ(outcomeOf(ahead.createTagsReader(files[2]), pictures), expected[2]);
        EXPECT_EQ(ahead.createTagsReader(dir.collPath("a.txt")), nullptr);
    }
}

TEST_F(TagsAheadTest, FileThatTheDiskDoesNotGiveHoldsNobodyUp)
{
    const std::vector<CString> files = makeFiles(40);
    StuckFile stuck(files[3]);
    TagsAhead ahead(files, pictures, {}, {.threads = 1, .patience = 150});
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        const Outcome outcome = outcomeOf(ahead.createTagsReader(files[i]), pictures);
        EXPECT_EQ(ahead.hasGivenUp(), i == 3);
        const bool isWhole = i != 3 && i % 11 != 7 && i % 13 != 5;
        EXPECT_EQ(outcome.values.title, isWhole ? "title " + std::to_string(i) : "");
    }
}

TEST_F(TagsAheadTest, StopEndsTheWaitForAFileAndLeavesNoCause)
{
    const std::vector<CString> files = makeFiles(4);
    StuckFile stuck(files[0]);
    TagsAhead ahead(files, pictures, [] { return true; }, {.threads = 2});
    const Outcome outcome = outcomeOf(ahead.createTagsReader(files[0]), pictures);
    EXPECT_FALSE(outcome.isRead);
    EXPECT_EQ(outcome.error, "");
    EXPECT_TRUE(ahead.hasGivenUp());
}

TEST_F(TagsAheadTest, FilesOfASlowDiskAreReadByManyThreadsAtOnce)
{
    const std::vector<CString> files = makeFiles(300);
    const SlowDisk disk("open");
    TagsAhead ahead(files, pictures, {}, {});
    for (const CString& file : files)
        outcomeOf(ahead.createTagsReader(file), pictures);
    EXPECT_GE(disk.mostAtATime(), 12);
}
