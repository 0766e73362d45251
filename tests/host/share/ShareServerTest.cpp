#include "share/ShareServer.h"

#include "core/base/HostError.h"
#include "plugins/http/HttpClient.h"
#include "support/Servers.h"
#include "support/TempDir.h"

#include <filesystem>

namespace
{
using namespace qo;
using namespace qo::host;

constexpr const char* rightId = "0e6da184056d4d8a8cfb0c7b8fb2dd10B683C9FC56DE0F2406FCC208FE769F91";

/// A server that offers two files by their rows, and a client that trusts it.
class ShareServerTest : public testing::Test
{
protected:
    ShareServerTest()
    {
        dir.write("list", "the list");
        dir.write("a.mp3", std::string(300'000, 'a'));
        dir.write("secret", "nobody's business");
        share.peer = u"Ann";
        share.shareId = fromUtf8(rightId);
        offer = std::make_shared<Offer>(
            share,
            Offer::File{dir.collPath("list"), 8},
            Offer::Files{{17, {dir.collPath("a.mp3"), 300'000}}, {18, {dir.collPath("gone"), 5}}});
        offers.replace({offer});
        limits.wrongIdPause = 300;
        limits.requestSeconds = 1;
        address.host = "127.0.0.1";
        const ListeningSocket free;
        address.port = free.port;
    }
    void serve()
    {
        server = startShareServer(key,
                                  offers,
                                  address,
                                  limits,
                                  [this](const ShareVisit& visit)
                                  {
                                      ++tellings;
                                      visits += visit.times;
                                  });
    }
    std::unique_ptr<HttpClient> client() const
    {
        auto made = std::make_unique<HttpClient>(HttpAddress{"https://" + address.place(), "/1/"});
        made->trustKey(key.digest());
        return made;
    }
    /// The status of a request, and what came with it.
    long ask(const std::string& path,
             const std::string& id = rightId,
             const char* method = "GET",
             const std::vector<std::string>& more = {})
    {
        body.clear();
        HttpRequest request;
        request.method = method;
        request.address = {"https://" + address.place(), path};
        request.headers = {"Authorization: Bearer " + id};
        request.headers.insert(request.headers.end(), more.begin(), more.end());
        request.sink = [this](const HttpHead& head, std::string_view bytes)
        {
            tag = head.tag;
            body += bytes;
            return true;
        };
        return client()->run(std::move(request)).status;
    }

    const TempDir dir;
    const ShareKey key{dir.collPath(""), false};
    Share share;
    std::shared_ptr<Offer> offer;
    Offers offers;
    ShareLimits limits;
    PeerAddress address;
    std::atomic<int> visits = 0;
    std::atomic<int> tellings = 0;
    std::unique_ptr<ShareServer> server;
    std::string body;
    std::string tag;
};

TEST_F(ShareServerTest, GivesWhatTheExtractNamesAndNothingElse)
{
    serve();
    EXPECT_EQ(ask("/1/extract"), 200);
    EXPECT_EQ(body, "the list");
    EXPECT_EQ(ask("/1/files/17"), 200);
    EXPECT_EQ(body.size(), 300'000U);
    const std::string secret = dir.path("secret");
    for (const std::string& path : {std::string("/"),
                                    std::string("/1/files/16"),
                                    std::string("/1/files/-17"),
                                    std::string("/1/files/17%20"),
                                    std::string("/1/files/4294967313"),
                                    std::string("/1/files/../extract"),
                                    "/1/files/../../.." + secret,
                                    "/1/files/" + secret,
                                    std::string("/1/extract/")})
        EXPECT_EQ(ask(path), 404) << path;
    for (const char* const method : {"POST", "PUT", "DELETE", "PROPFIND", "X"})
        EXPECT_EQ(ask("/1/files/17", rightId, method), 405) << method;
    EXPECT_EQ(ask("/1/files/18"), 404); // it is no longer there
    // A friend says which file he means: the row may be another one's by now.
    const auto askFor = [&](const CString& name, std::int64_t size)
    {
        const CQoCollPath path(dir.collPath(toUtf8(name)));
        const CQoCollPath far = CQoCollPath::makeShare(u"17", path);
        return ask("/1/files/17",
                   rightId,
                   "GET",
                   {"Qo-File: " + fileMark(CQoCollPath(far.toString()).getComponents(), size)});
    };
    EXPECT_EQ(askFor(u"a.mp3", 300'000), 200);
    EXPECT_EQ(askFor(u"b.mp3", 300'000), 410);
    EXPECT_EQ(askFor(u"a.mp3", 299'999), 410);
    dir.write("a.mp3", std::string(300'001, 'a'));
    EXPECT_EQ(ask("/1/files/17"), 410); // nor is this what the friend knows
    // The server does not read the rest, so the end of the connection may overtake its answer; the
    // next request gets one.
    constexpr int mostTries = 20;
    long refused = 0;
    for (int tries = 0; refused == 0 && tries < mostTries; ++tries)
        refused = ask("/1/extract", rightId, "GET", {"X: " + std::string(100'000, 'x')});
    EXPECT_EQ(refused, 431);
    EXPECT_EQ(ask("/1/extract"), 200);
}

TEST_F(ShareServerTest, ContinuesOnlyTheFileThatWasBegun)
{
    serve();
    EXPECT_EQ(ask("/1/files/17", rightId, "GET", {"Range: bytes=299990-"}), 206);
    EXPECT_EQ(body.size(), 10U);
    EXPECT_EQ(ask("/1/files/17", rightId, "GET", {"Range: bytes=299999-", "If-Range: " + tag}),
              206);
    EXPECT_EQ(body.size(), 1U);
    EXPECT_EQ(ask("/1/files/17", rightId, "GET", {"Range: bytes=9-", "If-Range: \"other\""}), 200);
    EXPECT_EQ(body.size(), 300'000U);
    EXPECT_EQ(ask("/1/files/17", rightId, "GET", {"Range: bytes=300000-"}), 416);
    for (const char* const range : {"bytes=-5", "bytes=1-2", "bytes=x-", "bytes=--1-", "lines=1-"})
        EXPECT_EQ(ask("/1/files/17", rightId, "GET", {std::string("Range: ") + range}), 200)
            << range;
}

TEST_F(ShareServerTest, FloodOfWrongIdsIsAnsweredLateAndHoldsNoFriendUp)
{
    limits.waitingWrongIds = 4;
    limits.wrongIdPause = 3000;
    serve();
    std::atomic<int> refused = 0;
    std::atomic<int> cutOff = 0;
    std::vector<std::thread> flood;
    flood.reserve(20);
    for (int i = 0; i < 20; ++i)
        flood.emplace_back(
            [&]
            {
                const auto own = client();
                HttpRequest request;
                request.address = {"https://" + address.place(), "/1/extract"};
                request.headers = {"Authorization: Bearer " + std::string(64, 'x')};
                ++(own->run(std::move(request)).status == 403 ? refused : cutOff);
            });
    while (cutOff + refused < 16)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(refused, 0); // four wait
    EXPECT_EQ(ask("/1/extract"), 200);
    for (std::thread& each : flood)
        each.join();
    EXPECT_EQ(refused, 4);
    server.reset();
    EXPECT_EQ(visits, 21);
    EXPECT_LT(tellings, 8); // and not one for each
    limits.wrongIdPause = 10;
    serve();
    for (const std::string& id : {std::string(),
                                  std::string(rightId).substr(1),
                                  std::string(rightId) + "0",
                                  std::string("basic x")})
        EXPECT_EQ(ask("/1/extract", id), 403) << id;
    offers.replace({});
    EXPECT_TRUE(offer->hasEnded());
    EXPECT_EQ(ask("/1/extract"), 403);
    server.reset();
    EXPECT_EQ(visits, 26);
}

TEST_F(ShareServerTest, SilentConnectionsAreCutOffAndItEndsWithOpenOnes)
{
    limits.connections = limits.connectionsOfOne = 10;
    limits.requestSeconds = 10;
    serve();
    sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    place.sin_port = htons(static_cast<std::uint16_t>(address.port));
    std::vector<int> open(10);
    for (int& fd : open)
    {
        fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        ASSERT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&place), sizeof(place)), 0);
    }
    char byte = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(::recv(open[0], &byte, 1, 0), 0); // not before the server closes it
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
    EXPECT_EQ(ask("/1/extract"), 200);
    std::thread waiting([this] { (void)ask("/1/extract", "wrong"); });
    server.reset();
    waiting.join();
    for (const int fd : open)
        ::close(fd);
}

TEST(ShareKey, IsMadeOnceAndKeptFromOthers)
{
    const TempDir dir;
    const std::string trial = ShareKey(dir.collPath(""), true).digest();
    EXPECT_FALSE(std::filesystem::exists(dir.path("share-key.pem")));
    const std::string digest = ShareKey(dir.collPath(""), false).digest();
    EXPECT_EQ(digest.size(), 64U);
    EXPECT_NE(digest, trial);
    EXPECT_EQ(ShareKey(dir.collPath(""), false).digest(), digest);
    const auto rights = std::filesystem::status(dir.path("share-key.pem")).permissions();
    EXPECT_EQ(rights & std::filesystem::perms(0777), std::filesystem::perms(0600));
    const std::string whole = dir.read("share-key.pem");
    dir.write("share-key.pem", whole.substr(0, whole.size() / 2));
    std::filesystem::permissions(dir.path("share-key.pem"), std::filesystem::perms(0600));
    EXPECT_THROW(std::ignore = ShareKey(dir.collPath(""), false), HostError);
    dir.write("share-key.pem", whole);
    std::filesystem::permissions(dir.path("share-key.pem"), std::filesystem::perms(0640));
    EXPECT_THROW(std::ignore = ShareKey(dir.collPath(""), false), HostError);
}

TEST(PeerAddress, IsReadFromLinksAndFromWhatPeopleType)
{
    const std::string digest(64, 'a');
    const auto read = PeerAddress::ofLinkText("[::1]:80," + digest + ",records, all of them");
    ASSERT_TRUE(read);
    EXPECT_EQ(read->host, "[::1]");
    EXPECT_EQ(read->port, 80);
    EXPECT_EQ(read->text, "records, all of them");
    EXPECT_EQ(PeerAddress::ofLinkText(read->linkText())->keyDigest, digest);
    for (const std::string& text : {std::string("my records"),
                                    "nas:80," + digest,
                                    "nas:80," + std::string(64, 'A') + ",",
                                    "na/s:80," + digest + ",",
                                    "a@b:80," + digest + ","})
        EXPECT_FALSE(PeerAddress::ofLinkText(text)) << text;
    EXPECT_EQ(PeerAddress::ofPlace("nas")->port, PeerAddress::usualPort);
    for (const char* const typed : {"", ":80", "nas:0", "nas:65536", "nas:x", "nas:", "a b", "::1"})
        EXPECT_FALSE(PeerAddress::ofPlace(typed)) << typed;
}
} // namespace
