#include "cli/help/Candidates.h"

#include "cli/help/CommandTexts.h"
#include "cli/help/CommandTree.h"
#include "core/base/HostFiles.h"
#include "core/collection/FileFields.h"
#include "core/load/Snapshots.h"
#include "core/load/StoredNames.h"
#include "core/playlist/Playlists.h"
#include "core/query/QueryField.h"
#include "core/query/RecordOrder.h"
#include "core/roots/RootFolders.h"
#include "core/rules/RuleStore.h"
#include "core/runs/RunFiles.h"
#include "core/session/Session.h"
#include "core/session/SettingValues.h"
#include "core/share/Shares.h"
#include "devices/known/Devices.h"
#include "plugins/configured/ConfiguredPlugins.h"

#include <algorithm>
#include <filesystem>
#include <functional>

namespace qo::cli
{
namespace
{
using Words = std::vector<std::string>;

/// Where the words before the cursor lead to.
struct Cursor
{
    const CLI::App* command = nullptr;
    const CLI::Option* option = nullptr; ///< the one whose value is next
    Words arguments = {};
    bool onlyArguments = false;  ///< after "--"
    std::string dataFolder = {}; ///< as typed
};

const CLI::Option* findOption(const CLI::App* command, const std::string& name)
{
    for (; command; command = command->get_parent())
    {
        for (const CLI::Option* const option : optionsOf(*command))
        {
            const Words names = factsOf(*option).names;
            if (std::ranges::find(names, name) != names.end())
                return option;
        }
    }
    return nullptr;
}

bool isData(const CLI::Option& option)
{
    return option.check_lname("data");
}

void step(Cursor& cursor, const std::string& word)
{
    if (cursor.option)
    {
        if (isData(*cursor.option))
            cursor.dataFolder = word;
        cursor.option = nullptr;
    }
    else if (cursor.onlyArguments || !word.starts_with('-') || word == "-")
    {
        const CLI::App* const below =
            cursor.arguments.empty() ? findCommand(*cursor.command, word) : nullptr;
        if (below)
            cursor.command = below;
        else
            cursor.arguments.push_back(word);
    }
    else if (word == "--")
        cursor.onlyArguments = true;
    else
    {
        const std::size_t equals = word.find('=');
        const CLI::Option* const option = findOption(cursor.command, word.substr(0, equals));
        if (!option || factsOf(*option).value.empty())
            return;
        if (equals == std::string::npos)
            cursor.option = option;
        else if (isData(*option))
            cursor.dataFolder = word.substr(equals + 1);
    }
}

/// What the values of an option or argument are.
enum class Values
{
    artists,
    albums,
    genres,
    rules,
    playlists,
    plugins,
    devices,
    places, ///< devices, services and friends
    sharesOfFriends,
    ownShares,
    settings,
    settingValues, ///< of the setting that is named before
    fields,
    fieldValues, ///< "year=1999"
    editWords,   ///< words of a query, and such values after them
    roots,
    snapshots,
    runs,
    plans,
    sortFields,
    helpWords,
    queryWords ///< "artist:abba"
};

/// The option or argument of a command, or of any command with "*".
struct ValueRow
{
    std::string_view command;
    std::string_view name;
    Values values;
};
constexpr ValueRow valueRows[] = {{"*", "--artist", Values::artists},
                                  {"*", "--album", Values::albums},
                                  {"*", "--genre", Values::genres},
                                  {"*", "--rule", Values::rules},
                                  {"*", "--music-rule", Values::rules},
                                  {"*", "--movies-rule", Values::rules},
                                  {"*", "RULE", Values::rules},
                                  {"*", "PLAYLIST", Values::playlists},
                                  {"*", "--on", Values::places},
                                  {"device adopt", "NAME", Values::devices},
                                  {"device forget", "NAME", Values::devices},
                                  {"device info", "NAME", Values::devices},
                                  {"device eject", "NAME", Values::devices},
                                  {"device browse", "NAME", Values::devices},
                                  {"device pull", "NAME", Values::devices},
                                  {"device push", "--to", Values::devices},
                                  {"plugin login", "NAME", Values::plugins},
                                  {"plugin logout", "NAME", Values::plugins},
                                  {"plugin set", "NAME", Values::plugins},
                                  {"plugin browse", "NAME", Values::plugins},
                                  {"plugin rm", "NAME", Values::plugins},
                                  {"plugin get", "NAME", Values::plugins},
                                  {"plugin put", "--to", Values::plugins},
                                  {"search", "--on", Values::plugins},
                                  {"share browse", "NAME", Values::sharesOfFriends},
                                  {"share get", "NAME", Values::sharesOfFriends},
                                  {"share scan", "FRIEND", Values::sharesOfFriends},
                                  {"share forget", "FRIEND", Values::sharesOfFriends},
                                  {"share revoke", "FRIEND", Values::ownShares},
                                  {"*", "KEY", Values::settings},
                                  {"config set", "VALUE", Values::settingValues},
                                  {"*", "FIELD", Values::fields},
                                  {"*", "QUERY", Values::queryWords},
                                  {"mv", "PATH", Values::queryWords},
                                  {"rm", "PATH", Values::queryWords},
                                  {"tag set", "WORD", Values::editWords},
                                  {"*", "FIELD=VALUE", Values::fieldValues},
                                  {"roots rm", "DIR", Values::roots},
                                  {"*", "SNAPSHOT", Values::snapshots},
                                  {"*", "ID", Values::runs},
                                  {"*", "PLAN", Values::plans},
                                  {"*", "--sort", Values::sortFields},
                                  {"help", "COMMAND", Values::helpWords}};

/// What only an open session knows.
class CandidateNames
{
public:
    CandidateNames(const CommandLine& line, const Cursor& cursor)
        : m_session(optionsFor(line, cursor))
    {
    }

    Words names(host::NameKind kind)
    {
        return m_session.kernel().run(
            [kind]
            {
                Words list;
                for (const CString& name : host::storedNames(host::Session::databasePath(), kind))
                    list.push_back(toUtf8(name));
                return list;
            });
    }
    Words rules()
    {
        return m_session.kernel().run(
            []
            {
                Words list;
                const host::RuleStore store;
                for (const CString& id : store.ids())
                    list.push_back(host::RuleStore::nameOf(id));
                return list;
            });
    }
    Words playlists()
    {
        return m_session.kernel().run(
            []
            {
                Words list;
                for (const auto& each : host::Playlists().all())
                    list.push_back(toUtf8(each.list.name));
                return list;
            });
    }
    Words plugins()
    {
        return m_session.kernel().run(
            [this]
            {
                Words list;
                for (const host::PluginEntry& each : host::pluginEntries(m_session.settings()))
                    list.push_back(toUtf8(each.name));
                return list;
            });
    }
    Words devices()
    {
        return m_session.kernel().run(
            []
            {
                Words list;
                const host::Devices devices(host::Devices::Scope::adopted);
                for (const host::Device& each : devices.all())
                    list.push_back(each.name);
                return list;
            });
    }
    Words shares(bool areOwn)
    {
        return m_session.kernel().run(
            [areOwn]
            {
                Words list;
                const host::Shares shares;
                for (const host::Share& each : shares.all())
                {
                    if (each.isOwn == areOwn)
                        list.push_back(toUtf8(each.peer));
                }
                return list;
            });
    }
    Words settings()
    {
        Words list;
        for (const auto& entry : m_session.settings().entries())
            list.push_back(toUtf8(entry.key));
        return list;
    }
    Words roots()
    {
        return m_session.kernel().run([] { return paths(host::RootFolders().folders(), false); });
    }
    Words snapshots()
    {
        return m_session.kernel().run(
            [] { return paths(host::Snapshots(host::Session::databasePath()).list(), true); });
    }

    /// The runs whose files have that end, or the one of a run that can go on.
    Words runs(const char* end)
    {
        return m_session.kernel().run(
            [end]
            {
                Words list = host::runfiles::idsOf(end);
                const Words running = host::runfiles::idsOf(host::runfiles::runningEnd);
                list.insert(list.end(), running.begin(), running.end());
                return list;
            });
    }

private:
    static host::Session::Options optionsFor(const CommandLine& line, const Cursor& cursor)
    {
        host::Session::Options options;
        const std::string& typed = cursor.dataFolder.empty() ? line.dataFolder : cursor.dataFolder;
        options.dataFolder = typed.empty() ? "" : host::absolutePath(typed);
        options.withLock = false;
        options.saveSettings = false;
        return options;
    }
    static Words paths(const CStringArray& collected, bool isLastPart)
    {
        Words list;
        for (const CString& each : collected)
        {
            const std::string path = host::shownPath(each);
            list.push_back(isLastPart ? path.substr(path.rfind('/') + 1) : path);
        }
        return list;
    }

    host::Session m_session;
};

void addAll(Candidates& found, const Words& words, const std::string& prefix = std::string())
{
    for (const std::string& word : words)
        found.words.push_back({prefix + word});
}

void addCommandWords(Candidates& found, const CLI::App& parent)
{
    for (const CLI::App* const command : commandsOf(parent))
        found.words.push_back({command->get_name(), command->get_description()});
}

host::NameKind kindOf(const std::string& field)
{
    return field == "artist"  ? host::NameKind::artist
           : field == "album" ? host::NameKind::album
                              : host::NameKind::genre;
}

void addFieldValues(Candidates& found,
                    const CommandLine& line,
                    const Cursor& cursor,
                    const std::string& current)
{
    const std::size_t equals = current.find('=');
    const std::string field = current.substr(0, equals);
    if (equals == std::string::npos)
    {
        for (const std::string& name : host::tagFieldNames())
            found.words.push_back({name + "=", {}, true});
    }
    else if (field == "artist" || field == "album" || field == "genre")
        addAll(found, CandidateNames(line, cursor).names(kindOf(field)), field + "=");
}

/// The end of a word of a query that begins with the typed text: what follows the typed part of the
/// name, in quotes where it needs them. Example: for artist:Iron it may be " Circus".
std::string queryEnd(std::string_view typed, const std::string& name)
{
    std::string value;
    bool isOpen = false;
    for (std::size_t i = 0; i < typed.size(); ++i)
    {
        const bool isEscaped = typed.substr(i, 2) == "\\\"";
        if (typed[i] == '"')
            isOpen = !isOpen;
        else
            value += isEscaped ? typed[++i] : typed[i];
    }
    if (!name.starts_with(value))
        return {};
    std::string end;
    const std::string rest = name.substr(value.size());
    const std::size_t special = isOpen ? 0 : std::min(rest.find_first_of(" ,\""), rest.size());
    end = rest.substr(0, special);
    end += isOpen || special == rest.size() ? "" : "\"";
    for (const char c : rest.substr(special))
        end += c == '"' ? std::string("\\\"") : std::string(1, c);
    return end + (isOpen || special < rest.size() ? "\"" : "");
}

/// The files that begin with a path as it was typed. For words of a query, which may be paths: a
/// shell adds files of its own only where there are no words.
void addFiles(Candidates& found, const std::string& typed)
{
    const std::size_t slash = typed.rfind('/') + 1;
    const std::string folder = typed.substr(0, slash);
    const std::string start = typed.substr(slash);
    std::error_code error;
    for (std::filesystem::directory_iterator entries(folder.empty() ? "." : folder, error), end;
         !error && entries != end;
         entries.increment(error))
    {
        const std::string name = entries->path().filename();
        std::error_code unknown;
        const bool isFolder = entries->is_directory(unknown);
        if (name.starts_with(start) && (!name.starts_with('.') || start.starts_with('.')))
            found.words.push_back({folder + name + (isFolder ? "/" : ""), {}, isFolder});
    }
}

void addQueryWords(Candidates& found,
                   const CommandLine& line,
                   const Cursor& cursor,
                   const std::string& current)
{
    const std::string start = current.starts_with('^') ? "^" : "";
    const std::size_t colon = current.find(':');
    if (colon == std::string::npos)
    {
        for (const host::QueryFieldInfo& field : host::queryFields())
            found.words.push_back({start + field.name + ":", field.meaning, true});
        return addFiles(found, current);
    }
    const std::string field = current.substr(start.size(), colon - start.size());
    Words names;
    if (field == "artist" || field == "album" || field == "genre")
        names = CandidateNames(line, cursor).names(kindOf(field));
    else if (field == "kind")
        names.assign(host::fileTypes.begin(), host::fileTypes.end());
    for (const std::string& name : names)
    {
        const std::string end = queryEnd(std::string_view(current).substr(colon + 1), name);
        if (!end.empty())
            found.words.push_back({current + end});
    }
}

void addHelpWords(Candidates& found, const CommandLine& line, const Cursor& cursor)
{
    const CLI::App* command = &line.app;
    for (const std::string& word : cursor.arguments)
        command = command ? findCommand(*command, word) : nullptr;
    if (command)
        addCommandWords(found, *command);
    for (const Topic& topic : topics())
    {
        if (cursor.arguments.empty())
            found.words.push_back({topic.name, topic.title});
    }
}

void addValues(Candidates& found,
               Values values,
               const CommandLine& line,
               const Cursor& cursor,
               const std::string& current)
{
    using host::NameKind;
    switch (values)
    {
    case Values::artists:
        return addAll(found, CandidateNames(line, cursor).names(NameKind::artist));
    case Values::albums:
        return addAll(found, CandidateNames(line, cursor).names(NameKind::album));
    case Values::genres:
        return addAll(found, CandidateNames(line, cursor).names(NameKind::genre));
    case Values::rules:
        return addAll(found, CandidateNames(line, cursor).rules());
    case Values::playlists:
        return addAll(found, CandidateNames(line, cursor).playlists());
    case Values::plugins:
        return addAll(found, CandidateNames(line, cursor).plugins());
    case Values::devices:
        return addAll(found, CandidateNames(line, cursor).devices());
    case Values::places:
    {
        CandidateNames names(line, cursor);
        addAll(found, names.devices());
        addAll(found, names.plugins());
        return addAll(found, names.shares(false));
    }
    case Values::sharesOfFriends:
    case Values::ownShares:
        return addAll(found, CandidateNames(line, cursor).shares(values == Values::ownShares));
    case Values::settings:
        return addAll(found, CandidateNames(line, cursor).settings());
    case Values::settingValues:
        return addAll(found, host::settingChoices(cursor.arguments.front()));
    case Values::fields:
        return addAll(found, host::tagFieldNames());
    case Values::fieldValues:
        return addFieldValues(found, line, cursor, current);
    case Values::editWords:
        // Which files comes first, and what they get after it.
        if (cursor.arguments.empty() || current.find(':') < current.find('='))
            return addQueryWords(found, line, cursor, current);
        return addFieldValues(found, line, cursor, current);
    case Values::roots:
        return addAll(found, CandidateNames(line, cursor).roots());
    case Values::snapshots:
        return addAll(found, CandidateNames(line, cursor).snapshots());
    case Values::runs:
        return addAll(found, CandidateNames(line, cursor).runs(host::runfiles::finishedEnd));
    case Values::plans:
        return addAll(found, CandidateNames(line, cursor).runs(host::runfiles::planEnd));
    case Values::sortFields:
        return addAll(found, host::RecordOrder::fieldNames());
    case Values::helpWords:
        return addHelpWords(found, line, cursor);
    case Values::queryWords:
        return addQueryWords(found, line, cursor, current);
    }
}

Candidates valuesOf(const CLI::Option& option,
                    const CommandLine& line,
                    const Cursor& cursor,
                    const std::string& current)
{
    Candidates found;
    const OptionFacts facts = factsOf(option);
    const std::string name = facts.isArgument() ? facts.value : facts.names.back();
    addAll(found, facts.choices);
    const auto row = std::ranges::find_if(valueRows,
                                          [&](const ValueRow& each)
                                          {
                                              return each.name == name &&
                                                     (each.command == "*" ||
                                                      each.command == commandKey(*cursor.command));
                                          });
    if (row != std::end(valueRows))
        addValues(found, row->values, line, cursor, current);
    if (facts.value == "DIR")
        found.files = Candidates::Files::folders;
    else if (facts.value == "PATH" && (commandKey(*cursor.command).starts_with("plugin ") ||
                                       commandKey(*cursor.command).starts_with("device ")))
        found.files = Candidates::Files::none; // the path is one elsewhere
    else if (facts.value == "QUERY" || facts.value == "FILE" || facts.value == "PATH" ||
             facts.value == "RULE" || facts.value == "PLAN")
        found.files = Candidates::Files::any;
    return found;
}

Candidates optionNames(const Cursor& cursor)
{
    Candidates found;
    for (const CLI::App* command = cursor.command; command; command = command->get_parent())
    {
        for (const CLI::Option* const option : optionsOf(*command))
        {
            const OptionFacts facts = factsOf(*option);
            found.words.push_back({facts.names.back(), facts.description});
        }
    }
    return found;
}

/// The argument that comes after those that are there; the last one may be repeated.
const CLI::Option* nextArgument(const Cursor& cursor)
{
    const auto arguments = argumentsOf(*cursor.command);
    const std::size_t index = cursor.arguments.size();
    if (index < arguments.size())
        return arguments[index];
    const bool isRepeated = !arguments.empty() && factsOf(*arguments.back()).isRepeated;
    return isRepeated ? arguments.back() : nullptr;
}

Candidates allCandidates(const CommandLine& line, const Cursor& cursor, const std::string& current)
{
    if (cursor.option)
        return valuesOf(*cursor.option, line, cursor, current);
    const std::size_t equals = current.find('=');
    if (current.starts_with('-') && !cursor.onlyArguments)
    {
        const CLI::Option* const option =
            equals == std::string::npos ? nullptr
                                        : findOption(cursor.command, current.substr(0, equals));
        if (!option)
            return optionNames(cursor);
        Candidates found = valuesOf(*option, line, cursor, current.substr(equals + 1));
        for (Candidates::Word& word : found.words)
            word.text.insert(0, current, 0, equals + 1);
        return found;
    }
    Candidates found;
    if (const CLI::Option* const argument = nextArgument(cursor))
        found = valuesOf(*argument, line, cursor, current);
    if (cursor.arguments.empty() && !cursor.onlyArguments)
        addCommandWords(found, *cursor.command);
    return found;
}
} // namespace

Candidates candidatesFor(const CommandLine& line,
                         const std::vector<std::string>& words,
                         const std::string& current)
{
    Cursor cursor{&line.app};
    for (const std::string& word : words)
        step(cursor, word);
    Candidates found;
    try
    {
        found = allCandidates(line, cursor, current);
    }
    catch (const HostError&)
    {
        // A database that cannot be read has no names. Whoever runs the command hears of it.
        return {};
    }
    // A zero byte ends a word on its way to the shell.
    std::erase_if(found.words,
                  [&current](const Candidates::Word& word) {
                      return !word.text.starts_with(current) ||
                             word.text.find('\0') != std::string::npos;
                  });
    std::ranges::sort(found.words, {}, &Candidates::Word::text);
    return found;
}
} // namespace qo::cli
