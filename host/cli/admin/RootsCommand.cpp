#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/admin/RootChange.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionFiles.h"
#include "core/roots/RootGuard.h"
#include "core/roots/StoredRoots.h"
#include "devices/known/Devices.h"

#include <algorithm>

namespace qo::cli
{
namespace
{
using host::RootFolders;
using host::Session;

struct RootsOptions
{
    std::vector<std::string> folders;
    std::string kind; ///< empty: "audio" for a new folder
};

/// The files of the collection below the folder; 0 while there is no database to ask.
std::int64_t knownFiles(const CString& folder)
{
    return host::countFilesBelow(Session::databasePath(), folder);
}

/// The files that leave with these folders: what stands below another root folder stays.
std::int64_t leavingFiles(const RootFolders& left, const std::vector<CString>& removed)
{
    std::int64_t files = 0;
    for (const CString& folder : removed)
    {
        if (left.holder(folder).IsEmpty() && !host::isBelowAny(folder, removed))
            files += knownFiles(folder);
    }
    for (const CString& folder : left.folders())
    {
        if (host::isBelowAny(folder, removed) && !host::isBelowAny(folder, left.folders()))
            files -= knownFiles(folder);
    }
    return files;
}

std::string stateOf(const CString& folder)
{
    CStringArray one;
    one.Add(folder);
    const auto problems = host::checkRoots(one, Session::databasePath());
    return problems.empty() ? "" : problems[0].cause;
}

ExitCode listRoots(CommandLine& line)
{
    const auto session = openKernel(line, KernelUse::look);
    session->kernel().run(
        [&line]
        {
            const RootFolders roots;
            for (const CString& folder : roots.folders())
            {
                const std::string kind = RootFolders::kindName(roots.kind(folder));
                const std::string cause = stateOf(folder);
                if (line.json)
                {
                    Json object;
                    putPath(object, "path", folder);
                    object["type"] = kind;
                    object["away"] = cause.empty() ? Json() : Json(cause);
                    line.out.line(dump(object));
                }
                else
                    line.out.line(padded(kind, 5) + "  " + harmless(host::shownPath(folder)) +
                                  (cause.empty() ? "" : "  (away: " + cause + ")"));
            }
            if (roots.folders().IsEmpty())
                line.note("the collection has no folder yet: add one with \"qo scan DIR\"");
        });
    return ExitCode::done;
}

/// A folder of the last scan that the settings no longer name; its folder is "" when there is no
/// such one.
host::StoredRoot findUnlisted(const RootFolders& roots, const std::string& typed)
{
    const auto unlisted = host::unlistedRoots(host::storedRoots(Session::databasePath()), roots);
    for (const CString& form : spellings(typed))
    {
        for (const host::StoredRoot& root : unlisted)
        {
            if (root.folder == form)
                return root;
        }
    }
    return {};
}

void addRoot(CommandLine& line,
             RootFolders& roots,
             const std::string& typed,
             const std::string& kindName)
{
    const host::StoredRoot known = findUnlisted(roots, typed);
    const CString folder =
        known.folder.IsEmpty() ? fromSystemPath(host::existingFolder(typed)) : known.folder;
    const CString holder = findHolder(roots, folder);
    const std::string shown = host::shownPath(folder);
    const bool isKnown = holder == folder;
    CQoPathInfo::EType kind = isKnown ? roots.kind(folder) : known.kind;
    RootFolders::kindFromName(kindName, kind);
    if (holder.IsEmpty())
        confirmNewRoot(line, folder);
    const bool isPart = !holder.IsEmpty() && !isKnown;
    const bool isNew = !isPart && roots.add(folder, kind);
    if (line.json)
    {
        Json object;
        putPath(object, "path", folder);
        object["type"] = RootFolders::kindName(kind);
        object["changed"] = isNew;
        line.out.line(dump(object));
    }
    else if (isPart)
        line.note(shown + " is already part of the root folder " + host::shownPath(holder));
    else if (!isNew)
        line.note(shown + " is a root folder already");
    else if (isKnown)
        line.note(shown + (line.dryRun ? " would have type " : " has type ") +
                  RootFolders::kindName(kind) +
                  " from now on; that counts for files that come in later");
    else
        line.note((line.dryRun ? "would be a root folder: " : "root folder ") + shown + ", type " +
                  RootFolders::kindName(kind) + "; \"qo scan\" reads what is in it");
}

ExitCode addRoots(CommandLine& line, const RootsOptions& options)
{
    const auto session = openKernel(line, KernelUse::hold);
    session->kernel().run(
        [&]
        {
            RootFolders roots;
            for (const std::string& typed : options.folders)
                addRoot(line, roots, typed, options.kind);
            roots.store();
        });
    session->saveSettings();
    return ExitCode::done;
}

/// The root folder that was typed; it may be gone from the disk.
CString findTyped(const RootFolders& roots, const std::string& typed)
{
    for (const CString& form : spellings(typed))
    {
        for (const CString& folder : roots.folders())
        {
            if (folder == form)
                return folder;
        }
    }
    const CString unlisted = findUnlisted(roots, typed).folder;
    if (!unlisted.IsEmpty() && !roots.wasRemoved(unlisted))
        return unlisted;
    throw HostError(ExitCode::notFound, typed + " is no root folder; \"qo roots ls\" lists them");
}

ExitCode removeRoots(CommandLine& line, const RootsOptions& options)
{
    const auto session = openKernel(line, KernelUse::hold);
    std::int64_t files = 0;
    std::vector<CString> removed;
    RootFolders roots = session->kernel().run(
        [&]
        {
            RootFolders left;
            for (const std::string& typed : options.folders)
            {
                const CString folder = findTyped(left, typed);
                left.remove(folder);
                removed.push_back(folder);
            }
            files = leavingFiles(left, removed);
            return left;
        });
    if (files > 0 && !line.dryRun)
        confirm(line,
                countText(files, "file") +
                    " will leave the collection (none is deleted from the disk).");
    session->kernel().run([&roots] { roots.store(); });
    session->saveSettings();
    if (line.json)
        return line.out.line(dump({{"removed", options.folders.size()}, {"files", files}})),
               ExitCode::done;
    line.note(countText(static_cast<std::int64_t>(options.folders.size()), "root folder") +
              (line.dryRun ? " would be removed, with " : " removed, with ") +
              countText(files, "file") + " that the next scan takes out of the collection");
    return ExitCode::done;
}
} // namespace

CString findHolder(const RootFolders& roots, const CString& folder)
{
    const CString holder = roots.holder(folder);
    const CString start = folder.Left(holder.GetLength());
    if (!holder.IsEmpty() && start != holder)
        throw HostError(ExitCode::failed,
                        host::shownPath(folder) + " differs from the root folder " +
                            host::shownPath(holder) +
                            " in upper and lower case alone; a collection cannot hold both");
    return holder;
}

void confirmNewRoot(const CommandLine& line, const CString& folder)
{
    host::refuseFolderOfDevice(folder);
    if (!line.dryRun && host::isSystemFolder(toSystemPath(folder)))
        confirm(line,
                host::shownPath(folder) + " holds folders of the system, such as /proc and /dev; a "
                                          "scan takes in every file that it can read below it.");
}

void setUpRoots(CommandLine& line, CLI::App& command)
{
    line.setAction(command, [&line] { return listRoots(line); });
    command.require_subcommand(0, 1);
    line.addCommand(
        command, "ls", "List them with their types", [&line] { return listRoots(line); });

    auto added = std::make_shared<RootsOptions>();
    CLI::App* const add = line.addCommand(command,
                                          "add",
                                          "Add folders, or change their type",
                                          [&line, added] { return addRoots(line, *added); });
    addArguments(*add, "DIR", added->folders, "Folders to add")->required();
    add->add_option(
           "--type",
           added->kind,
           "What counts as music in them: all (audio and video), none, audio (for new ones)")
        ->check(CLI::IsMember({"all", "none", "audio"}));

    auto removed = std::make_shared<RootsOptions>();
    CLI::App* const remove =
        line.addCommand(command,
                        "rm",
                        "Take folders out of the collection",
                        [&line, removed] { return removeRoots(line, *removed); });
    addArguments(*remove,
                 "DIR",
                 removed->folders,
                 "Root folders to remove; nothing is deleted from the disk")
        ->required();
}
} // namespace qo::cli
