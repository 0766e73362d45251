#include "plugins/subsonic/SubsonicPlugin.h"

#include "KVTagLib/Tags.h"
#include "QoColl/Plugins/PluginFixture.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "plugins/base/PluginFailure.h"
#include "support/Servers.h"

#include <openssl/evp.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace
{
const std::string listenerPassword = "s3cret";
const std::string listenerPasswordHex = "733363726574";

class SubsonicPlugin : public PluginFixture
{
protected:
    void add(const std::string& url)
    {
        const auto plugin = boost::make_shared<qo::host::SubsonicPlugin>(
            u"music", qo::fromUtf8(url), nullptr, std::nullopt, qo::host::HttpLimits{1, 1, 5});
        plugin->SetCredentials(u"ann", qo::fromUtf8(listenerPassword));
        plugins->add(plugin);
    }
    void addSound(const std::string& file,
                  const char16_t* artist,
                  const char16_t* album,
                  const char16_t* title)
    {
        fs::create_directories(fs::path(dir.path(file)).parent_path());
        fs::copy_file(QO_TEST_DATA "/sounds/sound.mp3", dir.path(file));
        KVTagLib::CTags tags;
        tags.AddArtist(artist, false);
        tags.SetAlbum(album);
        tags.SetTitle(title);
        EXPECT_TRUE(CMusicTagEx::writeTag(dir.collPath(file), tags));
    }
    /// What is in the plug-in, or why it cannot be listed.
    std::string listed()
    {
        QoFileDbItemArray files;
        qo::host::takePluginFailure();
        const bool isComplete = CQoPluginManager::getFilesFromPlugin(
            CQoPluginManager::PI_Files, at(u"music"), 0xffff, &progress, files);
        return isComplete ? pathsOf(files) : qo::toUtf8(qo::host::takePluginFailure());
    }
    std::string found(const char16_t* text)
    {
        CArray<boost::shared_ptr<ITrackResult>> tracks;
        EXPECT_TRUE(CQoPluginManager::searchTracks(u"music", text, &progress, tracks));
        std::string titles;
        for (const auto& track : tracks)
            titles += qo::toUtf8(track->GetTitle()) + "\n";
        return titles;
    }
    void expectNoSecrets()
    {
        for (const std::string& secret :
             {listenerPassword, listenerPasswordHex, std::string("&t="), std::string("&s=")})
            EXPECT_FALSE(log.has(secret.c_str())) << secret;
    }
};

/// JSON may be written with single quotes.
std::string good(const std::string& body)
{
    std::string text = "{'subsonic-response':{'status':'ok','version':'1.16.1'," + body + "}}";
    std::replace(text.begin(), text.end(), '\'', '"');
    return HostileServer::reply("200 OK", text, "Content-Type: application/json\r\n");
}
std::string bad(int code, const std::string& message, const std::string& more = "")
{
    return good(more + "'status':'failed','error':{'code':" + std::to_string(code) +
                ",'message':'" + message + "'}");
}
std::string artists(const std::string& list)
{
    return good("'artists':{'index':[{'name':'A','artist':[" + list + "]}]}");
}
/// What is asked for: "getArtist", and the value of a parameter.
bool asksFor(const std::string& request, const std::string& method)
{
    return request.starts_with("GET /dav/rest/" + method + ".view?");
}
std::string parameter(const std::string& request, const std::string& name)
{
    const std::size_t at = request.find("&" + name + "=");
    if (at == std::string::npos)
        return {};
    const std::size_t start = at + name.size() + 2;
    return request.substr(start, request.find_first_of("& ", start) - start);
}
/// Artists, albums and tracks, each with one of them, but for the tracks, which are the test's.
std::string library(const std::string& request, const std::string& songs)
{
    if (asksFor(request, "getArtists"))
        return artists("{'id':'a','name':'Ann'}");
    if (asksFor(request, "getArtist"))
        return good("'artist':{'album':[{'id':'b','name':'One','artist':'Ann'}]}");
    return good("'album':{'song':[" + songs + "]}");
}
std::string repeated(std::size_t count, const std::string& text)
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i)
        all += text;
    return all;
}
} // namespace

TEST_F(SubsonicPlugin, TracksOfARealServerAreListedFoundAndFetched)
{
    addSound("far/x/1.mp3", u"AC/DC", u"50% \"Live\"", u"T.N.T.");
    addSound("far/x/2.mp3", u"AC/DC", u"50% \"Live\"", u"T.N.T.");
    addSound("far/y/3.mp3", u"\u00dcml\u00e4ut", u"..", u"a?b&c#d");
    const SupysonicServer server(dir.path("far"), dir.path("state"));
    if (!server.isRunning)
        GTEST_SKIP() << "supysonic is not installed";
    add(server.url());
    EXPECT_EQ(CQoPluginManager::checkPluginCredentials(u"music", u"ann", u"wrong", false),
              CQoPluginManager::LC_Failed);
    EXPECT_EQ(CQoPluginManager::checkPluginCredentials(u"music", u"ann", u"s3cret", false),
              CQoPluginManager::LC_Ok);

    EXPECT_EQ(listed(),
              "AC/DC\\50%% \"Live\"\\T.N.T. (2).mp3\n"
              "AC/DC\\50%% \"Live\"\\T.N.T..mp3\n"
              "\xc3\x9cml\xc3\xa4ut\\..\\a?b&c#d.mp3\n");
    const CQoCollPath far =
        at(u"music").child(u"\u00dcml\u00e4ut").child(u"..").child(u"a?b&c#d.mp3");
    const auto item =
        CQoPluginManager::getDownloadItem(far, dir.collPath("copy.mp3"), true, &progress);
    ASSERT_TRUE(item);
    item->Start();
    while (item->GetState() == IDownloadItem::DS_Running)
        std::this_thread::yield();
    EXPECT_EQ(dir.read("copy.mp3"), dir.read("far/y/3.mp3"));
    EXPECT_EQ(found(u"b&c"), "a?b&c#d\n");
    EXPECT_EQ(found(u"nothing of that name"), "");
    expectNoSecrets();
}

TEST_F(SubsonicPlugin, TheServerGetsANewTokenForEachQuestion)
{
    std::vector<std::string> salts;
    HostileServer server;
    server.answer = [&](const std::string& request)
    {
        salts.push_back(parameter(request, "s"));
        const std::string text = listenerPassword + salts.back();
        unsigned char digest[EVP_MAX_MD_SIZE];
        EVP_Digest(text.data(), text.size(), digest, nullptr, EVP_md5(), nullptr);
        std::string token;
        for (int i = 0; i < 16; ++i)
        {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02x", digest[i]);
            token += digits;
        }
        EXPECT_EQ(parameter(request, "t"), token);
        EXPECT_EQ(parameter(request, "p"), "");
        return library(request, "{'id':'c','title':'a','suffix':'mp3'}");
    };
    add(server.url());
    EXPECT_EQ(listed(), "Ann\\One\\a.mp3\n");
    ASSERT_EQ(salts.size(), 3U);
    EXPECT_GE(salts[0].size(), 16U);
    EXPECT_NE(salts[0], salts[1]);
    expectNoSecrets();
}

TEST_F(SubsonicPlugin, ThePasswordItselfIsSentWhereNoTokenWillDoAndToThisMachineAlone)
{
    const std::string old = "'version':'1.12.0',";
    const struct
    {
        bool isHere;
        std::string refusal;
        bool isSent;
        const char* text;
    } cases[] = {{true, bad(41, "no tokens"), true, "Ann\\One\\a\n"},
                 {false, bad(41, "no tokens"), false, "without encryption"},
                 {true, bad(10, "p is missing", old), true, "Ann\\One\\a\n"},
                 {false, bad(10, "p is missing", old), false, "without encryption"},
                 {true, bad(10, "something else is missing"), false, "something else is missing"}};
    for (const auto& each : cases)
    {
        std::string all;
        HostileServer server(each.isHere);
        server.answer = [&](const std::string& request)
        {
            all += request;
            return parameter(request, "p") == "enc:" + listenerPasswordHex
                       ? library(request, "{'id':'c','title':'a'}")
                       : each.refusal;
        };
        plugins = boost::make_shared<qo::host::PluginList>();
        CQoPluginManager::setPluginsManager(plugins);
        add(server.url());
        const std::string shown = listed();
        EXPECT_NE(shown.find(each.text), std::string::npos) << each.refusal << shown;
        EXPECT_EQ(all.find("p=enc:") != std::string::npos, each.isSent) << each.refusal;
    }
    expectNoSecrets();
}

TEST_F(SubsonicPlugin, AnswersThatLieCostOneSentence)
{
    HostileServer other;
    other.answer = [](const std::string&) { return artists(""); };
    HostileServer server;
    add(server.url());
    std::string members = "'m':0";
    for (int i = 0; i < 100'000; ++i)
        members += ",\"" + std::to_string(i) + "\":0";
    const struct
    {
        std::string answer;
        const char* text;
    } cases[] = {
        {HostileServer::reply("200 OK", "<html>Welcome</html>"), "no music server"},
        {HostileServer::reply("200 OK", "{}"), "no music server"},
        {HostileServer::reply("200 OK", ""), "no music server"},
        {HostileServer::reply("404 No", "<html/>"), "no such file"},
        {HostileServer::reply("200 OK", "{\"subsonic-response\":{"), "damaged"},
        {HostileServer::reply("200 OK", repeated(100'000, "[")), "no music server"},
        {good("\"a\":" + repeated(100'000, "[") + repeated(100'000, "]")), "damaged"},
        {good("\"a\":" + repeated(100'000, "{\"a\":") + "0" + repeated(100'000, "}")), "damaged"},
        {good("\"a\":[" + repeated(2'000'000, "1,") + "1]"), "damaged"},
        {good("\"a\":{" + members + "}"), "damaged"},
        {artists(repeated(100'001, "{'id':'a','name':'b'},") + "0"), "damaged"},
        {bad(40, "no"), "does not accept"},
        {bad(50, "no"), "does not allow"},
        {bad(60, "no"), "Account expired"},
        {bad(70, "no"), "does not have it"},
        {bad(0, "busy\\u0007 scanning"), "says: busy  scanning"},
        {HostileServer::reply("302 Go", "", "Location: " + other.url() + "\r\n"), "another place"},
        {HostileServer::reply("302 Go", "", "Location: /dav/rest/getArtists.view\r\n"),
         "in a ring"},
        {"not HTTP", "127.0.0.1"}};
    for (const auto& each : cases)
    {
        server.answer = [&](const std::string&) { return each.answer; };
        const std::string shown = listed();
        EXPECT_NE(shown.find(each.text), std::string::npos) << each.text << ": " << shown;
        EXPECT_EQ(shown.find('?'), std::string::npos) << shown;
    }
    EXPECT_EQ(other.requests, 0);
    server.answer = [](const std::string& request)
    { return bad(0, "you sent " + parameter(request, "t")); };
    EXPECT_NE(listed().find("could not do it"), std::string::npos);
    for (const char* const text : {"<html/>", "{}"})
    {
        server.answer = [&](const std::string&) { return HostileServer::reply("200 OK", text); };
        EXPECT_EQ(CQoPluginManager::checkPluginCredentials(u"music"),
                  CQoPluginManager::LC_WrongServerPath);
    }
    expectNoSecrets();
}

TEST_F(SubsonicPlugin, EntriesOfAnyFormBecomeNames)
{
    HostileServer server;
    server.answer = [&](const std::string& request)
    {
        // The first two artists have one name; a list of one may come as that one.
        if (asksFor(request, "getArtists"))
            return good("'artists':{'index':{'artist':[{'id':1,'name':'A/\\n'},"
                        "{'id':'2','name':'A/'},{'id':'3'},{'name':'no id'},{'id':''},{'id':[]},7,"
                        "null,{'id':'" +
                        std::string(1001, 'x') + "'}]}}");
        const std::string id = parameter(request, "id");
        if (asksFor(request, "getArtist"))
            return good("'artist':{'album':{'id':'" + id + "','name':1999}}");
        if (id != "1")
            return good("'album':{'song':{'id':'6','title':'a'}}");
        return good("'album':{'song':[{'id':'1','title':'a','duration':-1,'suffix':'../x'},"
                    "{'id':'2','title':'a','duration':99999999999999999999,'year':1e300},"
                    "{'id':'3','path':'x/../b.MP3','suffix':'mp3','size':-5},"
                    "{'id':'4','title':'a (2)'},{'id':'5','isDir':true}]}");
    };
    add(server.url());
    EXPECT_EQ(listed(),
              "[unknown]\\1999\\a\nA/\\1999\\a\nA/\\1999\\a (2)\nA/\\1999\\a (2) (2)\n"
              "A/\\1999\\a (3)\nA/\\1999\\b.mp3\n");
}

TEST_F(SubsonicPlugin, APageThatNeverEndsIsLeftAfterAThousandTracks)
{
    HostileServer server;
    server.answer = [&](const std::string& request)
    {
        std::string songs;
        const int first = std::stoi(parameter(request, "songOffset"));
        for (int i = 0; i < 500; ++i)
            songs += (i > 0 ? ",{'id':" : "{'id':") + std::to_string(first + i) + ",'title':'t'}";
        return good("'searchResult3':{'song':[" + songs + "]}");
    };
    add(server.url());
    EXPECT_EQ(found(u"t").size(), 2000U); // of two bytes each
    EXPECT_EQ(server.requests, 2);
}

TEST_F(SubsonicPlugin, AFailedDownloadLeavesNothing)
{
    std::string get;
    HostileServer server;
    const std::string sound = "Content-Type: audio/mpeg\r\n";
    server.answer = [&](const std::string& request)
    {
        if (asksFor(request, "stream") && parameter(request, "id") == "%2F..%2F%3F%26%0A")
            return HostileServer::reply("200 OK", "0123456789", sound);
        return asksFor(request, "download")
                   ? get
                   : library(request, "{'id':'/../?&\\n','title':'a','suffix':'mp3','size':10}");
    };
    add(server.url());
    const CQoCollPath far = at(u"music", u"Ann\\One\\a.mp3");
    const CString target = dir.collPath("copy.mp3");
    for (const std::string& each :
         {bad(70, "gone"),
          HostileServer::reply("200 OK", "<html/>", "Content-Type: text/html\r\n"),
          good("\"a\":0"),
          HostileServer::reply("200 OK", "abc", sound),
          std::string("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc"),
          std::string()})
    {
        get = each;
        EXPECT_FALSE(CQoPluginManager::downloadFile(far, target, true, &progress));
        EXPECT_FALSE(qo::host::takePluginFailure().IsEmpty()) << each;
        EXPECT_FALSE(fs::exists(dir.path("copy.mp3"))) << each;
    }
    get = bad(50, "downloads are off");
    EXPECT_TRUE(CQoPluginManager::downloadFile(far, target, true, &progress));
    EXPECT_TRUE(dir.read("copy.mp3").ends_with("0123456789"));
    expectNoSecrets();
}
