#include "core/search/SearchResults.h"

#include "core/base/HostError.h"
#include "core/roots/StoredRoots.h"
#include "core/session/Session.h"

#include <QoKernel/Collection.h>

#include <algorithm>

namespace qo::host
{
SearchResults::SearchResults()
{
    read();
}

void SearchResults::read()
{
    m_results.clear();
    m_byText.clear();
    if (!isCollection(Session::databasePath()))
        return; // asking the kernel would make a database
    m_collection.load(Session::databasePath());
    for (const SearchResultPtr& each : m_collection.getSearchResults())
        m_results.push_back(each);
    std::ranges::sort(
        m_results, {}, [](const SearchResultPtr& each) { return each->getDbItem()->id; });
    for (const SearchResultPtr& each : m_results)
        m_byText.emplace(each->getXML(), each);
}

SearchResultPtr SearchResults::need(int id) const
{
    const auto found = std::ranges::find_if(
        m_results, [id](const SearchResultPtr& each) { return each->getDbItem()->id == id; });
    if (found == m_results.end())
        throw HostError(ExitCode::notFound,
                        "no search result has the number " + std::to_string(id) +
                            "; \"qo search ls\" lists them");
    return *found;
}

std::vector<SearchResultPtr> SearchResults::keep(const CString& plugin, const FoundTracks& tracks)
{
    std::vector<CSearchResultDraggableObject> objects;
    std::vector<const ITrackResult*> added;
    for (const auto& track : tracks)
    {
        // An entry without a result is one that is about to be kept.
        if (!m_byText.try_emplace(CQoPluginManager::trackText(plugin, *track)).second)
            continue;
        objects.push_back(CMpSearchResultUtils::makeDraggable(plugin, *track));
        added.push_back(track.get());
    }
    const auto results = m_collection.addSearchResultFiles(objects);
    for (int i = 0; i < results.GetSize(); ++i)
    {
        const ITrackResult& track = *added[static_cast<std::size_t>(i)];
        QoFileDbItem& record = *results[i]->getDbItem();
        record.album = track.GetAlbum();
        record.size = track.GetSize();
        record.duration = track.GetDuration();
        record.dbState = dbState::modified;
        m_results.push_back(results[i]);
        m_byText[results[i]->getXML()] = results[i];
    }
    save();
    std::vector<SearchResultPtr> kept;
    for (const auto& track : tracks)
        kept.push_back(m_byText.at(CQoPluginManager::trackText(plugin, *track)));
    return kept;
}

std::vector<SearchResultPtr> SearchResults::unused()
{
    m_collection.clearUnusedLinks();
    std::vector<SearchResultPtr> list;
    for (const SearchResultPtr& each : m_results)
    {
        if (each->getDbItem()->dbState != dbState::deleted)
            continue;
        each->getDbItem()->dbState = dbState::unchanged;
        list.push_back(each);
    }
    return list;
}

void SearchResults::forget(const std::vector<SearchResultPtr>& results)
{
    for (SearchResultPtr each : results)
        m_collection.deleteSearchResultFile(each);
    save();
    read();
}

void SearchResults::forgetUnusedOf(const CString& plugin)
{
    if (m_results.empty())
        return; // there may be no database either
    std::vector<SearchResultPtr> results = unused();
    std::erase_if(results,
                  [&](const SearchResultPtr& each)
                  { return pluginOf(*each).CompareNoCase(plugin) != 0; });
    if (!results.empty())
        forget(results);
}

void SearchResults::save()
{
    m_collection.saveDbChanges();
    // The kernel's answer is in the records alone: those that are saved count as unchanged.
    const bool isSaved =
        std::ranges::all_of(m_results,
                            [](const SearchResultPtr& each)
                            { return each->getDbItem()->dbState == dbState::unchanged; });
    if (!isSaved)
        throw HostError(ExitCode::failed,
                        "the search results cannot be saved in " + toUtf8(Session::databasePath()) +
                            "; \"qo log\" tells why");
}

CString pluginOf(const CHDSearchResult& result)
{
    CString plugin;
    CString text;
    CQoPluginManager::splitTrackText(result.getXML(), plugin, text);
    return plugin;
}

boost::shared_ptr<ITrackResult> needTrack(const CHDSearchResult& result)
{
    CString plugin;
    CString text;
    boost::shared_ptr<IDownloadWrapper> download;
    CQoPluginManager::splitTrackText(result.getXML(), plugin, text);
    const std::string title = "\"" + toUtf8(result.getTitle()) + "\"";
    if (!CQoPluginManager::existPlugin(plugin) ||
        !CQoPluginManager::getDownloadFuncFromPlugin(plugin, download))
        throw HostError(ExitCode::failed,
                        "the plug-in \"" + toUtf8(plugin) + "\", which found " + title +
                            ", is gone");
    const boost::shared_ptr<ITrackResult> track = download->GetTrack(text);
    if (!track)
        throw HostError(ExitCode::failed, toUtf8(plugin) + " no longer knows " + title);
    return track;
}
} // namespace qo::host
