#include "host/cli/QoCommand.h"
#include "support/Contains.h"
#include "support/PtyShell.h"

#include <fstream>
#include <regex>
#include <sstream>

namespace
{
/// A collection whose paths are equally long wherever the tests run, and what a person sees of it.
class Terminal
{
public:
    Terminal()
    {
        EXPECT_NE(::mkdtemp(m_folder.data()), nullptr);
        const std::string machine = "Hidden Machine/Songs of the Longest Winter That Anybody Knew";
        addTrack(machine + "/01 - Letter.mp3",
                 {"artist=Hidden Machine",
                  "album=Songs of the Longest Winter That Anybody Knew",
                  "title=Letter",
                  "track=1",
                  "year=1989",
                  "genre=Rock"});
        addTrack(machine + "/02 - Rain.mp3",
                 {"artist=Hidden Machine",
                  "album=Songs of the Longest Winter That Anybody Knew",
                  "title=Rain That Falls for Forty Days and as Many Nights",
                  "track=2",
                  "year=1989",
                  "genre=Rock"});
        addTrack("東京/heart.mp3", {"artist=東京事変東京事変東京事変", "title=Heart"});
        addTrack("line\nfeed.mp3", {"artist=Kino"});
        EXPECT_EQ(qo.run({"scan", folder()}).code, 0);
    }
    ~Terminal() { std::filesystem::remove_all(m_folder); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    std::string folder() const { return m_folder + "/music"; }

    struct Screen
    {
        std::string text; ///< with the folder's name made the same for all
        int code = -1;
    };

    PtyShell open(const std::vector<std::string>& words,
                  unsigned short columns,
                  unsigned short rows,
                  const std::vector<std::string>& more = {"PAGER=cat"}) const
    {
        std::vector<std::string> call{QO_COMMAND, "--data", qo.dir.path("data")};
        call.insert(call.end(), words.begin(), words.end());
        // The first value of a name counts.
        std::vector<std::string> variables = more;
        for (const std::string& each : {"HOME=" + qo.dir.path("home"),
                                        std::string("LC_ALL=C.UTF-8"),
                                        std::string("TZ=UTC"),
                                        std::string("TERM=xterm"),
                                        std::string("PATH=/usr/bin:/bin")})
            variables.push_back(each);
        return {call, variables, columns, rows};
    }
    Screen show(const std::vector<std::string>& words,
                unsigned short columns,
                unsigned short rows,
                const std::vector<std::string>& more = {"PAGER=cat"}) const
    {
        PtyShell shell = open(words, columns, rows, more);
        Screen screen;
        screen.text = std::regex_replace(shell.readTo(""), std::regex("\r\n"), "\n");
        screen.text = std::regex_replace(screen.text, std::regex(m_folder), "/tmp/qo-XXXXXX");
        screen.code = shell.finish();
        return screen;
    }

    const QoCommand qo;

private:
    void addTrack(const std::string& relative, std::vector<std::string> fields) const
    {
        namespace fs = std::filesystem;
        const std::string file = folder() + "/" + relative;
        fs::create_directories(fs::path(file).parent_path());
        fs::copy_file(QO_TEST_DATA "/sounds/sound.mp3", file);
        fields.insert(fields.begin(), {"tag", "set", file});
        EXPECT_EQ(qo.run(fields).code, 0);
        EXPECT_EQ(qo.run({"tag", "write", file}).code, 0);
    }

    std::string m_folder = "/tmp/qo-XXXXXX";
};

std::string fileText(const std::string& path)
{
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}
} // namespace

TEST(Terminal, TablesFitTheWindow)
{
    const Terminal terminal;
    const std::vector<std::vector<std::string>> calls = {
        {"ls"},
        {"tracks"},
        {"albums"},
        {"reorg", "plan", "--dry-run", "--rule", "artist-track"},
        {"help", "tree"}};
    for (const unsigned short columns : {80, 200})
    {
        std::string screens;
        for (const std::vector<std::string>& words : calls)
        {
            for (const std::string& word : words)
                screens += (&word == &words.front() ? "$ qo " : " ") + word;
            screens += "\n" + terminal.show(words, columns, 100, {"NO_COLOR=1"}).text;
        }
        const std::string name = "/screens/" + std::to_string(columns) + ".txt";
        EXPECT_EQ(screens, fileText(QO_TEST_DATA + name)) << "tests/data" << name;
    }
}

TEST(Terminal, LongListsGoThroughThePager)
{
    const Terminal terminal;
    const std::string mark = "PAGER=sed s/^/P/";
    struct Case
    {
        std::vector<std::string> words;
        unsigned short rows;
        std::vector<std::string> variables;
        bool isPaged;
        long lines; ///< that are seen
    };
    const Case cases[] = {
        {{"ls"}, 4, {mark}, true, 4},
        {{"ls"}, 5, {mark}, false, 4}, // all fits
        {{"ls"}, 4, {"PAGER=true", "QO_PAGER=sed s/^/P/"}, true, 4},
        {{"--no-pager", "ls"}, 4, {mark}, false, 4},
        {{"ls", "--json"}, 4, {mark}, false, 4},
        {{"ls"}, 4, {mark, "TERM=dumb"}, false, 4},
        {{"ls"}, 4, {"PAGER=no-such-program -x"}, false, 4},
        {{"ls"}, 4, {"PAGER="}, false, 4},
        {{"ls"}, 4, {"PAGER=cat | sed s/^/P/"}, true, 4},
        {{"ls"}, 4, {"PAGER=true"}, false, 0}, // the user quits before the first page
        {{"ls"}, 4, {"PAGER=sh -c 'read a; echo \"P$a\"'"}, true, 1},
        {{"reorg", "plan", "--rule", "artist-track"}, 4, {mark, "COLUMNS=70"}, true, 5}};
    for (const Case& each : cases)
    {
        const Terminal::Screen screen = terminal.show(each.words, 80, each.rows, each.variables);
        SCOPED_TRACE(testing::PrintToString(each.words) + testing::PrintToString(each.variables));
        EXPECT_EQ(screen.code, 0);
        EXPECT_EQ(screen.text.starts_with("P"), each.isPaged) << screen.text;
        EXPECT_EQ(std::count(screen.text.begin(), screen.text.end(), '\n'), each.lines)
            << screen.text;
    }
}

TEST(Terminal, InterruptionIsForThePagerWhileItRuns)
{
    const Terminal terminal;
    PtyShell shell = terminal.open({"ls"},
                                   80,
                                   4,
                                   {"PAGER=sh -c 'trap \"echo heard; exit\" INT; cat; echo ready; "
                                    "while sleep 1; do :; done'"});
    shell.readTo("ready");
    shell.type("\x03");
    EXPECT_TRUE(contains(shell.readTo(""), "heard"));
    EXPECT_EQ(shell.finish(), 0);
}

TEST(Terminal, ColoursAreForTerminalsUnlessTheUserSaysOtherwise)
{
    const Terminal terminal;
    const auto hasColors = [](const std::string& text)
    { return text.find("\x1b[") != std::string::npos; };
    EXPECT_TRUE(hasColors(terminal.show({"view"}, 80, 50).text));
    EXPECT_FALSE(hasColors(terminal.show({"view"}, 80, 50, {"NO_COLOR=1"}).text));
    EXPECT_TRUE(hasColors(terminal.show({"view"}, 80, 50, {"NO_COLOR="}).text));
    EXPECT_FALSE(hasColors(terminal.show({"view"}, 80, 50, {"TERM=dumb"}).text));
    EXPECT_FALSE(hasColors(terminal.show({"--color", "never", "view"}, 80, 50).text));
    const QoCommand::Result plain = terminal.qo.run({"view", "--left", "sing"});
    EXPECT_FALSE(hasColors(plain.err));
    EXPECT_TRUE(hasColors(terminal.qo.run({"--color", "always", "view"}).out));
    EXPECT_TRUE(hasColors(terminal.qo.run({"--color=always", "view", "--left", "sing"}).err));
}
