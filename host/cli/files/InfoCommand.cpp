#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/files/FoundFiles.h"
#include "cli/files/TagFields.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"

#include <QoKernel/Physical.h>

namespace qo::cli
{
namespace
{
const char* typeName(const CHDFile& file)
{
    switch (file.getFileType())
    {
    case CHDFile::FT_Music:
        return file.getAudioVideoType() == CHDFile::AV_Video ? "video" : "music";
    case CHDFile::FT_Picture:
        return "picture";
    case CHDFile::FT_Text:
        return "text";
    default:
        return "other";
    }
}

/// Where the file stands in the tree.
struct Place
{
    std::string type;
    std::string root;
    std::string folder;
};

Place placeOf(const QoFileDbItem& item)
{
    Place place;
    const auto file = CQoCollection::m_ownCollection.getFileByPath(item.path);
    if (!file)
        return place;
    place.type = typeName(*file);
    if (const auto& folder = file->getParentDir())
        place.folder = host::shownPath(folder->getPath().toString());
    if (const auto root = CQoUtils::getRootDir(file))
        place.root = host::shownPath(root->getPath().toString());
    return place;
}

/// The file's own tag, with the pending edits; false, with the cause, when it has none to read.
bool readOwnTag(host::Session& session, const CString& path, CMusicTagEx& tag, std::string& cause)
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
    session.failures().setWithDetails(true);
    session.failures().forget();
    const bool isRead = tag.readTag(path);
    cause = session.failures().lastFailure();
    session.failures().setWithDetails(false);
    if (isRead)
        applyEdits(tag, host::PendingTags(host::Session::pendingTagsPath()).fields(path));
    return isRead;
}

void row(std::string& text, const std::string& name, const std::string& value)
{
    text += padded(name, 10) + (value.empty() ? "-" : value) + "\n";
}

std::string recordText(const QoFileDbItem& item, const Place& place)
{
    std::string text;
    row(text, "artist", harmless(oneLine(item.artist)));
    row(text, "album", harmless(oneLine(item.album)));
    row(text, "title", harmless(oneLine(item.title)));
    row(text, "genre", harmless(oneLine(item.genre)));
    row(text, "track", harmless(oneLine(item.trackNumber)));
    row(text, "year", harmless(oneLine(item.year)));
    row(text,
        "duration",
        item.duration > 0
            ? durationText(item.duration) + " (" + std::to_string(item.duration) + " ms)"
            : "");
    row(text, "bitrate", item.bitrate > 0 ? std::to_string(item.bitrate) + " kbit/s" : "");
    row(text, "size", sizeText(item.size) + " (" + std::to_string(item.size) + " bytes)");
    row(text, "type", place.type + " (" + flagsText(item.flags) + ")");
    row(text, "created", localTimeText(item.createTime));
    row(text, "modified", localTimeText(item.modifTime));
    row(text,
        "picture",
        item.picturePath.IsEmpty() ? "" : harmless(host::shownPath(item.picturePath)));
    row(text, "id", std::to_string(item.id) + ", " + toUtf8(item.velmoraId));
    row(text,
        "marks",
        std::string(item.imported ? "imported" : "not imported") +
            (item.reviewed ? ", reviewed" : ", not reviewed"));
    row(text, "folder", harmless(place.folder));
    row(text, "root", harmless(place.root));
    return text;
}

void printInfo(CommandLine& line, host::Session& session, const std::string& typed)
{
    const FoundFiles found(typed);
    if (found.files().GetSize() != 1 || found.files()[0]->path != found.path())
        throw HostError(ExitCode::usage,
                        typed + " is a folder; \"qo ls\" and \"qo tree\" show what is in it");
    const QoFileDbItem& item = *found.files()[0];
    const Place place = placeOf(item);
    CMusicTagEx tag;
    std::string cause;
    const bool hasTag = readOwnTag(session, item.path, tag, cause);
    if (line.json)
    {
        Json object = recordJson(item);
        object["type"] = place.type;
        putPath(object, "folder", place.folder);
        putPath(object, "root", place.root);
        object["tag"] = hasTag ? tagJson(tag) : Json();
        if (!hasTag)
            object["tagError"] = cause;
        return line.out.line(dump(object));
    }
    line.out.line(line.out.foreign(host::shownPath(item.path)));
    line.out.line("\nin the collection");
    line.out.write(recordText(item, place));
    line.out.line("\nin the file");
    line.out.write(hasTag ? tagTable(tag) : cause + "\n");
}
} // namespace

void setUpInfo(CommandLine& line, CLI::App& command)
{
    auto file = std::make_shared<std::string>();
    line.setAction(command,
                   [&line, file]
                   {
                       const auto session = openKernel(line, KernelUse::hold);
                       loadForReading(line, *session);
                       session->kernel().run([&] { printInfo(line, *session, *file); });
                       return ExitCode::done;
                   });
    addArgument(command, "FILE", *file, "A file of the collection")->required();
}
} // namespace qo::cli
