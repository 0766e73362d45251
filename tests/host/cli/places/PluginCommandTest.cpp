#include "host/cli/places/PluginFixture.h"

TEST_F(PluginCommand, FilesAreListedCopiedBothWaysAndRemoved)
{
    qo.expect({"plugin", "browse", "nas", "Music"}, 0, "Music/Kino/\n");
    std::vector<std::string> paths;
    for (const auto& record : qo.run({"plugin", "browse", "NAS", "--deep", "--json"}).json())
        paths.push_back(record["path"]);
    EXPECT_EQ(paths, (std::vector<std::string>{"Music/b\nc.mp3", "Music/Kino/01.mp3"}));

    const std::vector<std::string> get = {
        "plugin", "get", "NAS", "Music", "--to", qo.dir.path("to")};
    qo.expect(get, 0, "fetched: NAS/Music/Kino/01.mp3");
    EXPECT_EQ(read("to/Music/Kino/01.mp3"), "first");
    EXPECT_EQ(read("to/Music/b_c.mp3").size(), 5000U);
    write("to/Music/Kino/01.mp3", "mine");
    fs::remove(qo.dir.path("to/Music/b_c.mp3"));
    qo.expect(get, 6, "is there already");
    EXPECT_EQ(read("to/Music/Kino/01.mp3"), "mine");
    qo.expect({"plugin",
               "get",
               "NAS",
               "Music/Kino/01.mp3",
               "--to",
               qo.dir.path("to/Music/Kino"),
               "--replace"},
              0,
              "fetched");
    EXPECT_EQ(read("to/Music/Kino/01.mp3"), "first");

    write("new.mp3", "new");
    const std::vector<std::string> put = {
        "plugin", "put", qo.dir.path("new.mp3"), "--to", "NAS/New/Folder"};
    qo.expect(put, 0, "sent: NAS/New/Folder/new.mp3");
    write("new.mp3", "newer");
    qo.expect(put, 1, "is there already");
    EXPECT_EQ(read("nas/New/Folder/new.mp3"), "new");
    qo.expect({"plugin", "rm", "NAS", "New"}, 7, "Not done without --yes");
    qo.expect({"plugin", "rm", "NAS", "New", "--yes"}, 0, "removed");
    EXPECT_FALSE(fs::exists(qo.dir.path("nas/New")));
    qo.expect({"plugin", "set", "NAS", "--music", "Music/Kino"}, 0, "set");
    EXPECT_EQ(qo.run({"plugin", "ls", "--json"}).json().front()["music"], "Music/Kino");
    qo.expect({"plugin", "logout", "nas"}, 0, "files stay");
    EXPECT_EQ(qo.run({"plugin"}).out, "");
}

/// The same with rules for what is put there: "Shelf" for music, and the file of "Clips" for
/// videos.
class UploadRules : public PluginCommand
{
protected:
    UploadRules()
    {
        qo.addTrack("1.mp3", {"artist=KINO", "album=N/o", "title=a:b?", "track=1/9"});
        qo.addTrack("2.mp3", {"artist=kino", "album=N/o", "title=Son", "track=2"});
        EXPECT_EQ(qo.scan().code, 0);
        dir("nas/Films");
        addRule("Shelf",
                {"--folder",
                 "{artist.name}/{album.name}",
                 "--music",
                 "{track.number} {track.name}",
                 "--artist-limit",
                 "2",
                 "--less-folder",
                 "{artist.name}"});
        addRule("Clips", {"--music", "Film {track.name}"});
        qo.expect({"plugin", "set", "NAS", "--music", "Music", "--movies", "Films"}, 0, "set");
        qo.expect(
            {"plugin", "set", "NAS", "--music-rule", "shelf", "--movies-rule", clips()}, 0, "set");
    }

    void addRule(const char* name, std::vector<std::string> words) const
    {
        words.insert(words.begin(), {"rule", "new", name});
        qo.expect(words, 0, "written");
    }
    std::string clips() const { return qo.dir.path("data/Qorganizer/Clips.xml"); }
};

TEST_F(UploadRules, PutMusicAndVideosWhereTheyWantThem)
{
    const auto record = qo.run({"plugin", "ls", "--json"}).json().front();
    EXPECT_EQ(record["musicRule"], "Shelf");
    EXPECT_EQ(record["moviesRule"], clips());
    // The collection does not know these, so their artists count as such without tracks there.
    qo.addTrack("3.mp3", {"artist=Kino", "album=46", "title=Trolley"});
    qo.addTrack("again.mp3", {"artist=KINO", "title=Trolley"});
    qo.addTrack("Solo/April.mp3", {"artist=Tsoi", "title=April"});
    qo.addTrack("Solo/May.mp3", {"artist=TSOI", "title=May"});
    qo.addTrack("none.mp3", {"title=x"});
    qo.addTrack("clip.mp4", {"title=Clip"}, "sound.m4a");
    qo.addSound("cover.png", "blue.png");
    const std::string folder = "NAS/Music/Kino/"; // that is there already, spelled so
    const std::map<std::string, std::string> targets = {
        {"1.mp3", folder + "N_o/01 a_b_.mp3"},
        {"2.mp3", folder + "N_o/02 Son.mp3"},
        {"3.mp3", folder + "Trolley.mp3"},
        {"again.mp3", "another file of this call is called " + folder + "Trolley.mp3"},
        {"Solo/April.mp3", "NAS/Music/Tsoi/April.mp3"},
        {"Solo/May.mp3", "NAS/Music/Tsoi/May.mp3"},
        {"none.mp3", "the file has no value for {artist.name}, which is to name its folder"},
        {"cover.png", "NAS/cover.png"},
        {"clip.mp4", "NAS/Films/Film Clip.mp4"}};
    std::vector<std::string> put = {"plugin", "put", "--to", "NAS", "--json"};
    for (const auto& [name, target] : targets)
        put.push_back(qo.music(name));
    for (const char* const flag : {"--dry-run", "--yes"})
    {
        std::vector<std::string> words = put;
        words.insert(words.begin(), flag);
        const auto result = qo.run(words);
        EXPECT_EQ(result.code, 6) << result.err;
        std::map<std::string, std::string> found;
        for (const auto& each : result.json())
            found[each["file"].get<std::string>().substr(qo.music().size() + 1)] =
                each[each["error"] == "" ? "path" : "error"];
        EXPECT_EQ(found, targets);
        EXPECT_EQ(fs::exists(qo.dir.path("nas/Films/Film Clip.mp4")), words[0] == "--yes");
    }
    EXPECT_TRUE(read("nas/Music/Kino/N_o/01 a_b_.mp3") == read("music/1.mp3"));
}

TEST_F(UploadRules, SortWholeFoldersOnAServerFileByFile)
{
    const RcloneServer server(qo.dir.path("nas"));
    if (!server.isRunning)
        GTEST_SKIP() << "rclone is not installed";
    EXPECT_EQ(logIn("s3cret", "web --webdav " + server.url()), 0) << read("said");
    qo.expect({"plugin", "set", "web", "--music", "Music", "--movies", "Films"}, 0, "set");
    qo.expect(
        {"plugin", "set", "web", "--music-rule", "shelf", "--movies-rule", clips()}, 0, "set");
    qo.addTrack("Box/deep/1.mp3", {"artist=Kino", "title=50% #1"});
    qo.addTrack("Box/2.mp3", {"artist=KINO", "title=Two"});
    qo.addTrack("Box/again/2.mp3", {"artist=kino", "title=Two"});
    qo.addTrack("Box/none.mp3", {"title=x"});
    qo.addTrack("Box/deep/clip.mp4", {"title=Clip"}, "sound.m4a");
    qo.addSound("Box/deep/cover.png", "blue.png");
    fs::create_directory_symlink(qo.music("Box"), qo.music("Box/deep/around"));
    const std::map<std::string, std::string> targets = {
        {"deep/1.mp3", "web/Music/Kino/50% #1.mp3"},
        {"2.mp3", "web/Music/Kino/Two.mp3"},
        {"again/2.mp3", "another file of this call is called web/Music/Kino/Two.mp3"},
        {"none.mp3", "the file has no value for {artist.name}, which is to name its folder"},
        {"deep/clip.mp4", "web/Films/Film Clip.mp4"},
        {"deep/cover.png", "web/Box/deep/cover.png"}};
    for (const char* const flag : {"--dry-run", "--yes"})
    {
        const auto result =
            qo.run({"plugin", "put", qo.music("Box"), "--to", "web", "--json", flag});
        EXPECT_EQ(result.code, 6) << result.err;
        std::map<std::string, std::string> found;
        for (const auto& each : result.json())
            found[each["file"].get<std::string>().substr(qo.music("Box").size() + 1)] =
                each[each["error"] == "" ? "path" : "error"];
        EXPECT_EQ(found, targets);
    }
    for (const auto& [file, target] : targets)
    {
        EXPECT_TRUE(!target.starts_with("web/") ||
                    read("nas/" + target.substr(4)) == read("music/Box/" + file))
            << target;
    }
    qo.expect({"plugin", "put", qo.music("Box"), "--to", "web"}, 1, "it is there already");
    qo.expect({"plugin", "put", qo.music("Box"), "--to", "web", "--unsorted"}, 6, "Box/none.mp3");
    EXPECT_TRUE(read("nas/Box/deep/1.mp3") == read("music/Box/deep/1.mp3"));
    for (const auto& entry : fs::recursive_directory_iterator(qo.dir.path("nas")))
        EXPECT_EQ(entry.path().filename().string().find(".qo-"), std::string::npos) << entry;
}

TEST_F(UploadRules, HoldWhereNoFolderIsNamedAndUntilTheyAreTakenOff)
{
    const std::string song = qo.music("1.mp3");
    const auto put = [&](const std::string& to, int code, const std::string& said) {
        qo.expect({"plugin", "put", song, "--to", to}, code, said);
    };
    put("NAS", 0, "sent: NAS/Music/Kino/N_o/01 a_b_.mp3");
    put("NAS", 1, "it is there already");
    // Of a file that has changed since it was scanned the tags count.
    const QoCommand other;
    other.expect({"tag", "set", song, "title=New"}, 0, "");
    other.expect({"tag", "write", song}, 0, "written");
    put("NAS", 0, "sent: NAS/Music/Kino/01 New.mp3");
    put("NAS/Music", 0, "sent: NAS/Music/1.mp3");
    qo.expect({"plugin", "put", song, "--to", "NAS", "--unsorted"}, 0, "sent: NAS/1.mp3");
    EXPECT_EQ(qo.run({"rule", "rm", "Shelf", "--yes"}).code, 0);
    put("NAS", 4, "the music rule of NAS cannot be used: there is no rule \"Shelf\"");
    qo.expect({"plugin", "set", "NAS", "--music-rule", ""}, 0, "set");
    put("NAS", 1, "NAS/1.mp3: it is there already");
    qo.expect({"plugin", "set", "NAS", "--movies-rule", "none"}, 4, "no rule \"none\"");
    qo.expect({"plugin", "put", song, song, "--to", "NAS/New", "--replace"}, 6, "another file");
}

TEST_F(PluginCommand, WhatCannotBeDoneIsRefused)
{
    write("nas/Music/Kino/02.mp3", "second");
    fs::create_symlink("/etc/passwd", qo.dir.path("to/02.mp3"));
    const std::string to = qo.dir.path("to");
    qo.expectRefusals(
        "plugin",
        {{{"browse", "other"}, 4, "no plug-in"},
         {{"browse", "NAS", "../nope"}, 4, "no NAS/nope"},
         {{"login", "a/b", "--folder", to}, 2, "name"},
         {{"login", "more"}, 2, "say where it is"},
         {{"login", "more", "--folder", to + "/none"}, 4, "none"},
         {{"get", "NAS", "Music/Kino/02.mp3", "--to", to, "--replace"}, 1, "no plain file"},
         {{"put", "/dev/null", "--to", "NAS"}, 2, "is no file"},
         {{"rm", "NAS", "/", "--yes"}, 2, "root"},
         {{"set", "NAS", "--music", "Music/Kino/02.mp3"}, 2, "no folder"}});
}

TEST_F(PluginCommand, AFolderIsSentWithItsFolders)
{
    dir("Viktor/Live");
    write("Viktor/1.mp3", "one");
    write("Viktor/Live/2.mp3", "two");
    fs::create_directory_symlink(qo.dir.path("Viktor"), qo.dir.path("Viktor/Live/around"));
    std::vector<std::string> put = {
        "plugin", "put", qo.dir.path("Viktor") + "/", "--to", "NAS/Music/Kino", "--dry-run"};
    qo.expect(put, 0, "would be sent: NAS/Music/Kino/Viktor/Live/2.mp3");
    EXPECT_FALSE(fs::exists(qo.dir.path("nas/Music/Kino/Viktor")));
    put.pop_back();
    qo.expect(put, 0, "sent: NAS/Music/Kino/Viktor/Live/2.mp3");
    EXPECT_EQ(read("nas/Music/Kino/Viktor/1.mp3"), "one");
    EXPECT_EQ(read("nas/Music/Kino/Viktor/Live/2.mp3"), "two");
    EXPECT_FALSE(fs::exists(qo.dir.path("nas/Music/Kino/Viktor/Live/around")));
    write("Viktor/new.mp3", "new");
    qo.expect(put, 6, "sent: NAS/Music/Kino/Viktor/new.mp3");

    write("Viktor/large.mp3", "");
    fs::resize_file(qo.dir.path("Viktor/large.mp3"), std::uintmax_t{4} << 30);
    put.back() = "NAS/Other";
    const pid_t pid = qo.start(put);
    EXPECT_TRUE(QoCommand::waitFor(qo.dir.path("nas/Other/Viktor")));
    ::kill(pid, SIGINT);
    EXPECT_EQ(qo.finish(pid).code, 130);
    for (const auto& entry : fs::recursive_directory_iterator(qo.dir.path("nas/Other")))
        EXPECT_EQ(entry.path().filename().string().find(".qo-"), std::string::npos) << entry;
    EXPECT_FALSE(fs::exists(qo.dir.path("nas/Other/Viktor/large.mp3")));
}

TEST_F(PluginCommand, AnInterruptedCopyLeavesNoPart)
{
    write("nas/large.mp3", "");
    fs::resize_file(qo.dir.path("nas/large.mp3"), std::uintmax_t{4} << 30);
    expectNoPartOf({"plugin", "get", "NAS", "large.mp3", "--to", qo.dir.path("to")});
}

std::string entry(const std::string& href, const std::string& properties)
{
    return "<response><href>" + href + "</href><propstat><prop>" + properties +
           "</prop><status>HTTP/1.1 200 OK</status></propstat></response>";
}

TEST_F(PluginCommand, TagsThatCouldNotBeFetchedAreFetchedByTheNextScan)
{
    qo.addTrack("1.mp3", {"title=One"});
    qo.addTrack("2.mp3", {"title=Two"});
    std::string song = read("music/1.mp3");
    bool fails = true;
    HostileServer server;
    server.answer = [&](const std::string& request)
    {
        const std::string size = std::to_string(song.size());
        if (request.starts_with("PROPFIND"))
            return HostileServer::reply(
                "207 OK",
                "<multistatus xmlns=\"DAV:\">" +
                    entry("/dav/", "<resourcetype><collection/></resourcetype>") +
                    entry("/dav/a.mp3", "<getcontentlength>" + size + "</getcontentlength>") +
                    "</multistatus>");
        const std::size_t range = request.find("bytes=0-");
        if (fails || range == std::string::npos)
            return HostileServer::reply("500 No", "");
        const std::string last = std::to_string(std::strtoul(&request[range + 8], nullptr, 10));
        return HostileServer::reply("206 OK",
                                    song.substr(0, std::stoul(last) + 1),
                                    "Content-Range: bytes 0-" + last + "/" + size + "\r\n");
    };
    EXPECT_EQ(logIn("s3cret", "web --webdav " + server.url()), 0) << read("said");
    const auto title = [this] {
        return qo.run({"ls", "--on", "web", "--json"}).json().at(0)["title"].get<std::string>();
    };
    qo.expect({"plugin", "scan", "web"}, 6, "1 new");
    qo.expect({"plugin", "scan", "web"}, 6, "has tags that could not be read");
    fails = false;
    qo.expect({"plugin", "scan", "web", "--dry-run"}, 0, "1 changed");
    qo.expect({"plugin", "scan", "web"}, 0, "0 new, 1 changed");
    EXPECT_EQ(title(), "One");
    const int before = server.requests;
    qo.expect({"plugin", "scan", "web"}, 0, "0 new, 0 changed");
    EXPECT_EQ(server.requests - before, 1) << "the folder";
    // Another file has come in its place: of another size, and of the same.
    song = read("music/2.mp3") + "more";
    fails = true;
    qo.expect({"plugin", "scan", "web"}, 6, "0 changed");
    EXPECT_EQ(title(), "One");
    fails = false;
    qo.expect({"plugin", "scan", "web"}, 0, "1 changed");
    EXPECT_EQ(title(), "Two");
    song.replace(song.find("Two"), 3, "New");
    qo.expect({"plugin", "scan", "web"}, 0, "0 changed");
    qo.expect({"plugin", "scan", "web", "--deep"}, 0, "1 changed");
    EXPECT_EQ(title(), "New");

    // Which tags are missing is written down before the records are saved: a new file without a tag
    // would else count as read.
    fails = true;
    qo.runSql("DELETE FROM FILE_T; CREATE TRIGGER full BEFORE INSERT ON FILE_T "
              "BEGIN SELECT RAISE(ABORT, 'full'); END");
    qo.expect({"plugin", "scan", "web"}, 1, "could not be taken into the collection");
    const std::string count = "test \"$(sqlite3 '" + qo.dir.path("data/Qorganizer/host.db") +
                              "' 'SELECT count(*) FROM UNREAD_T')\" = 1";
    EXPECT_EQ(std::system(count.c_str()), 0); // NOLINT(concurrency-mt-unsafe)
}

TEST_F(PluginCommand, AListingThatHangsEndsWithCtrlCAndLosesNothing)
{
    std::atomic<bool> hangs = false;
    HostileServer server;
    server.answer = [&](const std::string& request)
    {
        const bool isRoot = request.starts_with("PROPFIND /dav/ ");
        const std::string folder = "<resourcetype><collection/></resourcetype>";
        const std::string file = "<getcontentlength>9</getcontentlength>";
        if (!request.starts_with("PROPFIND"))
            return HostileServer::reply("404 No", "");
        if (hangs && !isRoot)
            return std::string();
        return HostileServer::reply(
            "207 OK",
            "<multistatus xmlns=\"DAV:\">" +
                (isRoot ? entry("/dav/in/", folder) + (hangs ? "" : entry("/dav/a.mp3", file))
                        : entry("/dav/in/b.mp3", file)) +
                "</multistatus>");
    };
    EXPECT_EQ(logIn("s3cret", "web --webdav " + server.url()), 0) << read("said");
    qo.expect({"plugin", "scan", "web"}, 0, "2 new");
    hangs = true;
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"plugin", "scan", "web"},
          {"plugin", "browse", "web", "--deep"},
          {"plugin", "get", "web", "/", "--to", qo.dir.path("to")}})
    {
        const int before = server.requests;
        const pid_t pid = qo.start(words);
        for (int i = 0; i < 2000 && server.requests < before + 2; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ::kill(pid, SIGINT);
        EXPECT_EQ(qo.finish(pid).code, 130) << words[1];
    }
    EXPECT_TRUE(isEmpty("to"));
    EXPECT_EQ(qo.run({"ls", "--on", "web", "--json"}).json().size(), 2U);
}

TEST_F(PluginCommand, AModuleThatIsMissingOrOfAnotherVersionIsNamed)
{
    dir("bin");
    dir("lib/qo");
    fs::copy_file(QO_COMMAND, qo.dir.path("bin/qo"));
    const fs::path module = fs::path(QO_COMMAND).parent_path().parent_path() / "lib/qo/libqofar.so";
    ASSERT_TRUE(fs::exists(module));
    const auto said = [&](const std::string& words)
    {
        const std::string call = qo.dir.path("bin/qo") + " --data '" + qo.dir.path("data") + "' " +
                                 words + " >'" + qo.dir.path("said") + "' 2>&1";
        const int status = std::system(call.c_str()); // NOLINT(concurrency-mt-unsafe)
        return read("said") + std::to_string(WEXITSTATUS(status));
    };
    const std::string login = "plugin login web --webdav http://127.0.0.1:1";
    const std::string missing = said(login);
    EXPECT_NE(missing.find("libqofar.so: cannot open"), std::string::npos) << missing;
    EXPECT_TRUE(missing.ends_with("\n1")) << missing;
    // As that of another version answers.
    write("other.cpp", "extern \"C\" const void* qoFarEnds(const char*) { return nullptr; }");
    const std::string make = "c++ -shared -fPIC -o '" + qo.dir.path("lib/qo/libqofar.so") + "' '" +
                             qo.dir.path("other.cpp") + "'";
    ASSERT_EQ(std::system(make.c_str()), 0); // NOLINT(concurrency-mt-unsafe)
    EXPECT_NE(said(login).find("start the program anew"), std::string::npos);
    // What needs no module works without it, and a device that cannot be asked for costs a note.
    EXPECT_EQ(said("plugin browse NAS"), "Music/\n0");
    EXPECT_NE(said("device").find("cannot be loaded"), std::string::npos);
}

TEST_F(PluginCommand, AnAuthorityOfOnesOwnIsTrustedForItsServerAlone)
{
    for (const std::string& name : {qo.dir.path("own"), qo.dir.path("other")})
    {
        const std::string call =
            "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=qo "
            "-addext subjectAltName=IP:127.0.0.1 -keyout '" +
            name + ".key' -out '" + name + ".pem' 2>/dev/null";
        ASSERT_EQ(std::system(call.c_str()), 0); // NOLINT(concurrency-mt-unsafe)
    }
    const RcloneServer server(qo.dir.path("nas"), qo.dir.path("own"));
    if (!server.isRunning)
        GTEST_SKIP() << "rclone is not installed";
    const std::string service = "web --webdav https" + server.url().substr(4);
    const std::string ca = " --ca " + qo.dir.path("own.pem");
    EXPECT_EQ(logIn("s3cret", service), 1);
    EXPECT_NE(read("said").find("certificate"), std::string::npos) << read("said");
    EXPECT_EQ(logIn("s3cret", service + " --ca " + qo.dir.path("other.pem")), 1);
    EXPECT_EQ(logIn("s3cret", service + " --ca " + qo.dir.path("own.key")), 2) << read("said");
    EXPECT_EQ(logIn("s3cret", service + " --ca " + qo.dir.path("none")), 4) << read("said");
    EXPECT_EQ(logIn("s3cret", "web --folder " + qo.dir.path("nas") + ca), 2) << read("said");
    EXPECT_EQ(logIn("s3cret", service + ca), 0) << read("said");
    qo.expect({"plugin", "browse", "web", "Music"}, 0, "Music/Kino/");
    EXPECT_EQ(logIn("s3cret", "web"), 0) << "it is kept: " << read("said");
    EXPECT_EQ(logIn("s3cret", "web --ca ''"), 1);
    EXPECT_NE(read("said").find("certificate"), std::string::npos) << read("said");
    qo.expect({"plugin", "logout", "web"}, 0, "");
    EXPECT_EQ(logIn("s3cret", service), 1);
}

TEST_F(PluginCommand, AMusicServerIsBrowsedLikeFolders)
{
    const auto server = serveMusic();
    if (!server)
        GTEST_SKIP() << "supysonic is not installed";
    qo.expect({"plugin", "login", "new", "--subsonic", server->url()}, 2, "--user");
    const auto paths = [&](std::vector<std::string> words)
    {
        words.insert(words.begin(), {"plugin", "browse", "--json"});
        std::vector<std::string> list;
        for (const auto& record : qo.run(words).json())
            list.push_back(record["path"]);
        std::ranges::sort(list);
        return list;
    };
    const std::string album = "AC\uFF0FDC/\uFF0E\uFF0E";
    const std::string song = album + "/a\u201B\uFF0Fb.mp3";
    EXPECT_EQ(paths({"home"}), (std::vector<std::string>{"AC\uFF0FDC", "Ann"}));
    EXPECT_EQ(paths({"home", "AC\uFF0FDC"}), std::vector<std::string>{album});
    EXPECT_EQ(paths({"home", "--deep"}), (std::vector<std::string>{song, "Ann/One/Two.mp3"}));
    EXPECT_EQ(paths({"home", song}), std::vector<std::string>{song});

    const std::string to = qo.dir.path("to");
    qo.expect({"plugin", "get", "home", "/", "--to", to}, 0, "fetched: home/Ann/One/Two.mp3");
    EXPECT_EQ(read("to/AC_DC/_/a\uFF0Fb.mp3"), read("music/x/1.mp3"));
    qo.expect({"plugin", "get", "home", song, "--to", to}, 0, "fetched");
    qo.expectRefusals("plugin",
                      {{{"browse", "home", "Bob"}, 4, "there is no home/Bob"},
                       {{"put", qo.music("x/1.mp3"), "--to", "home/Ann"}, 1, "takes no files"},
                       {{"rm", "home", "Ann", "--yes"}, 1, "lets nothing be removed"},
                       {{"set", "home", "--music", "Ann"}, 2, "no folders to choose from"}});
    EXPECT_EQ((read("said") + read("data/settings")).find("s3cret"), std::string::npos);
}

TEST_F(PluginCommand, WhatASearchFindsIsKeptAndFetched)
{
    const auto server = serveMusic();
    if (!server)
        GTEST_SKIP() << "supysonic is not installed";
    const std::string to = qo.dir.path("to");
    const auto ids = [&](const std::vector<std::string>& words)
    {
        std::vector<int> list;
        for (const auto& record : qo.run(words).json())
            list.push_back(record["id"].is_null() ? 0 : record["id"].get<int>());
        return list;
    };
    EXPECT_EQ(ids({"search", "Two", "--on", "home", "--json", "--dry-run"}), std::vector<int>{0});
    EXPECT_EQ(ids({"search", "Two", "--json"}), std::vector<int>{1});
    EXPECT_EQ(ids({"search", "\uFF0Fb", "--json"}), std::vector<int>{2});
    EXPECT_EQ(ids({"search", "Two", "--json"}), std::vector<int>{1}) << "it is kept already";
    EXPECT_EQ(ids({"search", "--json"}), (std::vector<int>{1, 2}));
    qo.expect({"search", "nothing like it"}, 0, "nothing was found");
    qo.expect({"--dry-run", "search", "get", "1", "2", "--to", to}, 0, "would be fetched");
    EXPECT_FALSE(fs::exists(to + "/Ann - Two.mp3"));
    qo.expect({"search", "get", "1", "2", "--to", to}, 0, "fetched: home/Ann/One/Two.mp3");
    EXPECT_EQ(read("to/Ann - Two.mp3"), read("music/x/2.mp3"));
    qo.expect({"search", "get", "1", "--to", to}, 1, "is there already");
    qo.expect({"db", "check"}, 0, "");
    qo.expectRefusals("search",
                      {{{"a", "--on", "NAS"}, 2, "NAS cannot be searched"},
                       {{"a", "--on", "none"}, 4, "no plug-in"},
                       {{"get", "9", "--to", to}, 4, "no search result has the number 9"}});
    qo.expect({"search", "clear"}, 0, "forgotten: 2 search results");
    EXPECT_EQ(ids({"search", "Two", "--json"}).size(), 1U);
    qo.expect({"plugin", "logout", "home"}, 0, "");
    EXPECT_EQ(qo.run({"search", "ls"}).out, "") << "they go with their service";
    qo.expect({"search", "a"}, 2, "no service of yours can be searched");
}

TEST_F(PluginCommand, AnInterruptedFetchOfAFoundTrackLeavesNoPart)
{
    HostileServer server;
    server.answer = [](const std::string& request)
    {
        // The track begins, and then nothing comes.
        if (request.find("/download.view") != std::string::npos)
            return std::string();
        return HostileServer::reply("200 OK",
                                    R"({"subsonic-response":{"status":"ok","searchResult3":{)"
                                    R"("song":[{"id":"1","title":"a"},{"id":"2","title":"b"}]}}})");
    };
    ASSERT_EQ(logIn("s3cret", "home --subsonic " + server.url()), 0) << read("said");
    qo.expect({"search", "x", "--limit", "1"}, 0, "1 of 2 tracks that were found");
    expectNoPartOf({"search", "get", "1", "--to", qo.dir.path("to")});
}

TEST(PlaceScan, WhatIsKnownOfAServiceStaysWhileItIsEmptyAndGoesWithIt)
{
    QoCommand qo;
    qo.addTrack("Kino/01.mp3", {"artist=Kino", "title=Zvezda"});
    const auto known = [&qo] { return qo.run({"ls", "--on", "nas", "--json"}).json().size(); };
    qo.expect({"plugin", "login", "NAS", "--folder", qo.music()}, 0, "logged in");
    qo.expect({"plugin", "scan", "NAS"}, 0, "1 file of NAS: 1 new");
    std::filesystem::rename(qo.music("Kino"), qo.dir.path("away"));
    qo.expect({"plugin", "scan", "nas"}, 3, "NAS is empty, but the collection has files of it");
    EXPECT_EQ(known(), 1U);
    std::filesystem::rename(qo.dir.path("away"), qo.music("Tsoi"));
    qo.expect({"plugin", "scan", "NAS"}, 0, "1 file of NAS: 1 new, 0 changed, 1 gone");
    qo.dir.makeFolder("other");
    qo.expect({"plugin", "login", "NAS", "--folder", qo.dir.path("other")}, 0, "logged in");
    qo.expect({"ls", "--on", "NAS"}, 4, "not known yet");
}

TEST(PlaceList, FilesOfAPlaceStandBesideOnesOwnAndAreFoundByTheirPaths)
{
    QoCommand qo;
    qo.addTrack("Kino/01.mp3", {"artist=Kino", "album=Noch", "title=Zvezda"});
    ASSERT_EQ(qo.scan().code, 0);
    ASSERT_EQ(qo.run({"mark", "zvezda"}).code, 0);
    QoCommand nas;
    const std::vector<std::string> far = {
        "Kino/50% off/1%.mp3", "Kino/b\\\xff[1].mp3", "NAS/Solo/2.mp3"};
    nas.addTrack(far[0], {"artist=KINO", "album=noch", "title=Son"});
    nas.addTrack(far[1], {"artist=Kino", "album=46", "title=Trolley"});
    nas.addTrack(far[2], {"artist=Tsoi", "album=Solo", "title=April"});
    qo.expect({"plugin", "login", "NAS", "--folder", nas.music()}, 0, "logged in");
    qo.expect({"plugin", "scan", "NAS"}, 0, "3 files");

    const auto counts = [&qo](std::vector<std::string> words, const char* pane)
    {
        words.insert(words.begin(), {"view", "--json"});
        std::string text;
        const auto panes = qo.run(words).json();
        for (const auto& item : panes.at(0)[pane])
            text += item["name"].get<std::string>() + " " + item["own"].dump() + "+" +
                    item["foreign"].dump() + " " + item["mark"].get<std::string>() + "; ";
        return text;
    };
    EXPECT_EQ(counts({"--on", "nas"}, "left"), "Kino 1+2 some; Tsoi 0+1 none; ");
    EXPECT_EQ(counts({"--on", "NAS", "--select", "Kino"}, "middle"),
              "46 0+1 none; Noch 1+1 some; ");
    EXPECT_EQ(counts({"--on", "NAS", "--show", "foreign"}, "left"),
              "Kino 0+2 none; Tsoi 0+1 none; ");
    EXPECT_EQ(counts({}, "left"), "Kino 1+0 all; ");
    qo.expect({"view", "--on", "NAS", "--on", "NAS"}, 2, "--on can be given only once");
    EXPECT_EQ(qo.run({"marked", "--json"}).json()[0]["files"], 1);
    EXPECT_EQ(qo.run({"mark", "--all", "--json"}).json()[0]["marked"], 1);

    // What is listed can be pasted back, with or without the name of the place.
    const auto found = [&qo](const std::string& word)
    {
        const std::string paths = qo.run({"ls", "-0", "--on", "nas", word}).out;
        return std::ranges::count(paths, '\0');
    };
    for (const std::string& each : far)
    {
        EXPECT_EQ(qo.run({"ls", "-0", "--on", "nas", "NAS/" + each}).out, "NAS/" + each + '\0');
        EXPECT_EQ(qo.run({"ls", "-0", "--on", "nas", "/" + each}).out, "NAS/" + each + '\0');
    }
    for (const auto& [word, count] :
         std::vector<std::pair<const char*, int>>{{"NAS", 3},
                                                  {"/", 3},
                                                  {"nas/Kino", 2},
                                                  {"Kino", 2},
                                                  {"NAS/NAS", 1},
                                                  {"NAS/Solo", 1},
                                                  {"^NAS/Kino", 1},
                                                  {"K*/*/?%.mp3", 1},
                                                  {"NAS/*/Solo", 1},
                                                  {"*.mp3", 0},
                                                  {"path:Kino/50% off", 1},
                                                  {"name:1%.", 1}})
        EXPECT_EQ(found(word), count) << word;
    qo.expect({"ls", "--on", "NAS", "/Kino/none"}, 4, "/Kino/none is not there");
    qo.expect({"tree", "--on", "NAS", "Kino/50% off"}, 0, "NAS/Kino/50% off  (1 file)");
}
