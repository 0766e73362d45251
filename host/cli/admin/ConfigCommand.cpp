#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "core/base/HostFiles.h"

#include <algorithm>
#include <cctype>
#include <optional>

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
        throw HostError(ExitCode::notFound,
                        "there is no setting \"" + name + "\"; \"qo config ls\" lists them");
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
            line.out.line(line.json ? dump(entryJson(entry, value)) : line.out.foreign(value));
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

/// Refuses values that the kernel would silently take for something else.
void checkValue(const std::string& key, const std::string& value)
{
    if (key.starts_with("MusicCollectionDir"))
        throw HostError(ExitCode::usage, key + " is kept by \"qo roots\"; use that");
    if (key == toUtf8(CString(host::FileKinds::setting)))
        return static_cast<void>(host::FileKinds(value));
    const std::vector<std::string> levels = {
        "none", "error", "warning", "info", "debug", "detail", "verbose"};
    std::string lower = value;
    std::transform(
        lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
    if (key == "TraceLevel" && std::find(levels.begin(), levels.end(), lower) == levels.end())
        throw HostError(
            ExitCode::usage,
            "\"" + value +
                "\" is no level; there are None, Error, Warning, Info, Debug, Detail and Verbose");
}

ExitCode set(CommandLine& line, const ConfigOptions& options)
{
    checkValue(options.key, options.value);
    const auto session = openKernel(line, KernelUse::hold);
    const std::string value = session->kernel().run(
        [&]
        {
            const KeyValueConfig::Entry entry = findOrThrow(*session, options.key);
            KeyValueConfig& settings = session->settings();
            KVConfig::Section* const section =
                settings.addSection(KVConfig::ordinarySection, entry.section);
            KVConfig::Key* const key =
                settings.addKey(section, entry.key, entry.isStored ? u"" : entry.value.GetString());
            settings.setValue(key, storedValue(options.key, options.value));
            return isSecretKey(options.key) ? "********"
                                            : shownValue(options.key, settings.getValue(key));
        });
    session->saveSettings();
    line.note((line.dryRun ? "would set " : "") + options.key + " = " + value);
    return ExitCode::done;
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
}
} // namespace qo::cli
