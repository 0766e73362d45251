#include "host/cli/QoCommand.h"
#include "support/Servers.h"

#include <algorithm>

namespace
{
/// Stands between two machines, and breaks each connection off, or holds it up, after so many bytes
/// to the client; 0 for none.
class BreakingProxy
{
public:
    explicit BreakingProxy(int target) : m_target(target), m_thread([this] { run(); }) {}
    ~BreakingProxy()
    {
        m_ends = true;
        m_thread.join();
    }
    BreakingProxy(const BreakingProxy&) = delete;
    BreakingProxy& operator=(const BreakingProxy&) = delete;

    int port() const { return m_socket.port; }

    std::atomic<std::int64_t> bytesEach = 0;
    std::atomic<bool> holdsUp = false;
    std::atomic<int> broken = 0;

private:
    void run()
    {
        while (!m_ends)
        {
            pollfd wait = {m_socket.fd, POLLIN, 0};
            if (::poll(&wait, 1, 20) <= 0)
                continue;
            const int near = ::accept(m_socket.fd, nullptr, nullptr);
            const int far = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
            sockaddr_in place = {};
            place.sin_family = AF_INET;
            place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            place.sin_port = htons(static_cast<std::uint16_t>(m_target));
            if (::connect(far, reinterpret_cast<sockaddr*>(&place), sizeof(place)) == 0)
                pass(near, far);
            ::close(near);
            ::close(far);
        }
    }
    void pass(int near, int far)
    {
        std::int64_t left = bytesEach > 0 ? bytesEach.load() : INT64_MAX;
        std::vector<char> block(16384);
        while (!m_ends)
        {
            pollfd both[2] = {{near, POLLIN, 0}, {far, POLLIN, 0}};
            if (::poll(both, 2, 20) <= 0)
                continue;
            for (int i = 0; i < 2; ++i)
            {
                if (both[i].revents == 0)
                    continue;
                const ssize_t count = ::recv(both[i].fd, block.data(), block.size(), 0);
                if (count <= 0)
                    return;
                ::send(i == 0 ? far : near,
                       block.data(),
                       static_cast<std::size_t>(count),
                       MSG_NOSIGNAL);
                left -= i == 1 ? count : 0;
            }
            if (left <= 0)
            {
                ++broken;
                while (holdsUp && !m_ends)
                    std::this_thread::sleep_for(std::chrono::milliseconds(10));
                return;
            }
        }
    }

    ListeningSocket m_socket;
    const int m_target;
    std::atomic<bool> m_ends = false;
    std::thread m_thread;
};

int freePort()
{
    const ListeningSocket socket;
    return socket.port;
}

/// Two people, each with a data folder of his own. Ann offers what she has.
class ShareCommand : public testing::Test
{
protected:
    ~ShareCommand() override { stopServing(); }

    /// At the proxy's port, behind which she serves.
    void invite(const std::vector<std::string>& more = {})
    {
        std::vector<std::string> words = {"share",
                                          "invite",
                                          "Ben",
                                          "--as",
                                          "Ann",
                                          "--at",
                                          "127.0.0.1:" + std::to_string(proxy.port())};
        words.insert(words.end(), more.begin(), more.end());
        const QoCommand::Result result = ann.run(words);
        EXPECT_EQ(result.code, 0) << result.err;
        ben.dir.write("link", result.out);
    }
    void serve(const QoCommand& who)
    {
        server = who.start({"share", "serve", "--listen", "127.0.0.1:" + std::to_string(port)},
                           "server-");
        for (int i = 0; i < 1000; ++i)
        {
            if (who.dir.read("server-err").find("serving at") != std::string::npos)
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ADD_FAILURE() << who.dir.read("server-err");
    }
    void stopServing()
    {
        if (server <= 0)
            return;
        ::kill(server, SIGTERM);
        ::waitpid(server, nullptr, 0);
        server = -1;
    }
    /// Ben's copies, whole and in part.
    std::vector<std::string> copies() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(ben.dir.path("to")))
        {
            if (entry.is_regular_file())
                names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    bool isCopied(const std::string& file, const std::string& copy) const
    {
        return ben.dir.read("to/" + copy) == ann.dir.read("music/" + file);
    }

    /// The paths of the friend's files are his own, after his name.
    void expectShownAsThere(const std::string& song) const
    {
        ben.expect({"tracks", "--on", "ann", "zvezda"}, 0, "Zvezda");
        EXPECT_TRUE(ben.run({"tree", "--on", "Ann"}).out.starts_with("Ann  (1 file)\n└── "));
        EXPECT_EQ(ben.run({"tree", "--on", "Ann"}).out.find("── Ann"), std::string::npos);
        ben.expect({"ls", "--on", "Ann", "--format", "{path}", song}, 0, "Ann" + song + "\n");
        std::vector<std::string> panes = {
            "view", "--on", "Ann", "--left", "folders", "--select", "Ann" + ann.music("Kino")};
        ben.expect(panes, 0, "01.mp3  (foreign)");
        EXPECT_EQ(ben.run(panes).out.find("C:"), std::string::npos);
        panes.back() = "Ann";
        const std::string first = ann.music().substr(0, ann.music().find('/', 1)).substr(1);
        const std::string shown = ben.run(panes).out;
        EXPECT_TRUE(shown.starts_with("left\n> [ ] Ann  ")) << shown;
        EXPECT_NE(shown.find("middle\n  [ ] " + first + "  ("), std::string::npos) << shown;
    }

    const QoCommand ann;
    const QoCommand ben;
    const int port = freePort();
    BreakingProxy proxy{port};
    pid_t server = -1;
};

TEST_F(ShareCommand, FriendFetchesWhatIsOfferedAndNothingElse)
{
    ann.addTrack("Kino/01.mp3", {"artist=Kino", "title=Zvezda", "genre=rock"});
    ann.addTrack("Kino/02.mp3", {"artist=Kino", "title=Noch", "genre=folk"});
    ASSERT_EQ(ann.scan().code, 0);
    ann.expect({"share", "serve"}, 2, "nothing is offered to anyone yet");
    ann.expect({"share", "invite", "Ben", "--query", "./Kino"}, 2, "write the path");
    ann.expect({"share", "invite", "Ben", "--at", "a/b"}, 2, "is no address");
    invite({"--query", "genre:rock"});
    ann.expect({"share", "invite", "ben"}, 2, "something is offered to \"Ben\" already");
    ann.expect({"share", "accept", ben.dir.path("link")}, 2, "your own invitation");
    ann.expect({"share", "ls"}, 0, "genre:rock");

    ben.dir.makeFolder("to");
    ben.expect({"share", "accept", ben.dir.path("link")}, 0, "accepted the share of Ann");
    ben.expect({"share", "accept", ben.dir.path("link")}, 2, "accepted before, as Ann");
    ben.expect({"share", "get", "Ann", "/", "--to", ben.dir.path("to")}, 4, "no files of Ann");
    ben.expect({"share", "scan", "Ann"}, 1, "the files of Ann could not be taken");
    serve(ann);
    ben.expect({"share", "scan", "Ann"}, 0, "1 file of Ann: 1 new, 0 changed, 0 gone");
    const std::string song = ann.music("Kino/01.mp3");
    ben.expect({"share", "browse", "Ann", ann.music("Kino")}, 0, "Kino/01.mp3");
    ben.expect({"share", "get", "Ann", song, "--to", ben.dir.path("to")}, 0, "fetched: Ann/");
    EXPECT_TRUE(isCopied("Kino/01.mp3", "01.mp3"));
    ben.expect(
        {"share", "get", "Ann", ann.music("Kino/02.mp3"), "--to", ben.dir.path("to")}, 4, "no Ann");
    EXPECT_EQ(ben.paths(), std::vector<std::string>()); // what is a friend's is not one's own
    expectShownAsThere(song);
    ben.expect({"artists", "--on", "Ben"}, 4, "there is no device, storage service or friend");
    EXPECT_EQ(ben.run({"share", "ls", "--json"}).json()[0]["files"], 1);

    // What Ann finds anew is offered within a second or two, and a file that has changed is not
    // taken for the one that Ben's list names.
    ann.addTrack("Kino/03.mp3", {"artist=Kino", "title=Son", "genre=rock"});
    ann.dir.write("music/Kino/01.mp3", ann.dir.read("music/Kino/01.mp3") + "more");
    ASSERT_EQ(ann.scan().code, 0);
    for (int i = 0; i < 100 && ben.run({"share", "scan", "Ann", "--dry-run"}).out.find("2 files") ==
                                   std::string::npos;
         ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const std::string stale =
        ben.run({"share", "get", "Ann", song, "--to", ben.dir.path("to"), "--replace"}).err;
    EXPECT_NE(stale.find("the file has changed there"), std::string::npos) << stale;
    ben.expect({"share", "scan", "Ann"}, 0, "2 files of Ann: 1 new, 1 changed, 0 gone");
    ben.expect(
        {"share", "get", "Ann", song, "--to", ben.dir.path("to"), "--replace"}, 0, "fetched");
    EXPECT_TRUE(isCopied("Kino/01.mp3", "01.mp3"));

    ann.expect({"share", "revoke", "Ben"}, 0, "nothing is offered any more to Ben");
    for (int i = 0; i < 100 && ben.run({"share", "scan", "Ann"}).code == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ben.expect({"share", "scan", "Ann"}, 1, "he may have revoked it");
    EXPECT_EQ(ben.run({"share", "ls", "--json"}).json()[0]["files"], 2); // the list stays
    ben.expect({"share", "forget", "Ann"}, 0, "forgot the share of Ann");
    EXPECT_EQ(ben.run({"share", "ls"}).out, "");
    EXPECT_EQ(copies(), (std::vector<std::string>{"01.mp3"}));
    const std::string told = ann.dir.read("server-out");
    EXPECT_NE(told.find("Ben (127.0.0.1)"), std::string::npos) << told;
    EXPECT_NE(told.find("has a wrong share id"), std::string::npos) << told;
    EXPECT_EQ(told.find("02.mp3"), std::string::npos) << told;
}

TEST_F(ShareCommand, TransferThatBreaksOffIsTakenUpAndAWrongServerIsNot)
{
    // A song with much behind it.
    const std::string file = ann.addSound("long.mp3");
    std::string content = ann.dir.read("music/long.mp3");
    content.resize(2'000'000, 'x');
    ann.dir.write("music/long.mp3", content);
    ASSERT_EQ(ann.scan().code, 0);
    invite();
    serve(ann);
    ben.dir.makeFolder("to");
    ben.expect({"share", "accept", ben.dir.path("link"), "--as", "Anna"}, 0, "share of Anna");
    ben.expect({"share", "scan", "Anna"}, 0, "1 file of Anna: 1 new");
    proxy.bytesEach = 300'000;
    ben.expect({"share", "get", "Anna", file, "--to", ben.dir.path("to")}, 0, "fetched");
    EXPECT_GE(proxy.broken, 6);
    EXPECT_TRUE(isCopied("long.mp3", "long.mp3"));

    proxy.holdsUp = true;
    const int before = proxy.broken;
    const pid_t fetching =
        ben.start({"share", "get", "Anna", file, "--to", ben.dir.path("to"), "--replace"});
    while (proxy.broken == before)
        std::this_thread::yield();
    ::kill(fetching, SIGINT);
    EXPECT_EQ(ben.finish(fetching).code, 130);
    EXPECT_EQ(copies(), (std::vector<std::string>{"long.mp3"}));

    // Another server at the same place never sees the share id.
    proxy.holdsUp = false;
    proxy.bytesEach = 0;
    stopServing();
    const QoCommand eve;
    eve.addSound("a.mp3");
    ASSERT_EQ(eve.scan().code, 0);
    ASSERT_EQ(eve.run({"share", "invite", "Ben"}).code, 0);
    serve(eve);
    ben.expect({"share", "scan", "Anna"}, 1, "another server answers there");
    stopServing();
    EXPECT_EQ(eve.dir.read("server-out"), "");
}

TEST_F(ShareCommand, WhatWasRevokedEndsWhateverElseFails)
{
    ann.addSound("Kino/a.mp3");
    ann.addSound("b.mp3");
    ASSERT_EQ(ann.scan().code, 0);
    invite();
    ASSERT_EQ(ann.run({"share", "invite", "Carl", "--query", "path:" + ann.music("Kino")}).code, 0);
    serve(ann);
    ben.expect({"share", "accept", ben.dir.path("link")}, 0, "accepted");
    ben.expect({"share", "scan", "Ann"}, 0, "2 files of Ann");
    ben.runSql("UPDATE FILE_T SET FT_SIZE = 10 WHERE FT_PATH LIKE '%b.mp3'");
    ben.dir.makeFolder("to");
    ben.expect({"share", "get", "Ann", ann.music("b.mp3"), "--to", ben.dir.path("to")},
               1,
               "the file has changed there; a new scan shows what it is now");
    EXPECT_EQ(copies(), std::vector<std::string>());

    // A database that is away for a while empties no list.
    std::filesystem::rename(ann.database(), ann.database() + "-away");
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    ben.expect({"share", "scan", "Ann"}, 0, "2 files of Ann: 0 new, 1 changed, 0 gone");
    std::filesystem::rename(ann.database() + "-away", ann.database());
    // Nor does a query that finds no more what it names keep a revoked share alive.
    std::filesystem::rename(ann.music("Kino"), ann.music("Tsoi"));
    ASSERT_EQ(ann.scan().code, 0);
    ann.expect({"share", "revoke", "Ben"}, 0, "nothing is offered any more");
    for (int i = 0; i < 200 && ben.run({"share", "scan", "Ann"}).code == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    ben.expect({"share", "scan", "Ann"}, 1, "he may have revoked it");

    ::kill(server, SIGTERM);
    const QoCommand::Result ended = ann.finish(server, "server-");
    server = -1;
    EXPECT_EQ(ended.code, 0) << ended.err;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(ann.dir.path("data")))
        EXPECT_FALSE(entry.path().filename().string().starts_with("offer-")) << entry.path();
}
} // namespace
