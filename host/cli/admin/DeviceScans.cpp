#include "cli/admin/DeviceScans.h"

#include "cli/KernelCommand.h"
#include "cli/places/FarScanCommand.h"
#include "cli/shown/Text.h"
#include "core/base/Json.h"
#include "core/roots/RootGuard.h"
#include "devices/known/Devices.h"

namespace qo::cli
{
namespace
{
using host::Device;

void printAway(CommandLine& line, const Device& device, const CString& database)
{
    const std::int64_t files = host::countFiles(database, device.collection());
    if (line.json)
        return line.out.line(
            host::dump({{"device", device.name}, {"connected", false}, {"files", files}}));
    line.note("the device " + device.name +
              (device.state == Device::State::inRoots ? " is not scanned as one, since a root "
                                                        "folder lies on it or holds it: "
                                                      : " is away: ") +
              countText(files, "file") + " of it stay in the collection");
}
} // namespace

ExitCode scanDevices(CommandLine& line, host::Session& session, const CString& trial, bool isDeep)
{
    if (!session.kernel().run([] { return host::hasAdoptedDevices(); }))
        return ExitCode::done;
    const CString database = trial.IsEmpty() ? host::Session::databasePath() : trial;
    bool hasFailed = false;
    const auto scanAll = [&](host::ProgressReporter& progress)
    {
        // Both collections would share artists and albums, and nobody looks at the own one again.
        CQoCollection::m_ownCollection.clearCollection(&progress);
        const host::Devices devices(host::Devices::Scope::adopted);
        for (const Device& device : devices.adopted())
        {
            if (!device.isPresent())
            {
                printAway(line, device, database);
                continue;
            }
            try
            {
                const host::FarScanReport report =
                    host::scanFar(session, device.farCollection(), database, isDeep, progress);
                printFarScan(line, "device", device.name, report);
                hasFailed = hasFailed || !report.remarks.empty();
            }
            catch (const HostError& error)
            {
                if (error.code() == ExitCode::interrupted)
                    throw;
                hasFailed = true;
                CommandLine::complain(error.what());
            }
        }
    };
    runShown(line, session, scanAll);
    return hasFailed ? ExitCode::partly : ExitCode::done;
}
} // namespace qo::cli
