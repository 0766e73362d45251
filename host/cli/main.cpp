#include "cli/CommandLine.h"
#include "cli/Interrupt.h"
#include "cli/help/ParseFailure.h"
#include "core/session/Heap.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <optional>
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

/// Ends as programs do whose reader has closed the pipe.
[[noreturn]] void endByBrokenPipe()
{
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
    std::_Exit(128 + SIGPIPE);
}

/// Parses the arguments with the commands that they name. False where all commands are needed: for
/// help, and to say what is wrong with a line.
bool parseAlone(CommandLine& line, const std::vector<std::string>& arguments)
{
    try
    {
        if (!qo::cli::addNamedCommands(line, arguments))
            return false;
        line.app.parse(std::vector<std::string>(arguments));
        return true;
    }
    catch (const CLI::ParseError&)
    {
        return false;
    }
}

/// The line is made here, and stays for what there is to do at the end.
int parseAndRun(std::optional<CommandLine>& line, const std::vector<std::string>& arguments)
{
    try
    {
        if (!parseAlone(line.emplace(), arguments))
        {
            qo::cli::addCommands(line.emplace());
            line->app.parse(std::vector<std::string>(arguments));
        }
        return run(*line);
    }
    catch (const CLI::ParseError& error)
    {
        if (error.get_exit_code() == 0)
            return line->app.exit(error);
        CommandLine::complain(qo::cli::parseFailure(line->app, error));
        return static_cast<int>(ExitCode::usage);
    }
    catch (const HostError& error)
    {
        line->out.end();
        CommandLine::complain(error.what());
        return error.code() == ExitCode::interrupted ? qo::cli::interruptExitCode()
                                                     : static_cast<int>(error.code());
    }
    catch (const std::exception& error)
    {
        line->out.end();
        CommandLine::complain(error.what());
        return static_cast<int>(ExitCode::failed);
    }
}
} // namespace

int main(int argc, char** argv)
{
    qo::useUnsharedConnections();
    qo::cli::installSignalHandlers();
    bool nobodyReads = false;
    int code = 0;
    {
        std::optional<CommandLine> line;
        code = parseAndRun(line, qo::cli::parseable(argc, argv));
        nobodyReads = line->out.isBrokenPipe();
    }
    if (nobodyReads && code == 0)
        endByBrokenPipe();
    if (qo::host::mayEndAtOnce())
    {
        std::cout.flush();
        std::fflush(nullptr);
        std::_Exit(code);
    }
    return code;
}
