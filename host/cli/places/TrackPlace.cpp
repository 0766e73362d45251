#include "cli/places/TrackPlace.h"

#include "cli/places/PluginPlace.h"
#include "core/base/HostFiles.h"
#include "plugins/base/PluginFailure.h"

#include <QoKernel/Collection.h>

namespace qo::cli
{
namespace
{
constexpr int trackLevel = 3; // the number of components of a track: artist, album, track

// A slash in the name of an artist would end it, and ".." would lead up. Both are shown, and typed,
// as signs that look alike; where such a sign is part of the name itself, a quote stands before it.
struct LookAlike
{
    std::string_view plain;
    std::string_view shown;
};
constexpr LookAlike slash = {"/", "\uFF0F"};
constexpr LookAlike dot = {".", "\uFF0E"};
constexpr LookAlike dots = {"..", "\uFF0E\uFF0E"};
constexpr std::string_view quote = "\u201B";

std::string replaced(std::string text, std::string_view from, const std::string& to)
{
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

std::string shownName(const std::string& name)
{
    for (const LookAlike& each : {dot, dots})
    {
        if (name == each.plain)
            return std::string(each.shown);
    }
    const std::string shown(slash.shown);
    return replaced(replaced(name, shown, std::string(quote) + shown), slash.plain, shown);
}

std::string plainName(const std::string& typed)
{
    for (const LookAlike& each : {dot, dots})
    {
        if (typed == each.shown)
            return std::string(each.plain);
    }
    std::string name;
    for (std::size_t at = 0; at < typed.size();)
    {
        const std::string_view rest = std::string_view(typed).substr(at);
        const bool isQuoted =
            rest.starts_with(quote) && rest.substr(quote.size()).starts_with(slash.shown);
        if (isQuoted || rest.starts_with(slash.shown))
        {
            name += isQuoted ? slash.shown : slash.plain;
            at += slash.shown.size() + (isQuoted ? quote.size() : 0);
            continue;
        }
        name += typed[at++];
    }
    return name;
}

CQoCollPath trackPath(const CQoCollPath& album, const CString& title, const CString& extension)
{
    return CQoCollPath::makeTrack(
        album, album.getFirst(), album.getSecond(), farComponent(title), farComponent(extension));
}

/// The folder of an artist or album.
CQoCollPath folderIn(const CQoCollPath& above, const CString& name)
{
    const CString component = farComponent(name);
    return above.child(component.IsEmpty() ? CString(u" ") : component);
}

CQoCollPath pathIn(const CQoCollPath& folder, const IGenericResult& result)
{
    if (folder.getCount() == trackLevel - 1)
        return trackPath(folder, result.GetTitle(), result.GetExtension());
    return folderIn(folder, folder.isEmpty() ? result.GetArtist() : result.GetAlbum());
}
} // namespace

TrackPlace::TrackPlace(const CString& id) : FarPlace(toUtf8(id), CQoPluginManager::createPath(id))
{
    CQoPluginManager::getLogicalBrowseFuncFromPlugin(id, m_browse);
}

CQoCollPath TrackPlace::add(const boost::shared_ptr<ITrackResult>& track)
{
    const CQoCollPath album = folderIn(folderIn(root(), track->GetArtist()), track->GetAlbum());
    CString title = track->GetTitle();
    CQoCollPath path = trackPath(album, title, track->GetExtension());
    for (int number = 2; m_results.contains(path.toString()); ++number)
    {
        title.Format(u"%s (%d)", track->GetTitle(), number);
        path = trackPath(album, title, track->GetExtension());
    }
    m_results[path.toString()] = track;
    return path;
}

CString TrackPlace::componentOf(const std::string& name) const
{
    return farComponent(fromUtf8(plainName(name)));
}

std::string TrackPlace::nameOf(const CString& component) const
{
    return shownName(toUtf8(farNameOf(component)));
}

bool TrackPlace::find(const CQoCollPath& path, IQoProgress& progress, FarEntry& entry)
{
    PluginResultPtr found;
    if (!path.isEmpty() &&
        !CQoPluginManager::getPathResultFromLogicalPlugin(m_browse, path, &progress, found))
        return false;
    m_results[path.toString()] = found;
    const bool isTrack = path.getCount() == trackLevel;
    entry = {path.getLast(), !isTrack, isTrack ? found->GetSize() : 0};
    return true;
}

PluginOperationPtr TrackPlace::request(const CQoCollPath& folder,
                                       const PluginResultPtr& above) const
{
    if (folder.isEmpty())
        return m_browse->GetArtists();
    return folder.getCount() == 1 ? m_browse->GetAlbums(above) : m_browse->GetTracksForAlbum(above);
}

bool TrackPlace::list(const CQoCollPath& folder,
                      Items items,
                      int depth,
                      IQoProgress& progress,
                      QoFileDbItemArray& records)
{
    const PluginResultPtr above = m_results[folder.toString()];
    if (!above && !folder.isEmpty())
        return false;
    PluginResultArray results;
    if (!CQoPluginManager::getResultsSync(request(folder, above), results, &progress))
        return false;
    bool isComplete = true;
    for (const PluginResultPtr& each : results)
    {
        if (!each || progress.isCanceled())
            continue;
        const CQoCollPath path = pathIn(folder, *each);
        const bool isTrack = path.getCount() == trackLevel;
        m_results[path.toString()] = each;
        if (isTrack == (items == Items::files))
            addRecord(path, isTrack ? each->GetSize() : 0, records);
        if (!isTrack && depth > 1)
            isComplete = list(path, items, depth - 1, progress, records) && isComplete;
    }
    return isComplete && !progress.isCanceled();
}

std::string TrackPlace::takeCause()
{
    return host::plainWords(host::takePluginFailure());
}

std::string TrackPlace::fetch(const CQoCollPath& path,
                              std::int64_t,
                              const CString& local,
                              IQoProgress& progress)
{
    FarEntry entry;
    if (!m_results[path.toString()] && !find(path, progress, entry))
        return pluginCause();
    // As the service has it: its own tags say more than the names in the path.
    const auto item = CQoPluginManager::getDownloadItem(path, local, m_results[path.toString()]);
    return item && CQoPluginManager::runDownload(*item, &progress) ? "" : pluginCause();
}
} // namespace qo::cli
