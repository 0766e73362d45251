#include "core/collection/DiskMove.h"

#include "host/core/MessageOf.h"
#include "support/Contains.h"
#include "support/OrdinaryUser.h"
#include "support/OtherDisk.h"
#include "support/TempDir.h"

#include <QoKernel/Kernel.h>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
/// No file may grow beyond that while this lives, as if the disk were full.
class SmallFiles
{
public:
    explicit SmallFiles(rlim_t most)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{most, m_before.rlim_max};
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallFiles()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int) = nullptr;
};
} // namespace

TEST(DiskMove, NothingIsCopiedOutOfAFolderThatKeepsWhatItHolds)
{
    const OtherDisk other;
    if (other.path.empty())
        GTEST_SKIP() << "no second file system";
    const TempDir dir;
    dir.write("a/locked/1.mp3", "x");
    dir.write("a/2.mp3", "x");
    fs::permissions(other.path, fs::perms::all);
    const std::string locked = dir.path("a/locked");
    fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
    {
        const OrdinaryUser user(dir.path());
        if (!user.isPossible)
            GTEST_SKIP() << "another user cannot get there";
        for (const char* name : {"a", "a/locked", "a/locked/1.mp3"})
        {
            const std::string target = other.path + "/target";
            DiskMove move(dir.collPath(name), qo::fromSystemPath(target), DiskMove::Mode::move);
            const std::string cause = dir.path(name) + " cannot be moved to " + target +
                                      ": nothing may be taken out of " + locked +
                                      ": Permission denied";
            EXPECT_EQ(messageOf([&] { move.check(); }), cause);
            EXPECT_EQ(messageOf([&] { move.perform({}); }), cause);
            EXPECT_FALSE(fs::exists(target));
        }
        DiskMove copy(
            dir.collPath("a"), qo::fromSystemPath(other.path + "/copy"), DiskMove::Mode::copy);
        copy.check();
    }
    fs::permissions(locked, fs::perms::owner_all);
}

TEST(DiskMove, FullDiskIsNamedAndNotTheFileThatDidNotFit)
{
    const TempDir dir;
    dir.write("a/1.mp3", std::string(5000, 'x'));
    dir.makeFolder("full");
    DiskMove copy(dir.collPath("a"), dir.collPath("full/b"), DiskMove::Mode::copy);
    std::string message;
    {
        const SmallFiles limit(1000);
        message = messageOf([&] { copy.perform({}); });
    }
    EXPECT_EQ(message,
              dir.path("a") + " cannot be copied to " + dir.path("full/b") + ": " +
                  dir.path("full") + ": File too large");
    EXPECT_TRUE(fs::is_empty(dir.path("full")));
}
