#include "cli/Interrupt.h"
#include "cli/files/FileRecord.h"
#include "cli/files/TagFields.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "cli/tags/ChosenMusic.h"
#include "cli/tags/TagWriting.h"
#include "core/base/HostFiles.h"

#include <algorithm>
#include <set>

namespace qo::cli
{
namespace
{
using host::PendingTags;
using KVTagLib::CPictureTag;
using KVTagLib::PictureFacts;

struct CoverOptions
{
    FileChoice choice;
    std::string target; ///< of extract
    std::string image;  ///< of set
    bool isLong = false;
    bool all = false;
};

/// What the cover commands work with, on the kernel's thread.
struct CoverWork
{
    CommandLine& line;
    const CoverOptions& options;
    ChosenMusic& chosen;
    const std::vector<CString>& paths = chosen.paths;
    PendingTags& pending = chosen.pending;
};

const char* typeName(int type)
{
    static constexpr const char* names[] = {"other",
                                            "icon",
                                            "other icon",
                                            "front cover",
                                            "back cover",
                                            "leaflet",
                                            "media",
                                            "lead artist",
                                            "artist",
                                            "conductor",
                                            "band",
                                            "composer",
                                            "lyricist",
                                            "recording place",
                                            "during recording",
                                            "during performance",
                                            "screen shot",
                                            "fish",
                                            "illustration",
                                            "band logo",
                                            "publisher logo"};
    static_assert(std::size(names) == KVTagLib::pictureType::count);
    if (type == KVTagLib::pictureType::none)
        return "picture";
    return type >= 0 && type < KVTagLib::pictureType::count ? names[type] : "other";
}

/// All pictures of the file's tags, extracted into the folder of covers.
CArray<CPictureTag> picturesOf(const CString& path)
{
    KVTagLib::CTags tags(CQoPaths::getPictureTempDir(), KVTagLib::TagExtent::everything);
    readFileTag(path, tags);
    CArray<CPictureTag> pictures;
    tags.GetPictures(pictures);
    return pictures;
}

void listPicture(Listing& listing, const CString& path, const CPictureTag& picture)
{
    const PictureFacts& facts = picture.GetFacts();
    const bool isSized = facts.width > 0 && facts.height > 0;
    const std::string shown = host::shownPath(path);
    if (listing.isForPeople())
        return listing.addCells(
            {typeName(facts.type),
             oneLine(picture.m_mimeType),
             isSized ? std::to_string(facts.width) + " x " + std::to_string(facts.height) : "",
             sizeText(facts.bytes),
             oneLine(facts.description),
             shown});
    Json record;
    record["type"] = typeName(facts.type);
    record["mime"] = toUtf8(picture.m_mimeType);
    record["width"] = isSized ? Json(facts.width) : Json();
    record["height"] = isSized ? Json(facts.height) : Json();
    record["bytes"] = facts.bytes;
    record["description"] = toUtf8(facts.description);
    putPath(record, "path", shown);
    listing.addRecord(record, shown);
}

ExitCode showCovers(CoverWork& work)
{
    Listing listing(work.line,
                    work.options.isLong,
                    {"type", "mime", "width", "height", "bytes", "description", "path"},
                    {Listing::Column::text,
                     Listing::Column::name,
                     Listing::Column::number,
                     Listing::Column::number,
                     Listing::Column::text,
                     Listing::Column::path});
    int bare = 0;
    const ExitCode code = forEachOf(work.paths,
                                    [&](const CString& path)
                                    {
                                        const auto pictures = picturesOf(path);
                                        bare += pictures.IsEmpty() ? 1 : 0;
                                        for (const CPictureTag& picture : pictures)
                                            listPicture(listing, path, picture);
                                    });
    listing.finish();
    if (bare > 0)
        work.line.note("without a picture: " + countText(bare, "file"));
    return code;
}

/// A picture, and the first file that has it.
struct Extract
{
    CString music;
    CPictureTag picture;
};

/// Each picture once, in how many files it ever stands.
std::vector<Extract> differentPictures(CoverWork& work, ExitCode& code)
{
    std::vector<Extract> list;
    std::set<CString> seen;
    code = forEachOf(work.paths,
                     [&](const CString& path)
                     {
                         for (const CPictureTag& picture : picturesOf(path))
                         {
                             // The name is a digest of the content.
                             if (seen.insert(picture.GetFilePath()).second)
                                 list.push_back({path, picture});
                         }
                     });
    if (list.empty() && code == ExitCode::done)
        throw HostError(ExitCode::notFound, "there is no picture to extract");
    return list;
}

void extractTo(CoverWork& work, const Extract& extract, const CString& target)
{
    const std::string shown = host::shownPath(target);
    const CString source = extract.picture.GetFilePath();
    bool isThere = fileSystem().exists(target);
    if (!isThere)
    {
        const int error = work.line.dryRun
                              ? fileSystem().mayChange(CQoCollPath(target).getParent().toString())
                              : fileSystem().copyAsNew(source, target, {});
        if (error != 0 && error != EEXIST)
            throw HostError(ExitCode::failed,
                            shown + " cannot be written: " + host::errorWords(error));
        isThere = error == EEXIST;
    }
    if (isThere && fileSystem().compareFiles(source, target, {}) != 0)
        throw HostError(ExitCode::failed, shown + " is there already, and nothing is overwritten");
    if (!work.line.json)
        return work.line.note((isThere            ? "there already: "
                               : work.line.dryRun ? "would be extracted: "
                                                  : "extracted: ") +
                              shown);
    Json object;
    putPath(object, "path", target);
    putPath(object, "from", extract.music);
    object["type"] = typeName(extract.picture.GetFacts().type);
    work.line.out.line(dump(object));
}

/// "01 Low Tide - front cover.jpg" in the folder.
CString nameIn(const CString& folder, const Extract& extract)
{
    const CString name = fileTitleOf(extract.music) + u" - " +
                         fromUtf8(typeName(extract.picture.GetFacts().type)) + u'.' +
                         fileExtOf(extract.picture.GetFilePath());
    return addBackslash(folder) + safeLocalName(name);
}

ExitCode extractCovers(CoverWork& work)
{
    const std::string typed = work.options.target;
    const CString target = fromSystemPath(host::absolutePath(typed));
    const bool isFolder = fileSystem().isDirectory(target);
    if (!isFolder && typed.ends_with('/'))
        throw HostError(ExitCode::notFound, "there is no folder " + typed);
    ExitCode read = ExitCode::done;
    std::vector<Extract> list = differentPictures(work, read);
    if (!isFolder)
    {
        const auto isFront = [](const Extract& each) { return each.picture.IsFrontCover(); };
        if (std::ranges::any_of(list, isFront))
            std::erase_if(list, std::not_fn(isFront));
        if (list.size() > 1)
            throw HostError(ExitCode::usage,
                            "there are " + std::to_string(list.size()) +
                                " different pictures: name a folder for them");
    }
    std::set<CString> taken;
    const auto freeName = [&](const Extract& each)
    {
        const CString name = nameIn(target, each);
        CString free = name;
        const CString end = u'.' + fileExtOf(name);
        for (int i = 2; !taken.insert(free).second; ++i)
            free = name.Left(name.GetLength() - end.GetLength()) + u' ' +
                   fromUtf8(std::to_string(i)) + end;
        return free;
    };
    // A signal waits until the file that is being written is whole.
    host::ProgressReporter progress({});
    const InterruptGuard guard(progress);
    const ExitCode written = forEachOf(
        list,
        [&](const Extract& each)
        {
            if (progress.isCanceled())
                throw HostError(ExitCode::interrupted, "stopped; the same command goes on");
            extractTo(work, each, isFolder ? freeName(each) : target);
        });
    return written == ExitCode::done || read == ExitCode::done ? std::max(read, written)
                                                               : ExitCode::partly;
}

/// Writes the wanted change of pictures into all files.
ExitCode changeCovers(CoverWork& work, const KVTagLib::CTags& wanted, const std::string& deed)
{
    if (work.paths.size() > 1 && !work.line.dryRun)
        confirm(work.line,
                "The " + deed + " of " +
                    countText(static_cast<std::int64_t>(work.paths.size()), "file") + ".");
    TagWriting writing(work.line, work.paths, "; the same command goes on");
    const ExitCode code = writing.run(
        [&](const CString& path, host::ProgressReporter& progress)
        {
            checkMusicFile(path);
            if (work.pending.fields(path).contains("picture"))
                work.line.note("another picture waits to be written into " + host::shownPath(path) +
                               ": \"qo tag revert FILE picture\" drops it");
            if (work.line.dryRun)
            {
                const TagWritten shown = tagShown(path);
                if (!work.line.json)
                    work.line.out.line(harmless(host::shownPath(path)));
                return shown;
            }
            return writeTags(path, wanted, progress);
        });
    writing.takeIn(work.chosen.session, work.chosen.isLoaded);
    return code;
}

ExitCode setCovers(CoverWork& work)
{
    KVTagLib::CTags wanted;
    wanted.AddPicture(fromSystemPath(checkedPicture(work.options.image)));
    return changeCovers(work, wanted, "picture will be set as the front cover");
}

ExitCode removeCovers(CoverWork& work)
{
    KVTagLib::CTags wanted;
    wanted.RemovePictures(work.options.all ? KVTagLib::PictureRemoval::all
                                           : KVTagLib::PictureRemoval::frontCovers);
    return changeCovers(work,
                        wanted,
                        work.options.all ? "pictures will be taken out"
                                         : "front cover will be taken out");
}
} // namespace

void setUpCover(CommandLine& line, CLI::App& command)
{
    command.require_subcommand(1);
    const auto options = std::make_shared<CoverOptions>();
    const auto add =
        [&](const char* name, const char* help, KernelUse use, ExitCode (*run)(CoverWork&))
    {
        CLI::App* const app =
            line.addCommand(command,
                            name,
                            help,
                            [&line, options, use, run]
                            {
                                return withChosenMusic(line,
                                                       use,
                                                       options->choice,
                                                       [&](ChosenMusic& chosen)
                                                       {
                                                           CoverWork work{line, *options, chosen};
                                                           return run(work);
                                                       });
                            });
        addMusic(*app, options->choice);
        return app;
    };
    add("show", "The pictures of each file", KernelUse::look, showCovers)
        ->add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
    CLI::App* const extract = add(
        "extract", "Put each picture once into a file of its own", KernelUse::look, extractCovers);
    addArgument(*extract, "--to", options->target, "A folder, or a new file for the front cover")
        ->type_name("PATH")
        ->required();
    CLI::App* const set = add("set",
                              "Replace the front cover, and keep all other pictures",
                              KernelUse::change,
                              setCovers);
    addArgument(*set, "--image", options->image, "The picture")->type_name("FILE")->required();
    add("remove", "Take the front cover out", KernelUse::change, removeCovers)
        ->add_flag("--all", options->all, "Every picture");
}
} // namespace qo::cli
