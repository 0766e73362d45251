#include "host/cli/QoCommand.h"

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <set>

namespace fs = std::filesystem;

namespace
{
/// Runs the command step by step, up to the moment at which it asks the system for a change of a
/// file, and kills it there.
class KilledCommand
{
public:
    KilledCommand(const QoCommand& qo, const std::vector<std::string>& words)
        : m_words{QO_COMMAND, "--data", qo.dir.path("data")}
        , m_variables{"HOME=" + qo.dir.path("home"), "LC_ALL=C", "ASAN_OPTIONS=detect_leaks=0"}
    {
        m_words.insert(m_words.end(), words.begin(), words.end());
    }

    /// Kills it before its change of that number. How many changes it came to; -1 where a process
    /// may not watch another.
    int run(int killed)
    {
        const pid_t pid = ::fork();
        if (pid == 0)
            becomeCommand();
        int status = 0;
        ::waitpid(pid, &status, 0);
        if (!WIFSTOPPED(status) ||
            ::ptrace(PTRACE_SETOPTIONS,
                     pid,
                     0,
                     PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL) != 0)
            return -1;
        int changes = 0;
        pid_t thread = pid;
        int signal = 0;
        for (;;)
        {
            ::ptrace(PTRACE_SYSCALL, thread, 0, signal);
            thread = ::waitpid(-1, &status, __WALL);
            if (thread == pid && !WIFSTOPPED(status))
                return changes;
            if (!WIFSTOPPED(status))
                continue;
            const bool isCall = WSTOPSIG(status) == (SIGTRAP | 0x80);
            const bool isOwn = WSTOPSIG(status) == SIGTRAP || WSTOPSIG(status) == SIGSTOP;
            signal = isCall || isOwn ? 0 : WSTOPSIG(status);
            if (isCall && isChange(thread) && changes++ == killed)
                ::kill(pid, SIGKILL);
        }
    }

private:
    [[noreturn]] void becomeCommand()
    {
        const auto pointers = [](std::vector<std::string>& words)
        {
            std::vector<char*> list;
            for (std::string& word : words)
                list.push_back(word.data());
            list.push_back(nullptr);
            return list;
        };
        const int nothing = ::open("/dev/null", O_RDWR);
        for (const int stream : {0, 1, 2})
            ::dup2(nothing, stream);
        ::ptrace(PTRACE_TRACEME, 0, 0, 0);
        ::execve(QO_COMMAND, pointers(m_words).data(), pointers(m_variables).data());
        ::_exit(127);
    }
    static bool isChange(pid_t thread)
    {
        static const std::set<std::uint64_t> calls = {
            SYS_pwrite64,
            SYS_ftruncate,
            SYS_unlinkat,
            SYS_renameat2,
            SYS_mkdirat,
#ifdef SYS_rename
            SYS_rename,
            SYS_unlink,
            SYS_mkdir,
            SYS_rmdir,
#endif
        };
        __ptrace_syscall_info info = {};
        ::ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof(info), &info);
        return info.op == PTRACE_SYSCALL_INFO_ENTRY &&
               (calls.contains(info.entry.nr) ||
                (info.entry.nr == SYS_write && info.entry.args[0] > 2));
    }

    std::vector<std::string> m_words;
    std::vector<std::string> m_variables;
};

struct Story
{
    const char* name;
    std::vector<std::string> before; ///< commands, a space between their words
    std::string command;             ///< the one that is killed
    std::vector<std::string> after;  ///< until everything is where it shall be
};

void PrintTo(const Story& story, std::ostream* out)
{
    *out << story.name;
}

class EditsStory : public testing::TestWithParam<Story>
{
protected:
    QoCommand::Result call(const std::string& command) const { return qo.run(words(command)); }
    std::vector<std::string> words(const std::string& command) const
    {
        std::vector<std::string> list;
        std::istringstream text(command);
        for (std::string word; text >> word;)
            list.push_back(word.starts_with("a/") || word == "a" || word == "b" ? qo.music(word)
                                                                                : word);
        return list;
    }
    void save() const { copy("saved", {"data", "music"}, true); }
    void restore() const
    {
        fs::remove_all(qo.dir.path("data"));
        fs::remove_all(qo.dir.path("music"));
        copy("saved", {"data", "music"}, false);
    }
    /// The edited title of each file that is there, by the artist in its tag; "" marks one that is
    /// away.
    std::map<std::string, std::string> edits() const
    {
        std::map<std::string, std::string> list;
        for (const auto& entry : qo.run({"tag", "ls", "--json"}).json())
        {
            if (entry["away"])
                list[""] = entry["path"];
            else
            {
                const auto fields =
                    qo.run({"tag", "show", "--json", entry["path"]}).json().at(0)["fields"];
                list[fields["artist"]["file"]] = fields["title"]["edited"];
            }
        }
        return list;
    }

    QoCommand qo;

private:
    /// With the times of the files.
    void copy(const std::string& folder, const std::vector<std::string>& names, bool isBack) const
    {
        fs::create_directories(qo.dir.path(folder));
        for (const std::string& name : names)
        {
            const std::string here = qo.dir.path(name);
            const std::string there = qo.dir.path(folder + "/" + name);
            const std::string call =
                "cp -a '" + (isBack ? here : there) + "' '" + (isBack ? there : here) + "'";
            ASSERT_EQ(std::system(call.c_str()), 0);
        }
    }
};
} // namespace

TEST_P(EditsStory, NoKillOfAMoveCostsAnEdit)
{
    const Story& story = GetParam();
    std::map<std::string, std::string> expected;
    for (const std::string name : {"1", "2", "3"})
    {
        const std::string file =
            qo.addTrack("a/" + name + ".mp3", {"artist=" + name, "title=" + name});
        ASSERT_EQ(qo.scan().code, 0);
        ASSERT_EQ(qo.run({"tag", "set", file, "title=edit of " + name}).code, 0);
        expected[name] = "edit of " + name;
    }
    for (const std::string& command : story.before)
    {
        if (command == "rename")
            fs::rename(qo.music("a"), qo.music("b"));
        else
            ASSERT_EQ(call(command).code, 0) << command;
    }
    save();
    KilledCommand command(qo, words(story.command));
    const int changes = command.run(std::numeric_limits<int>::max());
    if (changes < 0)
        GTEST_SKIP() << "a process may not watch another here";
    ASSERT_GT(changes, 20);
    EXPECT_EQ(edits(), expected);
    constexpr int points = 8;
    for (int i = 0; i < points; ++i)
    {
        const int killed = (2 * i + 1) * changes / (2 * points);
        SCOPED_TRACE("killed at " + std::to_string(killed) + " of " + std::to_string(changes));
        restore();
        command.run(killed);
        for (const std::string& next : story.after)
            call(next);
        EXPECT_EQ(edits(), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of,
    EditsStory,
    testing::Values(
        Story{"mv", {}, "mv a b", {"scan"}},
        Story{"reorg",
              {"rule new r --folder {artist.name} --music {track.name}", "reorg plan"},
              "reorg apply --last --yes",
              {"scan"}},
        Story{"findMoved", {"rename"}, "scan --find-moved --yes", {"scan --find-moved --yes"}}),
    [](const auto& each) { return each.param.name; });
