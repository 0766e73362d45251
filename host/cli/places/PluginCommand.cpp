#include "cli/Interrupt.h"
#include "cli/KernelCommand.h"
#include "cli/places/FarReport.h"
#include "cli/places/FarScanCommand.h"
#include "cli/places/PasswordInput.h"
#include "cli/places/PluginPlace.h"
#include "cli/places/SortedSendings.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "far/FarEnds.h"
#include "plugins/base/PluginFailure.h"
#include "plugins/configured/ConfiguredPlugins.h"

#include <boost/make_shared.hpp>

#include <algorithm>

namespace qo::cli
{
namespace
{
using host::PluginEntry;
using host::Session;

struct PluginOptions
{
    std::string name;
    std::string folder;
    std::string webdav;
    std::string subsonic;
    std::string user;
    std::string keepIn;                     ///< "desktop" or "file"; "" for the best of them
    std::optional<std::string> authorities; ///< "" for those of the system again
    std::optional<std::string> music;
    std::optional<std::string> movies;
    UploadOptions uploads;
    bool isLong = false;
    bool showsRoom = false;
    bool readsAll = false;
};

std::string shownAt(const PluginEntry& entry)
{
    return entry.kind == u"folder" ? host::shownPath(entry.place) : toUtf8(entry.place);
}

/// "5.0 GiB of 20.0 GiB free"; "" where the service does not say.
std::string roomText(const CString& id, Json& record)
{
    std::int64_t total = 0;
    std::int64_t free = 0;
    bool unlimited = false;
    const bool isKnown = CQoPluginManager::getPluginFillStateInfo(id, total, free, unlimited);
    record["total"] = isKnown && !unlimited ? Json(total) : Json();
    record["free"] = isKnown && !unlimited ? Json(free) : Json();
    if (!isKnown)
        return "";
    return unlimited ? "no limit" : sizeText(free) + " of " + sizeText(total) + " free";
}

ExitCode listPlugins(CommandLine& line, const PluginOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    Listing listing(line,
                    options.isLong,
                    {"name",
                     "kind",
                     "place",
                     "user",
                     "music",
                     "movies",
                     "musicRule",
                     "moviesRule",
                     "total",
                     "free"},
                    {Listing::Column::name,
                     Listing::Column::text,
                     Listing::Column::text,
                     Listing::Column::text,
                     Listing::Column::path});
    session->kernel().run(
        [&]
        {
            for (const PluginEntry& entry : host::pluginEntries(session->settings()))
            {
                CString user;
                CString password;
                const PassingSecret secret(password);
                CQoPluginManager::getPluginCredentials(entry.name, user, password);
                Json record;
                record["name"] = toUtf8(entry.name);
                record["kind"] = toUtf8(entry.kind);
                record["place"] = shownAt(entry);
                record["user"] = toUtf8(user);
                record["music"] =
                    shownPluginFolder(CQoPluginManager::getPluginMusicPath(entry.name));
                record["movies"] =
                    shownPluginFolder(CQoPluginManager::getPluginMoviesPath(entry.name));
                CString musicRule;
                CString moviesRule;
                CQoPluginManager::getPluginUploadRules(entry.name, musicRule, moviesRule);
                record["musicRule"] = toUtf8(musicRule);
                record["moviesRule"] = toUtf8(moviesRule);
                record["total"] = Json();
                record["free"] = Json();
                const std::string room =
                    options.showsRoom ? roomText(entry.name, record) : std::string();
                if (listing.isForPeople())
                    listing.addCells({oneLine(entry.name),
                                      oneLine(entry.kind),
                                      oneLine(user),
                                      room,
                                      harmless(shownAt(entry))});
                else
                    listing.addRecord(record);
            }
        });
    listing.finish();
    return ExitCode::done;
}

/// What was typed for a login, with what is known from the last one of that name.
PluginEntry typedEntry(Session& session, const PluginOptions& options)
{
    PluginEntry entry = {fromUtf8(options.name), {}, {}};
    for (const PluginEntry& known : host::pluginEntries(session.settings()))
    {
        if (known.name.CompareNoCase(entry.name) == 0)
            entry = known;
    }
    const bool isName = isUtf8(options.name) && !entry.name.IsEmpty() &&
                        entry.name == farEntryName(entry.name) &&
                        options.name.find_first_of("/:*?") == std::string::npos;
    if (!isName)
        throw HostError(ExitCode::usage,
                        "a plug-in's name is a word or more, without slashes and colons");
    const PluginEntry former = entry;
    if (!options.folder.empty())
    {
        entry.kind = u"folder";
        entry.place = fromSystemPath(host::existingFolder(options.folder));
    }
    else if (!options.webdav.empty())
    {
        entry.kind = u"webdav";
        entry.place = fromUtf8(options.webdav);
    }
    else if (!options.subsonic.empty())
    {
        entry.kind = u"subsonic";
        entry.place = fromUtf8(options.subsonic);
    }
    // Another server has nothing to do with the authorities of the former one.
    if (entry.kind != former.kind || entry.place != former.place)
        entry.authorities.Empty();
    if (options.authorities && options.authorities->empty())
        entry.authorities.Empty();
    else if (options.authorities)
    {
        entry.authorities = fromSystemPath(host::absolutePath(*options.authorities));
        host::farEnds().needCertificates(entry.authorities);
        if (!entry.kind.IsEmpty() && entry.kind != u"webdav")
            throw HostError(ExitCode::usage, "--ca goes with --webdav");
    }
    if (entry.kind.IsEmpty())
        throw HostError(ExitCode::usage,
                        "say where it is: --webdav URL, --subsonic URL for a music server, or "
                        "--folder DIR for any mounted folder");
    return entry;
}

/// Throws HostError unless the service lets the user in and its root can be listed.
void tryPlugin(const boost::shared_ptr<host::StoredPlugin>& plugin,
               const CString& user,
               const CString& password)
{
    const auto trial = boost::make_shared<host::PluginList>();
    trial->add(plugin);
    CQoPluginManager::setPluginsManager(trial);
    plugin->SetCredentials(user, password);
    const CString& id = plugin->GetId();
    const std::string what = "the login to " + toUtf8(id) + " failed";
    switch (CQoPluginManager::checkPluginCredentials(id))
    {
    case CQoPluginManager::LC_AccountExpired:
        throw HostError(ExitCode::failed, what + ": the account has expired");
    case CQoPluginManager::LC_WrongServerPath:
        throw HostError(ExitCode::failed, what + ": there is no such service at that address");
    case CQoPluginManager::LC_Failed:
        failPlugin(what);
    case CQoPluginManager::LC_Ok:
        break;
    }
    if (const boost::shared_ptr<ILogicalBrowseWrapper> tracks = plugin->GetLogicalBrowse())
    {
        PluginResultArray artists;
        if (!CQoPluginManager::getResultsSync(tracks->GetArtists(), artists, nullptr))
            failPlugin(what);
        return;
    }
    CString music;
    CString movies;
    bool foundMusic = false;
    bool foundMovies = false;
    host::takePluginFailure();
    CQoPluginManager::detectMusicAndMoviesDirs(id, music, movies, foundMusic, foundMovies);
    const CString cause = host::takePluginFailure();
    if (!cause.IsEmpty())
        throw HostError(ExitCode::failed, what + ": " + host::plainWords(cause));
    plugin->SetMusicPath(music);
    plugin->SetMoviesPath(movies);
}

/// How a password is kept or removed while the user may interrupt that.
host::PasswordUse passwordUse(const PluginOptions& options)
{
    host::PasswordUse use;
    if (!options.keepIn.empty())
        use.place =
            options.keepIn == "file" ? host::PasswordPlace::file : host::PasswordPlace::desktop;
    use.isCanceled = wasInterrupted;
    return use;
}

ExitCode logIn(CommandLine& line, const PluginOptions& options)
{
    const auto session = openKernel(line, KernelUse::change);
    session->kernel().run(
        [&]
        {
            const PluginEntry entry = typedEntry(*session, options);
            CString user;
            CString password;
            const PassingSecret secret(password);
            if (CQoPluginManager::existPlugin(entry.name))
                CQoPluginManager::getPluginCredentials(entry.name, user, password);
            if (!options.user.empty())
                user = fromUtf8(options.user);
            const auto plugin = host::makePlugin(entry, nullptr);
            const boost::shared_ptr<ILoginWrapper> login = plugin->GetLogin();
            if (login && !login->CanTryCredentials(user, password))
                throw HostError(ExitCode::usage, "say who you are there: --user USER");
            if (login && !user.IsEmpty())
                password = readPassword("Password of " + harmless(toUtf8(user)) + ":").text();
            if (password.IsEmpty() && !options.keepIn.empty())
                throw HostError(ExitCode::usage, "there is no password to keep: say --user USER");
            tryPlugin(plugin, user, password);
            const LoopGuard guard;
            if (!line.dryRun)
                host::enterPlugin(*session, entry, *plugin, passwordUse(options));
            if (line.json)
                line.out.line(host::dump({{"name", toUtf8(entry.name)},
                                          {"kind", toUtf8(entry.kind)},
                                          {"place", shownAt(entry)}}));
            else
                line.note((line.dryRun ? "would have logged in to " : "logged in to ") +
                          toUtf8(entry.name) + " (" + shownAt(entry) + ")");
        });
    session->saveSettings();
    return ExitCode::done;
}

ExitCode logOut(CommandLine& line, const PluginOptions& options)
{
    const auto session = openKernel(line, KernelUse::change);
    session->kernel().run(
        [&]
        {
            // By the list of the settings, so that one which cannot be made any more can go, too.
            const auto entries = host::pluginEntries(session->settings());
            const CString typed = fromUtf8(options.name);
            const auto entry = std::ranges::find_if(
                entries,
                [&](const PluginEntry& each) { return each.name.CompareNoCase(typed) == 0; });
            const CString name = entry == entries.end() ? needPlugin(options.name) : entry->name;
            if (!line.dryRun)
            {
                const LoopGuard guard;
                host::removePlugin(*session, name, passwordUse(options));
                host::dropPluginCollections(name);
            }
            tellOf(line,
                   toUtf8(name),
                   (line.dryRun ? "would have forgotten " : "forgotten: ") + toUtf8(name) +
                       "; its files stay where they are");
        });
    session->saveSettings();
    return ExitCode::done;
}

/// Looks through what the service has, into a collection of its own.
ExitCode scan(CommandLine& line, const PluginOptions& options)
{
    return scanPlace(line,
                     {"plugin",
                      [&](Session&) { return host::pluginCollection(needPlugin(options.name)); },
                      [] { return host::plainWords(host::takePluginFailure()); },
                      {},
                      options.readsAll});
}

/// The typed folder as plug-ins keep it. Throws HostError when there is none.
CString chosenFolder(FarPlace& place, const std::string& typed, IQoProgress& progress)
{
    const CQoCollPath path = place.path(typed);
    if (!path.isEmpty() && !place.need(path, progress).isFolder)
        throw HostError(ExitCode::usage, place.shownWhole(path) + " is no folder");
    return path.getComponents().join(u"\\");
}

ExitCode setFolders(CommandLine& line, const PluginOptions& options)
{
    if (!options.music && !options.movies && !options.uploads.isGiven())
        throw HostError(ExitCode::usage,
                        "say what to set: --music FOLDER, --movies FOLDER, --music-rule RULE or "
                        "--movies-rule RULE");
    const auto session = openKernel(line, KernelUse::change);
    runShown(
        line,
        *session,
        [&](host::ProgressReporter& progress)
        {
            const auto place = needPluginPlace(options.name);
            const CString& id = place->root().getDevice();
            if (CQoPluginManager::isLogicalBrowsePlugin(id))
                throw HostError(ExitCode::usage,
                                place->name() + " has artists and albums, and no folders to "
                                                "choose from");
            if (options.music)
                CQoPluginManager::setPluginMusicPath(
                    id, chosenFolder(*place, *options.music, progress));
            if (options.movies)
                CQoPluginManager::setPluginMoviesPath(
                    id, chosenFolder(*place, *options.movies, progress));
            if (options.uploads.music)
                CQoPluginManager::setPluginMusicUploadRule(id, keptRule(*options.uploads.music));
            if (options.uploads.movies)
                CQoPluginManager::setPluginMoviesUploadRule(id, keptRule(*options.uploads.movies));
            if (!CQoPluginManager::savePluginSettings(id))
                failPlugin("the settings of " + options.name + " cannot be saved");
            tellOf(line,
                   toUtf8(id),
                   (line.dryRun ? "would have set the folders of " : "set: ") + toUtf8(id));
        });
    session->saveSettings();
    return ExitCode::done;
}

std::unique_ptr<FarPlace> openPlugin(Session&, const std::string& typed, std::string* folder)
{
    const std::size_t slash = folder ? std::min(typed.find('/'), typed.size()) : typed.size();
    if (folder)
        *folder = typed.substr(slash);
    return needPluginPlace(typed.substr(0, slash));
}
} // namespace

void setUpPlugin(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<PluginOptions>();
    const auto add = [&](const char* name, const char* help, auto run)
    {
        return line.addCommand(
            command, name, help, [&line, options, run] { return run(line, *options); });
    };
    line.setAction(command, [&line, options] { return listPlugins(line, *options); });
    command.require_subcommand(0, 1);
    CLI::App* const ls = add("ls", "List the storage services that you use", listPlugins);
    ls->add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
    ls->add_flag("--room", options->showsRoom, "Ask each how much room is left");

    CLI::App* const login = add("login", "Use a storage service, or log in to it again", logIn);
    addArgument(*login, "NAME", options->name, "What you call it")->required();
    addArgument(*login, "--folder", options->folder, "It is a folder that is mounted here")
        ->type_name("DIR");
    CLI::Option* const webdav =
        addArgument(*login, "--webdav", options->webdav, "It is a WebDAV server, at this address")
            ->type_name("URL");
    webdav->excludes(login->get_option("--folder"));
    addArgument(*login,
                "--subsonic",
                options->subsonic,
                "It is a music server that speaks the Subsonic interface, at this address")
        ->type_name("URL")
        ->excludes(webdav)
        ->excludes(login->get_option("--folder"));
    addArgument(*login, "--user", options->user, "The user there; the password is asked for")
        ->type_name("USER");

    addArgument(*login,
                "--keep-in",
                options->keepIn,
                "Where its password is kept: in the desktop's store, or in a file as plain text")
        ->type_name("PLACE")
        ->check(CLI::IsMember({"desktop", "file"}));
    addOptional(*login,
                "--ca",
                options->authorities,
                "The authorities that sign its certificate, in place of the system's (PEM)")
        ->type_name("FILE");

    CLI::App* const logout = add("logout", "Forget a service with its password", logOut);
    CLI::App* const set = add("set", "Choose the folders of a service", setFolders);
    CLI::App* const look = add("scan", "Look through a service, for --on NAME", scan);
    look->add_flag("--deep", options->readsAll, "Read every tag again, not only what changed");
    for (CLI::App* const each : {logout, set, look})
        addArgument(*each, "NAME", options->name, "The service")->required();
    addOptional(*set, "--music", options->music, "Where its music is")->type_name("FOLDER");
    addOptional(*set, "--movies", options->movies, "Where its videos are")->type_name("FOLDER");
    addUploadOptions(*set, options->uploads);
    const PlaceKind kind = {"service", "get", "put", openPlugin};
    addFarBrowse(line, command, kind);
    addFarRemoval(line, command, kind);
    addFarTransfers(line, command, kind);
}
} // namespace qo::cli
