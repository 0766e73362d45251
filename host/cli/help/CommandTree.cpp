#include "cli/help/CommandTree.h"

#include <algorithm>
#include <sstream>

namespace qo::cli
{
namespace
{
/// The parser writes the type of a value and what it may be into one text, as
/// "TEXT:{all,none,audio}" or "N:INT in [1 - 60]". Returns what stands between two marks of it.
std::string between(const std::string& text, const std::string& from, const std::string& to)
{
    const std::size_t start = text.find(from);
    if (start == std::string::npos)
        return {};
    const std::size_t first = start + from.size();
    return text.substr(first, text.find(to, first) - first);
}

std::vector<std::string> choicesOf(const CLI::Option& option)
{
    std::vector<std::string> choices;
    std::istringstream list(between(option.get_type_name(), ":{", "}"));
    for (std::string choice; std::getline(list, choice, ',');)
        choices.push_back(choice);
    return choices;
}

bool takesValue(const CLI::Option& option)
{
    return option.get_items_expected_max() > 0;
}

std::string valueName(const CLI::Option& option)
{
    const std::string type = option.get_type_name();
    const std::string name = type.substr(0, type.find(':'));
    if (name == "INT" || name == "UINT" || name == "FLOAT")
        return "N";
    if (!name.empty() && name != "TEXT")
        return name;
    std::string list;
    for (const std::string& choice : choicesOf(option))
        list += (list.empty() ? "" : "|") + choice;
    return list.empty() ? "TEXT" : list;
}

std::string usageTerm(const CLI::Option& option)
{
    const OptionFacts facts = factsOf(option);
    return facts.isRequired ? facts.term() : "[" + facts.term() + "]";
}
} // namespace

std::string OptionFacts::term() const
{
    if (isArgument())
        return value + (isRepeated ? "..." : "");
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return value.empty() ? text : text + " " + value;
}

std::string commandPath(const CLI::App& command)
{
    const CLI::App* const parent = command.get_parent();
    return (parent ? commandPath(*parent) + " " : "") + command.get_name();
}

std::string commandKey(const CLI::App& command)
{
    const std::string path = commandPath(command);
    const std::size_t blank = path.find(' ');
    return blank == std::string::npos ? std::string() : path.substr(blank + 1);
}

std::vector<const CLI::App*> commandsOf(const CLI::App& parent)
{
    return parent.get_subcommands([](const CLI::App* command)
                                  { return !command->get_group().empty(); });
}

const CLI::App* findCommand(const CLI::App& parent, const std::string& name)
{
    const auto commands = commandsOf(parent);
    const auto found = std::ranges::find_if(
        commands, [&name](const CLI::App* command) { return command->get_name() == name; });
    return found == commands.end() ? nullptr : *found;
}

std::vector<const CLI::App*> allCommands(const CLI::App& command)
{
    std::vector<const CLI::App*> list{&command};
    for (const CLI::App* const each : commandsOf(command))
    {
        const auto below = allCommands(*each);
        list.insert(list.end(), below.begin(), below.end());
    }
    return list;
}

OptionFacts factsOf(const CLI::Option& option)
{
    OptionFacts facts;
    for (const std::string& name : option.get_snames())
        facts.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        facts.names.push_back("--" + name);
    if (facts.isArgument())
        facts.value = option.get_name(true);
    else if (takesValue(option))
        facts.value = valueName(option);
    facts.description = option.get_description();
    const std::string range = rangeText(option);
    if (!range.empty())
        facts.description += ", " + range;
    if (!option.get_default_str().empty())
        facts.description += "; " + option.get_default_str() + " by default";
    facts.choices = choicesOf(option);
    facts.isRequired = option.get_required();
    facts.isRepeated = facts.isArgument() && option.get_items_expected_max() > 1;
    return facts;
}

std::vector<const CLI::Option*> argumentsOf(const CLI::App& command)
{
    return command.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& command)
{
    const CLI::Option* const help = command.get_help_ptr();
    const bool isProgram = command.get_parent() == nullptr;
    return command.get_options(
        [&](const CLI::Option* option)
        {
            return option->nonpositional() && !option->get_group().empty() &&
                   (option != help || isProgram);
        });
}

std::string usageOf(const CLI::App& command)
{
    std::string usage = commandPath(command);
    std::string required;
    bool hasOthers = false;
    for (const CLI::Option* const option : optionsOf(command))
    {
        if (option->get_required())
            required += " " + usageTerm(*option);
        else
            hasOthers = true;
    }
    usage += (hasOthers ? " [OPTIONS]" : "") + required;
    for (const CLI::Option* const argument : argumentsOf(command))
        usage += " " + usageTerm(*argument);
    if (!commandsOf(command).empty())
        usage += command.get_require_subcommand_min() > 0 ? " COMMAND ..." : " [COMMAND ...]";
    return usage;
}

std::string rangeText(const CLI::Option& option)
{
    const std::string type = option.get_type_name();
    if (type.ends_with(":POSITIVE"))
        return "more than 0";
    if (type.ends_with(":NONNEGATIVE"))
        return "0 or more";
    std::string range = between(type, " in [", "]");
    const std::size_t dash = range.find(" - ");
    return dash == std::string::npos ? std::string() : range.replace(dash, 3, " to ");
}
} // namespace qo::cli
