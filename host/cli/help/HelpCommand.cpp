#include "cli/CommandLine.h"
#include "cli/help/CommandTree.h"
#include "cli/help/HelpPages.h"
#include "core/base/ClosestName.h"
#include "core/base/Json.h"

#include <QoKernel/Collection.h>

#include <unistd.h>

namespace qo::cli
{
namespace
{
using host::dump;
using host::Json;

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
        line.out.line(versionText());
    return ExitCode::done;
}

[[noreturn]] void refuse(const CLI::App& parent, const std::string& name)
{
    std::vector<std::string> known;
    for (const CLI::App* const each : commandsOf(parent))
        known.push_back(each->get_name());
    if (!parent.get_parent())
    {
        for (const Topic& topic : topics())
            known.emplace_back(topic.name);
    }
    const std::string suggestion = host::suggestionFor(name, known);
    throw HostError(ExitCode::usage,
                    "there is no command \"" + name + "\"" +
                        (suggestion.empty() ? "; \"qo help\" lists them" : suggestion));
}

/// An object for each command, for programs that show help themselves.
void writeJson(CommandLine& line, const CLI::App& first)
{
    const auto optionJson = [](const std::vector<const CLI::Option*>& options)
    {
        Json list = Json::array();
        for (const CLI::Option* const option : options)
        {
            const OptionFacts facts = factsOf(*option);
            list.push_back({{"term", facts.term()}, {"description", facts.description}});
        }
        return list;
    };
    for (const CLI::App* const command : allCommands(first))
    {
        Json object;
        object["command"] = commandPath(*command);
        object["description"] = command->get_description();
        object["arguments"] = optionJson(argumentsOf(*command));
        object["options"] = optionJson(optionsOf(*command));
        object["examples"] = Json::array();
        for (const Example& example : textOf(commandKey(*command)).examples)
            object["examples"].push_back(
                {{"line", example.line}, {"meaning", example.meaning}, {"code", example.code}});
        line.out.line(dump(object));
    }
}

ExitCode help(CommandLine& line, const std::vector<std::string>& names)
{
    const WindowSize window = windowOf(STDOUT_FILENO);
    const Topic* const topic = names.size() == 1 ? findTopic(names.front()) : nullptr;
    if (topic)
    {
        if (line.json)
            line.out.line(dump({{"idea", topic->name}, {"text", topic->text}}));
        else
            line.out.write(topicPage(*topic, textColumns(window)));
        return ExitCode::done;
    }
    const CLI::App* command = &line.app;
    for (const std::string& name : names)
    {
        const CLI::App* const below = findCommand(*command, name);
        if (!below)
            refuse(*command, name);
        command = below;
    }
    if (line.json)
        writeJson(line, *command);
    else if (names.empty())
        line.out.write(overviewPage(*command, window));
    else
        line.out.write(commandPage(*command, textColumns(window)));
    return ExitCode::done;
}
} // namespace

std::string versionText()
{
    return "qo " QO_VERSION ", database version " + toUtf8(CString(CQoCollDb::currentVersion()));
}

void setUpVersion(CommandLine& line, CLI::App& command)
{
    line.setAction(command, [&line] { return version(line); });
}

void setUpHelp(CommandLine& line, CLI::App& command)
{
    auto names = std::make_shared<std::vector<std::string>>();
    line.setListAction(command, [&line, names] { return help(line, *names); });
    addArguments(command, "COMMAND", *names, "The command, with its sub-command; or an idea");
}
} // namespace qo::cli
