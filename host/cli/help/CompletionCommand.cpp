#include "cli/CommandLine.h"

namespace qo::cli
{
namespace
{
// Each function asks "qo complete" what may stand at the cursor. Records end with a zero byte, the
// one character that no name can hold; the first of them says what the others are. Nothing that it
// prints is run or expanded: the shells get it as values.

constexpr const char* bashScript = R"(# Completion of qo for bash.
_qo()
{
    local -a found
    mapfile -d '' -t found < <(command qo complete bash -- "$COMP_WORDBREAKS" "${COMP_LINE:0:COMP_POINT}" 2>/dev/null)
    COMPREPLY=("${found[@]:1}")
    case ${found[0]-} in
        more) compopt -o nospace ;;
        files) compopt -o default ;;
        folders) compopt -o dirnames ;;
    esac
}
complete -F _qo qo
)";

constexpr const char* zshScript = R"(#compdef qo
# Completion of qo for zsh.
_qo()
{
    local -a found words_found shown space
    local kind word text
    found=("${(@0)$(command qo complete zsh -- "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)}")
    kind=$found[1]
    shift found
    for word text in "${(@)found}"; do
        [[ -n $text ]] && words_found+=("$word") && shown+=("$text")
    done
    case $kind in
        files) _files ;;
        folders) _files -/ ;;
        more) space=(-S '') ;&
        words) compadd -l "${(@)space}" -d shown -a words_found ;;
    esac
}
if [[ $zsh_eval_context[-1] == loadautofunc ]]; then
    _qo "$@"
else
    compdef _qo qo
fi
)";

constexpr const char* fishScript = R"(# Completion of qo for fish.
function __qo_complete
    set -l words (commandline -opc)
    set -e words[1]
    set -l found (command qo complete fish -- $words (commandline -ct) 2>/dev/null | string split0)
    switch "$found[1]"
        case files
            __fish_complete_path (commandline -ct)
        case folders
            __fish_complete_directories (commandline -ct)
        case '*'
            set -e found[1]
            string join0 -- $found | string split0
    end
end
complete -c qo -f -a '(__qo_complete)'
)";
} // namespace

void setUpCompletion(CommandLine& line, CLI::App& command)
{
    command.require_subcommand(1);
    const auto addShell = [&](const char* name, const char* description, const char* script)
    {
        line.addCommand(command,
                        name,
                        description,
                        [&line, script]
                        {
                            line.refuseJson();
                            line.out.write(script);
                            return ExitCode::done;
                        });
    };
    addShell("bash", "The function for bash", bashScript);
    addShell("zsh", "The function for zsh", zshScript);
    addShell("fish", "The function for fish", fishScript);
}
} // namespace qo::cli
