#pragma once

#include <QoKernel/Devices.h>
#include <QoKernel/Physical.h>
#include <QoKernel/Player.h>

#include <boost/smart_ptr/shared_ptr.hpp>

#include <unordered_map>
#include <vector>

namespace qo::host
{
using SearchResultPtr = boost::shared_ptr<CHDSearchResult>;
using FoundTracks = CArray<boost::shared_ptr<ITrackResult>>;

/// The tracks that searches found and that are kept in the collection's database. On the kernel's
/// thread.
class SearchResults
{
public:
    /// Reads them. Without a collection of this version there are none.
    SearchResults();

    /// In the order in which they were first found.
    const std::vector<SearchResultPtr>& all() const { return m_results; }
    /// By the id of its record. Throws HostError when there is none.
    SearchResultPtr need(int id) const;
    /// Keeps tracks that the plug-in has found; those that are kept already stay. In their order.
    /// Throws HostError when they cannot be saved.
    std::vector<SearchResultPtr> keep(const CString& plugin, const FoundTracks& tracks);
    /// Those that no playlist holds.
    std::vector<SearchResultPtr> unused();
    /// Forgets them. Throws HostError when that cannot be saved.
    void forget(const std::vector<SearchResultPtr>& results);
    /// Forgets those that the plug-in found and that no playlist holds. Throws likewise.
    void forgetUnusedOf(const CString& plugin);

private:
    void read();
    void save();

    CMpSearchResultCollection m_collection;
    std::vector<SearchResultPtr> m_results;
    std::unordered_map<CString, SearchResultPtr> m_byText; ///< by what their plug-ins know them by
};

/// The plug-in that found it.
CString pluginOf(const CHDSearchResult& result);
/// The track as its plug-in knows it. Throws HostError when the plug-in is gone, or knows it no
/// longer.
boost::shared_ptr<ITrackResult> needTrack(const CHDSearchResult& result);
} // namespace qo::host
