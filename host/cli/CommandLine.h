#pragma once

#include "cli/shown/Output.h"
#include "core/base/HostError.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qo::cli
{
using host::ExitCode;
using host::HostError;

/// What every command knows: the options before all commands, where its data goes, and what the
/// parsed line asks for.
struct CommandLine
{
    CommandLine();

    CLI::App app;
    std::string dataFolder; ///< as typed
    bool json = false;
    bool dryRun = false;
    bool yes = false;
    bool quiet = false;
    bool noPager = false;
    std::string place; ///< whose files are listed instead of the user's own; "" for these
    Output out;
    std::function<ExitCode()> action;

    /// Has the command run the function when it is the one that was typed.
    void setAction(CLI::App& command, std::function<ExitCode()> run);

    /// A sub-command of `parent` that runs the function; without one it needs sub-commands itself.
    CLI::App* addCommand(CLI::App& parent,
                         const std::string& name,
                         const std::string& description,
                         std::function<ExitCode()> run);

    /// The same for a command that lists: what is longer than the window goes to a pager.
    void setListAction(CLI::App& command, std::function<ExitCode()> run);

    /// For a command whose output is a text of its own kind: refuses --json with a HostError.
    void refuseJson() const;

    /// Writes sentences to standard error, each on a line after the program's name. Notes are left
    /// out with --quiet.
    void note(const std::string& sentence) const;
    static void complain(const std::string& sentence);
};

/// The arguments of the program as they may be parsed: the parser would take "[a,b]" for a list,
/// but a file may well be called that. The options below undo it.
std::vector<std::string> parseable(int argc, char** argv);
CLI::Option* addArgument(CLI::App& command,
                         const std::string& name,
                         std::string& value,
                         const std::string& description);
CLI::Option* addArguments(CLI::App& command,
                          const std::string& name,
                          std::vector<std::string>& values,
                          const std::string& description);

/// An option that may be given an empty text; nothing without it.
CLI::Option* addOptional(CLI::App& command,
                         const std::string& name,
                         std::optional<std::string>& value,
                         const std::string& description);

/// True when the user agrees: with --yes, or asked on a terminal. Without either the command is
/// refused with a HostError.
void confirm(const CommandLine& line, const std::string& question);

/// Adds every command; Commands.cpp has the table of them.
void addCommands(CommandLine& line);
/// Adds only those whose names stand anywhere in the arguments, which is all that a line without a
/// mistake needs and a fraction of the work. False when there is none, or one that tells of others.
bool addNamedCommands(CommandLine& line, const std::vector<std::string>& arguments);
} // namespace qo::cli
