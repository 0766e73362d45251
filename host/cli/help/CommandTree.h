#pragma once

#include "cli/CommandLine.h"

#include <string>
#include <vector>

namespace qo::cli
{
/// An option or an argument of a command as help, completion and man pages show it.
struct OptionFacts
{
    std::vector<std::string> names; ///< "-l", "--long"; none for an argument
    std::string value;              ///< "DIR"; "" for an option without a value
    std::string description;
    std::vector<std::string> choices; ///< the values that there are; none if there is no list
    bool isRequired = false;
    bool isRepeated = false;

    bool isArgument() const { return names.empty(); }
    /// "-l, --long", "--to DIR", "PATH...".
    std::string term() const;
};

// What the parser knows of its commands. Hidden ones are left out everywhere.

/// The words that call it: "qo tag set"; "qo" for the program itself.
std::string commandPath(const CLI::App& command);
/// The same without the program, as the tables of help texts have it.
std::string commandKey(const CLI::App& command);
std::vector<const CLI::App*> commandsOf(const CLI::App& parent);
/// Null when there is none.
const CLI::App* findCommand(const CLI::App& parent, const std::string& name);
/// This one and all below it, each ahead of its sub-commands.
std::vector<const CLI::App*> allCommands(const CLI::App& command);

OptionFacts factsOf(const CLI::Option& option);
/// In the order of the command line.
std::vector<const CLI::Option*> argumentsOf(const CLI::App& command);
/// The command's own options. Those of every command are the options of the program.
std::vector<const CLI::Option*> optionsOf(const CLI::App& command);

/// "qo tag set [OPTIONS] FILE FIELD=VALUE...".
std::string usageOf(const CLI::App& command);
/// How the kinds of number that the parser knows are called: "1 to 60" for "INT in [1 - 60]".
std::string rangeText(const CLI::Option& option);
} // namespace qo::cli
