#include "host/cli/QoCommand.h"
#include "support/Contains.h"

#include <fstream>

namespace fs = std::filesystem;

namespace
{
/// Long enough that a signal finds the write under way.
constexpr std::uint32_t soundBytes = 160U << 20;

/// A recording of silence.
std::string addLongSound(const QoCommand& qo, const std::string& relative)
{
    const std::string path = qo.addSound(relative, "sound.wav");
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    std::string head(4096, '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    const std::size_t data = head.find("data");
    EXPECT_NE(data, std::string::npos);
    const auto put = [&](std::size_t at, std::uint32_t number)
    {
        file.clear();
        file.seekp(static_cast<std::streamoff>(at));
        for (int shift = 0; shift < 32; shift += 8)
            file.put(static_cast<char>(number >> shift));
    };
    put(4, static_cast<std::uint32_t>(data) + soundBytes);
    put(data + 4, soundBytes);
    file.close();
    fs::resize_file(path, data + 8 + soundBytes);
    return path;
}

std::vector<std::string> sideFiles(const std::string& folder)
{
    std::vector<std::string> list;
    for (const auto& entry : fs::directory_iterator(folder))
    {
        if (entry.path().filename().string().starts_with(".qo-"))
            list.push_back(entry.path().filename());
    }
    return list;
}

bool waitForSideFile(const std::string& folder)
{
    for (int i = 0; i < 10'000; ++i)
    {
        if (!sideFiles(folder).empty())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

std::string titleOf(const QoCommand& qo, const std::string& file)
{
    return qo.run({"tag", "show", "--json", file}).json().at(0)["fields"]["title"]["file"];
}
} // namespace

TEST(TagInterrupt, SignalLeavesTheFileAsItWasAndNothingBeside)
{
    const QoCommand qo;
    const std::string file = addLongSound(qo, "long.wav");
    int cuts = 0;
    // While the copy is made, changed and compared; the last ones may come when all is done, before
    // the command ends or after.
    for (const int delay : {0, 50, 150, 250, 400, 600})
    {
        SCOPED_TRACE(delay);
        const int signal = delay % 100 == 0 ? SIGTERM : SIGINT;
        const std::string old = titleOf(qo, file);
        const std::string title = "New " + std::to_string(delay);
        ASSERT_EQ(qo.run({"tag", "set", file, "title=" + title}).code, 0);
        const auto time = fs::last_write_time(file);

        const pid_t pid = qo.start({"tag", "write", file});
        EXPECT_TRUE(waitForSideFile(qo.music()));
        std::this_thread::sleep_for(std::chrono::milliseconds(delay));
        ::kill(pid, signal);
        const auto cut = qo.finish(pid);
        EXPECT_EQ(sideFiles(qo.music()), std::vector<std::string>());
        EXPECT_TRUE(cut.code == 0 || cut.code == 128 + signal) << cut.code;
        if (cut.code == 0 || contains(cut.err, "qo: written: " + file))
        {
            EXPECT_EQ(titleOf(qo, file), title);
            continue;
        }
        ++cuts;
        EXPECT_TRUE(contains(cut.err, file + " was not written, the file is as it was"));
        EXPECT_EQ(fs::last_write_time(file), time);
        EXPECT_EQ(titleOf(qo, file), old);
    }
    EXPECT_GT(cuts, 0);
    ASSERT_EQ(qo.run({"tag", "set", file, "title=Last"}).code, 0);
    EXPECT_EQ(qo.run({"tag", "write", file}).code, 0);
    EXPECT_EQ(titleOf(qo, file), "Last");
}

TEST(TagInterrupt, WrittenAndUnwrittenFilesAreNamed)
{
    const QoCommand qo;
    const std::string first = qo.addSound("a/1.mp3");
    const std::string second = addLongSound(qo, "b/2.wav");
    const std::string third = qo.addSound("c/3.mp3");
    for (const std::string& file : {first, second, third})
        ASSERT_EQ(qo.run({"tag", "set", file, "title=New"}).code, 0);

    const pid_t pid = qo.start({"tag", "write", "--all", "--yes"});
    EXPECT_TRUE(waitForSideFile(qo.music("b")));
    ::kill(pid, SIGTERM);
    const auto cut = qo.finish(pid);
    EXPECT_EQ(cut.code, 128 + SIGTERM);
    EXPECT_TRUE(contains(cut.err, "qo: written: " + first));
    EXPECT_TRUE(contains(cut.err, "not written: " + second));
    EXPECT_TRUE(contains(cut.err, "not written: " + third));
    EXPECT_TRUE(contains(cut.err, "stopped: 1 file written"));
    EXPECT_EQ(sideFiles(qo.music("b")), std::vector<std::string>());

    EXPECT_EQ(qo.run({"tag", "write", first}).code, 4);
    EXPECT_EQ(qo.run({"tag", "write", "--all", "--yes"}).code, 0);
    EXPECT_EQ(titleOf(qo, third), "New");
}

TEST(TagInterrupt, WhatAKilledWriteLeftBehindGoesWithTheNextOne)
{
    const QoCommand qo;
    const std::string file = addLongSound(qo, "long.wav");
    ASSERT_EQ(qo.run({"tag", "set", file, "title=New"}).code, 0);
    const pid_t pid = qo.start({"tag", "write", file});
    EXPECT_TRUE(waitForSideFile(qo.music()));
    ::kill(pid, SIGKILL);
    EXPECT_EQ(qo.finish(pid).code, 128 + SIGKILL);
    ASSERT_EQ(sideFiles(qo.music()).size(), 1U);

    EXPECT_EQ(qo.run({"tag", "write", file}).code, 0);
    EXPECT_EQ(titleOf(qo, file), "New");
    EXPECT_EQ(sideFiles(qo.music()), std::vector<std::string>());
}
