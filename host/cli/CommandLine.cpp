#include "cli/CommandLine.h"

#include "cli/help/HelpPages.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace qo::cli
{
namespace
{
constexpr char mask = '\x01';

/// Brackets around the text, with any number of masks before them.
bool looksLikeList(const std::string& text)
{
    const std::size_t start = text.find_first_not_of(mask);
    return start != std::string::npos && text[start] == '[' && text.back() == ']';
}

std::string unmask(std::string text)
{
    return looksLikeList(text) && text[0] == mask ? text.substr(1) : text;
}

void chooseColorsByName(const std::string& name)
{
    chooseColors(name == "always"  ? ColorMode::always
                 : name == "never" ? ColorMode::never
                                   : ColorMode::automatic);
}

/// Each sentence on a line, after the program's name, which has the colour.
void say(Style style, const std::string& sentences)
{
    const std::string program = painted(STDERR_FILENO, style, "qo:") + " ";
    std::string text;
    std::size_t start = 0;
    while (start <= sentences.size())
    {
        const std::size_t end =
            std::min(sentences.find(host::sentenceBreak, start), sentences.size());
        text += program + harmless(sentences.substr(start, end - start)) + "\n";
        start = end + 1;
    }
    std::cerr << text << std::flush;
}
} // namespace

std::vector<std::string> parseable(int argc, char** argv)
{
    std::vector<std::string> arguments;
    // The parser takes them from the back.
    for (int i = argc - 1; i > 0; --i)
    {
        const std::string text = argv[i];
        arguments.push_back(looksLikeList(text) ? mask + text : text);
    }
    return arguments;
}

CommandLine::CommandLine() : app("Keeps a collection of your music and its tags.", "qo")
{
    app.fallthrough();
    app.require_subcommand(0, 1);
    // Every command that is added inherits the formatter.
    app.formatter(helpFormatter());
    app.set_help_flag("-h,--help", "Explain the command");
    app.set_version_flag("-V,--version", versionText, "The version of this program");
    addArgument(app, "--data", dataFolder, "Keep everything below DIR instead of your data folder")
        ->type_name("DIR");
    app.add_flag("--json", json, "One JSON object a line");
    app.add_flag("--dry-run", dryRun, "Show what would be done, change nothing");
    app.add_flag("-y,--yes", yes, "Do not ask");
    app.add_flag("-q,--quiet", quiet, "No progress and no notes");
    app.add_flag("--no-pager", noPager, "Show long lists without a pager");
    app.add_option_function<std::string>("--color", chooseColorsByName, "When to use colours")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->trigger_on_parse();
}

void CommandLine::setAction(CLI::App& command, std::function<ExitCode()> run)
{
    // The parser calls the sub-command first and then the group that it stands in, as for
    // "qo roots add": the first action counts.
    command.callback([this, run = std::move(run)] { action = action ? action : run; });
}

void CommandLine::setListAction(CLI::App& command, std::function<ExitCode()> run)
{
    setAction(command,
              [this, run = std::move(run)]
              {
                  if (!json && !noPager)
                      out.usePager();
                  return run();
              });
}

CLI::App* CommandLine::addCommand(CLI::App& parent,
                                  const std::string& name,
                                  const std::string& description,
                                  std::function<ExitCode()> run)
{
    CLI::App* const command = parent.add_subcommand(name, description);
    if (run)
        setAction(*command, std::move(run));
    return command;
}

void CommandLine::refuseJson() const
{
    if (json)
        throw HostError(ExitCode::usage, "this command has no output as JSON; leave out --json");
}

void CommandLine::note(const std::string& sentence) const
{
    if (!quiet)
        say(Style::warning, sentence);
}

void CommandLine::complain(const std::string& sentence)
{
    say(Style::error, sentence);
}

CLI::Option* addArgument(CLI::App& command,
                         const std::string& name,
                         std::string& value,
                         const std::string& description)
{
    return command.add_option(name, value, description)->transform(unmask, "")->type_name("");
}

CLI::Option* addArguments(CLI::App& command,
                          const std::string& name,
                          std::vector<std::string>& values,
                          const std::string& description)
{
    return command.add_option(name, values, description)->transform(unmask, "")->type_name("");
}

CLI::Option* addOptional(CLI::App& command,
                         const std::string& name,
                         std::optional<std::string>& value,
                         const std::string& description)
{
    return command
        .add_option_function<std::string>(
            name, [&value](const std::string& typed) { value = typed; }, description)
        ->transform(unmask, "")
        ->type_name("NAME");
}

void confirm(const CommandLine& line, const std::string& question)
{
    if (line.yes)
        return;
    if (::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1)
    {
        std::cerr << harmless(question) << " [y/N] " << std::flush;
        std::string answer;
        std::getline(std::cin, answer);
        if (answer == "y" || answer == "Y" || answer == "yes")
            return;
        throw HostError(ExitCode::refused, "nothing was done");
    }
    throw HostError(ExitCode::refused, question + " Not done without --yes.");
}
} // namespace qo::cli
