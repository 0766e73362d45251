#pragma once

#include "cli/places/FarPlace.h"

#include <map>

namespace qo::cli
{
/// A plug-in of artists, albums and tracks as a place. Artists and albums are its folders.
class TrackPlace final : public FarPlace
{
public:
    explicit TrackPlace(const CString& id);

    /// Takes in a track that is known already, so that it can be fetched without being looked up;
    /// its path, which no other one has.
    CQoCollPath add(const boost::shared_ptr<ITrackResult>& track);

    CString componentOf(const std::string& name) const override;
    std::string nameOf(const CString& component) const override;
    bool find(const CQoCollPath& path, IQoProgress& progress, FarEntry& entry) override;
    bool list(const CQoCollPath& folder,
              Items items,
              int depth,
              IQoProgress& progress,
              QoFileDbItemArray& records) override;
    std::string takeCause() override;
    std::string fetch(const CQoCollPath& path,
                      std::int64_t size,
                      const CString& local,
                      IQoProgress& progress) override;

private:
    PluginOperationPtr request(const CQoCollPath& folder, const PluginResultPtr& above) const;

    boost::shared_ptr<ILogicalBrowseWrapper> m_browse;
    /// What was found so far by its path: a service is not asked twice for the same artists.
    std::map<CString, PluginResultPtr> m_results;
};
} // namespace qo::cli
