#include "places/ScannedPlace.h"

#include "core/base/HostError.h"
#include "core/share/Shares.h"
#include "devices/known/Devices.h"
#include "plugins/configured/ConfiguredPlugins.h"

#include <vector>

namespace qo::host
{
namespace
{
struct Found
{
    FarCollection collection;
    std::string scan; ///< the command that scans it
};

std::vector<Found> placesOf(Session& session, const std::string& typed)
{
    std::vector<Found> found;
    const CString name = fromUtf8(typed);
    for (const PluginEntry& entry : pluginEntries(session.settings()))
    {
        if (entry.name.CompareNoCase(name) == 0 && CQoPluginManager::existPlugin(entry.name))
            found.push_back({pluginCollection(entry.name), "qo plugin scan " + toUtf8(entry.name)});
    }
    for (const Share& share : Shares().all())
    {
        if (!share.isOwn && share.peer.CompareNoCase(name) == 0)
            found.push_back({share.farCollection(), "qo share scan " + toUtf8(share.peer)});
    }
    return found;
}
} // namespace

FarCollection scannedPlace(Session& session, const std::string& typed)
{
    std::vector<Found> found = placesOf(session, typed);
    try
    {
        if (found.empty() || hasAdoptedDevices())
        {
            const Device device = Devices(Devices::Scope::adopted).need(typed);
            if (found.empty() && !device.info->m_configured)
                throw HostError(ExitCode::usage,
                                device.name +
                                    " is not in the collection: \"qo device adopt\" takes it in");
            if (device.info->m_configured)
                found.push_back({device.farCollection(), "qo scan"});
        }
    }
    catch (const HostError& error)
    {
        if (error.code() != ExitCode::notFound)
            throw;
    }
    if (found.empty())
        throw HostError(ExitCode::notFound,
                        "there is no device, storage service or friend \"" + typed +
                            "\"; \"qo device\", \"qo plugin\" and \"qo share ls\" list them");
    if (found.size() > 1)
        throw HostError(ExitCode::usage,
                        "several places are called " + typed +
                            ": a service gets another name with \"qo plugin login\", and a "
                            "friend's share with \"qo share accept --as\"");
    const Found& place = found.front();
    if (!countFar(Session::databasePath(), place.collection.id))
        throw HostError(ExitCode::notFound,
                        "the files of " + place.collection.name + " are not known yet: \"" +
                            place.scan + "\" looks through them");
    return place.collection;
}
} // namespace qo::host
