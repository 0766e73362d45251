#include "cli/CommandLine.h"
#include "cli/Interrupt.h"
#include "cli/shown/ClosestName.h"
#include "core/session/Heap.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <csignal>
#include <iostream>
#include <string>
#include <vector>

namespace
{
using qo::cli::CommandLine;
using qo::cli::ExitCode;
using qo::cli::HostError;

int run(CommandLine& line)
{
    if (!line.action)
    {
        std::cerr << line.app.help();
        return static_cast<int>(ExitCode::usage);
    }
    const ExitCode code = line.action();
    line.out.flush();
    return static_cast<int>(code);
}

/// What was wrong with the command line, in a sentence.
std::string parseFailure(const CLI::App& app, const CLI::ParseError& error)
{
    const CLI::App* last = &app;
    std::string typed;
    while (!last->get_subcommands().empty())
    {
        last = last->get_subcommands().front();
        typed += last->get_name() + " ";
    }
    const auto known = last->get_subcommands([](const CLI::App*) { return true; });
    if (known.empty() || (!typed.empty() && error.get_name() != "RequiredError"))
        return error.what();
    std::vector<std::string> names;
    names.reserve(known.size());
    for (const CLI::App* const each : known)
        names.push_back(each->get_name());
    if (!last->remaining().empty() && !last->remaining().front().starts_with('-'))
        return "there is no command \"" + typed + last->remaining().front() + "\"" +
               qo::cli::suggestionFor(last->remaining().front(), names);
    if (typed.empty())
        return error.what();
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? " " : ", ") + name;
    return "\"" + typed.substr(0, typed.size() - 1) + "\" goes with one of" + list;
}

/// Ends as programs do whose reader has closed the pipe.
[[noreturn]] void endByBrokenPipe()
{
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
    std::_Exit(128 + SIGPIPE);
}

int parseAndRun(CommandLine& line, int argc, char** argv)
{
    try
    {
        qo::cli::addCommands(line);
        line.app.parse(qo::cli::parseable(argc, argv));
        return run(line);
    }
    catch (const CLI::ParseError& error)
    {
        if (error.get_exit_code() == 0)
            return line.app.exit(error);
        CommandLine::complain(parseFailure(line.app, error) +
                              "\nsee \"qo help\" or \"qo COMMAND --help\"");
        return static_cast<int>(ExitCode::usage);
    }
    catch (const HostError& error)
    {
        CommandLine::complain(error.what());
        return error.code() == ExitCode::interrupted ? qo::cli::interruptExitCode()
                                                     : static_cast<int>(error.code());
    }
    catch (const std::exception& error)
    {
        CommandLine::complain(error.what());
        return static_cast<int>(ExitCode::failed);
    }
}
} // namespace

int main(int argc, char** argv)
{
    qo::host::useLargePages();
    qo::useUnsharedConnections();
    qo::cli::installSignalHandlers();
    bool nobodyReads = false;
    int code = 0;
    {
        CommandLine line;
        code = parseAndRun(line, argc, argv);
        nobodyReads = line.out.isClosed();
    }
    if (nobodyReads && code == 0)
        endByBrokenPipe();
    return code;
}
