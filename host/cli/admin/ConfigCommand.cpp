#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "core/base/ClosestName.h"
#include "core/base/HostFiles.h"
#include "core/session/SettingValues.h"

#include <cctype>
#include <functional>
#include <optional>
#include <vector>

namespace qo::cli
{
namespace
{
using host::KeyValueConfig;
using host::Session;

struct ConfigOptions
{
    std::string key;
    std::string value;
};

/// Settings that hold a folder. People see and type it as an ordinary path.
bool isFolderKey(std::string name)
{
    while (!name.empty() && std::isdigit(static_cast<unsigned char>(name.back())))
        name.pop_back();
    return name.ends_with("Dir") || name.ends_with("Folder");
}

bool isSecretKey(const std::string& name)
{
    return name.ends_with("Password");
}

std::string shownValue(const std::string& name, const CString& value)
{
    return isFolderKey(name) && !value.IsEmpty() ? host::shownPath(value) : toUtf8(value);
}

CString storedValue(const std::string& name, const std::string& typed)
{
    if (!isFolderKey(name) || typed.empty())
    {
        const CString value = fromUtf8(typed);
        if (toUtf8(value) != typed)
            throw HostError(ExitCode::usage, "the value of " + name + " is not UTF-8");
        return value;
    }
    const CString folder = fromSystemPath(host::absolutePath(typed));
    return name == "ImportExportFolder" ? addBackslash(folder) : folder;
}

std::optional<KeyValueConfig::Entry> find(Session& session, const std::string& name)
{
    for (const KeyValueConfig::Entry& entry : session.settings().entries())
    {
        if (toUtf8(entry.key) == name)
            return entry;
    }
    return std::nullopt;
}

KeyValueConfig::Entry findOrThrow(Session& session, const std::string& name)
{
    const auto entry = find(session, name);
    if (!entry)
    {
        std::vector<std::string> names;
        for (const KeyValueConfig::Entry& each : session.settings().entries())
            names.push_back(toUtf8(each.key));
        throw HostError(ExitCode::notFound,
                        "there is no setting \"" + name + "\"" + host::suggestionFor(name, names) +
                            "; \"qo config ls\" lists them");
    }
    return *entry;
}

Json entryJson(const KeyValueConfig::Entry& entry, const std::string& value)
{
    Json object;
    object["section"] = toUtf8(entry.section);
    object["key"] = toUtf8(entry.key);
    putPath(object, "value", value);
    object["isDefault"] = !entry.isStored;
    return object;
}

ExitCode get(CommandLine& line, const ConfigOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    session->kernel().run(
        [&]
        {
            const KeyValueConfig::Entry entry = findOrThrow(*session, options.key);
            const std::string value = shownValue(options.key, entry.value);
            line.out.line(line.json ? dump(entryJson(entry, value)) : harmless(value));
        });
    return ExitCode::done;
}

ExitCode list(CommandLine& line)
{
    const auto session = openKernel(line, KernelUse::look);
    session->kernel().run(
        [&]
        {
            CString section;
            for (const KeyValueConfig::Entry& entry : session->settings().entries())
            {
                const std::string key = toUtf8(entry.key);
                const bool isHidden = isSecretKey(key) && !entry.value.IsEmpty();
                const std::string value = isHidden ? "********" : shownValue(key, entry.value);
                if (line.json)
                {
                    line.out.line(dump(entryJson(entry, value)));
                    continue;
                }
                if (section != entry.section)
                    line.out.line((section.IsEmpty() ? "[" : "\n[") +
                                  harmless(toUtf8(entry.section)) + "]");
                section = entry.section;
                line.out.line(harmless(key) + " = " + harmless(value) +
                              (entry.isStored ? "" : "  (default)"));
            }
        });
    return ExitCode::done;
}

KVConfig::Key* keyOf(Session& session, const KeyValueConfig::Entry& entry)
{
    KeyValueConfig& settings = session.settings();
    return settings.addKey(settings.addSection(KVConfig::ordinarySection, entry.section),
                           entry.key,
                           entry.defaultValue);
}

/// Changes one setting and says what it is now.
ExitCode change(
    CommandLine& line,
    const std::string& name,
    const std::function<void(KeyValueConfig&, const KeyValueConfig::Entry&, KVConfig::Key*)>& work)
{
    const auto session = openKernel(line, KernelUse::hold);
    const std::string value = session->kernel().run(
        [&]
        {
            const KeyValueConfig::Entry entry = findOrThrow(*session, name);
            KVConfig::Key* const key = keyOf(*session, entry);
            work(session->settings(), entry, key);
            return isSecretKey(name) ? "********"
                                     : shownValue(name, session->settings().getValue(key));
        });
    session->saveSettings();
    if (line.json)
        line.out.line(dump({{"key", name}, {"value", value}}));
    else
        line.note((line.dryRun ? "would set " : "") + name + " = " + value);
    return ExitCode::done;
}

ExitCode set(CommandLine& line, const ConfigOptions& options)
{
    const auto work = [&](KeyValueConfig& settings, const auto& entry, KVConfig::Key* key)
    {
        const std::string checked =
            host::checkedSetting(options.key, toUtf8(entry.defaultValue), options.value);
        settings.setValue(key, storedValue(options.key, checked));
    };
    return change(line, options.key, work);
}

/// Statistics stay at home also by default.
ExitCode unset(CommandLine& line, const ConfigOptions& options)
{
    if (options.key.starts_with("MusicCollectionDir"))
        throw HostError(ExitCode::usage, options.key + " is kept by \"qo roots\"; use that");
    const auto work = [&](KeyValueConfig& settings, const auto&, KVConfig::Key* key)
    {
        if (options.key == "SendUsageStatistics")
            settings.setValue(key, u"0");
        else
            settings.unset(key);
    };
    return change(line, options.key, work);
}
} // namespace

void setUpConfig(CommandLine& line, CLI::App& command)
{
    line.setAction(command, [&line] { return list(line); });
    command.require_subcommand(0, 1);
    line.addCommand(command, "ls", "List them all", [&line] { return list(line); });

    auto options = std::make_shared<ConfigOptions>();
    CLI::App* const getApp = line.addCommand(
        command, "get", "Show one", [&line, options] { return get(line, *options); });
    addArgument(*getApp, "KEY", options->key, "Its name")->required();
    CLI::App* const setApp = line.addCommand(
        command, "set", "Change one", [&line, options] { return set(line, *options); });
    addArgument(*setApp, "KEY", options->key, "Its name")->required();
    addArgument(*setApp, "VALUE", options->value, "Its new value; folders as ordinary paths")
        ->required();
    CLI::App* const unsetApp = line.addCommand(command,
                                               "unset",
                                               "Let one have its default again",
                                               [&line, options] { return unset(line, *options); });
    addArgument(*unsetApp, "KEY", options->key, "Its name")->required();
}
} // namespace qo::cli
