#include "cli/CommandLine.h"
#include "cli/help/CommandTree.h"

namespace qo::cli
{
namespace
{
std::string commandWords(const CLI::App& app)
{
    std::string words;
    for (const CLI::App* sub : commandsOf(app))
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
    for (const CLI::App* command : commandsOf(app))
    {
        const std::string subs = commandWords(*command);
        if (!subs.empty())
            text += "        '" + command->get_name() + " ') words=\"" + subs + "\" ;;\n";
        std::string own = optionWords(*command);
        for (const CLI::App* sub : commandsOf(*command))
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
