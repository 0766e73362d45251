#include "platform/TreeCopy.h"

#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <tuple>

namespace fs = std::filesystem;

namespace
{
int countEntries(const std::string& folder)
{
    return static_cast<int>(std::distance(fs::directory_iterator(folder), {}));
}

class TreeCopy : public testing::Test
{
protected:
    TreeCopy()
    {
        dir.write("from/a/1", std::string(700'000, 'x'));
        dir.write("from/a/2", "");
        dir.makeFolder("from/empty");
        fs::create_symlink("a/1", dir.path("from/link"));
        fs::permissions(dir.path("from/a/2"), fs::perms::owner_read);
        fs::permissions(dir.path("from/a"), fs::perms::owner_all | fs::perms::others_read);
        fs::last_write_time(dir.path("from/a"), fs::file_time_type{});
    }

    const TempDir dir;
    qo::TreeCopy copy{dir.collPath("from"), dir.collPath("to")};
};
} // namespace

TEST_F(TreeCopy, CopiesContentModesTimesAndLinksThenEndsEitherWay)
{
    ASSERT_EQ(copy.copy(), 0);
    EXPECT_EQ(dir.read("to/a/1"), dir.read("from/a/1"));
    EXPECT_EQ(fs::read_symlink(dir.path("to/link")), "a/1");
    EXPECT_TRUE(fs::is_directory(dir.path("to/empty")));
    EXPECT_EQ(fs::status(dir.path("to/a")).permissions(),
              fs::perms::owner_all | fs::perms::others_read);
    EXPECT_EQ(fs::status(dir.path("to/a/2")).permissions(), fs::perms::owner_read);
    EXPECT_EQ(fs::last_write_time(dir.path("to/a")), fs::file_time_type{});
    EXPECT_EQ(copy.removeTarget(), 0);
    EXPECT_FALSE(fs::exists(dir.path("to")));
    ASSERT_EQ(copy.copy(), 0);
    EXPECT_EQ(copy.removeSource(), 0);
    EXPECT_FALSE(fs::exists(dir.path("from")));
    EXPECT_TRUE(fs::exists(dir.path("to/a/1")));
    EXPECT_EQ(countEntries(dir.path()), 1);
}

TEST_F(TreeCopy, TakingTheCopyBackLeavesWhatOthersPutThere)
{
    dir.write("from/1", "one");
    dir.write("from/2", "two");
    dir.write("from/a/3", "three");
    ASSERT_EQ(copy.copy(), 0);
    fs::remove(dir.path("to/1"));
    dir.write("to/1", "another's");
    dir.write("to/a/3", "three and more");
    EXPECT_EQ(copy.removeTarget(), EBUSY);
    EXPECT_EQ(dir.read("to/1"), "another's");
    EXPECT_EQ(dir.read("to/a/3"), "three and more");
    EXPECT_FALSE(fs::exists(dir.path("to/2")));
    EXPECT_TRUE(fs::exists(dir.path("from/1")));
}

TEST_F(TreeCopy, FailuresLeaveOnlyTheSource)
{
    dir.write("taken", "mine");
    ASSERT_EQ(::mkfifo(dir.path("pipe").c_str(), 0600), 0);
    dir.makeFolder("with pipe");
    ASSERT_EQ(::mkfifo(dir.path("with pipe/p").c_str(), 0600), 0);
    const std::tuple<const char*, const char*, int, int, const char*> cases[] = {
        {"from", "taken", -1, EEXIST, "taken"},
        {"gone", "to", -1, ENOENT, "gone"},
        {"pipe", "to", -1, EINVAL, "pipe"},
        {"with pipe", "to", -1, EINVAL, "with pipe/p"},
        {"from", "nowhere/to", -1, ENOENT, "nowhere/to"},
        {"from", "to", 0, ECANCELED, "from"},
        {"from", "to", 9, ECANCELED, "from/a"}};
    const int before = countEntries(dir.path());
    for (const auto& [from, to, stopAfter, expected, failed] : cases)
    {
        SCOPED_TRACE(std::string(from) + " " + to + " " + std::to_string(stopAfter));
        int left = stopAfter;
        qo::TreeCopy copy(dir.collPath(from), dir.collPath(to));
        EXPECT_EQ(copy.copy([&] { return left-- == 0; }), expected);
        EXPECT_TRUE(copy.failedPath().starts_with(dir.path(failed)) || stopAfter >= 0)
            << copy.failedPath();
        EXPECT_EQ(countEntries(dir.path()), before);
        EXPECT_EQ(dir.read("taken"), "mine");
    }
    EXPECT_EQ(dir.read("from/a/1").size(), 700'000U);
}

TEST_F(TreeCopy, DiskThatTakesNoMoreLeavesOnlyTheSource)
{
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{300'000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const int error = copy.copy();
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(error, EFBIG);
    EXPECT_EQ(copy.failedPath(), dir.path("from/a/1"));
    EXPECT_EQ(countEntries(dir.path()), 1);
}

TEST_F(TreeCopy, SourceThatChangedSinceIsNotRemoved)
{
    ASSERT_EQ(copy.copy(), 0);
    fs::permissions(dir.path("from/a/2"), fs::perms::owner_all);
    dir.write("from/a/2", "written meanwhile");
    EXPECT_EQ(copy.removeSource(), EBUSY);
    EXPECT_EQ(copy.failedPath(), dir.path("from/a/2"));
    EXPECT_TRUE(fs::exists(dir.path("from/a/1")));

    qo::TreeCopy second(dir.collPath("from"), dir.collPath("second"));
    ASSERT_EQ(second.copy(), 0);
    dir.write("from/a/new", "came meanwhile");
    EXPECT_EQ(second.removeSource(), ENOTEMPTY);
    EXPECT_EQ(dir.read("from/a/new"), "came meanwhile");
    EXPECT_FALSE(fs::exists(dir.path("from/a/1")));
}

TEST_F(TreeCopy, WhatAKilledCopyLeftUnderItsStagingNameIsRemoved)
{
    dir.write("ours/copy/a/part", "half");
    dir.write("another's/copy", "half");
    dir.write("another's/kept", "mine");
    fs::create_directory_symlink(dir.path("from"), dir.path("link"));
    fs::create_directory(dir.path("from/copy"));
    const auto removeStaged = [&](const char* name)
    { return qo::TreeCopy(dir.collPath("from"), dir.collPath("to"), name).removeStaged(); };
    EXPECT_EQ(removeStaged("ours"), 0);
    EXPECT_FALSE(fs::exists(dir.path("ours")));
    EXPECT_EQ(removeStaged("ours"), 0);
    EXPECT_EQ(removeStaged("another's"), ENOTEMPTY);
    EXPECT_EQ(dir.read("another's/kept"), "mine");
    EXPECT_EQ(removeStaged("link"), 0);
    EXPECT_TRUE(fs::exists(dir.path("from/copy")));
    EXPECT_EQ(removeStaged(""), EINVAL);
}

TEST_F(TreeCopy, StagedCopyThatIsNotPutInPlaceGoesWithItsObject)
{
    {
        qo::TreeCopy copy(dir.collPath("from"), dir.collPath("to"), "stage");
        ASSERT_EQ(copy.stage(), 0);
        EXPECT_EQ(copy.stagedPath(), dir.path("stage/copy"));
        EXPECT_EQ(dir.read("stage/copy/a/1"), dir.read("from/a/1"));
        EXPECT_FALSE(fs::exists(dir.path("to")));
    }
    EXPECT_EQ(countEntries(dir.path()), 1);
}
