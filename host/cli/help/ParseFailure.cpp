#include "cli/help/ParseFailure.h"

#include "cli/help/CommandTree.h"
#include "core/base/ClosestName.h"
#include "core/base/HostError.h"

#include <algorithm>

namespace qo::cli
{
namespace
{
/// The command that the line came to.
const CLI::App& lastCommand(const CLI::App& program)
{
    const CLI::App* last = &program;
    while (!last->get_subcommands().empty())
        last = last->get_subcommands().front();
    return *last;
}

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

std::vector<std::string> commandNames(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::App* const each : commandsOf(command))
        names.push_back(each->get_name());
    return names;
}

std::string unknownOption(const CLI::App& last, const std::string& typed)
{
    std::vector<std::string> names;
    for (const CLI::App* app = &last; app; app = app->get_parent())
    {
        for (const CLI::Option* const option : optionsOf(*app))
        {
            for (const std::string& name : option->get_lnames())
                names.push_back("--" + name);
        }
    }
    const std::string name = typed.substr(0, typed.find('='));
    // A single letter is near to every other one.
    return "there is no option " + quoted(name) +
           (name.starts_with("--") ? host::suggestionFor(name, names) : "");
}

std::string extraWord(const CLI::App& last, const std::string& word)
{
    const std::vector<std::string> names = commandNames(last);
    if (names.empty())
        return quoted(word) + " is one argument too many: " + usageOf(last);
    const std::string key = commandKey(last);
    return "there is no command " + quoted(key + (key.empty() ? "" : " ") + word) +
           host::suggestionFor(word, names);
}

/// The option or argument whose name the parser's own sentence has before or after a mark.
const CLI::Option* optionNamed(const CLI::App& last, const std::string& name)
{
    const CLI::Option* option = nullptr;
    for (const CLI::App* app = &last; app && !option; app = app->get_parent())
        option = app->get_option_no_throw(name);
    return option;
}

std::string wrongValue(const CLI::Option& option, const std::string& name)
{
    const OptionFacts facts = factsOf(option);
    const std::string value = option.results().empty() ? "" : option.results().back();
    const std::string range = rangeText(option);
    std::string wanted = "it is a number" + (range.empty() ? "" : ", " + range);
    if (!facts.choices.empty())
        wanted = "it is one of " + host::listOf(facts.choices) +
                 host::suggestionFor(value, facts.choices);
    return name + " cannot be " + quoted(value) + ": " + wanted;
}

/// The parser's sentence about a value begins or ends with what it is about.
std::string valueFailure(const CLI::App& last, const CLI::ParseError& error)
{
    const std::string sentence = error.what();
    const std::string kind = error.get_name();
    constexpr std::string_view notConverted = "Could not convert: ";
    std::string name = sentence.substr(0, sentence.find(':'));
    if (sentence.starts_with(notConverted))
        name = sentence.substr(notConverted.size(), sentence.find(" = ") - notConverted.size());
    const CLI::Option* const option = optionNamed(last, name);
    if (!option && kind == "ExcludesError")
        return name.replace(name.find(" excludes "), 10, " and ") + " do not go together";
    if (!option)
        return sentence;
    if (kind == "ValidationError" || kind == "ConversionError")
        return wrongValue(*option, name);
    if (kind == "ArgumentMismatch" && option->results().empty())
        return name + " needs a value: " + factsOf(*option).term();
    if (kind == "ArgumentMismatch")
        return name + " can be given only once";
    return sentence;
}

std::string missingPart(const CLI::App& last, const CLI::ParseError& error)
{
    const std::string sentence = error.what();
    const std::string name = sentence.substr(0, sentence.find(" is required"));
    if (optionNamed(last, name))
        return name + " is missing: " + usageOf(last);
    return quoted(commandPath(last)) + " goes with one of " + host::listOf(commandNames(last));
}

std::string failure(const CLI::App& program, const CLI::App& last, const CLI::ParseError& error)
{
    const std::vector<std::string> rest = program.remaining(true);
    const auto option = std::ranges::find_if(
        rest, [](const std::string& word) { return word.size() > 1 && word.starts_with('-'); });
    if (option != rest.end() && *option != "--")
        return unknownOption(last, *option);
    if (!rest.empty())
        return extraWord(last, rest.front());
    if (error.get_name() == "RequiredError")
        return missingPart(last, error);
    return valueFailure(last, error);
}
} // namespace

std::string parseFailure(const CLI::App& program, const CLI::ParseError& error)
{
    const CLI::App& last = lastCommand(program);
    const std::string key = commandKey(last);
    return failure(program, last, error) + host::sentenceBreak + "see " +
           quoted("qo help" + (key.empty() ? "" : " " + key));
}
} // namespace qo::cli
