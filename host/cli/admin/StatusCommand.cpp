#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/HostFiles.h"
#include "core/collection/PendingTags.h"
#include "core/load/Snapshots.h"
#include "core/load/UnfinishedScan.h"
#include "core/roots/RootFolders.h"
#include "core/roots/RootGuard.h"

#include <algorithm>

namespace qo::cli
{
namespace
{
using host::RootFolders;
using host::Session;

struct Database
{
    bool exists = false;
    std::string problem;
    std::int64_t size = 0;
    std::string version;
    std::int64_t files = 0;
    FILETIME scanned;
    FILETIME changed;
};

/// What the host's own store says.
struct Store
{
    CStringArray unfinishedRoots;
    std::size_t edited = 0;
    std::size_t editedAway = 0;
    std::string problem;
};

Store lookAtStore()
{
    Store store;
    try
    {
        store.unfinishedRoots = host::UnfinishedScan(Session::folder()).rootsAtFirst();
        const host::PendingTags edits;
        store.edited = edits.paths().size();
        store.editedAway = edits.awayPaths().size();
    }
    catch (const HostError& error)
    {
        store.problem = error.what();
    }
    return store;
}

void readDatabase(const CString& path, Database& database)
{
    CString version;
    if (!CQoCollDb::readVersion(path, version))
    {
        database.problem = "it is no collection database";
        return;
    }
    database.version = toUtf8(version);
    if (version != CQoCollDb::currentVersion())
    {
        database.problem = "it has another version than this program's " +
                           toUtf8(CString(CQoCollDb::currentVersion())) +
                           ": \"qo db migrate\" carries it over";
        return;
    }
    database.files = host::countFiles(path);
    CQoCollDb db(path);
    CollInfoDbItem info;
    db.getCollInfo(u"", info);
    database.scanned = info.scanTime;
    database.changed = info.modifiedTime;
}

Database lookAtDatabase(const CString& path)
{
    Database database;
    FileInfo info;
    if (fileSystem().info(path, Spelling::exact, info) != 0)
        return database;
    database.exists = true;
    database.size = info.size;
    if (info.kind != FileKind::regular)
        database.problem = "it is no regular file";
    else if (info.size > 0)
        readDatabase(path, database);
    return database;
}

Json rootsJson(const RootFolders& roots, const CStringArray& unfinished)
{
    Json list = Json::array();
    RootFolders all = roots;
    for (const CString& begun : unfinished)
        all.add(begun, CQoPathInfo::audioIsMusic);
    for (const CString& folder : all.folders())
    {
        CStringArray one;
        one.Add(folder);
        const auto problems = host::checkRoots(one, Session::databasePath());
        Json root;
        putPath(root, "path", folder);
        root["type"] = RootFolders::kindName(all.kind(folder));
        root["unfinished"] =
            std::any_of(unfinished.begin(),
                        unfinished.end(),
                        [&folder](const CString& begun) { return begun == folder; });
        root["away"] = problems.empty() ? Json() : Json(problems[0].cause);
        list.push_back(root);
    }
    return list;
}

Json statusJson(const Database& database, const RootFolders& roots)
{
    const Store store = lookAtStore();
    Json object;
    putPath(object, "data", Session::folder());
    putPath(object, "database", Session::databasePath());
    object["databaseExists"] = database.exists;
    object["databaseProblem"] = database.problem.empty() ? Json() : Json(database.problem);
    object["databaseVersion"] = database.version;
    object["databaseSize"] = database.size;
    object["files"] = database.files;
    object["scanned"] =
        isoTime(database.scanned).empty() ? Json() : Json(isoTime(database.scanned));
    object["changed"] =
        isoTime(database.changed).empty() ? Json() : Json(isoTime(database.changed));
    object["unfinishedScan"] = !store.unfinishedRoots.IsEmpty();
    object["roots"] = rootsJson(roots, store.unfinishedRoots);
    object["storeProblem"] = store.problem.empty() ? Json() : Json(store.problem);
    object["pendingEdits"] = store.edited;
    object["pendingEditsAway"] = store.editedAway;
    object["snapshots"] = host::Snapshots(Session::databasePath()).list().GetSize();
    putPath(object, "log", CQoPaths::getLogDir());
    object["traceLevel"] = toUtf8(CQoSettings::get(CQoSettings::TraceLevel));
    object["sendUsageStatistics"] = CQoSettings::getBool(CQoSettings::SendUsageStatistics);
    return object;
}

std::string databaseText(const Database& database)
{
    if (!database.exists)
        return "  (none yet)";
    return "  (" + sizeText(database.size) +
           (database.version.empty() ? "" : ", version " + database.version) + ")" +
           (database.problem.empty() ? "" : "\n            " + database.problem);
}

std::string editsText(const Json& object)
{
    if (!object["storeProblem"].is_null())
        return object["storeProblem"];
    const auto away = object["pendingEditsAway"].get<std::int64_t>();
    return countText(object["pendingEdits"].get<std::int64_t>(), "file") + " with tags to write" +
           (away == 0 ? ""
                      : ", and " + std::to_string(away) + " that cannot be found: \"qo tag ls\"");
}

std::string statusText(const Json& object, const Database& database)
{
    constexpr std::size_t width = 12;
    const auto row = [](const std::string& name, const std::string& value)
    { return padded(name, width) + value + "\n"; };
    std::string text = row("data", object["data"]);
    text += row("database", object["database"].get<std::string>() + databaseText(database));
    text += row("files", std::to_string(database.files));
    text += row("scanned",
                object["unfinishedScan"].get<bool>()
                    ? "not to the end: \"qo scan\" goes on with the first scan"
                : object["scanned"].is_null() ? "never"
                                              : localTimeText(database.scanned));
    text += row("changed", localTimeText(database.changed));
    std::string name = "roots";
    for (const Json& root : object["roots"])
    {
        const std::string away =
            root["away"].is_null() ? "" : "  (away: " + root["away"].get<std::string>() + ")";
        const char* const unfinished =
            root["unfinished"].get<bool>() ? "  (not scanned to the end)" : "";
        text += row(name,
                    root["path"].get<std::string>() + "  (" + root["type"].get<std::string>() +
                        ")" + away + unfinished);
        name.clear();
    }
    if (object["roots"].empty())
        text += row(name, "none yet: qo scan DIR");
    text += row("edits", editsText(object));
    text += row("snapshots", std::to_string(object["snapshots"].get<int>()));
    text += row("log",
                object["log"].get<std::string>() + "  (level " +
                    object["traceLevel"].get<std::string>() + ")");
    text += row("statistics",
                object["sendUsageStatistics"].get<bool>() ? "counted in usage.json, never sent"
                                                          : "never sent");
    return text;
}

ExitCode status(CommandLine& line)
{
    const auto session = openKernel(line, KernelUse::look);
    session->kernel().run(
        [&line]
        {
            Database database = lookAtDatabase(Session::databasePath());
            const RootFolders roots;
            // A first scan that was interrupted before it saved anything leaves this.
            if (database.files == 0 && roots.folders().IsEmpty())
                database.scanned = FILETIME();
            const Json object = statusJson(database, roots);
            if (line.json)
                line.out.line(dump(object));
            else
                line.out.write(statusText(object, database));
        });
    return ExitCode::done;
}
} // namespace

void setUpStatus(CommandLine& line, CLI::App& command)
{
    line.setAction(command, [&line] { return status(line); });
}
} // namespace qo::cli
