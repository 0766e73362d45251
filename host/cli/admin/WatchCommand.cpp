#include "cli/CommandLine.h"
#include "cli/Interrupt.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/roots/RootFolders.h"
#include "core/watch/FolderChanges.h"
#include "core/watch/FolderWatch.h"

#include <algorithm>
#include <map>
#include <optional>
#include <thread>

namespace qo::cli
{
namespace
{
using host::FolderEvent;
using host::Session;
using std::chrono::milliseconds;

struct WatchOptions
{
    double settleSeconds = 2;
    int rescanMinutes = 10;
};

constexpr std::chrono::seconds pauseWhenBusy{1};
/// Before what failed is tried again.
constexpr std::chrono::seconds pauseWhenFailed{30};
/// The collection stays loaded that long behind a change, since one seldom comes alone.
constexpr std::chrono::seconds keptLoaded{3};

/// Keeps the collection current until a signal ends it. Between changes it holds nothing, so that
/// other commands work meanwhile.
class Watcher
{
public:
    Watcher(CommandLine& line, const WatchOptions& options) : m_line(line), m_options(options) {}

    void run()
    {
        attempt([this] { catchUp(); });
        while (!wasInterrupted() && !m_line.out.isClosed())
        {
            const std::vector<FolderEvent> events = m_watch->wait(timeUntilRescan());
            if (wasInterrupted())
                break;
            attempt(
                [&]
                {
                    if (events.empty() || m_hasFailed || demandsRescan(events))
                        catchUp();
                    else
                        follow(events);
                });
        }
    }

private:
    using RootIds = std::map<std::string, std::pair<std::uint64_t, std::uint64_t>>;

    std::optional<milliseconds> timeUntilRescan() const
    {
        if (m_hasFailed)
            return pauseWhenFailed;
        if (!m_watch->unwatched().empty())
            return std::chrono::minutes(m_options.rescanMinutes);
        return {};
    }

    /// A root folder that is away and a save that failed are waited out; a scan then finds what was
    /// missed. What fails at the very start is left to the user, who is there.
    template <class Function>
    void attempt(Function function)
    {
        try
        {
            function();
        }
        catch (const HostError& error)
        {
            const bool isAway = error.code() == ExitCode::away;
            const bool mayPass = error.code() == ExitCode::failed && m_wasCurrent;
            if (wasInterrupted() || !m_watch || (!isAway && !mayPass))
                throw;
            const std::string sentence =
                error.what() + std::string(isAway ? "; waiting for it" : "; trying again later");
            if (sentence != m_lastFailure)
                m_line.note(sentence);
            m_lastFailure = sentence;
            m_hasFailed = true;
        }
    }

    bool demandsRescan(const std::vector<FolderEvent>& events) const
    {
        bool demands = false;
        for (const FolderEvent& event : events)
        {
            if (event.kind != FolderEvent::Kind::needRescan)
                continue;
            m_line.note(event.reason + "; the root folders are scanned");
            demands = true;
        }
        return demands;
    }

    /// Waits while another command is at work; null when a signal came meanwhile.
    std::unique_ptr<Session> open() const
    {
        for (bool isFirst = true; !wasInterrupted(); isFirst = false)
        {
            try
            {
                return openKernel(m_line, KernelUse::hold, false);
            }
            catch (const HostError& error)
            {
                if (error.code() != ExitCode::busy)
                    throw;
                if (isFirst)
                    m_line.note(std::string(error.what()) + "; waiting");
                std::this_thread::sleep_for(pauseWhenBusy);
            }
        }
        return nullptr;
    }

    /// Watches first and looks then, so that nothing falls between.
    void catchUp()
    {
        if (const std::unique_ptr<Session> session = open())
            rescan(*session);
    }

    void rescan(Session& session)
    {
        watchRoots(session);
        host::LoadOptions options;
        options.rescan = !m_line.dryRun;
        const host::LoadReport report = loadCollection(m_line, session, options);
        m_hasFailed = false;
        m_wasCurrent = true;
        m_lastFailure.clear();
        tell(report.added + report.changed, 0, report.gone);
    }

    /// Anew when the settings name other folders, or one of them is another folder than before, or
    /// may have come back.
    void watchRoots(Session& session)
    {
        RootIds ids;
        std::vector<std::string> folders;
        session.kernel().run(
            [&]
            {
                const host::RootFolders roots;
                for (const CString& folder : roots.folders())
                {
                    FileInfo info;
                    (void)fileSystem().info(folder, Spelling::exact, info);
                    ids[toSystemPath(folder)] = {info.device, info.inode};
                    folders.push_back(toSystemPath(folder));
                }
            });
        if (folders.empty())
            throw HostError(ExitCode::usage,
                            "there is no folder to watch yet: name one, as in \"qo scan ~/Music\"");
        if (m_watch && ids == m_rootIds && !m_hasFailed && !m_watch->hasLostFolders())
            return;
        const int before = m_watch ? m_watch->watchedFolders() : -1;
        m_guard.reset();
        m_watch.emplace(folders,
                        milliseconds(static_cast<std::int64_t>(m_options.settleSeconds * 1000)));
        m_guard.emplace(*m_watch);
        m_rootIds = ids;
        for (const auto& unwatched : m_watch->unwatched())
            m_line.note(unwatched.folder + " cannot be watched (" + unwatched.reason +
                        "): it is scanned every " + countText(m_options.rescanMinutes, "minute"));
        if (m_watch->watchedFolders() != before)
            m_line.note("watching " + countText(m_watch->watchedFolders(), "folder"));
    }

    void follow(std::vector<FolderEvent> events)
    {
        if (m_line.dryRun)
            return show(events);
        const std::unique_ptr<Session> session = open();
        if (!session)
            return;
        loadCollection(m_line, *session, {});
        while (!events.empty() && !wasInterrupted())
        {
            if (demandsRescan(events))
                break;
            apply(*session, events);
            events = m_watch->wait(keptLoaded);
        }
        if (!events.empty() && !wasInterrupted())
            rescan(*session);
    }

    void apply(Session& session, const std::vector<FolderEvent>& events)
    {
        host::ProgressReporter progress([](const host::ProgressEvent&) {});
        const InterruptGuard guard(progress);
        const host::FolderChanges::Report report = session.kernel().run(
            [&] { return host::FolderChanges(session).apply(events, progress); });
        tell(report.scanned, report.moved, report.removed);
    }

    void show(const std::vector<FolderEvent>& events)
    {
        constexpr const char* names[] = {"added", "changed", "removed", "moved", "needRescan"};
        for (const FolderEvent& event : events)
        {
            const char* const name = names[static_cast<int>(event.kind)];
            Json object;
            object["event"] = name;
            putPath(object, "path", event.path);
            if (!event.newPath.empty())
                putPath(object, "to", event.newPath);
            m_line.out.line(
                m_line.json ? dump(object)
                            : std::string(name) + "  " + harmless(event.path) +
                                  (event.newPath.empty() ? "" : " -> " + harmless(event.newPath)));
        }
        m_line.out.flush();
    }

    void tell(int read, int moved, int gone)
    {
        if (read + moved + gone == 0)
            return;
        if (m_line.json)
        {
            Json object;
            object["read"] = read;
            object["moved"] = moved;
            object["gone"] = gone;
            m_line.out.line(dump(object));
        }
        else
            m_line.out.line(std::to_string(read) + " read, " + std::to_string(moved) + " moved, " +
                            std::to_string(gone) + " gone");
        m_line.out.flush();
    }

    CommandLine& m_line;
    WatchOptions m_options;
    std::optional<host::FolderWatch> m_watch;
    std::optional<WatchGuard> m_guard; ///< behind the watch that it names
    RootIds m_rootIds;
    bool m_hasFailed = false; ///< the next round scans
    bool m_wasCurrent = false;
    std::string m_lastFailure;
};
} // namespace

void setUpWatch(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<WatchOptions>();
    line.setAction(command,
                   [&line, options]
                   {
                       Watcher(line, *options).run();
                       return ExitCode::done;
                   });
    command.add_option("--settle", options->settleSeconds, "Wait until a file was quiet that long")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 3600.0));
    command
        .add_option("--every",
                    options->rescanMinutes,
                    "How often folders are scanned that the system cannot watch")
        ->type_name("MINUTES")
        ->check(CLI::Range(1, 10080));
}
} // namespace qo::cli
