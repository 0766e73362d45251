#include "host/cli/QoCommand.h"
#include "support/Contains.h"

#include <algorithm>

namespace fs = std::filesystem;

namespace
{
using Words = std::vector<std::string>;
using Tree = std::map<std::string, std::string>;

/// Every name below the music folder; files with their bytes.
Tree tree(const QoCommand& qo)
{
    Tree names;
    for (const auto& entry : fs::recursive_directory_iterator(qo.music()))
    {
        const std::string name = entry.path().string().substr(qo.music().size() + 1);
        names[name] = entry.is_directory() ? "folder" : qo.dir.read("music/" + name);
    }
    return names;
}

std::vector<std::string> files(const QoCommand& qo)
{
    std::vector<std::string> list;
    for (const auto& [name, content] : tree(qo))
    {
        if (content != "folder")
            list.push_back(name);
    }
    return list;
}

/// A collection with a rule that sorts by artist and names by title.
void prepare(const QoCommand& qo)
{
    qo.addTrack("in/1.mp3", {"artist=Ann", "title=One"});
    qo.addTrack("in/2.mp3", {"artist=Ann", "title=Two"});
    qo.dir.write("music/in/2.txt", "words");
    qo.addTrack("in/deep/3.mp3", {"artist=Ben", "title=One"});
    qo.addTrack("Ben/Two.mp3", {"artist=Ben", "title=Two"});
    ASSERT_EQ(qo.scan().code, 0);
    ASSERT_EQ(
        qo.run({"rule", "new", "r", "--folder", "{artist.name}", "--music", "{track.name}"}).code,
        0);
}
} // namespace

TEST(ReorgCommand, PlanIsCarriedOutAndTakenBackByteForByte)
{
    const QoCommand qo;
    prepare(qo);
    const Tree before = tree(qo);
    const auto idsBefore = qo.ids();

    const auto planned = qo.run({"reorg", "plan"});
    ASSERT_EQ(planned.code, 0) << planned.err;
    EXPECT_EQ(planned.out,
              "in " + qo.music() +
                  ", by {artist.name}\\ > Music {track.name}:\n"
                  "  in/1.mp3 -> Ann/One.mp3\n"
                  "  in/2.mp3 -> Ann/Two.mp3\n"
                  "  in/deep/3.mp3 -> Ben/One.mp3\n"
                  "\n"
                  "in " +
                  qo.music() +
                  ", by {artist.name}\\ > Lyrics name kept:\n"
                  "  in/2.txt -> Ann/2.txt\n");
    EXPECT_TRUE(contains(planned.err, "4 files would move, 1 stays; plan "));
    EXPECT_EQ(tree(qo), before);

    EXPECT_EQ(qo.run({"reorg", "apply", "--last", "--dry-run"}).out, planned.out);
    EXPECT_EQ(tree(qo), before);
    const auto applied = qo.run({"reorg", "apply", "--last", "--json"});
    ASSERT_EQ(applied.code, 0) << applied.err;
    EXPECT_EQ(applied.json().at(0)["moved"], 4);
    EXPECT_EQ(files(qo),
              (Words{"Ann/2.txt", "Ann/One.mp3", "Ann/Two.mp3", "Ben/One.mp3", "Ben/Two.mp3"}));
    EXPECT_FALSE(fs::exists(qo.music("in")));
    auto moved = qo.ids();
    EXPECT_EQ(moved["Ann/One.mp3"], idsBefore.at("in/1.mp3"));
    EXPECT_EQ(moved["Ann/2.txt"], idsBefore.at("in/2.txt"));
    EXPECT_EQ(moved["Ben/One.mp3"], idsBefore.at("in/deep/3.mp3"));
    EXPECT_EQ(qo.run({"reorg", "apply", "--last"}).code, 7);
    EXPECT_TRUE(contains(qo.run({"reorg", "plan"}).err, "nothing would move, 5 stay\n"));

    EXPECT_EQ(qo.run({"reorg", "undo", "--dry-run"}).code, 0);
    EXPECT_EQ(qo.run({"reorg", "undo"}).code, 0);
    EXPECT_EQ(tree(qo), before);
    EXPECT_EQ(qo.ids(), idsBefore);
    EXPECT_EQ(qo.run({"reorg", "undo"}).code, 4);
    EXPECT_EQ(qo.run({"scan", "--json"}).json().at(0)["new"], 0);

    const auto runs = qo.run({"reorg", "log", "--json"}).json();
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0]["state"], "taken back by " + runs[1]["run"].get<std::string>());
    EXPECT_EQ(runs[1]["undoes"], runs[0]["run"]);
    EXPECT_EQ(runs[0]["rule"], "r");
    const auto back = qo.run({"reorg", "log", "--json", runs[1]["run"]}).json();
    ASSERT_EQ(back.size(), 4U);
    EXPECT_EQ(back[0]["from"], qo.music("Ann/One.mp3"));
    EXPECT_EQ(back[0]["to"], qo.music("in/1.mp3"));
}

TEST(ReorgCommand, ConflictsComeFirstAndMoveNothing)
{
    const QoCommand qo;
    prepare(qo);
    qo.addTrack("in/4.mp3", {"artist=Ben", "title=Two"});
    ASSERT_EQ(qo.scan().code, 0);
    const auto planned = qo.run({"reorg", "plan", "--json", "--all"});
    EXPECT_EQ(planned.code, 6);
    const auto lines = planned.json();
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[0]["do"], "refused");
    EXPECT_EQ(lines[0]["from"], qo.music("in/4.mp3"));
    EXPECT_EQ(lines[0]["to"], qo.music("Ben/Two.mp3"));
    EXPECT_FALSE(lines[0]["reason"].get<std::string>().empty());
    EXPECT_EQ(lines[1]["do"], "move");
    EXPECT_TRUE(lines[1]["reason"].is_null());
    EXPECT_EQ(lines[5]["do"], "stay");
    EXPECT_EQ(qo.run({"reorg", "plan"}).out.find("refused  " + qo.music("in/4.mp3") + " -> "), 0U);
    EXPECT_EQ(qo.run({"reorg", "apply", "--last"}).code, 0);
    EXPECT_EQ(
        files(qo),
        (Words{
            "Ann/2.txt", "Ann/One.mp3", "Ann/Two.mp3", "Ben/One.mp3", "Ben/Two.mp3", "in/4.mp3"}));
}

TEST(ReorgCommand, WhatChangedBehindThePlanStaysAndTheRestMoves)
{
    const QoCommand qo;
    prepare(qo);
    ASSERT_EQ(qo.run({"reorg", "plan", "--output", qo.dir.path("plan")}).code, 0);
    std::string edited = qo.dir.read("plan");
    edited.replace(edited.find("Ann/Two.mp3"), 11, "Ann/One.mp3");
    qo.dir.write("plan", edited);
    qo.expect({"reorg", "apply", "--dry-run", qo.dir.path("plan")}, 6, "1 is refused");
    fs::last_write_time(qo.music("in/1.mp3"), fs::file_time_type::clock::now());
    qo.dir.write("music/Ann/Two.mp3", "in the way");
    const auto trial = qo.run({"reorg", "apply", "--last", "--dry-run"});
    EXPECT_EQ(trial.code, 6);
    EXPECT_TRUE(contains(trial.out, "it has changed since the plan was made"));
    EXPECT_TRUE(contains(trial.out, "there is something at its new place by now"));
    EXPECT_TRUE(contains(trial.err, "2 files would move, 2 are refused"));
    qo.expect({"reorg", "apply", "--last"}, 6, qo.music("in/1.mp3") + " -> ");
    EXPECT_EQ(
        files(qo),
        (Words{"Ann/2.txt", "Ann/Two.mp3", "Ben/One.mp3", "Ben/Two.mp3", "in/1.mp3", "in/2.mp3"}));
    EXPECT_EQ(qo.dir.read("music/Ann/Two.mp3"), "in the way");
}

TEST(ReorgCommand, RunThatWasCutShortIsTakenBackOrBroughtToItsEnd)
{
    for (const int signal : {SIGKILL, SIGINT})
    {
        const QoCommand qo;
        const int count = 1000;
        qo.addSounds("in", count);
        ASSERT_EQ(qo.scan().code, 0);
        ASSERT_EQ(qo.run({"rule", "new", "r", "--folder", "out"}).code, 0);
        ASSERT_EQ(qo.run({"reorg", "plan"}).code, 0);
        const Tree before = tree(qo);
        const auto idsBefore = qo.ids();
        const pid_t pid = qo.start({"reorg", "apply", "--last"});
        EXPECT_TRUE(QoCommand::waitFor(qo.music("out")));
        ::kill(pid, signal);
        const auto cut = qo.finish(pid);
        // The signal may have come when all was done.
        const bool isDone = !fs::exists(qo.music("in"));

        // After the next command that changes something the collection is where the files are.
        EXPECT_EQ(qo.run({"scan"}).code, 0);
        for (const auto& [name, id] : qo.ids())
            EXPECT_TRUE(fs::exists(qo.music(name))) << name;
        const std::string id = qo.run({"reorg", "log", "--json"}).json().at(0)["run"];
        if (signal == SIGKILL)
        {
            EXPECT_EQ(qo.run({"reorg", "undo"}).code, 0);
            EXPECT_EQ(tree(qo), before);
            EXPECT_EQ(qo.ids(), idsBefore);
            continue;
        }
        if (!isDone)
        {
            EXPECT_EQ(cut.code, 130);
            EXPECT_TRUE(contains(cut.err, "\"qo reorg apply " + id + "\" goes on"));
            ASSERT_EQ(qo.run({"reorg", "plan", "--rule", "artist-track"}).code, 0);
            EXPECT_EQ(qo.run({"reorg", "apply", "--last"}).code, 7);
            EXPECT_EQ(qo.run({"reorg", "apply", id}).code, 0);
        }
        EXPECT_FALSE(fs::exists(qo.music("in")));
        EXPECT_EQ(files(qo).size(), std::size_t(count));
        EXPECT_EQ(qo.ids().at("out/7.mp3"), idsBefore.at("in/7.mp3"));
    }
}

TEST(ReorgCommand, OptionsChooseTheFilesTheRuleAndTheTarget)
{
    const QoCommand qo;
    prepare(qo);
    ASSERT_EQ(qo.run({"rule", "copy", "r", "other"}).code, 0);
    const struct
    {
        Words options;
        Words moved; ///< below the music folder, sorted
    } cases[] = {{{"--rule", "r", "--artist", "ben"}, {"Ben/One.mp3"}},
                 {{"--rule", "r", "--artist", "ann"}, {"Ann/2.txt", "Ann/One.mp3", "Ann/Two.mp3"}},
                 {{"--rule", "r", "--root", qo.music("in/deep")}, {"Ben/One.mp3"}},
                 {{"--rule", "r", qo.music("in/2.txt"), qo.music("Ben")}, {"Ann/2.txt"}},
                 {{"--rule", "R", "--to", qo.music("new/place"), qo.music("Ben")},
                  {"new/place/Ben/Two.mp3"}},
                 {{"--rule", "artist-track", qo.music("in/1.mp3")}, {"Ann - One.mp3"}}};
    for (const auto& c : cases)
    {
        Words words{"reorg", "plan", "--dry-run", "--json"};
        words.insert(words.end(), c.options.begin(), c.options.end());
        const auto result = qo.run(words);
        Words moved;
        for (const auto& each : result.json())
            moved.push_back(each["to"].get<std::string>().substr(qo.music().size() + 1));
        std::sort(moved.begin(), moved.end());
        EXPECT_EQ(moved, c.moved) << testing::PrintToString(c.options) << result.err;
    }
    EXPECT_EQ(qo.run({"reorg", "apply", "--last"}).code, 4);
}

TEST(ReorgCommand, PlanFilesAreCopiedAndReadWithDistrust)
{
    const QoCommand qo;
    prepare(qo);
    const std::string file = qo.dir.path("my.plan");
    ASSERT_EQ(qo.run({"reorg", "plan", "--output", file}).code, 0);
    EXPECT_EQ(qo.run({"reorg", "plan", "--output", file}).code, 7);
    std::string text = qo.dir.read("my.plan");
    const std::string place = qo.music("Ben/One.mp3");
    const std::size_t at = text.find("\"" + place + "\"");
    ASSERT_NE(at, std::string::npos) << text;

    // By hand to another name, which is fine, and out of the collection, which is not.
    qo.dir.write("my.plan", std::string(text).replace(at + 1, place.size(), "/tmp/One.mp3"));
    qo.expect({"reorg", "apply", file}, 1, "leads out of the folders of the plan");
    const std::string targets = "\"targets\":[\"";
    const std::size_t target = text.find(targets) + targets.size();
    std::string widened = text;
    widened.replace(at + 1, place.size(), qo.dir.path("One.mp3"));
    widened.replace(target, qo.music().size(), qo.dir.path());
    qo.dir.write("my.plan", widened);
    qo.expect({"reorg", "apply", file}, 1, qo.dir.path("One.mp3") + " is in no root folder");
    qo.dir.write("my.plan",
                 std::string(text).replace(at + 1, place.size(), qo.music("Ben/Uno.mp3")));
    EXPECT_EQ(qo.run({"reorg", "apply", file}).code, 0);
    EXPECT_TRUE(fs::exists(qo.music("Ben/Uno.mp3")));
    const std::string id = qo.run({"reorg", "log", "--json"}).json().at(0)["run"];
    EXPECT_TRUE(
        contains(qo.run({"reorg", "log", id}).out, " -> " + qo.music("Ben/Uno.mp3") + "\n"));
}

TEST(ReorgCommand, RefusalsHaveTheirExitCodeAndSentence)
{
    const QoCommand qo;
    qo.addSound("1.mp3");
    ASSERT_EQ(qo.scan().code, 0);
    const std::vector<QoCommand::Refusal> cases = {
        {{}, 2, "\"qo reorg\" goes with one of plan, apply, undo, log, forget"},
        {{"plan"}, 2, "name a rule with --rule; there are artist-track, velmora-artist-track"},
        {{"plan", "--rule", "x"}, 4, "there is no rule \"x\""},
        {{"plan", "--rule", "artist-track", "--to", "/nowhere"}, 4, "is in no root folder"},
        {{"plan", "--rule", "artist-track", "/nowhere"}, 4, "/nowhere is not there"},
        {{"plan", "--rule", "artist-track", "--artist", "x"}, 4, "there is no artist \"x\""},
        {{"apply"}, 2, "name a plan, or take the youngest with --last"},
        {{"apply", "--last"}, 4, "there is no plan yet"},
        {{"apply", "20260101-000000"}, 4, "cannot be read: No such file"},
        {{"apply", "/etc/passwd"}, 1, "/etc/passwd is no plan that can be used"},
        {{"undo"}, 4, "there is no run to take back"},
        {{"undo", "20260101-000000"}, 4, "there is no run 20260101-000000 to take back"},
        {{"log", "20260101-000000"}, 4, "there is no run 20260101-000000"}};
    qo.expectRefusals("reorg", cases);
}
