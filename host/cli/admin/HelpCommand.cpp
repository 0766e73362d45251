#include "cli/CommandLine.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/ClosestName.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Kernel.h>

namespace qo::cli
{
namespace
{
ExitCode version(CommandLine& line)
{
    const std::string schema = toUtf8(CString(CQoCollDb::currentVersion()));
    if (line.json)
    {
        Json object;
        object["qo"] = QO_VERSION;
        object["database"] = schema;
        line.out.line(dump(object));
    }
    else
        line.out.line("qo " QO_VERSION ", database version " + schema);
    return ExitCode::done;
}

ExitCode help(CommandLine& line, const std::vector<std::string>& names)
{
    const CLI::App* command = &line.app;
    std::string path = "qo";
    for (const std::string& name : names)
    {
        const auto subs = command->get_subcommands([&name](const CLI::App* sub)
                                                   { return sub->get_name() == name; });
        const CLI::App* const sub = subs.empty() ? nullptr : subs.front();
        if (!sub)
        {
            std::vector<std::string> known;
            for (const CLI::App* const each : command->get_subcommands({}))
                known.push_back(each->get_name());
            throw HostError(ExitCode::usage,
                            "there is no command \"" + name + "\"" + suggestionFor(name, known) +
                                "; \"qo help\" lists them");
        }
        command = sub;
        path += " " + name;
    }
    // App::help() would explain the command that was chosen, which is "help".
    line.out.write(command->get_formatter()->make_help(command, path, CLI::AppFormatMode::Normal));
    return ExitCode::done;
}

std::string commandWords(const CLI::App& app)
{
    std::string words;
    for (const CLI::App* sub : app.get_subcommands({}))
        words += (words.empty() ? "" : " ") + sub->get_name();
    return words;
}

std::string optionWords(const CLI::App& app)
{
    std::string words;
    for (const CLI::Option* option : app.get_options())
    {
        for (const std::string& name : option->get_lnames())
            words += (words.empty() ? "--" : " --") + name;
    }
    return words;
}

/// A bash function that completes commands, sub-commands and options, and otherwise files.
std::string bashCompletion(const CLI::App& app)
{
    std::string text =
        "_qo()\n{\n    local current=\"${COMP_WORDS[COMP_CWORD]}\" words=\"\" command=\"\" "
        "sub=\"\" word i\n"
        "    for ((i = 1; i < COMP_CWORD; i++)); do\n        word=\"${COMP_WORDS[i]}\"\n"
        "        if [[ $word == --data ]]; then ((i++)); continue; fi\n"
        "        [[ $word == -* ]] && continue\n"
        "        if [[ -z $command ]]; then command=$word; elif [[ -z $sub ]]; then sub=$word; fi\n"
        "    done\n    case \"$command $sub\" in\n";
    text += "        ' ') words=\"" + commandWords(app) + "\" ;;\n";
    std::string options;
    for (const CLI::App* command : app.get_subcommands({}))
    {
        const std::string subs = commandWords(*command);
        if (!subs.empty())
            text += "        '" + command->get_name() + " ') words=\"" + subs + "\" ;;\n";
        std::string own = optionWords(*command);
        for (const CLI::App* sub : command->get_subcommands({}))
            own += " " + optionWords(*sub);
        options += "        " + command->get_name() + ") words=\"" + own + " " + optionWords(app) +
                   "\" ;;\n";
    }
    text += "        'help '*) words=\"" + commandWords(app) + "\" ;;\n    esac\n";
    text += "    if [[ $current == -* ]]; then\n        case \"$command\" in\n" + options +
            "        *) words=\"" + optionWords(app) + "\" ;;\n        esac\n    fi\n";
    text += "    COMPREPLY=()\n    [[ -n $words ]] && COMPREPLY=($(compgen -W \"$words\" -- "
            "\"$current\"))\n"
            "    [[ -z $words || ( ${#COMPREPLY[@]} -eq 0 && $current != -* ) ]] && compopt -o "
            "default 2>/dev/null\n"
            "    return 0\n}\ncomplete -F _qo qo\n";
    return text;
}
} // namespace

void setUpVersion(CommandLine& line, CLI::App& command)
{
    line.setAction(command, [&line] { return version(line); });
}

void setUpHelp(CommandLine& line, CLI::App& command)
{
    auto names = std::make_shared<std::vector<std::string>>();
    line.setAction(command, [&line, names] { return help(line, *names); });
    addArguments(command, "COMMAND", *names, "The command, with its sub-command");
}

void setUpCompletion(CommandLine& line, CLI::App& command)
{
    command.require_subcommand(1);
    line.addCommand(command,
                    "bash",
                    "For bash: source <(qo completion bash)",
                    [&line]
                    {
                        line.out.write(bashCompletion(line.app));
                        return ExitCode::done;
                    });
}
} // namespace qo::cli
