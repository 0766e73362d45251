#include "cli/shown/Pager.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wordexp.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace qo::cli
{
namespace
{
std::atomic<bool> isPagerRunning{false};

/// Splits as a shell does: "less -P 'my list'". What needs a shell, as "col | less" does, gets one.
std::vector<std::string> shellWordsOf(const char* text)
{
    std::vector<std::string> words;
    wordexp_t found{};
    const int error = ::wordexp(text, &found, WRDE_NOCMD);
    if (error == 0)
    {
        words.assign(found.we_wordv, found.we_wordv + found.we_wordc);
        ::wordfree(&found);
    }
    else if (error == WRDE_BADCHAR || error == WRDE_CMDSUB)
        words = {"sh", "-c", text};
    return words;
}

std::vector<char*> pointersTo(std::vector<std::string>& words)
{
    std::vector<char*> list;
    for (std::string& word : words)
        list.push_back(word.data());
    list.push_back(nullptr);
    return list;
}

/// Ours; less is asked to end where all fits (F), to let colours pass (R) and to leave the text on
/// the screen (X), unless the user has wishes of his own.
std::vector<std::string> pagerEnvironment()
{
    std::vector<std::string> variables;
    for (char** each = environ; each && *each; ++each)
        variables.emplace_back(*each);
    if (!std::getenv("LESS")) // NOLINT(concurrency-mt-unsafe)
        variables.emplace_back("LESS=FRX");
    return variables;
}

pid_t spawn(std::vector<std::string> words, int input)
{
    std::vector<std::string> variables = pagerEnvironment();
    const std::vector<char*> argv = pointersTo(words);
    const std::vector<char*> environment = pointersTo(variables);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    // What this program ignores would be ignored there, too.
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setsigmask(&attributes, &signals);
    sigaddset(&signals, SIGPIPE);
    ::posix_spawnattr_setsigdefault(&attributes, &signals);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    pid_t pid = -1;
    const int error =
        ::posix_spawnp(&pid, argv[0], &actions, &attributes, argv.data(), environment.data());
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : -1;
}
} // namespace

std::vector<std::string> Pager::command()
{
    for (const char* const name : {"QO_PAGER", "PAGER"})
    {
        if (const char* const text = std::getenv(name)) // NOLINT(concurrency-mt-unsafe)
        {
            std::vector<std::string> words = shellWordsOf(text);
            return words.size() == 1 && words[0] == "cat" ? std::vector<std::string>() : words;
        }
    }
    return {"less"};
}

Pager::~Pager()
{
    finish();
}

bool Pager::start(const std::vector<std::string>& words)
{
    int ends[2];
    if (words.empty() || ::pipe2(ends, O_CLOEXEC) != 0)
        return false;
    m_pid = spawn(words, ends[0]);
    ::close(ends[0]);
    m_input = ends[1];
    if (m_pid > 0)
    {
        isPagerRunning = true;
        return true;
    }
    ::close(ends[1]);
    m_input = -1;
    return false;
}

bool Pager::isShowing() noexcept
{
    return isPagerRunning;
}

void Pager::finish()
{
    if (!isRunning())
        return;
    ::close(m_input);
    m_input = -1;
    while (::waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR)
        ;
    m_pid = -1;
    isPagerRunning = false;
}
} // namespace qo::cli
