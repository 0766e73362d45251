#include "plugins/subsonic/SubsonicPlugin.h"

#include "plugins/base/FinishedOperation.h"
#include "plugins/base/ThreadOperation.h"
#include "plugins/subsonic/SubsonicEntries.h"

#include <boost/make_shared.hpp>

#include <map>
#include <set>

namespace qo::host
{
namespace
{
using MusicServerPtr = std::shared_ptr<SubsonicClient>;
using Parameters = SubsonicClient::Parameters;

constexpr std::size_t searchPage = 500;
constexpr std::size_t mostFound = 1000; // nobody looks at more
constexpr int mostTracks = 100'000;

template <class Work>
PluginOperationPtr beginQuestion(const MusicServerPtr& client, Work work)
{
    return boost::make_shared<ThreadOperation>([client, work](ThreadOperation::Link& link)
                                               { return work(*client, link); });
}

SubsonicAnswer askServer(SubsonicClient& client,
                         ThreadOperation::Link& link,
                         const char* method,
                         const Parameters& parameters = {})
{
    return client.ask(method, parameters, [&link] { return link.isCanceled.load(); });
}

/// The artists or albums of a request, each name once and in the server's order.
class GroupList
{
public:
    void add(IGenericResult::EKind kind,
             const CString& artist,
             const CString& album,
             const std::string& id)
    {
        boost::shared_ptr<SubsonicGroup>& group = m_groups[artist + u"\n" + album];
        if (!group)
        {
            group = boost::make_shared<SubsonicGroup>(kind, artist, album);
            outcome.results.Add(group);
        }
        group->addId(id);
    }

    PluginOutcome outcome;

private:
    std::map<CString, boost::shared_ptr<SubsonicGroup>> m_groups;
};

/// The titles of an album, of which one that was there already gets a number: "Intro (2)".
class TitleList
{
public:
    CString freeTitle(const SubsonicItem& track)
    {
        int& number = m_numbers[nameOf(track.title, track)];
        CString title = track.title;
        do
        {
            if (++number > 1)
                title.Format(u"%s (%d)", track.title, number);
        } while (!m_taken.insert(nameOf(title, track)).second);
        return title;
    }

private:
    static CString nameOf(const CString& title, const SubsonicItem& track)
    {
        return title + u"." + track.suffix;
    }

    std::map<CString, int> m_numbers; ///< the last one that was given
    std::set<CString> m_taken;
};

PluginOutcome listArtists(SubsonicClient& client, ThreadOperation::Link& link)
{
    const SubsonicAnswer answer = askServer(client, link, "getArtists");
    GroupList list;
    list.outcome.failure = answer.failure;
    for (const SubsonicItem& artist : answer.reply.artists)
        list.add(IGenericResult::RK_Artist, artist.artist, {}, artist.id);
    return list.outcome;
}

PluginOutcome
listAlbums(SubsonicClient& client, const SubsonicGroup& artist, ThreadOperation::Link& link)
{
    GroupList list;
    for (const std::string& id : artist.ids())
    {
        const SubsonicAnswer answer = askServer(client, link, "getArtist", {{"id", id}});
        if (!answer.failure.IsEmpty())
            return {answer.failure, {}};
        for (const SubsonicItem& album : answer.reply.albums)
            list.add(IGenericResult::RK_Album, artist.GetArtist(), album.album, album.id);
    }
    return list.outcome;
}

PluginOutcome
listTracks(SubsonicClient& client, const SubsonicGroup& album, ThreadOperation::Link& link)
{
    PluginOutcome outcome;
    TitleList titles;
    for (const std::string& id : album.ids())
    {
        SubsonicAnswer answer = askServer(client, link, "getAlbum", {{"id", id}});
        if (!answer.failure.IsEmpty())
            return {answer.failure, {}};
        for (SubsonicItem& track : answer.reply.tracks)
        {
            track.title = titles.freeTitle(track);
            outcome.results.Add(boost::make_shared<SubsonicTrack>(std::move(track)));
        }
        if (outcome.results.GetSize() > mostTracks)
            return {u"the album " + album.GetAlbum() + u" has too many tracks", {}};
    }
    return outcome;
}

class SubsonicBrowse final : public ILogicalBrowseWrapper
{
public:
    explicit SubsonicBrowse(MusicServerPtr client) : m_client(std::move(client)) {}

    PluginOperationPtr GetArtists() override { return beginQuestion(m_client, listArtists); }
    PluginOperationPtr GetAlbums(const PluginResultPtr& artist) override
    {
        return ofGroup(artist, IGenericResult::RK_Artist, listAlbums);
    }
    PluginOperationPtr GetTracksForAlbum(const PluginResultPtr& album) override
    {
        return ofGroup(album, IGenericResult::RK_Album, listTracks);
    }

private:
    template <class Work>
    PluginOperationPtr ofGroup(const PluginResultPtr& result, IGenericResult::EKind kind, Work work)
    {
        const auto group = boost::dynamic_pointer_cast<SubsonicGroup>(result);
        if (!group || group->GetKind() != kind)
            return FinishedOperation::failed(u"this is no entry of the plug-in");
        return beginQuestion(m_client,
                             [group, work](SubsonicClient& client, ThreadOperation::Link& link)
                             { return work(client, *group, link); });
    }

    const MusicServerPtr m_client;
};

class SubsonicSearch final : public ISearchWrapper
{
public:
    explicit SubsonicSearch(MusicServerPtr client) : m_client(std::move(client)) {}

    PluginOperationPtr Search(const CString& text) override
    {
        return beginQuestion(
            m_client,
            [text = toUtf8(text)](SubsonicClient& client, ThreadOperation::Link& link)
            { return search(client, text, link); });
    }

private:
    static PluginOutcome
    search(SubsonicClient& client, const std::string& text, ThreadOperation::Link& link)
    {
        PluginOutcome outcome;
        std::set<std::string> known;
        for (std::size_t first = 0; first < mostFound; first += searchPage)
        {
            const SubsonicAnswer answer = askServer(client,
                                                    link,
                                                    "search3",
                                                    {{"query", text},
                                                     {"artistCount", "0"},
                                                     {"albumCount", "0"},
                                                     {"songCount", std::to_string(searchPage)},
                                                     {"songOffset", std::to_string(first)}});
            if (!answer.failure.IsEmpty())
                return {answer.failure, {}};
            for (const SubsonicItem& track : answer.reply.tracks)
            {
                if (known.size() < mostFound && known.insert(track.id).second)
                    outcome.results.Add(boost::make_shared<SubsonicTrack>(track));
            }
            if (answer.reply.tracks.size() < searchPage)
                break;
        }
        return outcome;
    }

    const MusicServerPtr m_client;
};

class SubsonicDownloads final : public IDownloadWrapper
{
public:
    explicit SubsonicDownloads(MusicServerPtr client) : m_client(std::move(client)) {}

    boost::shared_ptr<IPluginDownload> CreateDownload(const PluginResultPtr& source,
                                                      const CString& target) override
    {
        const auto track = boost::dynamic_pointer_cast<SubsonicTrack>(source);
        if (!track)
            return {};
        return boost::make_shared<SubsonicDownload>(m_client, *track, target);
    }
    bool CanSetRanges(bool& can) override
    {
        can = true;
        return true;
    }
    boost::shared_ptr<ITrackResult> GetTrack(const CString& text) override
    {
        SubsonicItem track = subsonicTrackOf(text);
        if (track.id.empty())
            return {};
        return boost::make_shared<SubsonicTrack>(std::move(track));
    }

private:
    const MusicServerPtr m_client;
};

class SubsonicLogin final : public ILoginWrapper
{
public:
    explicit SubsonicLogin(MusicServerPtr client) : m_client(std::move(client)) {}

    PluginOperationPtr CheckCredentials(const CString& user, const CString& password) override
    {
        m_client->setCredentials(user, password);
        return beginQuestion(
            m_client,
            [](SubsonicClient& client, ThreadOperation::Link& link)
            {
                const SubsonicAnswer answer = askServer(client, link, "ping");
                const bool isForeign = answer.reply.form == SubsonicReply::Form::foreign;
                const bool isElsewhere =
                    isForeign && ((answer.status >= 200 && answer.status < 300) ||
                                  answer.status == 404 || answer.status == 405);
                return PluginOutcome{isElsewhere ? CString(u"Wrong server path") : answer.failure,
                                     {}};
            });
    }
    bool CanTryCredentials(const CString& user, const CString&) override { return !user.IsEmpty(); }

private:
    const MusicServerPtr m_client;
};
} // namespace

SubsonicPlugin::SubsonicPlugin(const CString& id,
                               const CString& address,
                               KVConfig* store,
                               const std::optional<PasswordStore>& passwords,
                               HttpLimits limits)
    : StoredPlugin(id, store, passwords)
    , m_client(std::make_shared<SubsonicClient>(parseHttpAddress(address), limits))
    , m_browse(boost::make_shared<SubsonicBrowse>(m_client))
    , m_download(boost::make_shared<SubsonicDownloads>(m_client))
    , m_login(boost::make_shared<SubsonicLogin>(m_client))
    , m_search(boost::make_shared<SubsonicSearch>(m_client))
{
    m_client->setLogin(login());
}

SubsonicPlugin::~SubsonicPlugin() = default;

void SubsonicPlugin::SetCredentials(const CString& user, const CString& password)
{
    StoredPlugin::SetCredentials(user, password);
    m_client->setCredentials(user, password);
}
} // namespace qo::host
