#include "host/cli/QoCommand.h"
#include "support/LeftTemporary.h"
#include "support/Sticks.h"

#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace
{
/// The command, and sticks that are real disks.
class DeviceCommand : public testing::Test
{
protected:
    void SetUp() override
    {
        sticks.make("Stick");
        if (sticks.problem.empty())
            point = sticks.plug("Stick", "one", "serial");
        if (!sticks.problem.empty())
            GTEST_SKIP() << sticks.problem;
        addSong("Music/Kino/01.mp3");
        fs::create_directories(qo.dir.path("to"));
    }

    void addSong(const std::string& relative) const
    {
        fs::create_directories(fs::path(point + "/" + relative).parent_path());
        fs::copy_file(QO_TEST_DATA "/sounds/sound.mp3", point + "/" + relative);
    }
    void adopt() const
    {
        qo.expect({"device", "adopt", "Stick", "--music", "Music"}, 0, "adopted Stick");
        qo.expect({"scan"}, 0, "1 file of Stick: 1 new");
    }
    nlohmann::json only() const
    {
        const auto records = qo.run({"device", "ls", "--json"}).json();
        EXPECT_EQ(records.size(), 1U);
        return records.empty() ? nlohmann::json() : records.front();
    }
    void plugAgain(const std::string& place)
    {
        ASSERT_TRUE(Sticks::unplug(point));
        point = sticks.plug("Stick", place, "serial");
    }

    QoCommand qo;
    Sticks sticks{qo.dir};
    std::string point;
};
} // namespace

TEST_F(DeviceCommand, AStickIsKnownByItsIdWhereverItIsPlugged)
{
    qo.addSound("own.mp3");
    EXPECT_EQ(qo.scan().code, 0);
    EXPECT_EQ(only()["state"], "present");
    adopt();
    const auto ids = [this]
    {
        std::vector<std::string> list;
        for (const auto& record : qo.run({"ls", "--on", "stick", "--json"}).json())
            list.push_back(record["velmoraId"]);
        return list;
    };
    const std::vector<std::string> before = ids();
    EXPECT_EQ(before.size(), 1U);

    ASSERT_TRUE(Sticks::unplug(point));
    EXPECT_EQ(only()["state"], "away");
    qo.expect({"scan"}, 0, "away: 1 file of it stay");
    qo.expect({"ls", "--on", "Stick"}, 0, "Stick/Music/Kino/01.mp3");
    qo.expect({"device", "browse", "Stick"}, 3, "not connected");

    // Another stick has the first letter now.
    sticks.make("Other");
    sticks.plug("Other", "first", "another");
    point = sticks.plug("Stick", "second", "serial");
    addSong("Music/02.mp3");
    qo.expect({"scan"}, 0, "2 files of Stick: 1 new, 0 changed, 0 gone");
    qo.expect({"ls", "--on", "Stick"}, 0, qo.dir.path("m/second/Music/Kino/01.mp3"));
    qo.expect({"ls", "--on", "Stick", point + "/Music/Kino"}, 0, "Kino/01.mp3\n");
    qo.expect({"ls", "--on", "Stick", "stick/Music/Kino"}, 0, "Kino/01.mp3\n");
    qo.expect({"tree", "--on", "Stick", "Music/Kino"}, 0, point + "/Music/Kino  (1 file)");
    qo.expect({"view", "--on", "Stick"}, 0, "(1 own, 2 foreign)");
    EXPECT_EQ(ids()[1], before[0]);
    EXPECT_EQ(qo.paths(), std::vector<std::string>{qo.music("own.mp3")});
    // No letter of any process is kept.
    const std::string kept = qo.dir.read("data/settings") + qo.run({"db", "dump"}).out;
    EXPECT_EQ(kept.find(":\\Music"), std::string::npos);
    EXPECT_NE(kept.find("serial-u"), std::string::npos);

    qo.expect({"device", "forget", "Stick"}, 0, "files stay where they are");
    EXPECT_EQ(qo.run({"db", "dump"}).out.find("serial-u"), std::string::npos);
    EXPECT_TRUE(fs::exists(point + "/Music/02.mp3"));
}

TEST_F(DeviceCommand, TheOneFolderForMusicIsAdoptedAlone)
{
    fs::create_directories(point + "/Other/Music of others");
    qo.expect({"device", "adopt", "Stick"}, 0, "adopted");
    EXPECT_EQ(only()["music"], "") << "there are two";
    fs::remove_all(point + "/Other");
    qo.dir.makeFolder("to");
    fs::create_directories(point + "/Photos");
    fs::copy_file(point + "/Music/Kino/01.mp3", point + "/Photos/02.mp3");
    qo.expect({"device", "adopt", "Stick"}, 0, "adopted");
    EXPECT_EQ(only()["music"], "Music");
    EXPECT_EQ(only()["movies"], "");
    qo.expect({"scan"}, 0, "1 file of Stick");
    qo.expect({"device", "forget", "Stick"}, 0, "");
}

TEST_F(DeviceCommand, FilesAreListedAndCopiedBothWays)
{
    qo.expect({"device", "browse", "Stick", "Music"}, 0, "Music/Kino/\n");
    qo.expect({"device", "pull", point, "Music", "--to", qo.dir.path("to")}, 0, "fetched");
    EXPECT_EQ(qo.dir.read("to/Music/Kino/01.mp3").size(),
              fs::file_size(point + "/Music/Kino/01.mp3"));
    qo.dir.write("new.mp3", "new");
    const std::vector<std::string> push = {
        "device", "push", qo.dir.path("new.mp3"), "--to", "Stick/New"};
    std::vector<std::string> dry = push;
    dry.insert(dry.begin(), "--dry-run");
    qo.expect(dry, 0, "would be sent");
    qo.expect({"--dry-run", "device", "adopt", "Stick"}, 0, "would have adopted");
    EXPECT_FALSE(fs::exists(point + "/New") || only()["adopted"].get<bool>());
    qo.expect(push, 0, "sent: Stick/New/new.mp3");
    qo.expect(push, 1, "is there already");
    // A link stands for its file.
    qo.dir.write("real.mp3", "newer");
    fs::remove(qo.dir.path("new.mp3"));
    fs::create_symlink("real.mp3", qo.dir.path("new.mp3"));
    qo.expect(
        {"device", "push", qo.dir.path("new.mp3"), "--to", point + "/New", "--replace"}, 0, "sent");
    EXPECT_FALSE(fs::is_symlink(point + "/New/new.mp3"));
    std::ifstream copy(point + "/New/new.mp3");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(copy), {}), "newer");
    if (std::error_code error;
        fs::create_directory_symlink(qo.dir.path("to"), point + "/out", error), !error)
        qo.expect(
            {"device", "push", qo.dir.path("new.mp3"), "--to", "Stick/out"}, 1, "another disk");
    EXPECT_FALSE(fs::exists(qo.dir.path("to/new.mp3")));
    qo.dir.write("large.mp3", "");
    fs::resize_file(qo.dir.path("large.mp3"), std::uintmax_t{1} << 30);
    qo.expect({"device", "push", qo.dir.path("large.mp3"), "--to", "Stick"}, 1, "no room");
    qo.expect({"complete", "fish", "device", "info", "S"}, 0, "Stick\t");
    const std::vector<std::string> adopt = {
        "device", "adopt", "Stick", "--music", "Music", "--music-rule", "artist-track"};
    qo.expect(adopt, 0, "adopted");
    EXPECT_EQ(only()["musicRule"], "artist-track");
    qo.expect({"device", "push", qo.addTrack("Ann: One.mp3", {"title=x"}), "--to", point},
              0,
              "sent: Stick/Music/Ann" + std::string(Sticks::hasFat() ? "_" : ":") + " One.mp3");
}

TEST_F(DeviceCommand, AStickTakenAwayInTheMiddleOfACopyCostsThatCopyAlone)
{
    std::ofstream(point + "/long.mp3") << std::string(6 << 20, 'x');
    plugAgain("one");
    // What is said of the file is known, but its bytes are gone.
    EXPECT_TRUE(fs::exists(point + "/long.mp3"));
    fs::resize_file(sticks.image("Stick"), 1 << 20);
    const auto pulled = qo.run({"device", "pull", "Stick", "long.mp3", "--to", qo.dir.path("to")});
    EXPECT_EQ(pulled.code, 1) << pulled.err;
    EXPECT_TRUE(fs::is_empty(qo.dir.path("to")));

    sticks.make("Whole");
    point = sticks.plug("Whole", "whole", "other");
    std::vector<std::string> push = {"device", "push", "--to", "Whole/New"};
    for (int i = 0; i < 300; ++i)
        push.push_back(qo.dir.write(std::to_string(i) + ".mp3", std::string(30000, 'x')));
    const pid_t pid = qo.start(push);
    for (int i = 0; i < 1000 && !fs::exists(point + "/New/1.mp3"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_TRUE(Sticks::unplug(point));
    const auto pushed = qo.finish(pid);
    EXPECT_EQ(pushed.code, 6) << pushed.err;
    EXPECT_NE(pushed.err.find("is not connected any more"), std::string::npos) << pushed.err;
    EXPECT_TRUE(fs::is_empty(point)) << "nothing goes to the disk below";

    // What the stick has of that copy takes its room, until the next push into the folder.
    point = sticks.plug("Whole", "whole", "other");
    const std::string left = point + "/New/" + leftTemporaryBeside(point + "/New/x");
    std::ofstream(left) << std::string(10 << 20, 'x');
    qo.expect({"device",
               "push",
               qo.dir.write("large.mp3", std::string(2 << 20, 'x')),
               "--to",
               "Whole/New"},
              0,
              "sent");
    for (const auto& entry : fs::directory_iterator(point + "/New"))
        EXPECT_NE(entry.path().filename().string().front(), '.') << entry;
}

TEST_F(DeviceCommand, WhatWouldMixUpTwoDisksIsRefused)
{
    adopt();
    // As a dump of a stick has it: the id is the same, and so might the files be.
    sticks.make("Twin");
    const std::string twin = sticks.plug("Twin", "twin", "serial");
    qo.expect({"device", "adopt", twin}, 2, "cannot be told from another one");
    qo.expectRefusals("",
                      {{{"roots", "add", point + "/Music"}, 2, "lies on the device Stick"},
                       {{"scan", qo.dir.path("m")}, 2, "lies on the device Stick"},
                       {{"device", "adopt", "none"}, 4, "no device"},
                       {{"device", "adopt", "Stick", "--music", "None"}, 4, "no Stick/None"},
                       {{"ls", "--on", "none"}, 4, "no device"},
                       {{"device", "forget", twin}, 2, "was not adopted"}});
    ASSERT_TRUE(Sticks::unplug(twin));
    qo.expect({"device", "forget", "Stick"}, 0, "forgotten");
    // A disk with a root folder keeps its paths, in processes that give letters as well.
    EXPECT_EQ(qo.run({"scan", point + "/Music"}).code, 0);
    EXPECT_EQ(only()["state"], "root folder");
    qo.expect({"device", "adopt", point}, 2, "a root folder of the collection lies on that disk");
    EXPECT_EQ(qo.paths(), std::vector<std::string>{point + "/Music/Kino/01.mp3"});
    // And so at its other place.
    const std::string second = qo.dir.path("m/second");
    fs::create_directories(second);
    ASSERT_EQ(::mount(point.c_str(), second.c_str(), nullptr, MS_BIND, nullptr), 0);
    qo.expect({"device", "adopt", second}, 2, "a root folder of the collection lies on that disk");
}

TEST_F(DeviceCommand, AStickThatIsInUseIsNotEjectedAndItsUserIsNamed)
{
    const std::string bus = "unix:path=" + qo.dir.path("bus");
    qo.moreVariables = {"DBUS_SYSTEM_BUS_ADDRESS=" + bus};
    qo.expect({"device", "eject", "Stick"}, 1, "UDisks2 does not run here");

    const std::string source = "$(findmnt -n -o SOURCE '" + point + "')";
    const std::string start =
        "dbus-daemon --session --fork --print-pid --address='" + bus + "' >'" +
        qo.dir.path("pids") + "' && { DBUS_SYSTEM_BUS_ADDRESS='" + bus +
        "' /usr/bin/python3 " QO_SOURCE_DIR "/tests/host/cli/places/udisks.py \"" + source +
        "\" '" + point + "' '" + qo.dir.path("log") + "' & echo $! >>'" + qo.dir.path("pids") +
        "'; }";
    ASSERT_EQ(std::system(start.c_str()), 0); // NOLINT(concurrency-mt-unsafe)
    for (int i = 0; i < 1000 && !fs::exists(qo.dir.path("log")); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    {
        const std::ifstream held(point + "/Music/Kino/01.mp3");
        qo.expect({"device", "eject", "Stick"}, 5, "test_host_cli (" + std::to_string(::getpid()));
    }
    qo.expect({"device", "eject", "Stick", "--dry-run"}, 0, "would have");
    qo.expect({"device", "eject", "Stick"}, 0, "ejected: Stick\n");
    EXPECT_EQ(qo.dir.read("log"), "ready\nunmounted\noff\n");
    qo.expect({"device", "eject", "Stick"}, 4, "no device");
    std::istringstream pids(qo.dir.read("pids"));
    for (pid_t pid = 0; pids >> pid;)
        ::kill(pid, SIGTERM);
}

/// Runs a command line on a system with a phone that has the files of the folder "phone", and that
/// leaves after so many bytes; what it says.
std::string withPhone(const QoCommand& qo, const std::string& words, int limit = 0)
{
    const std::string call = "HOME='" + qo.dir.path("home") +
                             "' timeout 100 umockdev-wrapper /usr/bin/python3 " QO_SOURCE_DIR
                             "/tests/host/devices/phone.py '" +
                             qo.dir.path("phone") + "' " + std::to_string(limit) +
                             " " QO_COMMAND " --data '" + qo.dir.path("data") + "' " + words +
                             " >'" + qo.dir.path("said") + "' 2>&1";
    const int status = std::system(call.c_str()); // NOLINT(concurrency-mt-unsafe)
    return qo.dir.read("said") + std::to_string(WEXITSTATUS(status));
}

TEST(PhoneCommand, APhoneOnTheBusIsListedCopiedAndScanned)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "two libraries want to stand before all others";
#endif
    if (std::system("command -v umockdev-wrapper >/dev/null") != 0) // NOLINT
        GTEST_SKIP() << "there is no umockdev-wrapper";
    const QoCommand qo;
    const std::string content(700'001, 'x');
    fs::create_directories(qo.dir.path("phone/Music"));
    fs::copy_file(QO_TEST_DATA "/sounds/sound.mp3", qo.dir.path("phone/Music/song.mp3"));
    qo.dir.write("phone/long.mp3", content);
    qo.dir.write("new.mp3", "new");
    qo.dir.makeFolder("to");
    EXPECT_EQ(withPhone(qo, "device browse 'Phone 7' --deep"),
              "683.6 KiB  Card/long.mp3\n  2.1 KiB  Card/Music/song.mp3\n0");
    EXPECT_EQ(withPhone(qo, "device pull 'phone 7' Card/long.mp3 --to " + qo.dir.path("to")),
              "qo: fetched: Phone 7/Card/long.mp3 (683.6 KiB)\n0");
    EXPECT_EQ(qo.dir.read("to/long.mp3"), content);
    EXPECT_EQ(withPhone(qo, "device push " + qo.dir.path("new.mp3") + " --to 'Phone 7/Card/A/B'"),
              "qo: sent: Phone 7/Card/A/B/new.mp3 (3 B)\n0");
    EXPECT_EQ(qo.dir.read("phone/A/B/new.mp3"), "new");
    qo.dir.write("new.mp3", "newer");
    const std::string push = "device push " + qo.dir.path("new.mp3") + " --to 'Phone 7/Card/A/B'";
    EXPECT_NE(withPhone(qo, push).find("--replace sends it again"), std::string::npos);
    // What a pulled cable has left goes once the device has all of it.
    const std::string part = "phone/A/B/.qo-part-11111111-2222-3333-4444-555555555555.mp3";
    qo.dir.write(part, "new");
    EXPECT_EQ(withPhone(qo, push + " --replace"), "qo: sent: Phone 7/Card/A/B/new.mp3 (5 B)\n0");
    EXPECT_EQ(qo.dir.read("phone/A/B/new.mp3"), "newer");
    EXPECT_EQ(std::distance(fs::directory_iterator(qo.dir.path("phone/A/B")), {}), 1);
    qo.dir.makeFolder("Box?");
    qo.dir.write("Box?/a: b?.mp3", "x");
    qo.dir.write("Box?/A_ b_.mp3", "y");
    const std::string fitting =
        withPhone(qo, "device push '" + qo.dir.path("Box?") + "' --to 'Phone 7/Card'");
    EXPECT_NE(fitting.find("another file of this call is called"), std::string::npos) << fitting;
    EXPECT_TRUE(fs::exists(qo.dir.path("phone/Box_/a_ b_.mp3"))) << fitting;
    const std::string adopt = "device adopt 'Phone 7' --music Card/Music --music-rule artist-track";
    EXPECT_NE(withPhone(qo, adopt).find("adopted"), std::string::npos);
    const std::string song = qo.addTrack("Ann: One.mp3", {"title=x"});
    EXPECT_EQ(withPhone(qo, "--dry-run device push '" + song + "' --to 'Phone 7'"),
              "qo: would be sent: Phone 7/Card/Music/Ann_ One.mp3 (3.1 KiB)\n0");
    const std::string scanned = withPhone(qo, "scan");
    EXPECT_NE(scanned.find("1 file of Phone 7: 1 new"), std::string::npos) << scanned;
    qo.expect({"scan"}, 0, "away: 1 file of it stay");
    qo.expect({"ls", "--on", "Phone 7"}, 0, "Phone 7/Card/Music/song.mp3");

    fs::remove(qo.dir.path("to/long.mp3"));
    const std::string pulled =
        withPhone(qo, "device pull 'Phone 7' Card/long.mp3 --to " + qo.dir.path("to"), 300'000);
    EXPECT_NE(pulled.find("not fetched: Phone 7/Card/long.mp3"), std::string::npos) << pulled;
    EXPECT_TRUE(fs::is_empty(qo.dir.path("to")));
}
