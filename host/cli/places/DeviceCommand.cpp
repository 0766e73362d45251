#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/places/DevicePlace.h"
#include "cli/places/FarReport.h"
#include "cli/places/SortedSendings.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "core/base/SystemPath.h"
#include "core/roots/RootGuard.h"
#include "devices/known/Devices.h"
#include "far/FarEnds.h"

#include <filesystem>

namespace qo::cli
{
namespace
{
using host::Device;
using host::Devices;
using host::Session;

struct DeviceOptions
{
    std::string name;
    std::optional<std::string> music;
    std::optional<std::string> movies;
    UploadOptions uploads;
    bool isLong = false;
};

const char* stateName(const Device& device)
{
    switch (device.state)
    {
    case Device::State::present:
        return "present";
    case Device::State::away:
        return "away";
    case Device::State::inRoots:
        return "root folder";
    case Device::State::twin:
        return "same id";
    }
    return "";
}

/// "Music/Kino" for "Music\\Kino"; "" for none.
std::string shownFolder(const Device& device, const CString& folder)
{
    return device.isPresent() ? devicePlace(device)->shown(CStringArray::split(folder, u'\\'))
                              : host::shownPath(u"C:\\" + folder).substr(1);
}

/// False where nobody says how large it is.
bool sizesOf(const Device& device, std::int64_t& total, std::int64_t& free)
{
    if (device.isPortable())
    {
        CArray<CQoCollPath> paths;
        paths.Add(device.root());
        return device.isPresent() && CQoWPDManager::getDeviceFillStateInfo(paths, total, free);
    }
    std::error_code error;
    const auto space = std::filesystem::space(device.place, error);
    if (device.place.empty() || error)
        return false;
    total = static_cast<std::int64_t>(space.capacity);
    free = static_cast<std::int64_t>(space.available);
    return true;
}

Json recordOf(const Device& device)
{
    std::int64_t total = 0;
    std::int64_t free = 0;
    const bool hasSizes = sizesOf(device, total, free);
    Json record;
    record["name"] = device.name;
    record["kind"] = device.isPortable() ? "portable" : "disk";
    record["state"] = stateName(device);
    record["adopted"] = device.info->m_configured;
    putPath(record, "place", device.place);
    record["free"] = hasSizes ? Json(free) : Json();
    record["total"] = hasSizes ? Json(total) : Json();
    record["files"] = host::countFiles(Session::databasePath(), device.collection());
    record["music"] = shownFolder(device, device.info->m_musicPath);
    record["movies"] = shownFolder(device, device.info->m_moviesPath);
    record["musicRule"] = toUtf8(device.info->m_musicUploadRule);
    record["moviesRule"] = toUtf8(device.info->m_moviesUploadRule);
    record["id"] = toUtf8(device.info->m_id);
    return record;
}

std::string roomText(const Json& record)
{
    return record["total"].is_null()
               ? ""
               : sizeText(record["free"]) + " of " + sizeText(record["total"]) + " free";
}

ExitCode listDevices(CommandLine& line, const DeviceOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    using Column = Listing::Column;
    Listing listing(
        line,
        options.isLong,
        {"name",
         "kind",
         "state",
         "adopted",
         "place",
         "free",
         "total",
         "files",
         "music",
         "movies",
         "musicRule",
         "moviesRule",
         "id"},
        {Column::name, Column::text, Column::text, Column::text, Column::number, Column::path});
    session->kernel().run(
        [&]
        {
            const Devices devices;
            for (const Device& device : devices.all())
            {
                const Json record = recordOf(device);
                if (listing.isForPeople())
                    listing.addCells(
                        {harmless(device.name),
                         stateName(device),
                         device.info->m_configured ? "adopted" : "",
                         roomText(record),
                         device.info->m_configured ? countText(record["files"], "file") : "",
                         harmless(device.place)});
                else
                    listing.addRecord(record, device.place);
            }
        });
    listing.finish();
    return ExitCode::done;
}

ExitCode showDevice(CommandLine& line, const DeviceOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    const Json record =
        session->kernel().run([&] { return recordOf(Devices().need(options.name)); });
    if (line.json)
    {
        line.out.line(host::dump(record));
        return ExitCode::done;
    }
    constexpr std::size_t width = 11;
    for (const auto& [key, value] : record.items())
    {
        const std::string text = value.is_string()    ? value.get<std::string>()
                                 : value.is_null()    ? ""
                                 : value.is_boolean() ? (value.get<bool>() ? "yes" : "no")
                                 : key == "files"     ? std::to_string(value.get<std::int64_t>())
                                                      : sizeText(value);
        if (!text.empty())
            line.out.line(padded(key, width) + harmless(text));
    }
    return ExitCode::done;
}

/// The typed folder as the settings keep it. Throws HostError when there is none. It may be typed
/// as a path on the device, or by the folder in which the device is mounted.
CString
chosenFolder(const Device& device, FarPlace& place, const std::string& typed, IQoProgress& progress)
{
    const bool isWhole = !device.place.empty() && host::isBelow(typed, device.place);
    const CQoCollPath path = place.path(isWhole ? typed.substr(device.place.size()) : typed);
    if (!place.need(path, progress).isFolder)
        throw HostError(ExitCode::usage, place.shownWhole(path) + " is no folder");
    return path.getComponents().join(u"\\");
}

/// The folder that is called like music, where there is one alone and none that is called like
/// videos; else "". Relative to the device.
CString onlyMusicFolder(FarPlace& place, IQoProgress& progress)
{
    constexpr int depth = 2; // as far as the detection looks
    QoFileDbItemArray folders;
    (void)place.list(place.root(), FarPlace::Items::folders, depth, progress, folders);
    CStringArray names;
    for (const QoFileDbItemPtr& folder : folders)
        names.Add(folder->path);
    CStringArray music;
    CStringArray movies;
    CQoDeviceUtils::findMusicDirs(names, music, movies);
    CString only;
    for (const CString& path : music)
    {
        const bool isBelowAnother =
            std::any_of(music.begin(),
                        music.end(),
                        [&](const CString& other)
                        { return CQoCollPath(path).isSubPathOf(CQoCollPath(other)); });
        if (isBelowAnother)
            continue;
        if (!only.IsEmpty())
            return {};
        only = path;
    }
    return movies.IsEmpty() && !only.IsEmpty()
               ? CQoCollPath(only).relativeTo(place.root()).join(u"\\")
               : CString();
}

void chooseFolders(const Device& device, const DeviceOptions& options, IQoProgress& progress)
{
    const auto place = devicePlace(device);
    CString music;
    CString movies;
    if (options.music)
        music = chosenFolder(device, *place, *options.music, progress);
    if (options.movies)
        movies = chosenFolder(device, *place, *options.movies, progress);
    UsbDeviceInfoPtr info = device.info;
    bool foundMusic = false;
    bool foundMovies = false;
    if (!options.music && !options.movies)
    {
        device.manager().detectMusicAndMoviesDirs(info, foundMusic, foundMovies);
        music = info->m_musicPath;
        movies = info->m_moviesPath;
        // Without a pair of folders it gives the whole device for both.
        if (foundMusic && !foundMovies && music.IsEmpty() && movies.IsEmpty())
            music = onlyMusicFolder(*place, progress);
    }
    device.manager().setDevicePaths(info->m_id, music, movies, info->m_extraDirs);
}

void chooseRules(const Device& device, const UploadOptions& uploads)
{
    const UsbDeviceInfo& info = *device.info;
    const CString music = uploads.music ? keptRule(*uploads.music) : info.m_musicUploadRule;
    const CString movies = uploads.movies ? keptRule(*uploads.movies) : info.m_moviesUploadRule;
    device.manager().setDeviceUploadRules(info.m_id, music, movies);
}

ExitCode adopt(CommandLine& line, const DeviceOptions& options)
{
    const auto session = openKernel(line, KernelUse::change);
    runShown(line,
             *session,
             [&](host::ProgressReporter& progress)
             {
                 const Device device = Devices().needPresent(options.name);
                 chooseFolders(device, options, progress);
                 chooseRules(device, options.uploads);
                 device.manager().setDeviceConfigured(device.info->m_id);
                 if (line.json)
                     return line.out.line(host::dump(recordOf(device)));
                 std::string folders;
                 for (const CString& folder : device.folders())
                     folders += (folders.empty() ? "" : ", ") + host::shownPath(folder);
                 line.note((line.dryRun ? "would have adopted " : "adopted ") + device.name +
                           "; \"qo scan\" takes in what is in " + folders);
             });
    session->saveSettings();
    return ExitCode::done;
}

ExitCode forget(CommandLine& line, const DeviceOptions& options)
{
    const auto session = openKernel(line, KernelUse::change);
    session->kernel().run(
        [&]
        {
            const Device device = Devices().need(options.name);
            if (!device.info->m_configured)
                throw HostError(ExitCode::usage, device.name + " was not adopted");
            if (!line.dryRun)
            {
                host::dropFar(device.collection());
                device.manager().removeDevice(device.info->m_id);
            }
            tellOf(line,
                   device.name,
                   (line.dryRun ? "would have forgotten " : "forgotten: ") + device.name +
                       "; its files stay where they are");
        });
    session->saveSettings();
    return ExitCode::done;
}

ExitCode eject(CommandLine& line, const DeviceOptions& options)
{
    Device device;
    std::string data;
    {
        // No file of a session that is over is open on the device.
        const auto session = openKernel(line, KernelUse::look, false);
        device = session->kernel().run([&] { return Devices().need(options.name); });
        data = toSystemPath(Session::folder());
    }
    if (device.isPortable())
        throw HostError(ExitCode::usage,
                        device.name + " is no disk: it can be taken off when nothing is copied");
    if (device.source.empty())
        throw HostError(ExitCode::away, "the device " + device.name + " is not connected");
    if (host::isBelow(data, device.place))
        throw HostError(ExitCode::busy, "the data of qo itself lies on the device " + device.name);
    const std::string remark = line.dryRun ? std::string() : host::farEnds().ejectDisk(device);
    if (line.json)
        line.out.line(
            host::dump({{"name", device.name}, {"place", device.place}, {"remark", remark}}));
    else
        line.note((line.dryRun ? "would have ejected " : "ejected: ") + device.name +
                  (remark.empty() ? "" : "; it still has power: " + remark));
    return ExitCode::done;
}

std::unique_ptr<FarPlace> openDevice(Session&, const std::string& typed, std::string* folder)
{
    return devicePlace(Devices().needPresent(typed, folder));
}
} // namespace

void setUpDevice(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<DeviceOptions>();
    const auto add = [&](const char* name, const char* help, auto run)
    {
        return line.addCommand(
            command, name, help, [&line, options, run] { return run(line, *options); });
    };
    line.setAction(command, [&line, options] { return listDevices(line, *options); });
    command.require_subcommand(0, 1);
    add("ls", "List the devices that are connected or adopted", listDevices)
        ->add_flag("-l,--long", options->isLong, "Tabs between the columns, with their names");
    CLI::App* const adopted = add("adopt", "Take the music of a device into the collection", adopt);
    CLI::App* const forgotten = add("forget", "Take a device out of the collection", forget);
    CLI::App* const shown = add("info", "Say what is known of a device", showDevice);
    CLI::App* const ejected = add("eject", "Make a disk safe to take out", eject);
    for (CLI::App* const each : {adopted, forgotten, shown, ejected})
        addArgument(*each, "NAME", options->name, "The device, or where it is mounted")->required();
    addOptional(*adopted, "--music", options->music, "Where its music is")->type_name("FOLDER");
    addOptional(*adopted, "--movies", options->movies, "Where its videos are")->type_name("FOLDER");
    addUploadOptions(*adopted, options->uploads);
    const PlaceKind kind = {"device", "pull", "push", openDevice};
    addFarBrowse(line, command, kind);
    addFarTransfers(line, command, kind);
}
} // namespace qo::cli
