#include "QoColl/Devices/WPDKeys.h"
#include "QoColl/Devices/WPDUtils.h"

namespace wpd = qo::wpd;

// Devices go by these kinds when they sort files for their own players. "mp2" is a kind of video to
// them.
const CWPDUtils::FileFormatInfo CWPDUtils::m_fileFormats[35] = {
    {u"aiff", wpd::contentAudio, wpd::formatOf(0x3007)},
    {u"aif", wpd::contentAudio, wpd::formatOf(0x3007)},
    {u"wav", wpd::contentAudio, wpd::formatOf(0x3008)},
    {u"mp3", wpd::contentAudio, wpd::formatOf(0x3009)},
    {u"mp2", wpd::contentVideo, wpd::formatOf(0xB983)},
    {u"aac", wpd::contentAudio, wpd::formatOf(0xB903)},
    {u"flac", wpd::contentAudio, wpd::formatOf(0xB906)},
    {u"ogg", wpd::contentAudio, wpd::formatOf(0xB902)},
    {u"wma", wpd::contentAudio, wpd::formatOf(0xB901)},
    {u"avi", wpd::contentVideo, wpd::formatOf(0x300A)},
    {u"mpeg", wpd::contentVideo, wpd::formatOf(0x300B)},
    {u"mpg", wpd::contentVideo, wpd::formatOf(0x300B)},
    {u"asf", wpd::contentVideo, wpd::formatOf(0x300C)},
    {u"wmv", wpd::contentVideo, wpd::formatOf(0xB981)},
    {u"3gp", wpd::contentVideo, wpd::formatOf(0xB984)},
    {u"mp4", wpd::contentVideo, wpd::formatOf(0xB982)},
    {u"wpl", wpd::contentPlaylist, wpd::formatOf(0xBA10)},
    {u"m3u", wpd::contentPlaylist, wpd::formatOf(0xBA11)},
    {u"mpl", wpd::contentPlaylist, wpd::formatOf(0xBA12)},
    {u"asx", wpd::contentPlaylist, wpd::formatOf(0xBA13)},
    {u"pls", wpd::contentPlaylist, wpd::formatOf(0xBA14)},
    {u"bmp", wpd::contentImage, wpd::formatOf(0x3804)},
    {u"gif", wpd::contentImage, wpd::formatOf(0x3807)},
    {u"jpg", wpd::contentImage, wpd::formatOf(0x3808)},
    {u"jpeg", wpd::contentImage, wpd::formatOf(0x3808)},
    {u"png", wpd::contentImage, wpd::formatOf(0x380B)},
    {u"tiff", wpd::contentImage, wpd::formatOf(0x380D)},
    {u"tif", wpd::contentImage, wpd::formatOf(0x380D)},
    {u"ico", wpd::contentImage, wpd::formatIcon},
    {u"doc", wpd::contentDocument, wpd::formatOf(0xBA83)},
    {u"pps", wpd::contentDocument, wpd::formatOf(0xBA86)},
    {u"xml", wpd::contentDocument, wpd::formatOf(0xBA82)},
    {u"txt", wpd::contentDocument, wpd::formatOf(0x3004)},
    {u"htm", wpd::contentDocument, wpd::formatOf(0x3005)},
    {u"html", wpd::contentDocument, wpd::formatOf(0x3005)},
};

bool CWPDUtils::getFormatInfo(const CString& extension, GUID& contentType, GUID& format)
{
    for (const FileFormatInfo& row : m_fileFormats)
    {
        if (extension.CompareNoCase(row.m_extension) != 0)
            continue;
        contentType = row.m_contentType;
        format = row.m_format;
        return true;
    }
    return false;
}
