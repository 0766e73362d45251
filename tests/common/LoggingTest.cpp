#include "common/FileUtils.h"
#include "common/LogLevel.h"
#include "common/LoggerEx.h"
#include "common/Profiler.h"
#include "common/TraceFile.h"
#include "common/TraceLog.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/Print.h"
#include "support/ScopedVariable.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

namespace
{
/// A clock that stands where the test puts it.
class StillClock : public qo::IClock
{
public:
    StillClock() { qo::setSystemClock(this); }
    ~StillClock() override { qo::setSystemClock(nullptr); }
    FILETIME now() const override { return {}; }
    qo::CalendarTime localTime() const override { return time; }
    std::uint32_t tickCount() const override { return 0; }
    unsigned threadId() const override { return 0xAB; }
    unsigned processId() const override { return 0x1F; }
    GUID newGuid() const override { return {}; }

    qo::CalendarTime time{2026, 3, 4, 5, 6, 7, 8};
};

std::vector<std::string> namesIn(const TempDir& dir)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

std::string utf16(std::u16string_view text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

/// The trace that the work leaves in the folder, the marks of its files left out.
template <class Work>
std::string tracedBy(const TempDir& dir, int level, Work work)
{
    qo::TraceLog::setBasePath(dir.collPath("Trace"));
    qo::TraceLog::setMaxLevel(level);
    work();
    qo::TraceLog::setMaxLevel(0);
    qo::TraceLog::setBasePath(dir.collPath("Other"));
    std::string all;
    for (const std::string& name : namesIn(dir))
        all += dir.read(name).substr(2);
    return all;
}
} // namespace

TEST(LoggerEx, LinesAndFileNamesHaveTheirFixedForm)
{
    const TempDir dir;
    StillClock clock;
    CLoggerEx logger;
    logger.setBasePath(dir.collPath("QoKernel"));
    logger.write(qo::level::error, u"silent");
    EXPECT_TRUE(namesIn(dir).empty()) << "a silent logger makes no file";

    logger.setMaxLevel(qo::level::flow);
    logger.write(qo::level::step, u"too detailed");
    EXPECT_TRUE(namesIn(dir).empty());
    logger.write(qo::level::flow, u"%s of %d", CString(u"100%s"), 7);
    EXPECT_EQ(namesIn(dir), std::vector<std::string>{"QoKernel_20260304_050607_1F.txt"});
    EXPECT_EQ(dir.read("QoKernel_20260304_050607_1F.txt"),
              utf16(u"\uFEFF05:06:07.008 AB DBG: 100%s of 7\r\n"));

    clock.time.month = 4;
    logger.write(qo::level::error, u"same day of another month");
    EXPECT_EQ(namesIn(dir).size(), 1U);
    clock.time.day = 5;
    logger.write(qo::level::error, u"two");
    EXPECT_EQ(namesIn(dir).size(), 2U) << "a new day of the month starts a new file";
}

TEST(TraceLog, AFileBeyondTenMebibytesIsFollowedByAnotherAndNoLineIsLost)
{
    const TempDir dir;
    StillClock clock;
    const auto sixLines = [&]
    {
        for (int i = 0; i < 6; ++i)
        {
            qo::TraceLog::trace(qo::level::error, u"%s", CString(u'x', 1 << 20));
            clock.time.second = 10 + i;
        }
    };
    EXPECT_GT(tracedBy(dir, qo::level::error, sixLines).size(), 6U * (2U << 20U));
    const std::vector<std::string> names = namesIn(dir);
    ASSERT_EQ(names.size(), 2U);
    EXPECT_EQ(names[1], "Trace_20260304_050614_1F.txt")
        << "the line that found it too large is in the new file";
}

TEST(TraceLog, ManyThreadsWriteWholeLines)
{
    const TempDir dir;
    const auto write = []
    {
        for (int i = 0; i < 200; ++i)
            qo::TraceLog::trace(qo::level::flow, u"0123456789");
    };
    const auto writeTogether = [&]
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back(write);
    };
    const std::string all = tracedBy(dir, qo::level::flow, writeTogether);
    std::size_t lines = 0;
    const std::string end = utf16(u": 0123456789\r\n");
    for (std::size_t at = all.find(end); at != std::string::npos; at = all.find(end, at + 1))
        ++lines;
    EXPECT_EQ(lines, 800U);
}

TEST(TraceFile, CleaningUpKeepsTheNewestThoseInUseAndWhatIsTheUsers)
{
    const TempDir dir;
    const char* const nobody = "_000000_7FFFFFFF.txt";
    for (int i = 10; i < 21; ++i)
        dir.write("Trace_202601" + std::to_string(i) + nobody, "x");
    for (const char* name :
         {"Trace notes.txt", "Trace_20250101_000000_1.txt.bak", "Tracer_20250101_000000_1.txt"})
        dir.write(name, "mine");
    qo::TraceFile::cleanUp(dir.collPath("Trac"), 1);
    EXPECT_EQ(namesIn(dir).size(), 14U) << "a short base name deletes nothing";
    qo::TraceFile::cleanUp(dir.collPath("Trace"), 11);
    EXPECT_EQ(namesIn(dir).size(), 14U);
    // Process 1 runs: it has closed the one and writes to the other.
    dir.write("Trace_20260101_000000_1.txt", "x");
    dir.write("Trace_20260102_000000_1.txt", "x");
    qo::TraceFile::cleanUp(dir.collPath("Trace"), 10);
    EXPECT_EQ(namesIn(dir).size(), 14U);
    for (const std::string gone : {"01_000000_1.txt", "10_000000_7FFFFFFF.txt"})
        EXPECT_FALSE(std::filesystem::exists(dir.path("Trace_202601" + gone))) << gone;
}

TEST(TraceFile, WithoutABasePathItIsTraceInTheCurrentFolder)
{
    const TempDir dir;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(dir.path());
    StillClock clock;
    CLoggerEx logger;
    logger.setMaxLevel(qo::level::error);
    logger.write(qo::level::error, u"line");
    logger.setBasePath(CString());
    clock.time.second = 8;
    logger.write(qo::level::error, u"line");
    std::filesystem::current_path(before);
    EXPECT_EQ(
        namesIn(dir),
        (std::vector<std::string>{"Trace_20260304_050607_1F.txt", "Trace_20260304_050608_1F.txt"}));
}

TEST(TraceLog, AMissingTemporaryFolderIsLoggedWithTheError)
{
    const TempDir dir;
    const ScopedVariable variable("TMPDIR", dir.path("missing"));
    const std::string text =
        tracedBy(dir, qo::level::error, [] { CFileUtils::GetWindowsTempDir(); });
    EXPECT_NE(text.find(utf16(u"GetTempPath failed. Error 2: No such file")), std::string::npos);
}

TEST(Profiler, CountersAreWrittenByName)
{
    const TempDir dir;
    qo::Profiler::activate(u"QoKernel", 1);
    qo::Profiler::add(u"zebra", 65'001'000'000);
    qo::Profiler::add(u"ant", 7'000'000);
    qo::Profiler::add(u"ant", 3'723'004'000'000);
    const std::string text = tracedBy(dir, qo::level::timing, [] { qo::Profiler::dump(); });
    qo::Profiler::reset();
    qo::Profiler::activate(u"QoKernel", 0);
    EXPECT_NE(text.find(utf16(u"ant :    1:02:03.011 ms | 2 times\r\n")), std::string::npos);
    EXPECT_NE(text.find(utf16(u"zebra :    01:05.001 ms | 1 times\r\n")), std::string::npos);
    EXPECT_LT(text.find(utf16(u"ant :")), text.find(utf16(u"zebra")));
}
