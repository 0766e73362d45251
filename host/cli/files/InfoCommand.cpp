#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/files/FoundFiles.h"
#include "cli/files/TagFields.h"
#include "core/base/HostFiles.h"

namespace qo::cli
{
namespace
{
/// The file's own tag, with the pending edits; false, with the cause, when it has none to read.
bool readOwnTag(const CString& path, CMusicTagEx& tag, std::string& cause)
{
    if (!CMusicTagEx::fileSupportsTags(path))
    {
        cause = "no kind of file that has a tag";
        return false;
    }
    FileInfo info;
    if (const int error = fileSystem().info(path, Spelling::exact, info))
    {
        cause = host::errorWords(error);
        return false;
    }
    CString words;
    const bool isRead = tag.readTag(path, &words);
    cause = host::plainWords(words);
    if (isRead)
        applyEdits(tag, host::PendingTags().fields(path));
    return isRead;
}

void printInfo(CommandLine& line, const std::string& typed)
{
    const FoundFiles found(typed);
    if (found.files().GetSize() != 1 || found.files()[0]->path != found.path())
        throw HostError(ExitCode::usage,
                        typed + " is a folder; \"qo ls\" and \"qo tree\" show what is in it");
    const QoFileDbItem& item = *found.files()[0];
    CMusicTagEx tag;
    std::string cause;
    const bool hasTag = readOwnTag(item.path, tag, cause);
    if (line.json)
    {
        Json object = recordJson(item, true);
        object["tag"] = hasTag ? tagJson(tag, allValues(item.path)) : Json();
        if (!hasTag)
            object["tagError"] = cause;
        return line.out.line(dump(object));
    }
    line.out.line(line.out.foreign(host::shownPath(item.path)));
    line.out.line("\nin the collection");
    line.out.write(recordText(item));
    line.out.line("\nin the file");
    line.out.write(hasTag ? tagTable(tag, allValues(item.path)) : cause + "\n");
}
} // namespace

void setUpInfo(CommandLine& line, CLI::App& command)
{
    auto file = std::make_shared<std::string>();
    line.setAction(command,
                   [&line, file]
                   {
                       const auto session = openKernel(line, KernelUse::look);
                       loadForReading(line, *session);
                       session->kernel().run([&] { printInfo(line, *file); });
                       return ExitCode::done;
                   });
    addArgument(command, "FILE", *file, "A file of the collection")->required();
}
} // namespace qo::cli
