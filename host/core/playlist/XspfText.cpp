#include "core/playlist/XspfText.h"

#include "core/playlist/SongPlace.h"

#include <QoKernel/Inside.h>

#include <climits>
#include <tinyxml.h>

namespace qo::host
{
namespace
{
/// A song has five elements as a rule.
constexpr XmlLimits xspfLimits = {largestPlaylist, 64, 1000000, 64};

std::string textOf(const TiXmlElement& track, const char* name)
{
    const TiXmlElement* const element = track.FirstChildElement(name);
    const char* const text = element ? element->GetText() : nullptr;
    return text ? text : "";
}

ListedSong songOfTrack(const TiXmlElement& track)
{
    ListedSong song;
    const std::string location = textOf(track, "location");
    song.place = isAddress(location) ? location : percentDecoded(location);
    song.title = fromUtf8(textOf(track, "title"));
    song.artist = fromUtf8(textOf(track, "creator"));
    song.album = fromUtf8(textOf(track, "album"));
    const long long duration = textToInt64(fromUtf8(textOf(track, "duration")).view());
    song.duration = duration > 0 && duration <= INT_MAX ? static_cast<int>(duration) : 0;
    return song;
}

/// Without what XML cannot hold.
std::string xmlText(CString text)
{
    for (int i = 0; i < text.GetLength(); ++i)
        if (text[i] < u' ' || text[i] >= u'\xFFFE')
            text.SetAt(i, u' ');
    return toUtf8(text);
}

void addElement(TiXmlElement& parent, const char* name, const std::string& text)
{
    if (text.empty())
        return;
    auto* const element = new TiXmlElement(name);
    parent.LinkEndChild(element);
    element->LinkEndChild(new TiXmlText(text.c_str()));
}
} // namespace

std::string parseXspf(std::string_view text, std::vector<ListedSong>& songs)
{
    if (!isReadableXml(text, xspfLimits))
        return "it is no complete XML, or has more or deeper elements than a list can have";
    TiXmlDocument document;
    document.Parse(std::string(text).c_str(), nullptr, TIXML_ENCODING_UTF8);
    const TiXmlElement* const root = document.RootElement();
    const TiXmlElement* const list =
        root && root->ValueStr() == "playlist" ? root->FirstChildElement("trackList") : nullptr;
    if (!list)
        return "it has no element trackList in an element playlist";
    for (const TiXmlElement* track = list->FirstChildElement("track"); track;
         track = track->NextSiblingElement("track"))
    {
        if (songs.size() == mostListedSongs)
            return "it has more than " + std::to_string(mostListedSongs) + " songs";
        ListedSong song = songOfTrack(*track);
        if (song.place.size() > longestPlaylistLine)
            return "a location is longer than " + std::to_string(longestPlaylistLine >> 10) +
                   " KiB";
        if (!song.place.empty() || !song.title.IsEmpty())
            songs.push_back(std::move(song));
    }
    return {};
}

std::string xspfText(const CString& name, const std::vector<ListedSong>& songs)
{
    TiXmlDocument document;
    document.LinkEndChild(new TiXmlDeclaration("1.0", "UTF-8", ""));
    auto* const root = new TiXmlElement("playlist");
    document.LinkEndChild(root);
    root->SetAttribute("version", "1");
    root->SetAttribute("xmlns", "http://xspf.org/ns/0/");
    addElement(*root, "title", xmlText(name));
    auto* const list = new TiXmlElement("trackList");
    root->LinkEndChild(list);
    for (const ListedSong& song : songs)
    {
        auto* const track = new TiXmlElement("track");
        list->LinkEndChild(track);
        addElement(*track, "location", addressOf(song.place));
        addElement(*track, "title", xmlText(song.title));
        addElement(*track, "creator", xmlText(song.artist));
        addElement(*track, "album", xmlText(song.album));
        if (song.duration > 0)
            addElement(*track, "duration", std::to_string(song.duration));
    }
    TiXmlPrinter printer;
    document.Accept(&printer);
    return printer.Str();
}
} // namespace qo::host
