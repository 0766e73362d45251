#include "core/playlist/PlaylistText.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/Trimmed.h"
#include "core/playlist/XspfText.h"

#include <climits>

#include <algorithm>
#include <array>
#include <cerrno>
#include <map>
#include <optional>

namespace qo::host
{
namespace
{
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr int millisecondsPerSecond = 1000;
constexpr int longestNames = 4096; ///< UTF-16 units of artist and title in a list

/// Latin-1 where it is no UTF-8.
CString decoded(std::string_view bytes)
{
    return isUtf8(bytes) ? fromUtf8(bytes) : fromCharset(bytes, "windows-1252");
}

char lowerAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether the text begins with these small letters, in any case.
bool beginsWith(std::string_view text, std::string_view start)
{
    return text.size() >= start.size() &&
           std::equal(start.begin(),
                      start.end(),
                      text.begin(),
                      [](char a, char b) { return a == lowerAscii(b); });
}

/// Seconds, perhaps with a fraction, as milliseconds; 0 for what is none, such as -1.
int durationOf(std::string_view seconds)
{
    const long long value = textToInt64(fromUtf8(seconds.substr(0, 12)).view());
    return value > 0 && value <= INT_MAX / millisecondsPerSecond
               ? static_cast<int>(value) * millisecondsPerSecond
               : 0;
}

/// "Artist - Title"; without the sign between it is a title.
void setNames(ListedSong& song, const CString& text)
{
    const int sign = text.Find(u" - ");
    if (sign > 0)
    {
        song.artist = text.Left(sign).Trim();
        song.title = text.Mid(sign + 3).Trim();
    }
    else
        song.title = CString(text).Trim();
}

/// Calls take with each line, which is not empty, until it answers with a fault.
template <class Take>
std::string forEachLine(std::string_view text, Take take)
{
    std::size_t number = 0;
    for (std::size_t at = 0; at < text.size(); ++number)
    {
        const auto* const start = text.begin() + at;
        const auto* const stop =
            std::find_if(start, text.end(), [](char c) { return c == '\n' || c == '\r'; });
        const auto end = static_cast<std::size_t>(stop - text.begin());
        const std::string_view line = text.substr(at, end - at);
        at = end + (text.substr(end, 2) == "\r\n" ? 2 : 1);
        if (line.size() > longestPlaylistLine)
            return "line " + std::to_string(number + 1) + " is longer than " +
                   std::to_string(longestPlaylistLine >> 10) + " KiB";
        if (line.empty())
            continue;
        if (const std::string fault = take(line); !fault.empty())
            return fault;
    }
    return {};
}

std::string tooManySongs()
{
    return "it has more than " + std::to_string(mostListedSongs) + " songs";
}

/// "215,Kino - Zvezda" or "-1 tvg-id="a,b",Kino - Zvezda".
void readExtendedInfo(std::string_view info, ListedSong& song)
{
    bool isQuoted = false;
    std::size_t comma = 0;
    for (; comma < info.size() && (isQuoted || info[comma] != ','); ++comma)
        isQuoted = isQuoted != (info[comma] == '"');
    song.duration = durationOf(info.substr(0, info.find_first_of(" ,")));
    if (comma < info.size())
        setNames(song, decoded(info.substr(comma + 1)));
}

std::string parseM3u(std::string_view text, std::vector<ListedSong>& songs)
{
    ListedSong song;
    return forEachLine(text,
                       [&](std::string_view line) -> std::string
                       {
                           if (beginsWith(line, "#extinf:"))
                               readExtendedInfo(line.substr(8), song);
                           else if (beginsWith(line, "#extart:"))
                               song.artist = decoded(trimmed(line.substr(8)));
                           else if (beginsWith(line, "#extalb:"))
                               song.album = decoded(trimmed(line.substr(8)));
                           if (line[0] == '#' || trimmed(line).empty())
                               return {};
                           if (songs.size() == mostListedSongs)
                               return tooManySongs();
                           song.place = line;
                           songs.push_back(std::exchange(song, {}));
                           return {};
                       });
}

/// "File12" is 12; nothing for another key.
std::optional<int> numberAfter(std::string_view word, std::string_view key)
{
    if (!beginsWith(key, word))
        return {};
    const int number = textToInt(fromUtf8(key.substr(word.size()).substr(0, 12)).view());
    return number > 0 ? std::optional(number) : std::nullopt;
}

std::string parsePls(std::string_view text, std::vector<ListedSong>& songs)
{
    std::map<int, ListedSong> numbered;
    const std::string fault =
        forEachLine(text,
                    [&](std::string_view line) -> std::string
                    {
                        const std::size_t equals = line.find('=');
                        if (equals == std::string_view::npos)
                            return {};
                        const std::string_view key = trimmed(line.substr(0, equals));
                        const std::string_view value = line.substr(equals + 1);
                        if (const auto file = numberAfter("file", key))
                            numbered[*file].place = value;
                        else if (const auto title = numberAfter("title", key))
                            setNames(numbered[*title], decoded(value));
                        else if (const auto length = numberAfter("length", key))
                            numbered[*length].duration = durationOf(trimmed(value));
                        return numbered.size() > mostListedSongs ? tooManySongs() : std::string();
                    });
    for (auto& [number, song] : numbered)
        if (!song.place.empty())
            songs.push_back(std::move(song));
    return fault;
}

std::string parseText(std::string_view text, std::vector<ListedSong>& songs)
{
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    if (text.find('\0') != std::string_view::npos)
        return "it is no text";
    const std::string_view start = trimmed(text.substr(0, longestPlaylistLine));
    if (start.starts_with('<'))
        return parseXspf(text, songs);
    return beginsWith(start, "[playlist]") ? parsePls(text, songs) : parseM3u(text, songs);
}

/// In one line that can be read again.
std::string lineOf(CString text)
{
    text = text.Left(wholeCharacters(text, longestNames));
    for (int i = 0; i < text.GetLength(); ++i)
        if (text[i] < u' ' || text[i] == u'\x7F')
            text.SetAt(i, u' ');
    return toUtf8(text);
}

std::string namesOf(const ListedSong& song)
{
    return lineOf(song.artist.IsEmpty() ? song.title : song.artist + u" - " + song.title);
}

/// In whole seconds, -1 if it is not known.
std::string secondsOf(const ListedSong& song)
{
    return song.duration > 0
               ? std::to_string((song.duration + millisecondsPerSecond / 2) / millisecondsPerSecond)
               : "-1";
}

std::string m3uText(const std::vector<ListedSong>& songs)
{
    std::string text = "#EXTM3U\n";
    for (const ListedSong& song : songs)
    {
        if (const std::string names = namesOf(song); !names.empty())
            text.append("#EXTINF:").append(secondsOf(song)).append(",").append(names).append("\n");
        // A line with this sign would be a comment.
        text.append(song.place.starts_with('#') ? "./" : "").append(song.place).append("\n");
    }
    return text;
}

std::string plsText(const std::vector<ListedSong>& songs)
{
    std::string text = "[playlist]\n";
    int number = 0;
    for (const ListedSong& song : songs)
    {
        const std::string end = std::to_string(++number) + "=";
        text.append("File").append(end).append(song.place).append("\n");
        if (const std::string names = namesOf(song); !names.empty())
            text.append("Title").append(end).append(names).append("\n");
        text.append("Length").append(end).append(secondsOf(song)).append("\n");
    }
    return text + "NumberOfEntries=" + std::to_string(number) + "\nVersion=2\n";
}
} // namespace

PlaylistFormat playlistFormatOf(const std::string& path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    const std::size_t point = name.rfind('.');
    std::string ending = point == std::string::npos ? "" : name.substr(point + 1);
    std::transform(ending.begin(), ending.end(), ending.begin(), lowerAscii);
    return ending == "xspf"  ? PlaylistFormat::xspf
           : ending == "pls" ? PlaylistFormat::pls
                             : PlaylistFormat::m3u;
}

std::string parsePlaylist(std::string_view bytes, std::vector<ListedSong>& songs)
{
    if (bytes.size() > largestPlaylist)
        return "it is larger than " + std::to_string(largestPlaylist >> 20) + " MiB";
    const bool isWide = bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
    return isWide ? parseText(toUtf8(fromCharset(bytes, "UTF-16")), songs)
                  : parseText(bytes, songs);
}

std::vector<ListedSong> readPlaylistFile(const std::string& path)
{
    std::string bytes;
    const int error = readFile(fromSystemPath(path), largestPlaylist, bytes);
    if (error != 0 && error != EFBIG)
        throw HostError(error == ENOENT || error == ENOTDIR ? ExitCode::notFound : ExitCode::failed,
                        path + " cannot be read: " + errorWords(error));
    std::vector<ListedSong> songs;
    const std::string fault =
        error == EFBIG ? "it is larger than " + std::to_string(largestPlaylist >> 20) + " MiB"
                       : parsePlaylist(bytes, songs);
    if (!fault.empty())
        throw HostError(ExitCode::failed, path + " is no playlist: " + fault);
    return songs;
}

std::string
playlistText(PlaylistFormat format, const CString& name, const std::vector<ListedSong>& songs)
{
    switch (format)
    {
    case PlaylistFormat::pls:
        return plsText(songs);
    case PlaylistFormat::xspf:
        return xspfText(name, songs);
    case PlaylistFormat::m3u:
        break;
    }
    return m3uText(songs);
}
} // namespace qo::host
