#pragma once

#include "Physical/Forward.h"
#include "QoColl/Plugins/Forward.h"
#include "types/Export.h"
#include "types/String.h"

struct CSearchResultDraggableObject;

/// From a track that a search found to a result that is kept, and from there to its file. No locks:
/// as for collections.
class QO_API CMpSearchResultUtils
{
public:
    /// What CMpSearchResultCollection::addSearchResultFile() takes, for a track of that plug-in.
    static CSearchResultDraggableObject makeDraggable(const CString& pluginId,
                                                      const ITrackResult& track);
    /// The name of a track's file, such as "Ann - Dawn.mp3", that is safe on any disk.
    static CString fileNameOf(const ITrackResult& track);
    /// An item that fetches the track into the temporary folder of the player and has not begun. An
    /// empty handle, with a line in the log, when the plug-in is gone or does not know the track.
    static boost::shared_ptr<IDownloadItem>
    getPlayDownloadItem(boost::shared_ptr<IPluginsManager>& manager,
                        boost::shared_ptr<CHDSearchResult>& result);

private:
    static CString downloadPathInTempFolder(const ITrackResult* track);
};
