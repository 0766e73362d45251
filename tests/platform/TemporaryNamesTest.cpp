#include "platform/TemporaryNames.h"

#include "platform/Clock.h"
#include "platform/FileReplacement.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <utility>

namespace
{
/// The system's clock, ahead by some hours.
class LaterClock : public qo::IClock
{
public:
    explicit LaterClock(int hours) : m_hours(hours) { qo::setSystemClock(this); }
    ~LaterClock() override { qo::setSystemClock(nullptr); }
    FILETIME now() const override
    {
        return qo::fromTicks(qo::toTicks(m_real.now()) + std::int64_t(m_hours) * 36'000'000'000);
    }
    qo::CalendarTime localTime() const override { return m_real.localTime(); }
    std::uint32_t tickCount() const override { return m_real.tickCount(); }
    unsigned threadId() const override { return m_real.threadId(); }
    unsigned processId() const override { return m_real.processId(); }
    GUID newGuid() const override { return m_real.newGuid(); }

private:
    qo::IClock& m_real = qo::systemClock();
    int m_hours;
};

/// Does the work in a process that is killed at its end, so that no destructor runs.
void killedAfter(const std::function<void()>& work)
{
    const pid_t child = ::fork();
    if (child == 0)
    {
        work();
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
}

int temporariesIn(const TempDir& dir)
{
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        count += qo::isTemporaryName(entry.path().filename().string()) ? 1 : 0;
    return count;
}
} // namespace

TEST(TemporaryNames, WhatAKilledProcessLeftIsNeverListedAndGoesWithTheNextWrite)
{
    const std::pair<const char*, std::function<void(const TempDir&)>> writes[] = {
        {"a tag",
         [](const TempDir& dir)
         { EXPECT_EQ(qo::FileReplacement(dir.collPath("song.mp3")).prepare(), 0); }},
        {"a text",
         [](const TempDir& dir)
         { EXPECT_EQ(qo::fileSystem().replaceFile(dir.collPath("text"), "x", 1), 0); }},
        {"a copy",
         [](const TempDir& dir) {
             EXPECT_EQ(qo::fileSystem().copyFile(dir.collPath("song.mp3"), dir.collPath("new.mp3")),
                       0);
         }},
        {"nothing but a clean-up",
         [](const TempDir& dir) { EXPECT_EQ(qo::clearTemporaries(dir.collPath()), 2); }}};
    for (const auto& [name, write] : writes)
    {
        SCOPED_TRACE(name);
        const TempDir dir;
        dir.write("song.mp3", "sound");
        killedAfter(
            [&]
            {
                (new qo::FileReplacement(dir.collPath("song.mp3")))->prepare();
                std::string folder = qo::temporaryBeside(dir.path("b"));
                if (::mkdtemp(folder.data()))
                    std::filesystem::copy(dir.path("song.mp3"), folder);
            });
        ASSERT_EQ(temporariesIn(dir), 2);
        std::vector<qo::DirEntry> entries;
        ASSERT_EQ(qo::fileSystem().list(dir.collPath(), entries), 0);
        EXPECT_EQ(entries.size(), 1U);
        write(dir);
        EXPECT_EQ(temporariesIn(dir), 0);
        EXPECT_EQ(dir.read("song.mp3"), "sound");
    }
}

TEST(TemporaryNames, WhatSomebodyMayStillWriteToStaysForADay)
{
    const TempDir dir;
    std::string own = qo::temporaryBeside(dir.path("x"));
    own = own.substr(own.rfind('/') + 1, own.rfind('-') - own.rfind('/'));
    const std::string machine = own.substr(0, std::string(".qo-tmp-00000000-").size());
    const std::string ofOwn = own + "abcDE1";
    const std::string ofFirstProcess = machine + "1-abcDE1";
    const std::string ofOtherMachine = ".qo-tmp-01234567-7fffffff-abcDE1";
    for (const std::string& name : {ofOwn, ofFirstProcess, ofOtherMachine})
        dir.write(name, "x");
    EXPECT_EQ(qo::clearTemporaries(dir.collPath()), 0);
    const LaterClock clock(25);
    EXPECT_EQ(qo::clearTemporaries(dir.collPath()), 2);
    EXPECT_TRUE(std::filesystem::exists(dir.path(ofOwn)));
}

TEST(TemporaryNames, ANameOfTheUsersIsNoneOfThem)
{
    for (const char* name : {"song.mp3",
                             ".qo-tmp-",
                             ".qo-tmp-01234567-1-abcDE1.mp3",
                             ".qo-tmp-01234567-1-abc-E1",
                             ".qo-tmp-0123456g-1-abcDE1",
                             ".qo-tmp-01234567--abcDE1",
                             ".qo-tmp-01234567-123456789-abcDE1",
                             ".qo-backup-song.mp3~"})
        EXPECT_FALSE(qo::isTemporaryName(name)) << name;
    EXPECT_TRUE(qo::isTemporaryName(".qo-tmp-01234567-ffffffff-abcDE1"));
}

TEST(TemporaryNames, APathBesideATargetStaysInItsFolder)
{
    const TempDir dir;
    // No drive has the last letter, so that folder is nowhere.
    for (const CString& folder : {dir.collPath(), CString(u"Z:\\away")})
    {
        const CString path = qo::temporaryPathBeside(folder + u"\\song.mp3");
        const int last = path.ReverseFind(u'\\');
        EXPECT_EQ(path.Left(last), folder);
        EXPECT_TRUE(qo::isTemporaryName(qo::toUtf8(path.view().substr(last + 1))));
    }
}
