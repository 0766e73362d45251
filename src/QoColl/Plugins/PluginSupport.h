#pragma once

#include "QoColl/Plugins/FarName.h"
#include "QoColl/Plugins/PluginResults.h"
#include "common/Log.h"
#include "common/QoProgress.h"
#include "platform/FileSystem.h"

#include <boost/smart_ptr/shared_ptr.hpp>

#include <utility>
#include <vector>

// What the sources of CQoPluginManager share.
namespace qo
{
inline bool isStopped(IQoProgress* progress)
{
    return progress && progress->isCanceled();
}

/// A failure that the user has not caused himself by cancelling.
template <class... Args>
void logUnlessStopped(IQoProgress* progress, const char16_t* format, const Args&... args)
{
    if (!isStopped(progress))
        log(level::error, format, args...);
}

/// Reports that so much of all, in any unit, has come: in percent, and with a total in bytes also
/// the bytes. progress may be null.
void showTransfer(IQoProgress* progress,
                  std::int64_t done,
                  std::int64_t all,
                  std::int64_t totalBytes);

/// The results that are of that class; plug-ins may mix in others, and null.
template <class Result>
std::vector<boost::shared_ptr<Result>> resultsOf(const PluginResultArray& results)
{
    std::vector<boost::shared_ptr<Result>> found;
    for (const PluginResultPtr& each : results)
    {
        if (auto result = boost::dynamic_pointer_cast<Result>(each))
            found.push_back(std::move(result));
    }
    return found;
}
template <class Result>
boost::shared_ptr<Result> firstResult(const PluginResultArray& results)
{
    const auto found = resultsOf<Result>(results);
    return found.empty() ? boost::shared_ptr<Result>() : found.front();
}

/// The result whose name is that component of a path; null without one. With the exact spelling
/// also null where several have that name, as nobody knows which is meant.
template <class Result, class NameOf>
boost::shared_ptr<Result> findByName(const std::vector<boost::shared_ptr<Result>>& results,
                                     const CString& component,
                                     Spelling spelling,
                                     NameOf nameOf)
{
    boost::shared_ptr<Result> same;
    boost::shared_ptr<Result> similar;
    int sameCount = 0;
    int similarCount = 0;
    for (const auto& each : results)
    {
        const CString name = farComponent(nameOf(*each));
        if (name == component)
        {
            same = sameCount++ == 0 ? each : same;
            continue;
        }
        if (name.CompareNoCase(component) == 0)
        {
            similar = each;
            ++similarCount;
        }
    }
    if (spelling == Spelling::exact)
        return sameCount == 1 ? same : boost::shared_ptr<Result>();
    return same ? same : similarCount == 1 ? similar : boost::shared_ptr<Result>();
}

/// What is in a folder, without entries whose names are none; failure is a text for the log with
/// the folder's name and path.
bool listFarFolder(IPhysicalBrowseWrapper& browse,
                   const PhysicalResultPtr& folder,
                   const char16_t* failure,
                   IQoProgress* progress,
                   std::vector<PhysicalResultPtr>& entries);

/// Asks for the artists (level 0), the albums of an artist (1) or the tracks of an album (2).
PluginOperationPtr
listLogicalLevel(ILogicalBrowseWrapper& browse, int level, const PluginResultPtr& above);

/// A name that a plug-in gave, for a line of the log: without what would begin another line, and no
/// longer than a name may be.
CString forLog(const CString& name);

/// The artist, album or track at the path.
bool findLogicalEntry(const boost::shared_ptr<ILogicalBrowseWrapper>& browse,
                      const CQoCollPath& path,
                      Spelling spelling,
                      IQoProgress* progress,
                      PluginResultPtr& result);

/// The entry at the path, from the root of its plug-in on.
bool findPhysicalEntry(const CQoCollPath& path,
                       Spelling spelling,
                       IQoProgress* progress,
                       PhysicalResultPtr& result);
} // namespace qo
