#pragma once

#include "QoColl/Db/Records/ItemSource.h"
#include "types/String.h"

/// A track of a search as the host hands it over to be kept. Its name is "source::clip", such as
/// "tube::a1b2", where neither part has a "_" after the "::".
struct CSearchResultDraggableObject
{
    CString m_name;
    int m_source =
        IPostProcessingQueue::sourceShare; ///< an eItemSource; any other number counts as 0
    CString m_artist;
    CString m_title;
    /// By which the plug-in makes the track again, see CQoPluginManager::trackText(); kept with
    /// sourceShare alone.
    CString m_xml;
    bool m_isVideo = false;
};
