#include "host/cli/QoCommand.h"
#include "host/cli/help/SampleHome.h"
#include "support/Contains.h"
#include "support/PtyShell.h"
#include "support/Words.h"

#include <algorithm>
#include <regex>

namespace
{
std::vector<nlohmann::json> commands()
{
    return QoCommand().run({"help", "--json"}).json();
}
} // namespace

TEST(Help, EveryPageFitsEightyColumnsAndEndsInTwoOrThreeExamples)
{
    const QoCommand qo;
    std::vector<std::vector<std::string>> pages = {
        {"help", "rules"}, {"help", "names"}, {"help", "queries"}};
    for (const auto& command : commands())
    {
        std::vector<std::string> words = wordsOf(command["command"]);
        words.front() = "help";
        pages.push_back(words);
        const std::size_t examples = command["examples"].size();
        EXPECT_TRUE(words.size() == 1 || examples == 2 || examples == 3) << command["command"];
    }
    ASSERT_GT(pages.size(), 60U);
    const std::regex wide("[^\n]{81,}");
    for (const std::vector<std::string>& words : pages)
    {
        const QoCommand::Result page = qo.run(words);
        EXPECT_EQ(page.code, 0) << page.err;
        std::smatch line;
        EXPECT_FALSE(std::regex_search(page.out, line, wide)) << line.str();
    }
}

TEST(Help, CommandsAreListedOnOneScreenWithSentencesWhereThereIsRoom)
{
    const QoCommand qo;
    const struct
    {
        unsigned short columns;
        unsigned short rows;
        const char* text;
    } windows[] = {{80, 24, "  Tags        tag cover"}, {80, 200, "  tag    Look at and edit"}};
    for (const auto& window : windows)
    {
        PtyShell shell({QO_COMMAND, "help"},
                       {"HOME=" + qo.dir.path("home"), "LC_ALL=C.UTF-8"},
                       window.columns,
                       window.rows);
        const std::string page = shell.readTo("");
        EXPECT_TRUE(contains(page, window.text));
        EXPECT_TRUE(contains(page, "qo scan ~/Music"));
        EXPECT_LT(std::ranges::count(page, '\n'), window.rows);
        EXPECT_FALSE(std::regex_search(page, std::regex("[^\n]{82,}"))) << page;
    }
}

TEST(Help, EveryExampleRunsInASmallLibrary)
{
    const SampleHome home;
    home.run0(R"(
        set -e
        qo -q scan Music
        qo -q rule new "By artist" --folder "{artist.name}" --music "{track.name}" >/dev/null
        cp "Music/Kino/Album/01.mp3" "Music/Kino/Album/02.mp3"
        qo -q scan
        qo -q rm Music/Kino/Album/02.mp3
        qo -q tag set "Music/Iron Circus/Heart/01 - Heart.mp3" year=2015 >/dev/null
        qo -q config set TraceLevel Info
        qo -q cover set Music/Iron* --image Pictures/front.jpg --yes
        qo -q playlist new Party "Music/Hidden Machine"
        qo -q playlist export Party Downloads/old.m3u
        mkdir -p nas/Music/Kino
        cp Downloads/new.mp3 nas/Music/old.mp3
        cp Downloads/new.mp3 nas/Music/a.mp3
        qo -q plugin login NAS --folder nas)");
    home.run0("qo -q scan; qo -q reorg plan --rule artist-track");
    home.keep();
    // All that an example may have changed, apart from the logs.
    const std::string listFiles = "cd; find . -path ./.local/state -prune -o -type f -printf "
                                  "'%p %s %T@\\n' | sort >../../list";
    home.run0(listFiles);
    std::string files = home.dir.read("list");
    int count = 0;
    for (const auto& command : commands())
    {
        for (const auto& example : command["examples"])
        {
            const std::string line = example["line"];
            const int code = example["code"];
            // What waits for Ctrl-C gets it.
            const bool isEndless = line.starts_with("qo watch");
            const std::string call =
                isEndless ? "timeout --preserve-status -s INT 0.5 " + line : line;
            const SampleHome::Result result =
                home.run("set -o pipefail\n" + call + "\ncode=$?\n" + listFiles + "\nexit $code");
            // The signal may come before it watches.
            EXPECT_TRUE(result.code == code || (isEndless && result.code == 130))
                << line << "\n"
                << result.code << result.err;
            if (home.dir.read("list") != files)
            {
                home.goBack();
                // Copies have times of their own.
                home.run0("qo -q scan; qo -q reorg plan --rule artist-track\n" + listFiles);
                files = home.dir.read("list");
            }
            ++count;
        }
    }
    EXPECT_GT(count, 120);
}

TEST(Help, WhatIsWrongWithACommandLineIsNamedInItsOrder)
{
    const QoCommand qo;
    const std::string file = qo.addSound("1.mp3");
    const std::vector<QoCommand::Refusal> cases = {
        {{"rule", "copy"}, 2, "RULE is missing: qo rule copy [OPTIONS] RULE NAME"},
        {{"rule", "copy", "x"}, 2, "NAME is missing"},
        {{"tag", "set"}, 2, "say what to set, as"},
        {{"ls", "--josn"}, 2, "there is no option \"--josn\"; did you mean \"--json\"?"},
        {{"tag", "set", "--qiet", "x"}, 2, "did you mean \"--quiet\"?"},
        {{"tag", "set", file, "titel=y"}, 2, "did you mean \"title\"?"},
        {{"tag", "set", file, "zzz=y"}, 2, "there are artist, album, title"},
        {{"tag", "sett"}, 2, "there is no command \"tag sett\"; did you mean \"set\"?"},
        {{"db"}, 2, "\"qo db\" goes with one of check, dump"},
        {{"status", "x"}, 2, "\"x\" is one argument too many: qo status"},
        {{"log", "--level", "erro"}, 2, "it is one of error, warning"},
        {{"tree", "--depth", "0"}, 2, "--depth cannot be \"0\": it is a number, more than 0"},
        {{"watch", "--settle", "x"}, 2, "--settle cannot be \"x\": it is a number, 0 to 3600"},
        {{"add", "--to"}, 2, "--to needs a value: --to DIR"},
        {{"rule", "new", "a", "--from", "x", "--folder", "y"}, 2, "do not go together"}};
    qo.expectRefusals("", cases);
    qo.expect({"--version"}, 0, qo.run({"version"}).out);
    qo.expect({"-V"}, 0, qo.run({"version"}).out);
}
