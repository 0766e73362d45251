#include "cli/CommandLine.h"
#include "cli/help/Candidates.h"
#include "cli/help/ShellWords.h"

#include <algorithm>

namespace qo::cli
{
namespace
{
/// What the functions of the shells go by, ahead of the words.
std::string directiveOf(const Candidates& found)
{
    if (found.words.empty() && found.files != Candidates::Files::none)
        return found.files == Candidates::Files::folders ? "folders" : "files";
    const bool isMore =
        !found.words.empty() && std::ranges::all_of(found.words, &Candidates::Word::goesOn);
    return isMore ? "more" : "words";
}

void putRecord(CommandLine& line, const std::string& text)
{
    line.out.write(text);
    line.out.write(std::string_view("\0", 1));
}

/// For bash: what takes the place of the part that readline replaces.
void completeBash(CommandLine& line, const std::string& breaks, const std::string& typed)
{
    ShellLine shell = parseShellLine(typed, breaks);
    if (!shell.words.empty())
        shell.words.erase(shell.words.begin());
    Candidates found;
    if (shell.isRedirection)
        found.files = Candidates::Files::any;
    else if (shell.isKnown)
        found = candidatesFor(line, shell.words, shell.current);
    putRecord(line, directiveOf(found));
    for (const Candidates::Word& word : found.words)
        putRecord(line, quotedForShell(word.text.substr(shell.replaced), shell.quote));
}

/// For zsh: after each word the line that its list shows.
void completeZsh(CommandLine& line, std::vector<std::string> words)
{
    const std::string current = words.empty() ? std::string() : words.back();
    if (!words.empty())
        words.pop_back();
    const Candidates found = candidatesFor(line, words, current);
    putRecord(line, directiveOf(found));
    for (const Candidates::Word& word : found.words)
    {
        putRecord(line, word.text);
        putRecord(line, harmless(word.text + (word.meaning.empty() ? "" : "  -- " + word.meaning)));
    }
}

/// For fish, which gives the word at the cursor with its quotes. A tab begins the meaning, so that
/// a name with a tab cannot be one of the words.
void completeFish(CommandLine& line, std::vector<std::string> words)
{
    const std::string current =
        words.empty() ? std::string() : parseShellLine(words.back(), {}).current;
    if (!words.empty())
        words.pop_back();
    const Candidates found = candidatesFor(line, words, current);
    putRecord(line, directiveOf(found));
    for (const Candidates::Word& word : found.words)
    {
        if (word.text.find('\t') == std::string::npos)
            putRecord(line, word.text + "\t" + word.meaning);
    }
}
} // namespace

void setUpComplete(CommandLine& line, CLI::App& command)
{
    struct Typed
    {
        std::string breaks;
        std::string text;
        std::vector<std::string> words;
    };
    auto typed = std::make_shared<Typed>();
    CLI::App* const bash = line.addCommand(command,
                                           "bash",
                                           "The line as far as the cursor",
                                           [&line, typed]
                                           {
                                               completeBash(line, typed->breaks, typed->text);
                                               return ExitCode::done;
                                           });
    addArgument(*bash, "BREAKS", typed->breaks, "The characters that begin a word of readline");
    addArgument(*bash, "LINE", typed->text, "The line");
    const auto addShell = [&](const char* name, auto complete)
    {
        CLI::App* const shell = line.addCommand(command,
                                                name,
                                                "The words as far as the cursor",
                                                [&line, typed, complete]
                                                {
                                                    complete(line, typed->words);
                                                    return ExitCode::done;
                                                });
        addArguments(*shell, "WORD", typed->words, "The words after \"qo\"");
    };
    addShell("zsh", completeZsh);
    addShell("fish", completeFish);
}
} // namespace qo::cli
