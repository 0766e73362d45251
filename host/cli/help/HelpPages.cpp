#include "cli/help/HelpPages.h"

#include "cli/help/CommandTree.h"
#include "cli/shown/Text.h"

#include <unistd.h>

#include <algorithm>

namespace qo::cli
{
namespace
{
using enum Block::Kind;

constexpr std::size_t widestText = 100;
constexpr std::size_t exampleIndent = 6;
constexpr std::size_t groupIndent = 14;

/// The usage, the longer lines of which go on below the first argument.
std::string usageText(const CLI::App& command, std::size_t columns)
{
    const std::string start = "Usage: " + commandPath(command);
    const std::string usage = usageOf(command);
    return wrapped(start + usage.substr(commandPath(command).size(), 1),
                   usage.substr(std::min(usage.size(), commandPath(command).size() + 1)),
                   start.size() + 1,
                   columns);
}

std::vector<std::string> groupsOf(const CLI::App& parent)
{
    std::vector<std::string> groups;
    for (const CLI::App* const command : commandsOf(parent))
    {
        if (std::ranges::find(groups, command->get_group()) == groups.end())
            groups.push_back(command->get_group());
    }
    return groups;
}

/// "--data DIR, --json, -y".
std::string commonOptions(const CLI::App& program)
{
    std::string list;
    for (const CLI::Option* const option : optionsOf(program))
    {
        const OptionFacts facts = factsOf(*option);
        list += (list.empty() ? "" : ", ") + facts.names.front() +
                (facts.value.empty() ? "" : " " + facts.value);
    }
    return list;
}

std::string firstStepsText()
{
    std::string text = "On the first day:\n";
    std::size_t width = 0;
    for (const Example& step : firstSteps())
        width = std::max(width, textWidth(step.line));
    for (const Example& step : firstSteps())
        text += "  " + padded(step.line, width) + "  " + step.meaning + "\n";
    return text;
}

std::string topicCalls()
{
    std::string list;
    for (const Topic& topic : topics())
        list += (list.empty() ? "" : ", ") + ("qo help " + std::string(topic.name));
    return list;
}

std::string shortOverview(const CLI::App& program, std::size_t columns)
{
    std::string text = usageText(program, columns) + "\n" + firstStepsText() +
                       "\nAll commands; \"qo help COMMAND\" explains one:\n";
    for (const std::string& group : groupsOf(program))
    {
        std::string names;
        for (const CLI::App* const command : commandsOf(program))
        {
            if (command->get_group() == group)
                names += (names.empty() ? "" : " ") + command->get_name();
        }
        text += wrapped("  " + padded(group, groupIndent - 2), names, groupIndent, columns);
    }
    return text + "\n" + wrapped("", "Ideas: " + topicCalls(), 7, columns) +
           wrapped("", "Options of every command: " + commonOptions(program), 2, columns);
}

std::string longOverview(const CLI::App& program, std::size_t columns)
{
    Document ideas{{heading, "Ideas"}};
    for (const Topic& topic : topics())
        ideas.push_back({item, topic.title, std::string("help ") + topic.name});
    append(ideas, {{heading, "Options of every command"}});
    append(ideas, optionDocument(optionsOf(program)));
    append(ideas, {{heading, "Exit codes"}});
    append(ideas, parseDocument(exitCodesText));
    return program.get_description() + "\n\n" + usageText(program, columns) +
           "\"qo help COMMAND\" explains a command. Paths are ordinary paths.\n\n" +
           firstStepsText() + "\n" + toText(commandList(program), columns) + "\n" +
           toText(ideas, columns);
}

std::string examplesText(const CommandText& text, std::size_t columns)
{
    if (text.examples.empty())
        return {};
    std::string list = "\nExamples:\n";
    for (const Example& example : text.examples)
    {
        const std::string indent(exampleIndent, ' ');
        list += std::string("  ") + example.line + "\n" +
                wrapped(indent, example.meaning, exampleIndent, columns);
    }
    return list;
}

class HelpFormatter final : public CLI::FormatterBase
{
public:
    std::string
    make_help(const CLI::App* command, std::string /*name*/, CLI::AppFormatMode) const override
    {
        const WindowSize window = windowOf(STDOUT_FILENO);
        return command->get_parent() ? commandPage(*command, textColumns(window))
                                     : overviewPage(*command, window);
    }
};
} // namespace

std::size_t textColumns(const WindowSize& window)
{
    return std::min(window.columns, widestText);
}

Document optionDocument(const std::vector<const CLI::Option*>& options)
{
    Document document;
    for (const CLI::Option* const option : options)
    {
        const OptionFacts facts = factsOf(*option);
        document.push_back({item, facts.description, facts.term()});
    }
    return document;
}

Document commandList(const CLI::App& parent)
{
    Document document;
    const bool isProgram = parent.get_parent() == nullptr;
    for (const std::string& group : groupsOf(parent))
    {
        document.push_back({heading, isProgram ? group : "Commands"});
        for (const CLI::App* const command : commandsOf(parent))
        {
            if (command->get_group() == group)
                document.push_back({item, command->get_description(), command->get_name()});
        }
    }
    return document;
}

Document commandText(const CLI::App& command)
{
    Document document{{paragraph, command.get_description() + "."}};
    append(document, parseDocument(textOf(commandKey(command)).explanation));
    return document;
}

Document commandOptions(const CLI::App& command)
{
    Document document;
    const auto addOptions = [&](const char* title, const std::vector<const CLI::Option*>& options)
    {
        if (options.empty())
            return;
        document.push_back({heading, title});
        append(document, optionDocument(options));
    };
    addOptions("Arguments", argumentsOf(command));
    addOptions("Options", optionsOf(command));
    append(document, commandList(command));
    return document;
}

std::string overviewPage(const CLI::App& program, const WindowSize& window)
{
    const std::size_t columns = textColumns(window);
    std::string page = longOverview(program, columns);
    const auto lines = static_cast<std::size_t>(std::ranges::count(page, '\n'));
    // One line is for the prompt that follows.
    const bool fits = window.rows == 0 || lines < window.rows;
    return fits ? page : shortOverview(program, columns);
}

std::string commandPage(const CLI::App& command, std::size_t columns)
{
    const CLI::App* program = &command;
    while (program->get_parent())
        program = program->get_parent();
    Document content = commandText(command);
    append(content, commandOptions(command));
    return usageText(command, columns) + "\n" + toText(content, columns) + "\n" +
           wrapped("", "Options of every command: " + commonOptions(*program), 2, columns) +
           examplesText(textOf(commandKey(command)), columns);
}

std::string topicPage(const Topic& topic, std::size_t columns)
{
    std::string text = toText(parseDocument(topic.text), columns);
    if (*topic.more)
        text += std::string("\nqo-") + topic.name + "(" + topic.section() + ") has more.\n";
    return text;
}

std::shared_ptr<CLI::FormatterBase> helpFormatter()
{
    return std::make_shared<HelpFormatter>();
}
} // namespace qo::cli
