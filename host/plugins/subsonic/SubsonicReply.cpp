#include "plugins/subsonic/SubsonicReply.h"

#include "core/base/Json.h"
#include "core/base/Trimmed.h"

#include <algorithm>
#include <limits>

namespace qo::host
{
namespace
{
constexpr std::size_t mostReplyDepth = 32;
constexpr std::size_t mostMembers = 200;
constexpr std::size_t mostValues = 1'000'000;
constexpr std::size_t mostReplyEntries = 100'000;
constexpr std::size_t longestId = 1000;
constexpr int longestName = 500;
constexpr int second = 1000; // milliseconds

/// Looks over the text before a tree is made of it, which takes many times its size, and looks
/// through all members of an object for each that is added: "[[[...", "[1,1,1..." and an object of
/// a million names shall cost nothing.
bool isWithinBounds(std::string_view text)
{
    std::vector<std::size_t> members(1); // of each value that is open; 0 for arrays
    std::size_t values = 1;
    bool isString = false;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char c = text[i];
        if (isString && c == '\\')
            ++i;
        else if (c == '"')
            isString = !isString;
        else if (isString)
            continue;
        else if (c == '[' || c == '{')
            members.push_back(c == '{' ? 1 : 0);
        else if (c == ']' || c == '}')
            members.pop_back();
        else if (c == ',' && ++values > 0 && members.back() > 0)
            ++members.back();
        if (members.empty() || members.size() > mostReplyDepth || members.back() > mostMembers ||
            values > mostValues)
            return false;
    }
    return true;
}

const Json& memberOf(const Json& object, const char* name)
{
    static const Json none;
    const auto found = object.is_object() ? object.find(name) : object.end();
    return object.is_object() && found != object.end() ? *found : none;
}

/// Some servers write "1999" and "42" as numbers.
std::string textOf(const Json& object, const char* name)
{
    const Json& value = memberOf(object, name);
    if (value.is_string())
        return value.get<std::string>();
    return value.is_number() ? value.dump() : std::string();
}

/// A number from 0 to most, which may come as a text; 0 for anything else.
std::int64_t numberOf(const Json& object, const char* name, std::int64_t most)
{
    const std::string text = textOf(object, name);
    std::int64_t number = 0;
    for (const char c : text)
    {
        const int digit = c - '0';
        if (digit < 0 || digit > 9 || number > (most - digit) / 10)
            return 0;
        number = number * 10 + digit;
    }
    return number;
}

CString cleanName(const std::string& text)
{
    return singleLine(fromUtf8(text).Left(longestName));
}

CString nameOrUnknown(const Json& object, const char* name)
{
    const CString clean = cleanName(textOf(object, name));
    return clean.IsEmpty() ? CString(u"[unknown]") : clean;
}

/// The ending of a file's name; "" for what is none.
CString suffixOf(const Json& track)
{
    constexpr std::size_t longest = 10;
    const std::string text = textOf(track, "suffix");
    const bool isPlain = std::ranges::all_of(
        text,
        [](char c)
        { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); });
    return isPlain && text.size() <= longest ? fromUtf8(text) : CString();
}

/// The title; without one the name of the file. "a.mp3" of an MP3 is called "a".
CString titleOf(const Json& track, const CString& suffix)
{
    CString title = cleanName(textOf(track, "title"));
    if (title.IsEmpty())
    {
        const std::string path = textOf(track, "path");
        title = cleanName(path.substr(path.rfind('/') + 1));
    }
    const CString end = u"." + suffix;
    if (!suffix.IsEmpty() && title.GetLength() > end.GetLength() &&
        title.Right(end.GetLength()).CompareNoCase(end) == 0)
        title = title.Left(title.GetLength() - end.GetLength());
    return title.IsEmpty() ? CString(u"[unknown]") : title;
}

/// 1010 for "1.10.2"; 0 for what is no version.
int versionOf(const std::string& text)
{
    constexpr int mostMinor = 1000;
    const std::size_t point = text.find('.');
    if (point == std::string::npos)
        return 0;
    const int major = textToInt(fromUtf8(text.substr(0, point)).view());
    const int minor = textToInt(fromUtf8(text.substr(point + 1)).view());
    const bool isVersion = major > 0 && major < mostMinor && minor >= 0 && minor < mostMinor;
    return isVersion ? major * mostMinor + minor : 0;
}

/// Calls the function with each object of a list. Some servers write a list of one as that one.
template <class Function>
void forEach(const Json& list, Function function)
{
    if (list.is_object())
        return function(list);
    if (!list.is_array())
        return;
    for (const Json& each : list)
    {
        if (each.is_object())
            function(each);
    }
}

/// Gathers the entries of an answer, of whichever kind it is.
class ReplyReader
{
public:
    explicit ReplyReader(SubsonicReply& reply) : m_reply(reply) {}

    void read(const Json& root)
    {
        forEach(memberOf(memberOf(root, "artists"), "index"),
                [this](const Json& index)
                {
                    forEach(memberOf(index, "artist"),
                            [this](const Json& artist) {
                                add(m_reply.artists, artist, {{}, nameOrUnknown(artist, "name")});
                            });
                });
        forEach(memberOf(memberOf(root, "artist"), "album"),
                [this](const Json& album)
                {
                    add(m_reply.albums,
                        album,
                        {{}, nameOrUnknown(album, "artist"), nameOrUnknown(album, "name")});
                });
        forEach(memberOf(memberOf(root, "album"), "song"),
                [this](const Json& song) { addTrack(song); });
        forEach(memberOf(memberOf(root, "searchResult3"), "song"),
                [this](const Json& song) { addTrack(song); });
    }

private:
    void add(std::vector<SubsonicItem>& items, const Json& entry, SubsonicItem item)
    {
        item.id = textOf(entry, "id");
        if (item.id.empty() || item.id.size() > longestId)
            return;
        if (++m_count > mostReplyEntries)
            m_reply.form = SubsonicReply::Form::damaged;
        else
            items.push_back(std::move(item));
    }
    void addTrack(const Json& song)
    {
        if (memberOf(song, "isDir") == Json(true))
            return;
        constexpr int longest = std::numeric_limits<int>::max() / second;
        SubsonicItem track;
        track.artist = nameOrUnknown(song, "artist");
        track.album = nameOrUnknown(song, "album");
        track.suffix = suffixOf(song);
        track.title = titleOf(song, track.suffix);
        track.size = numberOf(song, "size", std::numeric_limits<std::int64_t>::max());
        track.duration = static_cast<int>(numberOf(song, "duration", longest)) * second;
        add(m_reply.tracks, song, std::move(track));
    }

    SubsonicReply& m_reply;
    std::size_t m_count = 0;
};
} // namespace

SubsonicReply readSubsonicReply(std::string_view text)
{
    SubsonicReply reply;
    if (!trimmed(text).starts_with('{'))
        return reply;
    reply.form = SubsonicReply::Form::damaged;
    if (!isWithinBounds(text))
        return reply;
    const Json document = Json::parse(text, nullptr, false);
    if (document.is_discarded())
        return reply;
    const Json& root = memberOf(document, "subsonic-response");
    reply.form = root.is_object() ? SubsonicReply::Form::reply : SubsonicReply::Form::foreign;
    reply.version = versionOf(textOf(root, "version"));
    const Json& error = memberOf(root, "error");
    if (textOf(root, "status") != "ok" || error.is_object())
    {
        reply.code = static_cast<int>(numberOf(error, "code", std::numeric_limits<int>::max()));
        reply.message = textOf(error, "message");
        return reply;
    }
    ReplyReader(reply).read(root);
    return reply;
}

CString singleLine(CString text)
{
    for (int i = 0; i < text.GetLength(); ++i)
    {
        if (text[i] < u' ' || text[i] == 0x7F)
            text.SetAt(i, u' ');
    }
    return text.Trim();
}

CString subsonicTrackText(const SubsonicItem& track)
{
    std::string text;
    for (const std::string& field : {track.id,
                                     toUtf8(track.artist),
                                     toUtf8(track.album),
                                     toUtf8(track.title),
                                     toUtf8(track.suffix),
                                     std::to_string(track.size),
                                     std::to_string(track.duration)})
        text += (text.empty() ? "" : "&") + percentEncoded(field, "-.~");
    return fromUtf8(text);
}

SubsonicItem subsonicTrackOf(const CString& text)
{
    const CStringArray fields = CStringArray::split(text, u'&');
    constexpr int fieldCount = 7;
    if (fields.GetSize() != fieldCount)
        return {};
    const auto field = [&](int index) { return percentDecoded(toUtf8(fields[index])); };
    SubsonicItem track = {field(0), fromUtf8(field(1)), fromUtf8(field(2)), fromUtf8(field(3))};
    track.suffix = fromUtf8(field(4));
    track.size = textToInt64(fields[5].view());
    track.duration = textToInt(fields[6].view());
    return track;
}
} // namespace qo::host
