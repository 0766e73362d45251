#include "host/cli/QoCommand.h"
#include "support/PtyShell.h"

namespace fs = std::filesystem;

namespace
{
/// A shell of a person whose "qo" completes as it does, and else notes the words that it is given.
class CompletingShell
{
public:
    CompletingShell(const QoCommand& qo, std::vector<std::string> words, const std::string& rc)
        : m_qo(qo)
    {
        qo.dir.write("bin/qo",
                     "#!/bin/sh\ncase $1 in complete|completion)\n exec '" QO_COMMAND "' --data '" +
                         qo.dir.path("data") + "' \"$@\"\nesac\nprintf '%s\\0' \"$@\" >'" +
                         qo.dir.path("words.part") + "'\nmv '" + qo.dir.path("words.part") + "' '" +
                         qo.dir.path("words") + "'\n");
        EXPECT_EQ(::chmod(qo.dir.path("bin/qo").c_str(), 0755), 0);
        qo.dir.write("home/rc", rc);
        qo.dir.write("home/.zshrc", rc);
        qo.dir.write("home/chosen file.mp3", "");
        m_shell.emplace(words,
                        std::vector<std::string>{"HOME=" + qo.dir.path("home"),
                                                 "ZDOTDIR=" + qo.dir.path("home"),
                                                 "PATH=" + qo.dir.path("bin") + ":/usr/bin:/bin",
                                                 "LC_ALL=C.UTF-8",
                                                 "TERM=xterm"});
        m_shell->readTo("READY> ");
        m_shell->type("cd " + qo.dir.path("home") + "\n");
    }

    /// The last word that "qo" gets when a line is typed, tabs and all, and sent.
    std::string lastWord(const std::string& typed)
    {
        m_shell->readTo("READY> ");
        m_shell->type(typed + "\n");
        if (!QoCommand::waitFor(m_qo.dir.path("words")))
            return "nothing; shown: " + m_shell->readTo("READY> ");
        std::string words = m_qo.dir.read("words");
        fs::remove(m_qo.dir.path("words"));
        words.pop_back();
        return words.substr(words.rfind('\0') + 1);
    }

    /// What it shows while a line is typed that is not sent, up to a text.
    std::string shownFor(const std::string& typed, const std::string& end)
    {
        m_shell->readTo("READY> ");
        m_shell->type(typed);
        return m_shell->readTo(end);
    }

private:
    const QoCommand& m_qo;
    std::optional<PtyShell> m_shell;
};

/// Names that a shell must not take apart or run; each begins with a letter of its own.
const std::vector<std::string> hostileNames = {"A $(touch pwned) `touch pwned` ; touch pwned",
                                               "B \"double\" and 'single' \\ back",
                                               "C line\nfeed",
                                               "D co:lon = and @ > < | & #",
                                               "E \x1b[31mred\x07",
                                               "F {a,b} [c] * ? ! !! ^x ~",
                                               "G Żółta Ärzte 東京",
                                               "H $HOME ${PATH} $'x'",
                                               "I ends in \"",
                                               "J ends in !"};

void makeLibrary(const QoCommand& qo)
{
    for (std::size_t i = 0; i < hostileNames.size() + 1; ++i)
        qo.addTrack(std::to_string(i) + ".mp3", {"artist=" + std::to_string(i), "album=Gold"});
    ASSERT_EQ(qo.scan().code, 0);
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(qo.database().c_str(), &db), SQLITE_OK);
    for (std::size_t i = 0; i < hostileNames.size(); ++i)
    {
        sqlite3_stmt* update = nullptr;
        sqlite3_prepare_v2(
            db, "UPDATE FILE_T SET FT_ARTIST = ? WHERE FT_ARTIST = ?", -1, &update, nullptr);
        sqlite3_bind_text(update, 1, hostileNames[i].c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(update, 2, std::to_string(i).c_str(), -1, SQLITE_TRANSIENT);
        EXPECT_EQ(sqlite3_step(update), SQLITE_DONE);
        sqlite3_finalize(update);
    }
    sqlite3_close(db);
}

struct ShellCase
{
    const char* name;
    std::vector<std::string> words;
    std::string rc;
};

void PrintTo(const ShellCase& shell, std::ostream* out)
{
    *out << shell.name;
}

std::vector<ShellCase> shells()
{
    return {{"bash",
             {"/bin/bash", "--noprofile", "--rcfile", "@", "-i"},
             "PS1='READY> '\nsource <(qo completion bash)\n"},
            {"zsh",
             {"/usr/bin/zsh", "-i"},
             "PS1='READY> '\nautoload -Uz compinit\ncompinit -u -D\nsource <(qo completion zsh)\n"},
            {"fish",
             {"/usr/bin/fish", "--no-config", "-C", "source @"},
             "function fish_prompt; printf 'READY> '; end\nqo completion fish | source\n"}};
}

class Completion : public testing::TestWithParam<ShellCase>
{
protected:
    void SetUp() override
    {
        ShellCase shell = GetParam();
        if (!fs::exists(shell.words[0]))
            GTEST_SKIP() << shell.words[0] << " is not installed";
        makeLibrary(qo);
        for (std::string& word : shell.words)
        {
            if (word.ends_with('@'))
                word.replace(word.size() - 1, 1, qo.dir.path("home/rc"));
        }
        m_shell.emplace(qo, shell.words, shell.rc);
    }
    std::string lastWord(const std::string& typed) { return m_shell->lastWord(typed); }
    std::string shownFor(const std::string& typed, const std::string& end)
    {
        return m_shell->shownFor(typed, end);
    }

    QoCommand qo;

private:
    std::optional<CompletingShell> m_shell;
};
} // namespace

TEST_P(Completion, GivesTheRightWordAndRunsNothing)
{
    for (const std::string& name : hostileNames)
    {
        const std::string first = name.substr(0, 1);
        for (const std::string start :
             {"artists --artist ", "artists --artist \"", "artists --artist '"})
            ASSERT_EQ(lastWord("qo " + start + first + "\t"), name) << start;
        ASSERT_EQ(lastWord("qo tag set x artist=" + first + "\t"), "artist=" + name);
        ASSERT_EQ(lastWord("qo artists --artist=" + first + "\t"), "--artist=" + name);
    }
    const std::string file = qo.music("0.mp3");
    ASSERT_EQ(qo.run({"mv", file, qo.music("moved.mp3")}).code, 0);
    ASSERT_EQ(qo.run({"playlist", "new", "It's 100%"}).code, 0);
    const std::string run = qo.run({"runs", "--json"}).json().at(0)["run"];
    const struct
    {
        const char* typed;
        std::string word;
    } cases[] = {{"qo artis\t", "artists"},
                 {"qo tag enc\t", "encoding"},
                 {"qo ls --js\t", "--json"},
                 {"qo --data " QO_TEST_TEMP " --dry\t", "--dry-run"},
                 {"qo tag set x alb\t\"My Album\"", "album=My Album"},
                 {"qo config set TraceL\t w\t", "w"},
                 {"qo config set TraceLevel W\t", "Warning"},
                 {"qo log --level ve\t", "verbose"},
                 {"qo rule show velm\t", "velmora-artist-track"},
                 {"qo playlist show It\t", "It's 100%"},
                 {"qo ls --sort yea\t", "year"},
                 {"qo undo 2\t", run},
                 {"qo help nam\t", "names"},
                 {"qo cover show --album G\t", "Gold"},
                 {"qo roots rm " QO_TEST_TEMP "\t", qo.music()},
                 {"qo info cho\t", "chosen file.mp3"},
                 {"qo ls artis\tG\t", "artist:G\" Żółta Ärzte 東京\""},
                 {"qo ls kind:pic\t", "kind:picture"},
                 {"qo ls ^album:Gol\t", "^album:Gold"},
                 {"qo db restore --dry\t", "--dry-run"},
                 {"qo albums --artist none\t", "none"}};
    for (const auto& c : cases)
        ASSERT_EQ(lastWord(c.typed), c.word) << c.typed;
    for (const auto& entry : fs::recursive_directory_iterator(qo.dir.path()))
        EXPECT_NE(entry.path().filename(), "pwned");
}

TEST_P(Completion, ListsNamesWithoutSendingTheirControlCharacters)
{
    const std::string shown = shownFor("qo artists --artist \t\t", "東京");
    EXPECT_NE(shown.find("31mred"), std::string::npos) << shown;
    EXPECT_EQ(shown.find("\x1b[31mred"), std::string::npos) << shown;
}

INSTANTIATE_TEST_SUITE_P(Shells,
                         Completion,
                         testing::ValuesIn(shells()),
                         [](const auto& info) { return std::string(info.param.name); });
