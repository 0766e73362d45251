#include "core/collection/UnfinishedMove.h"

#include "host/core/LoadedCollection.h"

#include <QoKernel/Kernel.h>

#include <sys/wait.h>
#include <unistd.h>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
class UnfinishedMoveTest : public testing::Test
{
protected:
    UnfinishedMoveTest()
    {
        here.addSound("music/a/1.mp3");
        here.addSound("music/b/2.mp3");
        here.load();
    }
    /// Another process begins to move, does that much on the disk, and ends there.
    template <class OnDisk>
    void cutShort(const std::string& from, const std::string& to, OnDisk onDisk)
    {
        const CString folder = Session::folder();
        const pid_t child = ::fork();
        if (child == 0)
        {
            auto* const note = new UnfinishedMove(folder);
            note->begin(here.dir.collPath(from), here.dir.collPath(to), ".qo-1");
            onDisk();
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0);
        ASSERT_TRUE(UnfinishedMove::wasLeft(folder));
    }

    LoadedCollection here;
};
} // namespace

TEST_F(UnfinishedMoveTest, RecordsFollowAFolderThatMovedBeforeTheCrashAlsoIntoAScan)
{
    const auto expected = here.renamed(here.records(), "music/a/1.mp3", "music/b/c/1.mp3");
    cutShort("music/a",
             "music/b/c",
             [this] { fs::rename(here.dir.path("music/a"), here.dir.path("music/b/c")); });
    here.load(true);
    here.expectRecords(expected);
    EXPECT_FALSE(UnfinishedMove::wasLeft(Session::folder()));
}

TEST_F(UnfinishedMoveTest, WhatDidNotMoveStaysAndAHalfMadeCopyGoes)
{
    const auto expected = here.records();
    cutShort("music/a/1.mp3",
             "music/b/1.mp3",
             [this]
             {
                 fs::create_directories(here.dir.path("music/b/.qo-1"));
                 fs::copy_file(here.dir.path("music/a/1.mp3"), here.dir.path("music/b/.qo-1/copy"));
             });
    here.load(true);
    EXPECT_EQ(here.records(), expected);
    EXPECT_FALSE(fs::exists(here.dir.path("music/b/.qo-1")));
    EXPECT_TRUE(fs::exists(here.dir.path("music/a/1.mp3")));
}

TEST_F(UnfinishedMoveTest, ANoteThatNamesAnotherStagingFolderTouchesNothing)
{
    const CString file = Session::folder() + u"\\unfinished-move";
    fs::create_directories(here.dir.path("music/copy"));
    const std::string text = R"({"from":")" + here.dir.path("music/a/1.mp3") + R"(","to":")" +
                             here.dir.path("music/b/x") +
                             R"(","staging":"..","device":1,"inode":1})";
    ASSERT_EQ(qo::fileSystem().replaceFile(file, text.data(), text.size()), 0);
    here.load();
    EXPECT_TRUE(fs::exists(here.dir.path("music/copy")));
    EXPECT_FALSE(UnfinishedMove::wasLeft(Session::folder()));
}
