#include "cli/places/FarPlace.h"

#include "core/base/HostFiles.h"
#include "plugins/base/PluginFailure.h"

#include <algorithm>

namespace qo::cli
{
CString needPlugin(const std::string& typed)
{
    boost::shared_ptr<IPlugin> plugin;
    if (!CQoPluginManager::getPlugin(fromUtf8(typed), plugin))
        throw HostError(ExitCode::notFound,
                        "there is no plug-in \"" + typed + "\"; \"qo plugin ls\" lists them");
    return plugin->GetId();
}

CString needFolderPlugin(const std::string& typed)
{
    const CString id = needPlugin(typed);
    if (!CQoPluginManager::isPhysicalBrowsePlugin(id))
        throw HostError(ExitCode::usage, "the plug-in " + toUtf8(id) + " has no folders");
    return id;
}

CQoCollPath farPath(const CString& plugin, const std::string& typed)
{
    CQoCollPath path = CQoPluginManager::createPath(plugin);
    // Points and doubled slashes mean what they mean on a disk.
    const std::string plain = host::absolutePath("/" + typed);
    for (std::size_t start = 1; start < plain.size();)
    {
        const std::size_t end = std::min(plain.find('/', start), plain.size());
        path = path.child(farComponent(fromUtf8(plain.substr(start, end - start))));
        start = end + 1;
    }
    return path;
}

CQoCollPath farPlace(const std::string& typed)
{
    const std::size_t slash = std::min(typed.find('/'), typed.size());
    return farPath(needFolderPlugin(typed.substr(0, slash)), typed.substr(slash));
}

std::string shownFar(const CStringArray& components)
{
    std::string text;
    for (const CString& component : components)
        text += (text.empty() ? "" : "/") + toUtf8(farNameOf(component));
    return text;
}

std::string shownFar(const CQoCollPath& path)
{
    return shownFar(path.getComponents());
}

std::string shownPlace(const CQoCollPath& path)
{
    return toUtf8(path.getDevice()) + "/" + shownFar(path);
}

std::string pluginCause()
{
    const std::string cause = host::plainWords(host::takePluginFailure());
    return cause.empty() ? "the plug-in gave no cause" : cause;
}

void failFar(const std::string& what)
{
    throw HostError(ExitCode::failed, what + ": " + pluginCause());
}

boost::shared_ptr<IPhysicalResult> needEntry(const CQoCollPath& path, IQoProgress& progress)
{
    boost::shared_ptr<IPhysicalResult> entry;
    host::takePluginFailure();
    if (CQoPluginManager::getPathResultFromPhysicalPlugin(path, &progress, entry))
        return entry;
    stopIfCancelled(progress);
    const CString cause = host::takePluginFailure();
    if (cause.IsEmpty())
        throw HostError(ExitCode::notFound, "there is no " + shownPlace(path));
    throw HostError(ExitCode::failed,
                    shownPlace(path) + " cannot be looked up: " + host::plainWords(cause));
}

bool listBelow(CQoPluginManager::EPluginItemType type,
               const CQoCollPath& path,
               const boost::shared_ptr<IPhysicalResult>& folder,
               int depth,
               IQoProgress& progress,
               QoFileDbItemArray& records)
{
    boost::shared_ptr<IPhysicalBrowseWrapper> browse;
    // Without a way to fetch bytes no tag is read.
    return CQoPluginManager::getPhysicalBrowseFuncFromPlugin(path.getDevice(), browse) &&
           CQoPluginManager::getFilesFromPhysicalPlugin(
               type, browse, {}, path, folder, depth, &progress, records);
}

void stopIfCancelled(IQoProgress& progress)
{
    if (progress.isCanceled())
        throw HostError(ExitCode::interrupted, "interrupted");
}
} // namespace qo::cli
