#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/files/TagFields.h"
#include "cli/shown/ClosestName.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "cli/tags/ChosenMusic.h"
#include "cli/tags/EncodingCommand.h"
#include "cli/tags/TagWriting.h"
#include "core/base/HostFiles.h"
#include "core/collection/PendingTags.h"

namespace qo::cli
{
namespace
{
using host::PendingTags;
using host::ProgressReporter;
using host::Session;

struct TagOptions
{
    std::string file;
    std::vector<std::string> words; ///< "field=value" or field names
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
};

std::string allFieldNames()
{
    std::string names;
    for (const host::FileField& field : host::tagFields())
        names += (names.empty() ? "" : ", ") + std::string(field.name);
    return names;
}

const host::FileField& findField(const std::string& name)
{
    if (const host::FileField* const field = host::findTagField(name))
        return *field;
    std::vector<std::string> names;
    for (const host::FileField& field : host::tagFields())
        names.emplace_back(field.name);
    const std::string suggestion = suggestionFor(name, names);
    throw HostError(ExitCode::usage,
                    "\"" + name + "\" is no field of a tag" +
                        (suggestion.empty() ? "; there are " + allFieldNames() : suggestion));
}

CString pathOf(const TagWork& work, const std::string& typed)
{
    return editedPath(work.pending, typed);
}

/// Every part of the file: its name, indented by what it stands in, its size and its text.
ExitCode showParts(TagWork& work, const CString& path)
{
    checkMusicFile(path);
    std::vector<KVTagLib::FilePart> parts;
    CString cause;
    if (!KVTagLib::readFileParts(path, parts, cause))
        throw HostError(ExitCode::failed,
                        host::shownPath(path) + " cannot be read: " + host::plainWords(cause));
    Listing listing(work.line, false, {"depth", "name", "size", "text"}, {{40}, {0, true}, {}});
    for (const KVTagLib::FilePart& part : parts)
    {
        if (listing.isClosed())
            break;
        if (listing.isForPeople())
        {
            listing.addCells({std::string(2 * static_cast<std::size_t>(part.depth), ' ') +
                                  harmless(oneLine(part.name)),
                              std::to_string(part.size),
                              harmless(oneLine(part.text))});
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
    return ExitCode::done;
}

ExitCode show(TagWork& work, const TagOptions& options)
{
    const CString path = pathOf(work, options.file);
    if (options.parts)
        return showParts(work, path);
    CMusicTagEx tag;
    readFileTag(path, tag);
    applyEdits(tag, work.pending.fields(path));
    const KVTagLib::CTags all = allValues(path);
    if (!work.line.json)
    {
        work.line.out.write(tagTable(tag, all));
        return ExitCode::done;
    }
    Json object;
    putPath(object, "path", path);
    object["fields"] = tagJson(tag, all);
    work.line.out.line(dump(object));
    return ExitCode::done;
}

/// A picture is kept as the absolute path of a file that is there.
std::string checkedValue(const host::FileField& field, const std::string& value)
{
    if (field.kind != host::FieldKind::path)
    {
        if (!isUtf8(value))
            throw HostError(ExitCode::usage,
                            std::string("the value of ") + field.name + " is not UTF-8");
        return value;
    }
    if (value.empty())
        throw HostError(ExitCode::usage,
                        "a picture can be replaced but not removed: name a picture file, or see "
                        "\"qo cover remove\"");
    return checkedPicture(value);
}

ExitCode set(TagWork& work, const TagOptions& options)
{
    const CString path = pathOf(work, options.file);
    CMusicTagEx tag;
    readFileTag(path, tag);
    const KVTagLib::CTags all = allValues(path);
    for (const std::string& word : options.words)
    {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos)
            throw HostError(ExitCode::usage, "\"" + word + "\" is not of the form field=value");
        const std::string name = word.substr(0, equals);
        const host::FileField& field = findField(name);
        const std::string value = checkedValue(field, word.substr(equals + 1));
        const std::vector<std::string> own = fileValues(tag, all, field);
        // The file's own value again is no edit.
        if (value == (own.empty() ? "" : own.front()))
            work.pending.drop(path, name);
        else
            work.pending.set(path, name, value);
    }
    if (!work.line.dryRun)
        work.pending.save();
    applyEdits(tag, work.pending.fields(path));
    work.line.out.write(work.line.json ? dump(tagJson(tag, all)) + "\n" : tagTable(tag, all));
    return ExitCode::done;
}

/// The files with edits, those that are away with a remark.
ExitCode listEdits(TagWork& work, const TagOptions&)
{
    const auto print = [&work](const CString& path, bool isAway)
    {
        if (!work.line.json)
            return work.line.out.line(work.line.out.foreign(host::shownPath(path)) +
                                      (isAway ? "  (away)" : ""));
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

/// The files whose edits go.
std::vector<CString> dropEdits(TagWork& work, const TagOptions& options)
{
    PendingTags& pending = work.pending;
    if (options.away)
    {
        const std::vector<CString> paths = pending.awayPaths();
        if (paths.empty())
            throw HostError(ExitCode::notFound, "no file with edits is away");
        for (const CString& path : paths)
            pending.dropAway(path);
        return paths;
    }
    if (options.file.empty())
        throw HostError(ExitCode::usage, "name a file, or all files that are away with --away");
    const CString path = pathOf(work, options.file);
    bool any = options.words.empty() && pending.drop(path);
    if (options.words.empty() && !any)
    {
        for (const CString& form : spellings(options.file))
            any = pending.dropAway(form) || any;
    }
    for (const std::string& name : options.words)
    {
        findField(name);
        any = pending.drop(path, name) || any;
    }
    if (!any)
        throw HostError(ExitCode::notFound, "nothing is edited there: " + host::shownPath(path));
    return {path};
}

ExitCode revert(TagWork& work, const TagOptions& options)
{
    const std::vector<CString> paths = dropEdits(work, options);
    if (!work.line.dryRun)
        work.pending.save();
    for (const CString& path : paths)
        work.line.note((work.line.dryRun ? "would drop the edits of " : "dropped the edits of ") +
                       host::shownPath(path));
    return ExitCode::done;
}

TagWritten writeOne(TagWork& work, const CString& path, ProgressReporter& progress)
{
    CMusicTagEx tag;
    readFileTag(path, tag);
    applyEdits(tag, work.pending.fields(path));
    if (work.line.dryRun)
    {
        work.line.out.line(work.line.out.foreign(host::shownPath(path)));
        work.line.out.write(tagTable(tag, allValues(path)));
        return TagWritten::shown;
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

std::vector<CString> pathsToWrite(const TagWork& work, const TagOptions& options)
{
    if (options.all)
        return work.pending.paths();
    if (options.file.empty())
        throw HostError(ExitCode::usage, "name a file, or all of them with --all");
    const CString path = pathOf(work, options.file);
    if (!work.pending.isEdited(path))
        throw HostError(ExitCode::notFound, "nothing is edited there: " + host::shownPath(path));
    return {path};
}

ExitCode write(TagWork& work, const TagOptions& options)
{
    const std::vector<CString> paths = pathsToWrite(work, options);
    if (options.all && !paths.empty() && !work.line.dryRun)
        confirm(work.line,
                "The tags of " + countText(static_cast<std::int64_t>(paths.size()), "file") +
                    " will be written.");
    TagWriting writing(
        work.line, paths, ", and what was not keeps its edits: \"qo tag write --all\" goes on");
    const ExitCode code = writing.run([&work](const CString& path, ProgressReporter& progress)
                                      { return writeOne(work, path, progress); });
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
                                       if (use == KernelUse::hold)
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
    const auto add =
        [&](const char* name, const char* help, KernelUse use, TagAction run, bool withFile = true)
    {
        CLI::App* const app = addTagCommand(line, command, options, name, help, use, run);
        if (withFile)
            addArgument(*app, "FILE", options->file, "A music file");
        return app;
    };

    CLI::App* const showApp =
        add("show", "The file's values and the edited ones side by side", KernelUse::look, show);
    showApp->get_option("FILE")->required();
    showApp->add_flag("--all", options->parts, "Instead, every frame, item, atom and chunk");

    CLI::App* const setApp =
        add("set", "Edit values; they wait until \"write\"", KernelUse::hold, set);
    setApp->get_option("FILE")->required();
    addArguments(*setApp, "FIELD=VALUE", options->words, "Fields: " + allFieldNames())->required();

    add("ls", "The files with edits that are not written", KernelUse::look, listEdits, false);

    CLI::App* const revertApp =
        add("revert", "Drop edits that were not written", KernelUse::hold, revert);
    addArguments(*revertApp, "FIELD", options->words, "Only these fields");
    revertApp->add_flag("--away", options->away, "All files that cannot be found");

    setUpEncoding(line,
                  *command.add_subcommand(
                      "encoding", "Edit texts that were written in another encoding than Latin-1"));

    CLI::App* const writeApp =
        add("write", "Write the edits into the file", KernelUse::hold, write);
    writeApp->add_flag("--all", options->all, "Every file with edits");
}
} // namespace qo::cli
