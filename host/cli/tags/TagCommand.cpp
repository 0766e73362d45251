#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/files/TagFields.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "cli/tags/ChosenMusic.h"
#include "cli/tags/EncodingCommand.h"
#include "cli/tags/TagWords.h"
#include "cli/tags/TagWriting.h"
#include "core/base/ClosestName.h"
#include "core/base/HostFiles.h"
#include "core/collection/PendingTags.h"

#include <algorithm>
#include <optional>

namespace qo::cli
{
namespace
{
using host::PendingTags;
using host::ProgressReporter;
using host::Session;

/// How many files are edited or written without a question.
constexpr std::size_t mostUnasked = 10;

struct TagOptions
{
    std::vector<std::string> words; ///< a query, with values or fields among it
    bool isMarked = false;
    bool all = false;
    bool parts = false;
    bool away = false;
};

/// What the tag commands work with, on the kernel's thread.
struct TagWork
{
    TagWork(CommandLine& commandLine, Session& openSession)
        : line(commandLine), session(openSession)
    {
    }

    CommandLine& line;
    Session& session;
    PendingTags pending;
    bool isLoaded = false; ///< the collection
};

/// The music that was chosen; files alone need not be in the collection.
std::vector<CString>
chosenPaths(TagWork& work, const TagOptions& options, const std::vector<std::string>& words)
{
    FileChoice choice;
    choice.request.words = words;
    choice.request.isMarked = options.isMarked;
    work.isLoaded = prepareChoice(work.line, work.session, choice) || work.isLoaded;
    return chosenMusic(choice, work.pending);
}

/// Every part of the file: its name, indented by what it stands in, its size and its text.
void showParts(TagWork& work, const CString& path)
{
    checkMusicFile(path);
    std::vector<KVTagLib::FilePart> parts;
    CString cause;
    if (!KVTagLib::readFileParts(path, parts, cause))
        throw HostError(ExitCode::failed,
                        host::shownPath(path) + " cannot be read: " + host::plainWords(cause));
    Listing listing(work.line,
                    false,
                    {"depth", "name", "size", "text"},
                    {Listing::Column::text, Listing::Column::number, Listing::Column::text});
    for (const KVTagLib::FilePart& part : parts)
    {
        if (listing.isClosed())
            break;
        if (listing.isForPeople())
        {
            listing.addCells(
                {std::string(2 * static_cast<std::size_t>(part.depth), ' ') + oneLine(part.name),
                 std::to_string(part.size),
                 oneLine(part.text)});
            continue;
        }
        Json record;
        record["depth"] = part.depth;
        record["name"] = toUtf8(part.name);
        record["size"] = part.size;
        record["text"] = toUtf8(part.text);
        listing.addRecord(record);
    }
    listing.finish();
}

/// The values of the file and the edited ones.
void showTag(TagWork& work, const CString& path, bool withPath)
{
    CMusicTagEx tag;
    readFileTag(path, tag);
    applyEdits(tag, work.pending.fields(path));
    const KVTagLib::CTags all = allValues(path);
    if (!work.line.json)
    {
        if (withPath)
            work.line.out.line(harmless(host::shownPath(path)));
        return work.line.out.write(tagTable(tag, all));
    }
    Json object;
    putPath(object, "path", path);
    object["fields"] = tagJson(tag, all);
    work.line.out.line(dump(object));
}

ExitCode show(TagWork& work, const TagOptions& options)
{
    const std::vector<CString> paths = chosenPaths(work, options, options.words);
    bool isFirst = true;
    return forEachOf(paths,
                     [&](const CString& path)
                     {
                         if (!isFirst && !work.line.json)
                             work.line.out.line("");
                         isFirst = false;
                         if (!options.parts)
                             return showTag(work, path, paths.size() > 1);
                         if (paths.size() > 1 && !work.line.json)
                             work.line.out.line(harmless(host::shownPath(path)));
                         showParts(work, path);
                     });
}

/// The values that change in one file.
struct TagEdit
{
    struct Change
    {
        const host::FileField* field;
        std::string before;
        std::string after;
        bool isOwn; ///< the file's own value again, which is no edit
    };
    CString path;
    std::vector<Change> changes;
};

TagEdit editOf(const TagWork& work, const CString& path, const TagWords& words)
{
    CMusicTagEx tag;
    readFileTag(path, tag);
    const KVTagLib::CTags all = allValues(path);
    const PendingTags::Fields pending = work.pending.fields(path);
    TagEdit edit{path, {}};
    for (const TagWords::Value& value : words.values)
    {
        const std::vector<std::string> own = fileValues(tag, all, *value.field);
        const std::string first = own.empty() ? std::string() : own.front();
        const auto edited = pending.find(value.field->name);
        const std::string before = edited == pending.end() ? first : edited->second;
        if (before != value.value)
            edit.changes.push_back({value.field, before, value.value, value.value == first});
    }
    return edit;
}

/// One line a change.
void showEdit(TagWork& work, const TagEdit& edit)
{
    const auto shown = [](const std::string& value)
    { return value.empty() ? std::string("(none)") : harmless(oneLine(fromUtf8(value))); };
    std::string text = harmless(host::shownPath(edit.path));
    for (const TagEdit::Change& change : edit.changes)
        text += std::string("\n  ") + change.field->heading + ": " + shown(change.before) + " -> " +
                shown(change.after);
    work.line.out.line(text);
}

void keepEdit(TagWork& work, const TagEdit& edit)
{
    for (const TagEdit::Change& change : edit.changes)
    {
        if (change.isOwn)
            work.pending.drop(edit.path, change.field->name);
        else
            work.pending.set(edit.path, change.field->name, change.after);
    }
}

ExitCode set(TagWork& work, const TagOptions& options)
{
    const TagWords words = TagWords::ofSet(options.words);
    const std::vector<CString> paths = chosenPaths(work, options, words.query);
    std::vector<TagEdit> edits;
    const ExitCode code = forEachOf(paths,
                                    [&](const CString& path)
                                    {
                                        TagEdit edit = editOf(work, path, words);
                                        if (!edit.changes.empty() || paths.size() == 1)
                                            edits.push_back(std::move(edit));
                                    });
    if (paths.size() > 1 && !work.line.json)
    {
        for (const TagEdit& edit : edits)
            showEdit(work, edit);
        work.line.out.flush();
    }
    if (edits.size() > mostUnasked && !work.line.dryRun)
        confirm(work.line,
                countText(static_cast<std::int64_t>(edits.size()), "file") + " will be edited.");
    for (const TagEdit& edit : edits)
        keepEdit(work, edit);
    if (!work.line.dryRun)
        work.pending.save();
    if (paths.size() == 1 || work.line.json)
    {
        for (const TagEdit& edit : edits)
            showTag(work, edit.path, false);
    }
    if (paths.size() > 1)
        work.line.note(std::string(work.line.dryRun ? "would edit " : "edited ") +
                       countText(static_cast<std::int64_t>(edits.size()), "file") + " of " +
                       std::to_string(paths.size()) +
                       (edits.empty() || work.line.dryRun ? "" : "; \"qo tag write\" writes them"));
    return code;
}

/// The files with edits, those that are away with a remark.
ExitCode listEdits(TagWork& work, const TagOptions&)
{
    const auto print = [&work](const CString& path, bool isAway)
    {
        if (!work.line.json)
            return work.line.out.line(harmless(host::shownPath(path)) + (isAway ? "  (away)" : ""));
        Json object;
        putPath(object, "path", path);
        object["away"] = isAway;
        work.line.out.line(dump(object));
    };
    for (const CString& path : work.pending.paths())
        print(path, false);
    for (const CString& path : work.pending.awayPaths())
        print(path, true);
    return ExitCode::done;
}

/// The spelling under which edits wait for what was typed, be the file there or away.
std::optional<CString>
pathWithEdits(const TagWork& work, const std::vector<CString>& away, const std::string& typed)
{
    for (const CString& form : spellings(typed))
    {
        if (work.pending.isEdited(form) || std::ranges::find(away, form) != away.end())
            return form;
    }
    return {};
}

/// Of what was chosen the files with edits. Names of files are taken as they are.
std::vector<CString>
editedPaths(TagWork& work, const TagOptions& options, const std::vector<std::string>& words)
{
    std::vector<CString> paths;
    const std::vector<CString> away = work.pending.awayPaths();
    for (const std::string& typed : words)
    {
        if (const auto path = pathWithEdits(work, away, typed))
            paths.push_back(*path);
    }
    if (!options.isMarked && paths.size() == words.size())
        return paths;
    paths.clear();
    for (const CString& path : chosenPaths(work, options, words))
    {
        if (work.pending.isEdited(path))
            paths.push_back(path);
    }
    if (paths.empty())
        throw HostError(ExitCode::notFound,
                        "nothing is edited there: " + (words.size() == 1 ? words[0]
                                                                         : "\"qo tag ls\" lists "
                                                                           "what is"));
    return paths;
}

/// Drops these fields, or all, of one file. Whether there was anything.
bool dropEdits(TagWork& work, const CString& path, const std::vector<TagWords::Value>& fields)
{
    bool any = false;
    for (const TagWords::Value& value : fields)
        any = work.pending.drop(path, value.field->name) || any;
    if (fields.empty())
        any = work.pending.drop(path) || work.pending.dropAway(path);
    return any;
}

void reportDrop(CommandLine& line, const CString& path)
{
    if (!line.json)
        return line.note((line.dryRun ? "would drop the edits of " : "dropped the edits of ") +
                         host::shownPath(path));
    Json object;
    putPath(object, "path", path);
    line.out.line(dump(object));
}

ExitCode revert(TagWork& work, const TagOptions& options)
{
    const TagWords words = TagWords::ofRevert(options.words);
    std::vector<CString> paths;
    if (options.away && (!words.query.empty() || options.isMarked))
        throw HostError(ExitCode::usage, "--away takes all files that are away, and no query");
    if (options.away)
        paths = work.pending.awayPaths();
    else if (words.query.empty() && !options.isMarked)
        throw HostError(ExitCode::usage,
                        "name a file, find files with a query, or take all that are away with "
                        "--away");
    else
        paths = editedPaths(work, options, words.query);
    std::vector<CString> dropped;
    for (const CString& path : paths)
    {
        if (dropEdits(work, path, words.values))
            dropped.push_back(path);
    }
    if (dropped.empty())
        throw HostError(ExitCode::notFound,
                        options.away ? "no file with edits is away"
                        : paths.size() > 1
                            ? "nothing is edited there"
                            : "nothing is edited there: " + host::shownPath(paths.front()));
    if (!work.line.dryRun)
        work.pending.save();
    for (const CString& path : dropped)
        reportDrop(work.line, path);
    return ExitCode::done;
}

TagWritten writeOne(TagWork& work, const CString& path, ProgressReporter& progress)
{
    CMusicTagEx tag;
    readFileTag(path, tag);
    applyEdits(tag, work.pending.fields(path));
    if (work.line.dryRun)
    {
        if (!work.line.json)
            showTag(work, path, true);
        return tagShown(path);
    }
    CString cause;
    bool hasChanged = false;
    const bool isWritten = tag.writeTag(path, &cause, &hasChanged);
    const TagWritten written =
        tagWritten(path, isWritten, hasChanged, cause, progress.isCanceled());
    work.pending.drop(path);
    work.pending.save();
    return written;
}

std::vector<CString> pathsToWrite(TagWork& work, const TagOptions& options)
{
    if (options.all)
        return work.pending.paths();
    if (options.words.empty() && !options.isMarked)
        throw HostError(ExitCode::usage,
                        "name a file, find files with a query, or write all of them with --all");
    return editedPaths(work, options, options.words);
}

ExitCode write(TagWork& work, const TagOptions& options)
{
    const std::vector<CString> paths = pathsToWrite(work, options);
    if ((paths.size() > mostUnasked || (options.all && !paths.empty())) && !work.line.dryRun)
        confirm(work.line,
                "The tags of " + countText(static_cast<std::int64_t>(paths.size()), "file") +
                    " will be written.");
    TagWriting writing(
        work.line, paths, ", and what was not keeps its edits: \"qo tag write --all\" goes on");
    const ExitCode code = writing.run([&work](const CString& path, ProgressReporter& progress)
                                      { return writeOne(work, path, progress); });
    writing.takeIn(work.session, work.isLoaded);
    if (const auto away = static_cast<std::int64_t>(work.pending.awayPaths().size());
        away > 0 && options.all)
        work.line.note(countText(away, "file") +
                       " with edits cannot be found: \"qo tag ls\" names what is away");
    return code;
}

using TagAction = ExitCode (*)(TagWork&, const TagOptions&);

/// A command of the group, which runs with the kernel started and the reasons of tag failures
/// remembered.
CLI::App* addTagCommand(CommandLine& line,
                        CLI::App& group,
                        const std::shared_ptr<TagOptions>& options,
                        const char* name,
                        const char* help,
                        KernelUse use,
                        TagAction run)
{
    return line.addCommand(group,
                           name,
                           help,
                           [&line, options, use, run]
                           {
                               const auto session = openKernel(line, use);
                               return session->kernel().run(
                                   [&]
                                   {
                                       if (session->hasLock())
                                           session->prepareStore();
                                       TagWork work(line, *session);
                                       return run(work, *options);
                                   });
                           });
}
} // namespace

void setUpTag(CommandLine& line, CLI::App& command)
{
    command.require_subcommand(1);
    const auto options = std::make_shared<TagOptions>();
    const auto add = [&](const char* name, const char* help, KernelUse use, TagAction run)
    { return addTagCommand(line, command, options, name, help, use, run); };
    const auto addWords = [&](CLI::App& app, const char* name, const char* help)
    {
        app.add_flag("--marked", options->isMarked, "Only files with a check mark");
        return addArguments(app, name, options->words, help);
    };

    CLI::App* const showApp =
        add("show", "The file's values and the edited ones side by side", KernelUse::look, show);
    addWords(*showApp, "QUERY", "Music files, or words that find them");
    showApp->add_flag("--all", options->parts, "Instead, every frame, item, atom and chunk");

    CLI::App* const setApp =
        add("set", "Edit values; they wait until \"write\"", KernelUse::change, set);
    addWords(*setApp, "WORD", "FIELD=VALUE, and music files or words that find them");
    setApp->footer("Fields: " + host::listOf(host::tagFieldNames()));

    add("ls", "The files with edits that are not written", KernelUse::look, listEdits);

    CLI::App* const revertApp =
        add("revert", "Drop edits that were not written", KernelUse::change, revert);
    addWords(*revertApp, "WORD", "Music files or words that find them, and fields if not all");
    revertApp->add_flag("--away", options->away, "All files that cannot be found");

    setUpEncoding(line,
                  *command.add_subcommand(
                      "encoding", "Edit texts that were written in another encoding than Latin-1"));

    CLI::App* const writeApp =
        add("write", "Write the edits into the file", KernelUse::change, write);
    addWords(*writeApp, "QUERY", "Music files, or words that find them");
    addAll(*writeApp, options->all, "Every file with edits");
}
} // namespace qo::cli
