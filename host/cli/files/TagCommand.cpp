#include "cli/CommandLine.h"
#include "cli/Interrupt.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/files/TagFields.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/collection/PendingTags.h"

#include <cerrno>
#include <span>

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
    bool away = false;
};

/// How the files of a write ended.
struct WriteCounts
{
    std::size_t written = 0;
    std::size_t same = 0; ///< said already what they should
    std::size_t failed = 0;

    std::string text() const
    {
        return countText(static_cast<std::int64_t>(written), "file") + " written" +
               (same > 0 ? ", " + std::to_string(same) + " already so" : "");
    }
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
    throw HostError(ExitCode::usage,
                    "\"" + name + "\" is no field of a tag; there are " + allFieldNames());
}

/// The spelling of the file under which edits wait, or else the typed one.
CString pathOf(const TagWork& work, const std::string& typed)
{
    const std::vector<CString> forms = spellings(typed);
    for (const CString& form : forms)
    {
        if (work.pending.isEdited(form))
            return form;
    }
    return forms.front();
}

void readTag(const CString& path, CMusicTagEx& tag)
{
    const std::string shown = host::shownPath(path);
    FileInfo info;
    if (const int error = fileSystem().info(path, Spelling::exact, info))
        throw HostError(error == ENOENT || error == ENOTDIR ? ExitCode::notFound : ExitCode::failed,
                        shown + " cannot be read: " + host::errorWords(error));
    if (info.kind != FileKind::regular)
        throw HostError(ExitCode::failed, shown + " is no regular file");
    if (!CMusicTagEx::fileSupportsTags(path))
        throw HostError(ExitCode::failed, shown + " is no kind of file that has a tag");
    CString cause;
    if (!tag.readTag(path, &cause))
        throw HostError(ExitCode::failed,
                        "the tag of " + shown + " cannot be read: " + host::plainWords(cause));
}

ExitCode show(TagWork& work, const TagOptions& options)
{
    const CString path = pathOf(work, options.file);
    CMusicTagEx tag;
    readTag(path, tag);
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
                        "a picture can be replaced but not removed: name a picture file");
    const std::string path = host::absolutePath(value);
    FileInfo info;
    const int error = fileSystem().info(fromSystemPath(path), Spelling::exact, info);
    if (error != 0 || info.kind != FileKind::regular)
        throw HostError(ExitCode::notFound,
                        "the picture " + value + " cannot be read: " +
                            (error ? host::errorWords(error) : "it is no regular file"));
    if (!isUtf8(path))
        throw HostError(ExitCode::usage, "the name of a picture must be UTF-8");
    if (!KVTagLib::CTags().AddPicture(fromSystemPath(path)))
        throw HostError(ExitCode::failed,
                        "the picture " + value +
                            " cannot be used: it must be readable, at most 32 MiB, and a JPEG, "
                            "PNG, GIF, BMP or WebP picture");
    return path;
}

ExitCode set(TagWork& work, const TagOptions& options)
{
    const CString path = pathOf(work, options.file);
    CMusicTagEx tag;
    readTag(path, tag);
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

void writeOne(TagWork& work, const CString& path, ProgressReporter& progress, WriteCounts& counts)
{
    CMusicTagEx tag;
    readTag(path, tag);
    applyEdits(tag, work.pending.fields(path));
    const std::string shown = host::shownPath(path);
    if (work.line.dryRun)
    {
        work.line.out.line(work.line.out.foreign(shown));
        return work.line.out.write(tagTable(tag, allValues(path)));
    }
    CString cause;
    bool hasChanged = false;
    if (!tag.writeTag(path, &cause, &hasChanged))
        throw HostError(progress.isCanceled() ? ExitCode::interrupted : ExitCode::failed,
                        "the tag of " + shown +
                            " was not written, the file is as it was: " + host::plainWords(cause));
    work.pending.drop(path);
    work.pending.save();
    ++(hasChanged ? counts.written : counts.same);
    work.line.note((hasChanged ? "written: " : "already so, nothing to write: ") + shown);
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

/// Tells what an interruption left undone. Throws HostError.
[[noreturn]] void
stopWriting(const TagWork& work, std::span<const CString> left, const WriteCounts& counts)
{
    if (work.line.dryRun)
        throw HostError(ExitCode::interrupted,
                        "stopped: " + countText(static_cast<std::int64_t>(left.size()), "file") +
                            " not shown; a dry run writes nothing");
    for (const CString& path : left)
        work.line.note("not written: " + host::shownPath(path));
    throw HostError(ExitCode::interrupted,
                    "stopped: " + counts.text() +
                        ", and what was not keeps its edits: \"qo tag write --all\" goes on");
}

ExitCode write(TagWork& work, const TagOptions& options)
{
    const std::vector<CString> paths = pathsToWrite(work, options);
    if (options.all && !paths.empty() && !work.line.dryRun)
        confirm(work.line,
                "The tags of " + countText(static_cast<std::int64_t>(paths.size()), "file") +
                    " will be written.");
    ProgressReporter progress({});
    const InterruptGuard guard(progress);
    const KVTagLib::WriteStop stop([&progress] { return progress.isCanceled(); });
    WriteCounts counts;
    for (auto path = paths.begin(); path != paths.end(); ++path)
    {
        if (progress.isCanceled())
            stopWriting(work, {path, paths.end()}, counts);
        try
        {
            writeOne(work, *path, progress, counts);
        }
        catch (const HostError& error)
        {
            if (!options.all)
                throw;
            CommandLine::complain(error.what());
            if (error.code() == ExitCode::interrupted)
                stopWriting(work, {path, paths.end()}, counts);
            ++counts.failed;
        }
    }
    if (options.all && counts.same > 0)
        work.line.note(counts.text());
    if (counts.written > 0)
        work.line.note("\"qo scan\" takes the new values into the collection");
    if (const auto away = static_cast<std::int64_t>(work.pending.awayPaths().size());
        away > 0 && options.all)
        work.line.note(countText(away, "file") +
                       " with edits cannot be found: \"qo tag ls\" names what is away");
    if (counts.failed == 0)
        return ExitCode::done;
    return counts.failed < paths.size() ? ExitCode::partly : ExitCode::failed;
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

    add("show", "The file's values and the edited ones side by side", KernelUse::look, show)
        ->get_option("FILE")
        ->required();

    CLI::App* const setApp =
        add("set", "Edit values; they wait until \"write\"", KernelUse::hold, set);
    setApp->get_option("FILE")->required();
    addArguments(*setApp, "FIELD=VALUE", options->words, "Fields: " + allFieldNames())->required();

    add("ls", "The files with edits that are not written", KernelUse::look, listEdits, false);

    CLI::App* const revertApp =
        add("revert", "Drop edits that were not written", KernelUse::hold, revert);
    addArguments(*revertApp, "FIELD", options->words, "Only these fields");
    revertApp->add_flag("--away", options->away, "All files that cannot be found");

    CLI::App* const writeApp =
        add("write", "Write the edits into the file", KernelUse::hold, write);
    writeApp->add_flag("--all", options->all, "Every file with edits");
}
} // namespace qo::cli
