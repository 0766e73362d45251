#include "host/cli/QoCommand.h"
#include "support/Contains.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{
using Names = std::vector<std::string>;

/// Waits until standard output of the running command has the text; false after ten seconds.
bool waitForOutput(const QoCommand& qo, const std::string& file, const std::string& text)
{
    for (int i = 0; i < 2000; ++i)
    {
        if (qo.dir.read(file).find(text) != std::string::npos)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

/// A file that even the administrator cannot move, where the file system has such.
struct Unchangeable
{
    explicit Unchangeable(std::string file) : path(std::move(file)), isSo(set(FS_IMMUTABLE_FL)) {}
    ~Unchangeable() { set(0); }

    bool set(int flags) const
    {
        const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        const bool isSet = ::ioctl(descriptor, FS_IOC_SETFLAGS, &flags) == 0;
        ::close(descriptor);
        return isSet;
    }

    std::string path;
    bool isSo;
};
} // namespace

TEST(FileCommands, MovedFilesKeepTheirRecords)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    qo.addSound("a/2.mp3");
    qo.addSound("b/3.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    const auto before = qo.ids();
    ASSERT_EQ(qo.run({"mv", qo.music("a/1.mp3"), qo.music("a/ONE.mp3")}).code, 0);
    ASSERT_EQ(qo.run({"mv", qo.music("a"), qo.music("c")}).code, 0);
    EXPECT_EQ(qo.run({"mv", "--dry-run", qo.music("c"), qo.music("d")}).code, 0);
    qo.expect({"undo", "--dry-run"}, 0, "of qo mv: 2 files");
    const auto after = qo.ids();
    EXPECT_EQ(qo.names(), (Names{"b/3.mp3", "c/2.mp3", "c/ONE.mp3"}));
    EXPECT_EQ(after.at("c/ONE.mp3"), before.at("a/1.mp3"));
    EXPECT_EQ(qo.run({"scan", "--json"}).json().at(0)["new"], 0);

    // What cannot go does not keep the rest from going.
    qo.expect({"mv", qo.music("nothing"), qo.music("b/3.mp3"), qo.music("c")},
              6,
              qo.music("nothing") + " cannot be moved");
    EXPECT_EQ(qo.names(), (Names{"c/2.mp3", "c/3.mp3", "c/ONE.mp3"}));
}

TEST(FileCommands, RemovedFilesLieInTheTrash)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    qo.addSound("a/2.mp3");
    qo.addSound("b/3.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    EXPECT_EQ(qo.run({"rm", "--dry-run", qo.music("b/3.mp3")}).code, 0);
    EXPECT_EQ(qo.run({"rm", qo.music("a")}).code, 7);
    EXPECT_EQ(qo.names().size(), 3U);
    const auto removed = qo.run({"rm", "--json", qo.music("b/3.mp3")});
    ASSERT_EQ(removed.code, 0) << removed.err;
    const std::string place = removed.json().at(0)["to"];
    EXPECT_TRUE(fs::exists(place)) << place;
    EXPECT_TRUE(contains(place, "/Trash/files/3.mp3"));
    EXPECT_EQ(qo.run({"rm", "--yes", qo.music("a")}).code, 0);
    EXPECT_TRUE(fs::exists(fs::path(place).parent_path() / "a/2.mp3"));
    EXPECT_EQ(qo.names(), Names{});
    EXPECT_EQ(qo.run({"rm", "--yes", qo.music()}).code, 1);
    EXPECT_TRUE(fs::exists(qo.music()));
}

TEST(FileCommands, AddTakesInWhatIsThereOrBringsItThere)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    qo.addSound("a/2.mp3");
    qo.addSound("b/3.mp3");
    fs::copy_file(qo.music("a/1.mp3"), qo.dir.path("4.mp3"));
    qo.dir.makeFolder("album");
    fs::copy_file(qo.music("a/1.mp3"), qo.dir.path("album/5.mp3"));
    EXPECT_EQ(qo.run({"add", qo.music("a/2.mp3"), qo.music("b")}).code, 0);
    qo.expect({"add", qo.dir.path("4.mp3")}, 1, "is in no root folder");
    EXPECT_EQ(qo.run({"add", qo.dir.path("4.mp3"), "--to", qo.music("b")}).code, 0);
    EXPECT_EQ(qo.run({"add", "--move", qo.dir.path("album"), "--to", qo.music("b")}).code, 0);
    EXPECT_EQ(qo.names(), (Names{"a/1.mp3", "a/2.mp3", "b/3.mp3", "b/4.mp3", "b/album/5.mp3"}));
    EXPECT_TRUE(fs::exists(qo.dir.path("4.mp3")));
    EXPECT_EQ(qo.dir.read("music/b/4.mp3"), qo.dir.read("4.mp3"));
    EXPECT_FALSE(fs::exists(qo.dir.path("album")));
}

TEST(FileCommands, TrialsRefuseWhatTheDeedWould)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    qo.addSound("b/1.mp3");
    qo.addSound("b/2.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    std::vector<QoCommand::Refusal> cases = {
        {{"mv", qo.music("a/1.mp3"), qo.music("b")}, 1, "already a file of that name"},
        {{"rm", qo.music()}, 1, "it is a root folder"},
        {{"rm", qo.dir.path("data/Qorganizer/qodb")}, 1, "this program's data"},
        {{"add", "--move", qo.music(), "--to", qo.music("a")}, 1, "it is a root folder"},
        {{"add", qo.music("a/1.mp3"), "--to", qo.music("b")}, 1, "already a file of that name"},
        {{"rm", qo.dir.path("link")}, 4, "it is in no root folder"}};
    fs::create_symlink(qo.music("a/1.mp3"), qo.dir.path("link"));
    fs::create_symlink(qo.music("a/1.mp3"), qo.music("link"));
    qo.addSound("b/fixed.mp3");
    const Unchangeable fixed(qo.music("b/fixed.mp3"));
    if (fixed.isSo)
        cases.push_back({{"mv", fixed.path, qo.music("a")}, 1, "Operation not permitted"});
    qo.expectRefusals("", cases);
    cases.push_back({{"rm", qo.music("link")}, 0, qo.music("link") + " -> "});
    cases.push_back({{"mv", qo.music("b/2.mp3"), qo.music("a")}, 0, " -> " + qo.music("a/2.mp3")});
    cases.push_back({{"add", qo.music("a")}, 0, "already known: " + qo.music("a") + " (1 file)\n"});
    for (QoCommand::Refusal& c : cases)
        c.words.insert(c.words.begin() + 1, "--dry-run");
    qo.expectRefusals("", cases);
    EXPECT_EQ(qo.names().size(), 3U);
    qo.addSound("a/3.mp3");
    qo.expectRefusals(
        "", {{{"add", qo.music("a/3.mp3")}, 0, "taken in: " + qo.music("a/3.mp3") + " ("}});
}

TEST(ScanCommand, FindMovedOffersToKeepTheRecords)
{
    const QoCommand qo;
    qo.addTrack("a/1.mp3", {"artist=x", "title=1"});
    qo.addTrack("a/2.mp3", {"artist=x", "title=2"});
    ASSERT_EQ(qo.run({"scan", "--find-moved", qo.music()}).code, 0);
    const auto before = qo.ids();
    qo.dir.makeFolder("music/b");
    fs::rename(qo.music("a/1.mp3"), qo.music("b/other name.mp3"));
    EXPECT_EQ(qo.run({"scan", "--find-moved"}).code, 7);
    const auto trial = qo.run({"scan", "--find-moved", "--dry-run", "--json"}).json().at(0);
    EXPECT_EQ(trial["from"], qo.music("a/1.mp3"));
    EXPECT_EQ(trial["to"], qo.music("b/other name.mp3"));
    qo.expect({"scan", "--find-moved", "--yes"}, 0, "0 new, 0 changed, 0 gone, 1 moved");
    EXPECT_EQ(qo.ids().at("b/other name.mp3"), before.at("a/1.mp3"));

    // The way into a root folder that comes with this very scan.
    fs::rename(qo.music("a"), qo.dir.path("elsewhere"));
    const auto far = qo.run({"scan", "--find-moved", "--yes", "--json", qo.dir.path("elsewhere")});
    EXPECT_EQ(far.code, 0) << far.err;
    EXPECT_EQ(far.json().back()["moved"], 1) << far.out;
    EXPECT_EQ(far.json().back()["new"], 0) << far.out;
    EXPECT_EQ(qo.paths().size(), 2U);
}

TEST(ScanCommand, DeepScanReadsWhatLooksUnchanged)
{
    const QoCommand qo;
    const std::string file = qo.addTrack("1.mp3", {"title=before"});
    ASSERT_EQ(qo.scan().code, 0);
    const auto known = qo.ids();
    const auto time = fs::last_write_time(file);
    std::string content = qo.dir.read("music/1.mp3");
    content.replace(content.find("before"), 6, "after!");
    qo.dir.write("music/1.mp3", content);
    fs::last_write_time(file, time);
    EXPECT_EQ(qo.run({"scan", "--json"}).json().at(0)["changed"], 0);
    EXPECT_EQ(qo.run({"scan", "--deep", "--dry-run", "--json"}).json().at(0)["changed"], 1);
    EXPECT_EQ(qo.run({"ls", "--json"}).json().at(0)["title"], "before");
    EXPECT_EQ(qo.run({"scan", "--deep", "--json"}).json().at(0)["changed"], 1);
    EXPECT_EQ(qo.run({"ls", "--json"}).json().at(0)["title"], "after!");
    EXPECT_EQ(qo.ids(), known);
    EXPECT_EQ(qo.run({"scan", "--json"}).json().at(0)["changed"], 0);
}

TEST(WatchCommand, KeepsTheCollectionCurrentAndLetsOthersWork)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    const auto before = qo.ids();
    qo.addSound("a/2.mp3");
    qo.dir.makeFolder("music/b");
    qo.dir.write("watch.out", "");
    // Other commands write to out and err, so this one has files of its own.
    const std::string command = "exec '" QO_COMMAND "' --data '" + qo.dir.path("data") +
                                "' watch --settle 0.1 >'" + qo.dir.path("watch.out") + "' 2>'" +
                                qo.dir.path("watch.err") + "'";
    std::vector<std::string> words{"sh", "-c", command};
    std::vector<char*> argv{words[0].data(), words[1].data(), words[2].data(), nullptr};
    pid_t pid = -1;
    ASSERT_EQ(::posix_spawn(&pid, "/bin/sh", nullptr, nullptr, argv.data(), environ), 0);
    EXPECT_TRUE(waitForOutput(qo, "watch.out", "1 read, 0 moved, 0 gone\n"))
        << qo.dir.read("watch.err");

    fs::rename(qo.music("a/1.mp3"), qo.music("b/1.mp3"));
    EXPECT_TRUE(waitForOutput(qo, "watch.out", "0 read, 1 moved, 0 gone\n"))
        << qo.dir.read("watch.out") << qo.dir.read("watch.err");
    fs::remove(qo.music("a/2.mp3"));
    EXPECT_TRUE(waitForOutput(qo, "watch.out", "0 read, 0 moved, 1 gone\n"))
        << qo.dir.read("watch.out") << qo.dir.read("watch.err");
    auto listed = qo.run({"ls", "--json"});
    for (int i = 0; i < 100 && listed.code != 0; ++i)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        listed = qo.run({"ls", "--json"});
    }
    EXPECT_EQ(listed.json().at(0)["velmoraId"], before.at("a/1.mp3"));
    ::kill(pid, SIGINT);
    int status = 0;
    ::waitpid(pid, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0) << qo.dir.read("watch.err");
}

TEST(WatchCommand, TrialTellsWhatHappensAndChangesNothing)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    const pid_t pid = qo.start({"watch", "--dry-run", "--settle", "0.1"});
    EXPECT_TRUE(waitForOutput(qo, "err", "qo: watching 2 folders\n"));
    qo.addSound("a/2.mp3");
    EXPECT_TRUE(waitForOutput(qo, "out", "added  " + qo.music("a/2.mp3") + "\n"));
    ::kill(pid, SIGTERM);
    EXPECT_EQ(qo.finish(pid).code, 0);
    EXPECT_EQ(qo.names(), (Names{"a/1.mp3"}));
}

TEST(WatchCommand, RootFolderThatIsAwayIsWaitedForAndIsWatchedAgain)
{
    const QoCommand qo;
    qo.addSound("a/1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    qo.addSound("a/2.mp3");
    const pid_t pid = qo.start({"watch", "--settle", "0.1"});
    EXPECT_TRUE(waitForOutput(qo, "out", "1 read, 0 moved, 0 gone\n"));
    fs::rename(qo.music(), qo.dir.path("away"));
    fs::rename(qo.dir.path("away"), qo.music());
    EXPECT_TRUE(waitForOutput(qo, "err", "folders are scanned\nqo: watching 2 folders\n"));
    qo.addSound("a/3.mp3");
    EXPECT_TRUE(waitForOutput(qo, "out", "0 gone\n1 read, 0 moved, 0 gone\n"));
    fs::rename(qo.music(), qo.dir.path("away"));
    EXPECT_TRUE(waitForOutput(qo, "err", "waiting for it"));
    ::kill(pid, SIGINT);
    const auto result = qo.finish(pid);
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(qo.paths().size(), 3U);
}
