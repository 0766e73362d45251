#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/files/FileRecord.h"
#include "cli/files/TagFields.h"
#include "core/base/HostFiles.h"
#include "core/collection/KnownNotes.h"

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

void printInfo(CommandLine& line, const QoFileDbItem& item, host::KnownNotes& notes)
{
    CMusicTagEx tag;
    std::string cause;
    const bool hasTag = readOwnTag(item.path, tag, cause);
    if (line.json)
    {
        host::JsonLine object;
        putRecord(object, item, notes, true);
        object.raw("tag", dump(hasTag ? tagJson(tag, allValues(item.path)) : Json()));
        if (!hasTag)
            object.text("tagError", cause);
        return line.out.line(object.end());
    }
    line.out.line(harmless(host::shownPath(item.path)));
    line.out.line("\n" + Output::styled(Style::heading, "in the collection"));
    line.out.write(recordText(item, notes));
    line.out.line("\n" + Output::styled(Style::heading, "in the file"));
    line.out.write(hasTag ? tagTable(tag, allValues(item.path)) : cause + "\n");
}

void printInfos(CommandLine& line, const FileChoice& choice)
{
    host::KnownNotes notes;
    bool isFirst = true;
    for (const QoFileDbItemPtr& item :
         chosenSingleFiles(choice, "\"qo ls\" and \"qo tree\" show what is in it"))
    {
        if (line.out.isClosed())
            return;
        if (!isFirst && !line.json)
            line.out.line("");
        isFirst = false;
        printInfo(line, *item, notes);
    }
}
} // namespace

void setUpInfo(CommandLine& line, CLI::App& command)
{
    auto choice = std::make_shared<FileChoice>();
    line.setListAction(command,
                       [&line, choice]
                       {
                           const auto session = openKernel(line, KernelUse::look);
                           loadForReading(line, *session);
                           session->kernel().run([&] { printInfos(line, *choice); });
                           return ExitCode::done;
                       });
    addQuery(command, *choice)->required();
}
} // namespace qo::cli
