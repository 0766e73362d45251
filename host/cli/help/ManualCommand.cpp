#include "cli/CommandLine.h"
#include "cli/help/CommandTree.h"
#include "cli/help/HelpPages.h"
#include "core/base/HostFiles.h"
#include "core/session/Session.h"

#include <QoKernel/Kernel.h>

#include <algorithm>
#include <filesystem>

namespace qo::cli
{
namespace
{
using enum Block::Kind;

/// A man page under way.
class ManPage
{
public:
    /// The first lines, up to the sentence that says what it is about.
    ManPage(const std::string& name, const std::string& section, const std::string& sentence)
        : m_file("man" + section + "/" + name + "." + section)
    {
        m_roff =
            ".TH " + roffText(name) + " " + section +
            " \"\" \"qo " QO_VERSION
            "\" \"qo manual\"\n.\\\" Made by the build from the texts of the help.\n.nh\n.ad l\n" +
            roffSection("Name") + roffText(name) + " \\- " + roffText(sentence) + "\n";
    }

    void addSection(const std::string& title, const Document& content)
    {
        if (!content.empty())
            m_roff += roffSection(title) + toRoff(content, RoffHeadings::subsections);
    }
    void addSynopsis(const std::vector<const CLI::App*>& commands)
    {
        m_roff += roffSection("Synopsis");
        for (const CLI::App* const command : commands)
            m_roff +=
                (command == commands.front() ? "" : ".br\n") + roffText(usageOf(*command)) + "\n";
    }
    void add(const Document& content) { m_roff += toRoff(content, RoffHeadings::sections); }

    /// Below a folder in which man finds its pages. Throws HostError.
    void write(const std::string& folder) const
    {
        const CString path = fromSystemPath(folder + "/" + m_file);
        int error = fileSystem().makeDirectories(path.Left(path.ReverseFind(u'\\')));
        if (error == 0)
            error = fileSystem().replaceFile(
                path, m_roff.data(), m_roff.size(), Durability::canBeMadeAgain);
        if (error != 0)
            throw HostError(ExitCode::failed,
                            host::shownPath(path) +
                                " cannot be written: " + host::errorWords(error));
    }

private:
    std::string m_file;
    std::string m_roff;
};

std::string pageName(const CLI::App& command)
{
    return "qo-" + command.get_name();
}

/// A sentence as the title of a page has it.
std::string inSmall(std::string sentence)
{
    if (sentence.size() > 1 && sentence[0] >= 'A' && sentence[0] <= 'Z')
        sentence[0] = static_cast<char>(sentence[0] - 'A' + 'a');
    return sentence;
}

Document examplesOf(const CLI::App& command)
{
    Document document;
    for (const Example& example : textOf(commandKey(command)).examples)
        document.push_back({item, example.meaning, example.line});
    return document;
}

Document seeAlso(const std::string& pages)
{
    return {{paragraph, pages}};
}

std::string topicPages()
{
    std::string list;
    for (const Topic& topic : topics())
        list += std::string(", qo-") + topic.name + "(" + topic.section() + ")";
    return list + ", qo-settings(5)";
}

ManPage programPage(const CLI::App& program)
{
    ManPage page("qo", "1", "keeps a collection of your music and its tags");
    page.addSynopsis({&program});
    Document first;
    for (const Example& step : firstSteps())
        first.push_back({item, step.meaning, step.line});
    page.addSection("First steps", first);
    page.addSection("Commands", commandList(program));
    page.addSection("Options of every command", optionDocument(optionsOf(program)));
    page.addSection("Exit status", parseDocument(exitCodesText));
    page.addSection("Environment", parseDocument(environmentText));
    page.addSection("Files", parseDocument(filesText));
    std::string list;
    for (const CLI::App* const command : commandsOf(program))
        list += (list.empty() ? "" : ", ") + pageName(*command) + "(1)";
    page.addSection("See also", seeAlso(list + topicPages()));
    return page;
}

ManPage commandManual(const CLI::App& command)
{
    ManPage page(pageName(command), "1", inSmall(command.get_description()));
    const std::vector<const CLI::App*> all = allCommands(command);
    page.addSynopsis(all);
    page.addSection("Description", commandText(command));
    page.add(commandOptions(command));
    for (const CLI::App* const below : all)
    {
        if (below == &command)
            continue;
        Document content = commandText(*below);
        append(content, commandOptions(*below));
        content.push_back({heading, "Examples"});
        append(content, examplesOf(*below));
        page.addSection(commandPath(*below), content);
    }
    page.addSection("Examples", examplesOf(command));
    page.addSection("See also", seeAlso("qo(1)" + topicPages()));
    return page;
}

ManPage topicManual(const Topic& topic)
{
    ManPage page(std::string("qo-") + topic.name, topic.section(), topic.title);
    page.addSection("Description", parseDocument(topic.text));
    page.add(parseDocument(topic.more));
    page.addSection("See also", seeAlso("qo(1)" + topicPages()));
    return page;
}

/// The settings of a new user, as the kernel and the host declare them.
std::vector<host::KeyValueConfig::Entry> declaredSettings(const std::string& folder)
{
    const std::string nobody = folder + "/new-user";
    std::vector<host::KeyValueConfig::Entry> entries;
    {
        host::Session::Options options;
        options.dataFolder = nobody;
        options.withLock = false;
        options.saveSettings = false;
        host::Session session(std::move(options));
        entries = session.settings().entries();
    }
    std::filesystem::remove_all(nobody);
    return entries;
}

/// Those that the command goes by come with what they do.
ManPage settingsPage(const std::string& folder)
{
    Document known;
    Document others = {
        {paragraph,
         "The file has them for programs that record, burn and show windows; qo does "
         "not go by them."}};
    for (const auto& entry : declaredSettings(folder))
    {
        const std::string key = toUtf8(entry.key);
        const CString& start = entry.isStored ? entry.value : entry.defaultValue;
        const bool isPath = start.view().find(u":\\") != std::u16string_view::npos;
        const std::string value = isPath ? "a folder of the user" : toUtf8(start);
        const std::string text = value.empty() ? "empty by default" : "by default " + value;
        const auto row = std::ranges::find(settingTexts(), key, &SettingText::key);
        if (row == settingTexts().end())
            others.push_back({item, text, key});
        else
            known.push_back({item, std::string(row->meaning) + "; " + text, key});
    }
    if (known.size() != settingTexts().size())
        throw HostError(ExitCode::failed, "a setting is described that there is not");
    ManPage page("qo-settings", "5", "the settings of qo");
    page.addSection("Description", parseDocument(settingsFileText));
    page.addSection("Settings", known);
    page.addSection("Further settings", others);
    page.addSection("See also", seeAlso("qo(1), qo-config(1), qo-roots(1)"));
    return page;
}

ExitCode writeManual(const CommandLine& line, const std::string& typed)
{
    const std::string folder = host::absolutePath(typed);
    programPage(line.app).write(folder);
    for (const CLI::App* const command : commandsOf(line.app))
        commandManual(*command).write(folder);
    for (const Topic& topic : topics())
        topicManual(topic).write(folder);
    settingsPage(folder).write(folder);
    return ExitCode::done;
}
} // namespace

void setUpManual(CommandLine& line, CLI::App& command)
{
    auto folder = std::make_shared<std::string>();
    addArgument(command, "DIR", *folder, "The folder that gets man1, man5 and man7")->required();
    line.setAction(command, [&line, folder] { return writeManual(line, *folder); });
}
} // namespace qo::cli
