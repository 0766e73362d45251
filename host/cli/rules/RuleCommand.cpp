#include "cli/rules/RuleCommand.h"

#include "cli/files/FileChoice.h"
#include "cli/rules/RulePicture.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/rules/RuleFile.h"
#include "core/rules/RuleWalk.h"

#include <QoKernel/Physical.h>

namespace qo::cli
{
namespace
{
using host::RuleStore;
using host::RuleWalk;

struct RuleOptions
{
    std::string rule;
    FileChoice choice;
    bool isLong = false;
};

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

/// What no rule could be made of is silently left out by the kernel.
void noteBadFiles(const CommandLine& line)
{
    for (const CString& path : RuleStore::badFiles())
    {
        try
        {
            host::readRuleFile(path);
        }
        catch (const HostError& error)
        {
            line.note(error.what());
        }
    }
}

void listRules(CommandLine& line, const RuleStore& store, bool isLong)
{
    Listing listing(line,
                    isLong,
                    {"id", "name", "priority", "use", "readOnly", "file"},
                    {Listing::Column::name,
                     Listing::Column::text,
                     Listing::Column::number,
                     Listing::Column::text,
                     Listing::Column::path});
    for (const CString& id : store.ids())
    {
        const NamedRule named{id, RuleStore::fileOf(id), &RuleStore::rule(id), {}};
        const std::string file = named.file.IsEmpty() ? "" : host::shownPath(named.file);
        if (listing.isForPeople())
            listing.addCells({oneLine(id),
                              oneLine(fromUtf8(named.name())),
                              std::to_string(named.rule->m_prio),
                              joined(ruleUses(*named.rule)),
                              file.empty() ? "(built in)" : file});
        else
        {
            Json record = ruleJson(named);
            for (const char* key : {"defaults", "rules"})
                record.erase(key);
            listing.addRecord(record);
        }
    }
    listing.finish();
    line.out.flush();
    noteBadFiles(line);
}

/// The file of a rule that is not in the store since its file is bad; "" when there is none.
CString badFileOf(const std::string& typed)
{
    const CString path = CReorganizeUtils::makeReorgRulePath(fromUtf8(typed));
    return !path.IsEmpty() && fileSystem().exists(path) ? path : CString();
}

ExitCode checkRule(CommandLine& line, const RuleStore& store, const std::string& typed)
{
    CString file =
        isRuleFileName(typed) ? fromSystemPath(host::absolutePath(typed)) : badFileOf(typed);
    if (file.IsEmpty())
        file = RuleStore::fileOf(store.find(typed));
    std::string fault;
    try
    {
        if (!file.IsEmpty())
            host::readRuleFile(file);
    }
    catch (const HostError& error)
    {
        if (!line.json || error.code() == ExitCode::notFound)
            throw;
        fault = error.what();
    }
    if (line.json)
    {
        Json object;
        putPath(object, "file", file);
        object["valid"] = fault.empty();
        object["reason"] = fault.empty() ? Json() : Json(fault);
        line.out.line(dump(object));
    }
    else
        line.out.line(harmless(file.IsEmpty() ? typed : host::shownPath(file)) +
                      " is a valid rule");
    return fault.empty() ? ExitCode::done : ExitCode::failed;
}

/// The whole path; the rule's limits of length are not looked at.
CString placeOf(const RuleWalk::Answer& answer, const CString& root)
{
    const CString folder = addBackslash(root) + answer.folder;
    return answer.hasPlace ? addBackslash(folder) + answer.name : CString();
}

void putAnswer(CommandLine& line,
               const CString& path,
               const CString& place,
               const RuleWalk::Answer& answer)
{
    if (line.json)
    {
        Json object;
        putPath(object, "path", path);
        putPath(object, "to", place);
        object["kind"] = toUtf8(answer.kind);
        object["by"] = answer.decidedBy;
        object["reason"] = answer.reason.empty() ? Json() : Json(answer.reason);
        return line.out.line(dump(object));
    }
    std::string text = host::shownPath(path);
    if (place == path)
        text += ": it is there already";
    else
        text += answer.hasPlace ? " -> " + host::shownPath(place) : ": " + answer.reason;
    line.out.line(harmless(text));
    if (!answer.decidedBy.empty())
        line.out.line(harmless("    by " + answer.decidedBy));
}

void testFiles(CommandLine& line, const RuleOptions& options)
{
    const RuleStore store;
    const NamedRule named = findRule(store, options.rule);
    RuleWalk walk(*named.rule);
    for (const QoFileDbItemPtr& item : chosenFiles(options.choice))
    {
        const auto file = CQoCollection::m_ownCollection.getFileByPath(item->path);
        if (!file || line.out.isClosed())
            continue;
        const CString root = CQoUtils::getRootDir(file)->getPath().toString();
        const RuleWalk::Answer answer = walk.answerFor(file, root);
        putAnswer(line, item->path, placeOf(answer, root), answer);
    }
}

ExitCode testRule(CommandLine& line, const RuleOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    loadForReading(line, *session);
    session->kernel().run([&] { testFiles(line, options); });
    return ExitCode::done;
}

void putLine(CommandLine& line, const std::string& label, const std::string& text)
{
    line.out.line(padded(label, 10) + harmless(text));
}
} // namespace

std::string NamedRule::name() const
{
    return RuleStore::isBuiltIn(id) ? RuleStore::nameOf(id) : toUtf8(rule->m_name);
}

bool isRuleFileName(const std::string& typed)
{
    return typed.find('/') != std::string::npos || typed.ends_with(".xml");
}

NamedRule findRule(const RuleStore& store, const std::string& typed)
{
    NamedRule named;
    if (isRuleFileName(typed))
    {
        named.file = fromSystemPath(host::absolutePath(typed));
        named.own = host::readRuleFile(named.file);
        named.rule = named.own.get();
        return named;
    }
    named.id = store.find(typed);
    named.file = RuleStore::fileOf(named.id);
    named.rule = &RuleStore::rule(named.id);
    return named;
}

Json ruleJson(const NamedRule& named)
{
    Json object;
    object["id"] = toUtf8(named.id);
    object["name"] = named.name();
    object["priority"] = named.rule->m_prio;
    object["use"] = ruleUses(*named.rule);
    object["readOnly"] = RuleStore::isBuiltIn(named.id);
    putPath(object, "file", named.file);
    object["defaults"] = ruleDefaultsJson(*named.rule);
    object["rules"] = ruleNodesJson(*named.rule);
    return object;
}

void showRule(CommandLine& line, const NamedRule& named)
{
    if (line.json)
        return line.out.line(dump(ruleJson(named)));
    putLine(line, "name", oneLine(fromUtf8(named.name())));
    if (!named.id.IsEmpty())
        putLine(line, "id", oneLine(named.id));
    putLine(line, "priority", std::to_string(named.rule->m_prio));
    putLine(line, "use", joined(ruleUses(*named.rule)));
    putLine(line, "file", named.file.IsEmpty() ? "(built in)" : host::shownPath(named.file));
    const Json defaults = ruleDefaultsJson(*named.rule);
    for (const auto& [attribute, text] : defaults.items())
        putLine(line, "default", attribute + " = " + oneLine(fromUtf8(text.get<std::string>())));
    line.out.line("");
    for (const std::string& each : rulePicture(*named.rule))
        line.out.line(harmless(each));
}

void setUpRule(CommandLine& line, CLI::App& command)
{
    auto options = std::make_shared<RuleOptions>();
    const auto list = [&line, options]
    {
        return withRules(line,
                         KernelUse::look,
                         [&](const RuleStore& store)
                         { return listRules(line, store, options->isLong), ExitCode::done; });
    };
    line.setAction(command, list);
    command.require_subcommand(0, 1);
    CLI::App* const ls = line.addCommand(command, "ls", "List them", list);
    ls->add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");

    CLI::App* const show = line.addCommand(
        command,
        "show",
        "Draw a rule",
        [&line, options]
        {
            return withRules(line,
                             KernelUse::look,
                             [&](const RuleStore& store) {
                                 return showRule(line, findRule(store, options->rule)),
                                        ExitCode::done;
                             });
        });
    CLI::App* const check =
        line.addCommand(command,
                        "check",
                        "Say whether a rule file is a valid one, and if not, why",
                        [&line, options]
                        {
                            return withRules(line,
                                             KernelUse::look,
                                             [&](const RuleStore& store)
                                             { return checkRule(line, store, options->rule); });
                        });
    CLI::App* const test = line.addCommand(command,
                                           "test",
                                           "Show where a rule wants files of the collection",
                                           [&line, options] { return testRule(line, *options); });
    for (CLI::App* each : {show, check, test})
        addArgument(*each, "RULE", options->rule, "A rule by name or id, or a rule file")
            ->required();
    addQuery(*test, options->choice)->required();
    addRuleEditCommands(line, command);
}
} // namespace qo::cli
