#include "plugins/webdav/WebdavPlugin.h"

#include "QoColl/Plugins/PluginFixture.h"
#include "core/base/HostError.h"
#include "plugins/base/PluginFailure.h"
#include "support/OrdinaryUser.h"
#include "support/Servers.h"

#include <filesystem>
#include <fstream>
#include <limits>

namespace fs = std::filesystem;

namespace
{
const char* const password = "s3cret";

class WebdavPlugin : public PluginFixture
{
protected:
    void add(const std::string& url)
    {
        const qo::host::HttpLimits limits = {1, 1, 5};
        const auto plugin = boost::make_shared<qo::host::WebdavPlugin>(
            u"dav", qo::fromUtf8(url), nullptr, std::nullopt, limits);
        plugin->SetCredentials(u"ann", qo::fromUtf8(password));
        plugins->add(plugin);
    }
    /// What is in the plug-in, or why it cannot be listed.
    std::string listed()
    {
        QoFileDbItemArray files;
        qo::host::takePluginFailure();
        boost::shared_ptr<IPhysicalBrowseWrapper> browse;
        boost::shared_ptr<IPhysicalResult> root;
        EXPECT_TRUE(CQoPluginManager::getPhysicalBrowseFuncFromPlugin(u"dav", browse));
        EXPECT_TRUE(CQoPluginManager::getRootPathResultFromPhysicalPlugin(browse, nullptr, root));
        const bool isComplete = CQoPluginManager::getFilesFromPhysicalPlugin(
            CQoPluginManager::PI_Files, browse, {}, at(u"dav"), root, 1, &progress, files);
        return isComplete ? pathsOf(files) : qo::toUtf8(qo::host::takePluginFailure());
    }
    std::string read(const std::string& relative) const { return dir.read(relative); }
    void putSounds() const
    {
        fs::create_directories(dir.path("far/Music"));
        fs::copy_file(QO_TEST_DATA "/sounds/sound.mp3", dir.path("far/Music/" + name));
        fs::copy_file(QO_TEST_DATA "/sounds/sound.mp3", dir.path("own.mp3"));
    }
    void expectFilesToGoBothWays(const ServerProcess& server);

    const std::string name = "50% off #1? (\xc3\xbc)&.mp3";
};

std::string entry(const std::string& href)
{
    return "<response><href>" + href +
           "</href><propstat><prop><getcontentlength>1000</getcontentlength></prop>"
           "<status>HTTP/1.1 200 OK</status></propstat></response>";
}
std::string listing(const std::string& entries)
{
    return HostileServer::reply("207 Multi-Status",
                                "<?xml version=\"1.0\"?><multistatus xmlns=\"DAV:\">" + entries +
                                    "</multistatus>");
}
std::string many(int count, const std::string& text)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}
} // namespace

/// With a real server over the folder "far", which putSounds() has made.
void WebdavPlugin::expectFilesToGoBothWays(const ServerProcess& server)
{
    add(server.url());
    EXPECT_EQ(CQoPluginManager::checkPluginCredentials(u"dav", u"ann", u"wrong", false),
              CQoPluginManager::LC_Failed);
    EXPECT_EQ(CQoPluginManager::checkPluginCredentials(u"dav", u"ann", u"s3cret", false),
              CQoPluginManager::LC_Ok);

    QoFileDbItemArray files;
    ASSERT_TRUE(CQoPluginManager::getFilesFromPlugin(
        CQoPluginManager::PI_Files, at(u"dav"), 0xffff, &progress, files));
    EXPECT_EQ(pathsOf(files), "Music\\" + name.substr(0, 2) + "%" + name.substr(2) + "\n");
    const CQoCollPath far = at(u"dav", u"Music").child(qo::fromUtf8(name));
    EXPECT_TRUE(CQoPluginManager::downloadFile(far, dir.collPath("copy.mp3"), true, &progress));
    EXPECT_EQ(read("copy.mp3"), read("own.mp3"));

    CQoCollPath target = at(u"dav", u"New\\Folder").child(qo::fromUtf8("100%.mp3"));
    const auto send = [&](bool replace) {
        return CQoPluginManager::uploadFile(
            dir.collPath("own.mp3"), target, 2141, replace, &progress);
    };
    EXPECT_TRUE(send(false));
    EXPECT_EQ(read("far/New/Folder/100%.mp3"), read("own.mp3"));
    std::ofstream(dir.path("own.mp3")) << "newer";
    EXPECT_FALSE(send(false));
    EXPECT_EQ(qo::host::takePluginFailure().Right(19), u"it is there already");
    EXPECT_TRUE(send(true));
    EXPECT_EQ(read("far/New/Folder/100%.mp3"), "newer");
    fs::resize_file(dir.path("own.mp3"), std::uintmax_t{1} << 30);
    CountedProgress impatient(6);
    CQoCollPath large = at(u"dav", u"New\\Folder\\large.mp3");
    EXPECT_FALSE(CQoPluginManager::uploadFile(
        dir.collPath("own.mp3"), large, std::int64_t{1} << 30, false, &impatient));
    const fs::directory_iterator left(dir.path("far/New/Folder"));
    EXPECT_EQ(std::distance(begin(left), end(left)), 1) << "a part is left";
    EXPECT_TRUE(CQoPluginManager::deleteFile(at(u"dav", u"New"), &progress));
    EXPECT_FALSE(fs::exists(dir.path("far/New")));
    EXPECT_FALSE(log.has(password));
}

TEST_F(WebdavPlugin, FilesGoBothWaysWithRclone)
{
    putSounds();
    const RcloneServer server(dir.path("far"));
    if (!server.isRunning)
        GTEST_SKIP() << "rclone is not installed";
    expectFilesToGoBothWays(server);
}

TEST_F(WebdavPlugin, FilesGoBothWaysWithApache)
{
    putSounds();
    const OrdinaryUser ann(dir.path());
    const ApacheServer server(dir.path("far"), dir.path("state"));
    if (!ann.isPossible || !server.isRunning)
        GTEST_SKIP() << "apache2 is not installed, or cannot be another user's";
    expectFilesToGoBothWays(server);
}

TEST_F(WebdavPlugin, ATagCostsTwoSmallRequests)
{
    // Ten bytes are the header of a tag of 100 bytes.
    const std::string tag = std::string("ID3\3\0\0\0\0\0\x64", 10) + std::string(990, '\0');
    std::vector<std::string> ranges;
    HostileServer server;
    server.answer = [&](const std::string& request)
    {
        if (request.starts_with("PROPFIND"))
            return listing(entry("/dav/a.mp3"));
        const std::size_t field = request.find("Range: ");
        ranges.push_back(request.substr(field, request.find('\r', field) - field));
        // It knows no ranges, and sends all of it.
        return HostileServer::reply("200 OK", tag);
    };
    add(server.url());
    QoFileDbItemArray files;
    EXPECT_TRUE(CQoPluginManager::getFilesFromPlugin(
        CQoPluginManager::PI_Files, at(u"dav"), 1, &progress, files));
    EXPECT_EQ(ranges, (std::vector<std::string>{"Range: bytes=0-9", "Range: bytes=0-109"}));
}

TEST_F(WebdavPlugin, RoomIsWhatTheServerSaysOfItsQuota)
{
    std::string properties;
    HostileServer server;
    server.answer = [&](const std::string&)
    {
        return listing("<response><href>/dav/</href><propstat><prop>" + properties +
                       "</prop><status>HTTP/1.1 200 OK</status></propstat></response>");
    };
    add(server.url());
    const struct
    {
        const char* properties;
        bool isKnown;
        std::int64_t total;
        std::int64_t free;
    } cases[] = {
        {"<quota-available-bytes>5</quota-available-bytes><quota-used-bytes>15</quota-used-bytes>",
         true,
         20,
         5},
        {"<quota-available-bytes>5</quota-available-bytes>", true, 5, 5},
        {"<quota-available-bytes>9223372036854775807</quota-available-bytes>"
         "<quota-used-bytes>15</quota-used-bytes>",
         true,
         std::numeric_limits<std::int64_t>::max(),
         std::numeric_limits<std::int64_t>::max()},
        {"<quota-available-bytes>-3</quota-available-bytes>", false, 0, 0},
        {"<quota-used-bytes>15</quota-used-bytes>", false, 0, 0}};
    for (const auto& each : cases)
    {
        properties = each.properties;
        std::int64_t total = 0;
        std::int64_t free = 0;
        bool unlimited = false;
        EXPECT_EQ(CQoPluginManager::getPluginFillStateInfo(u"dav", total, free, unlimited),
                  each.isKnown)
            << properties;
        EXPECT_EQ(total, each.total) << properties;
        EXPECT_EQ(free, each.free) << properties;
    }
}

TEST_F(WebdavPlugin, ThePasswordIsSentInTheSafestWayThatIsOffered)
{
    std::string all;
    HostileServer server;
    server.answer = [&](const std::string& request)
    {
        all += request;
        return request.find("Authorization: Digest ") != std::string::npos
                   ? listing(entry("/dav/a.mp3"))
                   : HostileServer::reply("401 No",
                                          "",
                                          "WWW-Authenticate: Basic realm=\"r\"\r\n"
                                          "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\", "
                                          "qop=\"auth\", algorithm=MD5\r\n");
    };
    add(server.url());
    EXPECT_EQ(listed(), "a.mp3\n");
    EXPECT_EQ(all.find("Basic"), std::string::npos);
    EXPECT_EQ(all.find(password), std::string::npos);
}

/// A password with each unit's lowest bit turned over, so that this text is not what is searched.
const std::string turnedPassword = "Vnse!bmmdf!nqfo!tdt`ld!1234";

/// How often it is in the memory of this process, as UTF-8 or as UTF-16.
int foundInMemory()
{
    constexpr std::size_t largestRegion = std::size_t{1} << 30; // beyond are maps of sanitizers
    const auto isAt = [](const std::string& bytes, std::size_t at, std::size_t width)
    {
        for (std::size_t i = 0; i < turnedPassword.size(); ++i)
        {
            if (at + i * width >= bytes.size() || bytes[at + i * width] != (turnedPassword[i] ^ 1))
                return false;
        }
        return true;
    };
    std::ifstream maps("/proc/self/maps");
    std::ifstream memory("/proc/self/mem", std::ios::binary);
    int found = 0;
    for (std::string line; std::getline(maps, line);)
    {
        std::size_t from = 0;
        std::size_t to = 0;
        char rights[5] = "";
        if (std::sscanf(line.c_str(), "%zx-%zx %4s", &from, &to, rights) != 3 ||
            std::string(rights) != "rw-p" || to - from > largestRegion)
            continue;
        std::string bytes(to - from, '\0');
        memory.clear();
        memory.seekg(static_cast<std::streamoff>(from));
        memory.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        for (std::size_t i = 0; i < bytes.size(); ++i)
            found += isAt(bytes, i, 1) || isAt(bytes, i, 2) ? 1 : 0;
    }
    return found;
}

TEST_F(WebdavPlugin, ThePasswordIsOverwrittenWhereverItWas)
{
    HostileServer server;
    server.answer = [](const std::string& request)
    {
        return request.find("Authorization: Basic ") != std::string::npos
                   ? listing(entry("/dav/a.mp3"))
                   : HostileServer::reply("401 No", "", "WWW-Authenticate: Basic realm=\"r\"\r\n");
    };
    {
        qo::host::WebdavPlugin plugin(u"dav", qo::fromUtf8(server.url()), nullptr, std::nullopt);
        CString typed;
        const qo::PassingSecret secret(typed);
        qo::host::Secret bytes;
        for (const char c : turnedPassword)
        {
            const char turned = c ^ 1;
            bytes.append({&turned, 1});
        }
        typed = bytes.text();
        plugin.SetCredentials(u"ann", typed);
        PluginResultArray results;
        EXPECT_TRUE(CQoPluginManager::getResultsSync(
            plugin.GetPhysicalBrowse()->GetRootFolder(), results, &progress));
        EXPECT_TRUE(CQoPluginManager::getResultsSync(
            plugin.GetLogin()->CheckCredentials(u"ann", typed), results, &progress));
        EXPECT_GT(foundInMemory(), 0);
    }
    EXPECT_EQ(foundInMemory(), 0);
}

TEST_F(WebdavPlugin, AnswersThatLieCostOneSentence)
{
    HostileServer other;
    other.answer = [](const std::string&) { return listing(entry("/dav/a.mp3")); };
    HostileServer server;
    add(server.url());
    const std::string doctype = "<!DOCTYPE multistatus [<!ENTITY a \"aaaaaaaaaa\">]>";
    const struct
    {
        std::string answer;
        const char* text;
    } cases[] = {
        {HostileServer::reply("401 No", ""), "does not accept"},
        {HostileServer::reply("403 No", ""), "does not allow"},
        {"HTTP/1.1 403 No\r\nContent-Length: 9000000000\r\n\r\n" + std::string(2'000'000, 'x'),
         "does not allow"},
        {HostileServer::reply("404 No", ""), "no such file"},
        {HostileServer::reply("429 No", "", "Retry-After: 7\r\n"), "after 7 seconds"},
        {HostileServer::reply("503 No", "", "Retry-After: 2\r\n"), "after 2 seconds"},
        {HostileServer::reply("507 No", ""), "no room"},
        {HostileServer::reply("200 OK", "<html/>"), "no WebDAV server"},
        {HostileServer::reply("302 Go", "", "Location: /dav/\r\n"), "in a ring"},
        {HostileServer::reply("302 Go", "", "Location: " + other.url() + "\r\n"), "another place"},
        {HostileServer::reply("302 Go", "", "Location: file:///etc/passwd\r\n"), "another place"},
        {"HTTP/1.1 207 OK\r\nContent-Length: 500\r\n\r\n<multistatus", "broken off"},
        {HostileServer::reply("207 OK", "<multistatus xmlns=\"DAV:\"><response>"), "damaged"},
        {HostileServer::reply("207 OK", many(100'000, "<a>")), "damaged"},
        {HostileServer::reply("207 OK", doctype + "<multistatus xmlns=\"DAV:\"/>"), "damaged"},
        {listing(entry(std::string(100'000, 'x'))), "damaged"},
        {listing(many(70, std::string(1'000'000, ' '))), "damaged"},
        {"not HTTP", "127.0.0.1"}};
    for (const auto& each : cases)
    {
        server.answer = [&](const std::string&) { return each.answer; };
        const std::string shown = listed();
        EXPECT_NE(shown.find(each.text), std::string::npos) << each.text << ": " << shown;
    }
    EXPECT_EQ(other.requests, 0);
    EXPECT_FALSE(log.has(password));
}

TEST_F(WebdavPlugin, AServerThatIsBusyIsAskedAgainWhenItSays)
{
    HostileServer server;
    server.answer = [&](const std::string&)
    {
        return server.requests < 3 ? HostileServer::reply("429 No", "", "Retry-After: 2\r\n")
                                   : listing(entry("/dav/a.mp3"));
    };
    add(server.url());
    EXPECT_EQ(listed(), "a.mp3\n");
    EXPECT_EQ(server.requests, 3);
    EXPECT_EQ(clock.rests[100], 40); // twice two seconds in tenths, of which none is waited here
}

TEST_F(WebdavPlugin, NamesLeadNowhereElse)
{
    HostileServer server;
    server.answer = [&](const std::string&)
    {
        return listing(entry("/dav/") + entry("/dav/../up.mp3") + entry("/dav/%2e%2e") +
                       entry("/other/x.mp3") + entry("/dav/deep/x.mp3") +
                       entry("http://elsewhere.example/dav/x.mp3") + entry("/dav/a%00b") +
                       entry("/dav/a%2Fb.mp3") + entry("/dav/b%0Ac.mp3") +
                       entry("/dav/.qo-part-1") + entry(server.url() + "d%25.mp3"));
    };
    add(server.url());
    EXPECT_EQ(listed(),
              "a_b.mp3\nb\xef\x80\x8a"
              "c.mp3\nd%%.mp3\n");
    for (const char16_t* const address :
         {u"ftp://nas/", u"https://ann:pw@nas/", u"nas", u"https://", u""})
        EXPECT_THROW(qo::host::parseHttpAddress(address), qo::host::HostError);
}

TEST_F(WebdavPlugin, AFolderMayHaveTenThousandFiles)
{
    std::string entries;
    for (int i = 0; i < 10'000; ++i)
        entries += entry("/dav/" + std::to_string(i) + ".mp3");
    HostileServer server;
    server.answer = [&](const std::string&) { return listing(entries); };
    add(server.url());
    const std::string names = listed();
    EXPECT_EQ(std::count(names.begin(), names.end(), '\n'), 10'000) << names.substr(0, 200);
    EXPECT_EQ(server.requests, 1);
}

TEST_F(WebdavPlugin, AFileThatBreaksOffIsTakenUpWhileItIsTheSame)
{
    const std::string content = std::string(400, 'a') + std::string(600, 'b');
    const auto begun = [&](const std::string& tag)
    {
        return "HTTP/1.1 200 OK\r\nETag: " + tag + "\r\nContent-Length: 1000\r\n\r\n" +
               content.substr(0, 400);
    };
    const std::string same = "\"1\"";
    const std::string rest = HostileServer::reply(
        "206 OK", content.substr(400), "ETag: \"1\"\r\nContent-Range: bytes 400-999/1000\r\n");
    const struct
    {
        std::string first;
        std::string second;
        const char* cause; ///< "" for a success
    } cases[] = {{begun(same), rest, ""},
                 {begun(same), HostileServer::reply("200 OK", content), "changed while"},
                 {begun("W/" + same), rest, "broken off"},
                 {begun(same), HostileServer::reply("404 No", ""), "no such file"}};
    HostileServer server;
    add(server.url());
    const CString target = dir.collPath("copy.mp3");
    for (const auto& each : cases)
    {
        server.answer = [&](const std::string& request)
        {
            if (request.starts_with("PROPFIND"))
                return listing(entry("/dav/a.mp3"));
            const bool continues = request.find("Range: bytes=400-") != std::string::npos &&
                                   request.find("If-Range: \"1\"") != std::string::npos;
            return continues ? each.second : each.first;
        };
        qo::host::takePluginFailure();
        const bool isWhole =
            CQoPluginManager::downloadFile(at(u"dav", u"a.mp3"), target, true, &progress);
        const std::string cause = qo::toUtf8(qo::host::takePluginFailure());
        EXPECT_EQ(isWhole, *each.cause == '\0') << cause;
        EXPECT_NE(cause.find(each.cause), std::string::npos) << cause;
        EXPECT_EQ(isWhole ? read("copy.mp3") : content, content);
    }
}

TEST_F(WebdavPlugin, WhatAnotherProgramChangesMeanwhileIsNotReplaced)
{
    dir.write("new.mp3", "new");
    HostileServer server;
    std::string methods;
    server.answer = [&](const std::string& request)
    {
        if (request.find("Authorization: Basic") == std::string::npos)
            return HostileServer::reply("401 No", "", "WWW-Authenticate: Basic realm=\"r\"\r\n");
        const std::string method = request.substr(0, request.find(' '));
        const bool isSent = methods.find("PUT") != std::string::npos;
        methods += method + " ";
        return method == "PROPFIND"
                   ? listing(entry("/dav/a.mp3"))
                   : HostileServer::reply(
                         "200 OK", "", isSent ? "ETag: \"2\"\r\n" : "ETag: \"1\"\r\n");
    };
    add(server.url());
    CQoCollPath far = at(u"dav", u"a.mp3");
    EXPECT_FALSE(CQoPluginManager::uploadFile(dir.collPath("new.mp3"), far, 3, true, &progress));
    const std::string cause = qo::toUtf8(qo::host::takePluginFailure());
    EXPECT_NE(cause.find("another program has changed it"), std::string::npos) << cause;
    EXPECT_TRUE(methods.ends_with("HEAD PUT HEAD DELETE ")) << methods.substr(0, 100);
}

TEST_F(WebdavPlugin, WhatStallsOrBreaksOffLeavesNothing)
{
    HostileServer server;
    add(server.url());
    std::string get;
    server.answer = [&](const std::string& request)
    { return request.starts_with("PROPFIND") ? listing(entry("/dav/a.mp3")) : get; };
    const CString target = dir.collPath("copy.mp3");
    const struct
    {
        std::string answer;
        const char* text;
    } cases[] = {{"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nabc", "broken off"},
                 {HostileServer::reply("200 OK", "abc"), "before it was whole"},
                 {HostileServer::reply("200 OK", std::string(2000, 'x')), "more bytes come"},
                 {HostileServer::reply("416 No", ""), "is shorter"},
                 {"", "does not answer"}};
    for (const auto& each : cases)
    {
        get = each.answer;
        EXPECT_FALSE(CQoPluginManager::downloadFile(at(u"dav", u"a.mp3"), target, true, &progress));
        const std::string cause = qo::toUtf8(qo::host::takePluginFailure());
        EXPECT_NE(cause.find(each.text), std::string::npos) << each.text << ": " << cause;
        EXPECT_FALSE(fs::exists(dir.path("copy.mp3")));
    }
    server.answer = [](const std::string&) { return std::string(); };
    EXPECT_NE(listed().find("does not answer"), std::string::npos);
    CountedProgress impatient(3);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_FALSE(CQoPluginManager::downloadFile(at(u"dav", u"a.mp3"), target, true, &impatient));
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(700));
}
