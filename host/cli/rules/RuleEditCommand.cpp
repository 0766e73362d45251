#include "cli/rules/RuleCommand.h"
#include "cli/rules/RuleDraft.h"
#include "core/base/HostFiles.h"
#include "core/collection/Trash.h"
#include "core/rules/RuleFile.h"

namespace qo::cli
{
namespace
{
using host::RuleStore;

struct EditOptions
{
    std::string rule;
    std::string name; ///< of the new rule
    std::string from; ///< "" when it is built from patterns
    std::optional<int> prio;
    RuleDraft draft;
};

/// The rule gets a file, perhaps that of the one that goes by its name, and is shown.
void keep(CommandLine& line, RuleStore& store, const CReorganizeRule& rule)
{
    const CString holder = store.holderOf(rule.m_name);
    NamedRule named{holder, RuleStore::fileOf(holder), &rule, {}};
    if (holder.IsEmpty())
        named.file = RuleStore::newFile(rule.m_name);
    else
    {
        RuleStore::needOwn(holder);
        if (!line.dryRun)
            confirm(line, "The rule \"" + RuleStore::nameOf(holder) + "\" will be replaced.");
    }
    if (!line.dryRun && holder.IsEmpty())
        named.id = store.add(rule);
    else if (!line.dryRun)
        store.replace(holder, rule);
    if (named.id.IsEmpty())
        named.id = CReorganizeUtils::getReorgRuleID(named.file);
    showRule(line, named);
    line.out.flush();
    line.note((line.dryRun ? "would be written to " : "written to ") + host::shownPath(named.file));
}

/// Blanks at the ends are a slip.
void setName(CReorganizeRule& rule, const std::string& typed)
{
    rule.m_name = checkedText(typed, "the name of the rule").Trim();
    if (rule.m_name.IsEmpty())
        throw HostError(ExitCode::usage, "a rule needs a name");
}

void newRule(CommandLine& line, RuleStore& store, const EditOptions& options)
{
    CReorganizeRule rule;
    std::vector<std::string> notes;
    if (options.from.empty())
        options.draft.build(rule, notes);
    else
    {
        const auto read = host::readRuleFile(fromSystemPath(host::absolutePath(options.from)));
        rule.copyFrom(read.get());
        rule.m_prio = read->m_prio;
    }
    if (options.from.empty() || !options.name.empty())
        setName(rule, options.name);
    rule.m_prio = options.prio.value_or(rule.m_prio);
    for (const std::string& sentence : notes)
        line.note(sentence);
    keep(line, store, rule);
}

void copyRule(CommandLine& line, RuleStore& store, const EditOptions& options)
{
    CReorganizeRule rule;
    rule.copyFrom(findRule(store, options.rule).rule);
    setName(rule, options.name);
    rule.m_prio = options.prio.value_or(rule.m_prio);
    keep(line, store, rule);
}

void removeRule(CommandLine& line, RuleStore& store, const EditOptions& options)
{
    const CString id = store.find(options.rule);
    RuleStore::needOwn(id);
    const CString file = RuleStore::fileOf(id);
    const std::string place = line.dryRun ? host::Trash::onTrial().placeFor(toSystemPath(file)).file
                                          : store.remove(id, host::Trash());
    if (line.json)
    {
        Json object;
        object["id"] = toUtf8(id);
        putPath(object, "from", file);
        putPath(object, "to", place);
        return line.out.line(dump(object));
    }
    line.note((line.dryRun ? "would be put into the trash: " : "put into the trash: ") +
              host::shownPath(file) + " -> " + place);
}

std::function<ExitCode()> command(CommandLine& line,
                                  const std::shared_ptr<EditOptions>& options,
                                  void (*run)(CommandLine&, RuleStore&, const EditOptions&))
{
    return [&line, options, run]
    {
        return withRules(line,
                         KernelUse::hold,
                         [&](RuleStore& store)
                         { return run(line, store, *options), ExitCode::done; });
    };
}

CLI::Option* addNumber(CLI::App& app,
                       const std::string& name,
                       std::optional<int>& value,
                       const std::string& description)
{
    return app
        .add_option_function<int>(
            name, [&value](const int& typed) { value = typed; }, description)
        ->type_name("N");
}

void addPatternOptions(CLI::App& app, RuleDraft& draft, CLI::Option* from)
{
    const auto addPattern =
        [&](const char* name, std::optional<std::string>& value, const char* description)
    { return addOptional(app, name, value, description)->type_name("PATTERN")->excludes(from); };
    addPattern("--folder", draft.folder, "The folder, as {artist.name}/{album.name}; else kept");
    addPattern("--music", draft.music, "The name of music, as \"{artist.name} - {track.name}\"");
    addPattern("--picture", draft.picture, "The name of pictures; without one names are kept");
    addPattern("--lyrics", draft.lyrics, "The name of lyrics");
    app.add_flag("--keep-if-empty",
                 draft.keepIfEmpty,
                 "Keep the name of a file where a value for it is missing")
        ->excludes(from);
    CLI::Option* const artist = addNumber(app,
                                          "--artist-limit",
                                          draft.artistLimit,
                                          "The folder is for artists with that many tracks or more")
                                    ->check(CLI::Range(1, 1000000))
                                    ->excludes(from);
    addNumber(app,
              "--album-limit",
              draft.albumLimit,
              "The folder is for albums with that many tracks or more")
        ->check(CLI::Range(1, 1000000))
        ->excludes(from)
        ->excludes(artist);
    addPattern(
        "--less-folder", draft.lessFolder, "The folder for all others than the limit; else kept");
    addArguments(app,
                 "--default",
                 draft.defaults,
                 "Text for an attribute that a file lacks, as {album.name}=Singles")
        ->type_name("ATTR=TEXT")
        ->allow_extra_args(false)
        ->excludes(from);
}
} // namespace

void addRuleEditCommands(CommandLine& line, CLI::App& group)
{
    auto made = std::make_shared<EditOptions>();
    CLI::App* const make = line.addCommand(group,
                                           "new",
                                           "Make a simple rule, or take in one from a file",
                                           command(line, made, newRule));
    addArgument(*make, "NAME", made->name, "The name of the rule; that of the file by default");
    CLI::Option* const from =
        addArgument(*make, "--from", made->from, "Take the rule from this file")->type_name("FILE");
    addNumber(*make, "--prio", made->prio, "The priority; rules with a higher one come first");
    addPatternOptions(*make, made->draft, from);

    auto copied = std::make_shared<EditOptions>();
    CLI::App* const copy = line.addCommand(
        group, "copy", "Make a rule like another one", command(line, copied, copyRule));
    addArgument(*copy, "RULE", copied->rule, "A rule by name or id, or a rule file")->required();
    addArgument(*copy, "NAME", copied->name, "The name of the new rule")->required();
    addNumber(*copy, "--prio", copied->prio, "Its priority; 65535 by default");

    auto removed = std::make_shared<EditOptions>();
    CLI::App* const remove = line.addCommand(
        group, "rm", "Put the file of a rule into the trash", command(line, removed, removeRule));
    addArgument(*remove, "RULE", removed->rule, "A rule by name or id")->required();
}
} // namespace qo::cli
