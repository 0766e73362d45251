#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace qo::cli
{
/// The program that shows long output page by page.
class Pager
{
public:
    Pager() = default;
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    /// The words of $QO_PAGER, else $PAGER, else "less". None when the user wants no pager, which
    /// is said by an empty text or "cat".
    static std::vector<std::string> command();

    /// False when there is no such program.
    bool start(const std::vector<std::string>& words);
    bool isRunning() const { return m_pid > 0; }
    /// Whether one runs in this process. From any thread and from a signal handler.
    static bool isShowing() noexcept;
    /// What is written to this descriptor is shown. EPIPE: the user has quit.
    int input() const { return m_input; }
    /// Waits until the user has quit.
    void finish();

private:
    pid_t m_pid = -1;
    int m_input = -1;
};
} // namespace qo::cli
