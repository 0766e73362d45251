#include "QoColl/Player/MpSearchResultUtils.h"

#include "Physical/HDSearchResult.h"
#include "QoColl/Player/SearchResultDraggableObject.h"
#include "QoColl/Plugins/Plugin.h"
#include "QoColl/Plugins/PluginDownloadItem.h"
#include "QoColl/Plugins/PluginResults.h"
#include "QoColl/Plugins/PluginWrappers.h"
#include "QoColl/Plugins/QoPluginManager.h"
#include "common/FileUtils.h"
#include "common/Log.h"
#include "platform/FileSystem.h"

namespace
{
CString sanitized(CString text)
{
    qo::sanitizeName(text);
    return text;
}

/// A text without "_", which begins the number of a file of a clip, and without "::".
CString clipPart(CString text)
{
    text.Replace(u"%", u"%25");
    text.Replace(u"_", u"%5F");
    text.Replace(u":", u"%3A");
    return text;
}
} // namespace

CSearchResultDraggableObject CMpSearchResultUtils::makeDraggable(const CString& pluginId,
                                                                 const ITrackResult& track)
{
    CSearchResultDraggableObject object;
    object.m_name = clipPart(pluginId) + u"::" + clipPart(track.GetText());
    object.m_artist = track.GetArtist();
    object.m_title = track.GetTitle();
    object.m_xml = CQoPluginManager::trackText(pluginId, track);
    return object;
}

boost::shared_ptr<IDownloadItem>
CMpSearchResultUtils::getPlayDownloadItem(boost::shared_ptr<IPluginsManager>& manager,
                                          boost::shared_ptr<CHDSearchResult>& result)
{
    using qo::log;
    using qo::level::error;
    if (!result)
        return {};
    CString id = result->getXML();
    CString ownText;
    CQoPluginManager::splitTrackText(id, id, ownText);
    const boost::shared_ptr<IPlugin> plugin =
        manager ? manager->GetPlugin(id) : boost::shared_ptr<IPlugin>();
    if (!plugin)
    {
        log(error,
            u"CMpSearchResultUtils::getPlayDownloadItem: Failed to start downloading item because "
            u"source plugin %s NOT FOUND. Has it been removed?",
            id);
        return {};
    }
    const boost::shared_ptr<IDownloadWrapper> download = plugin->GetDownload();
    if (!download)
    {
        log(error,
            u"CMpSearchResultUtils::getPlayDownloadItem: Failed to start downloading item from "
            u"plugin %s, because it has no DOWNLOAD functionality",
            id);
        return {};
    }
    const boost::shared_ptr<ITrackResult> track = download->GetTrack(ownText);
    if (!track)
    {
        log(error,
            u"CMpSearchResultUtils::getPlayDownloadItem: Failed to start downloading item from "
            u"plugin %s, because download item could not be created",
            id);
        return {};
    }
    return IQoDownloadItem::make<CQoPluginDownloadItem>(
        result->getPath(), downloadPathInTempFolder(track.get()), id, download, track);
}

CString CMpSearchResultUtils::fileNameOf(const ITrackResult& track)
{
    const CString extension = track.GetExtension();
    // The sanitizer leaves control characters and names of any length.
    return qo::safeLocalName(sanitized(track.GetArtist()) + u" - " + sanitized(track.GetTitle()) +
                             u"." + (extension.IsEmpty() ? CString(u"tmp") : sanitized(extension)));
}

CString CMpSearchResultUtils::downloadPathInTempFolder(const ITrackResult* track)
{
    return qo::combinePath(CFileUtils::GetTempDir(CFileUtils::tempLivePlay), fileNameOf(*track));
}
