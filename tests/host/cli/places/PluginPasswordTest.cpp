#include "host/cli/places/Keyring.h"
#include "host/cli/places/PluginFixture.h"

namespace
{
/// An empty WebDAV folder for "ann:s3cret".
std::string guardedFolder(const std::string& request)
{
    if (request.find("Authorization: Basic YW5uOnMzY3JldA==") == std::string::npos)
        return HostileServer::reply("401 No", "", "WWW-Authenticate: Basic realm=\"r\"\r\n");
    return HostileServer::reply("207 OK", "<multistatus xmlns=\"DAV:\"/>");
}
} // namespace

TEST_F(PluginCommand, APasswordIsInTheStoreOfTheDesktopWhereThereIsOne)
{
    HostileServer server;
    server.answer = guardedFolder;
    const std::string service = "web --webdav " + server.url();
    const std::string file = "data/Qorganizer/passwords";
    EXPECT_EQ(logIn("s3cret", service), 0) << read("said");
    EXPECT_NE(read(file).find("s3cret"), std::string::npos);

    Keyring keyring(qo.dir.path("keyring"));
    if (!keyring.isRunning())
        GTEST_SKIP() << "the GNOME keyring does not run here";
    qo.moreVariables = {keyring.variable()};
    qo.expect({"plugin", "browse", "web"}, 0, "");
    EXPECT_EQ(logIn("s3cret", service), 0) << read("said");
    EXPECT_EQ(read(file).find("s3cret"), std::string::npos);
    qo.expect({"plugin", "browse", "web"}, 0, "");
    qo.expect({"plugin", "set", "web", "--music", "", "--dry-run"}, 0, "");
    const std::string settings = read("data/settings");
    qo.expect({"plugin", "logout", "web"}, 0, "files stay");
    qo.dir.write("data/settings", settings);
    qo.expect({"plugin", "browse", "web"}, 1, "is in no store of passwords");
    EXPECT_EQ(logIn("s3cret", service), 0) << read("said");
    EXPECT_TRUE(keyring.lock());
    qo.expect({"plugin", "ls"}, 0, "ann");
    for (const char* const command : {"browse", "logout"})
        qo.expect({"plugin", command, "web"}, 1, "is locked: unlock it");
    EXPECT_EQ(logIn("s3cret", service), 1);
    EXPECT_NE(read("said").find("is locked: unlock it"), std::string::npos) << read("said");
    EXPECT_EQ(read(file).find("s3cret"), std::string::npos);
    // Where nobody can unlock it, a file will do.
    EXPECT_NE(read("said").find("--keep-in file"), std::string::npos) << read("said");
    EXPECT_EQ(logIn("s3cret", service + " --keep-in file"), 0) << read("said");
    EXPECT_NE(read(file).find("s3cret"), std::string::npos);
    qo.expect({"plugin", "browse", "web"}, 0, "");
    qo.expect({"plugin", "set", "web", "--music", ""}, 0, "set");
    qo.expect({"plugin", "logout", "web"}, 1, "is locked: unlock it");
    EXPECT_NE(read(file).find("s3cret"), std::string::npos);
    keyring.end();
    EXPECT_EQ(logIn("s3cret", service + " --keep-in desktop"), 1);
    EXPECT_NE(read("said").find("offers no store"), std::string::npos) << read("said");
    qo.expect({"plugin", "logout", "web"}, 0, "files stay");
    qo.dir.write("data/settings", settings);
    qo.expect({"plugin", "browse", "web"}, 1, "\"qo plugin login web\" asks for it anew");
    qo.expect({"plugin", "logout", "web"}, 0, "may be left in the desktop's store");
}

TEST_F(PluginCommand, TheQuestionOfALockedStoreCanBeAnsweredRefusedAndInterrupted)
{
    HostileServer server;
    server.answer = guardedFolder;
    const std::string service = "web --webdav " + server.url();
    write("answer", "no");
    const Keyring keyring(qo.dir.path("keyring"),
                          "exec /usr/bin/python3 " QO_SOURCE_DIR
                          "/tests/host/cli/places/secrets.py '" +
                              qo.dir.path("answer") + "' '" + qo.dir.path("log") + "'");
    if (!keyring.isRunning())
        GTEST_SKIP() << "there is no bus, or python3-dbus is not installed";
    qo.moreVariables = {keyring.variable()};
    EXPECT_EQ(logIn("s3cret", service), 1);
    EXPECT_NE(read("said").find("is locked"), std::string::npos) << read("said");
    write("answer", "Ctrl-C");
    EXPECT_EQ(logIn("s3cret", service), 130) << read("said");
    EXPECT_NE(read("said").find("interrupted while"), std::string::npos) << read("said");
    EXPECT_EQ(read("log"), "asked\nasked\nclosed\n");
    EXPECT_EQ(qo.run({"plugin"}).out.find("web"), std::string::npos);

    write("answer", "yes");
    EXPECT_EQ(logIn("s3cret", service), 0) << read("said");
    EXPECT_TRUE(keyring.lock());
    write("answer", "Ctrl-C");
    for (const char* const command : {"browse", "logout"})
        qo.expect({"plugin", command, "web"}, 130, "interrupted");
    EXPECT_TRUE(read("log").ends_with("asked\nasked\nclosed\nasked\nclosed\n")) << read("log");
    // The passwords go with a data folder that is moved.
    QoCommand other;
    other.moreVariables = qo.moreVariables;
    fs::rename(qo.dir.path("data"), other.dir.path("data"));
    write("answer", "yes");
    other.expect({"plugin", "browse", "web"}, 0, "");
}

TEST_F(PluginCommand, APasswordIsInAFileOfItsOwnAlone)
{
    HostileServer server;
    server.answer = guardedFolder;
    const std::string file = "data/Qorganizer/passwords";
    EXPECT_EQ(logIn("wrong", "web --webdav " + server.url()), 1);
    EXPECT_NE(read("said").find("does not accept"), std::string::npos) << read("said");
    EXPECT_EQ(logIn("s3cret", "web --webdav " + server.url()), 0) << read("said");
    EXPECT_EQ(fs::status(qo.dir.path(file)).permissions(), fs::perms(0600));
    EXPECT_NE(read(file).find("s3cret"), std::string::npos);
    EXPECT_EQ((read("said") + read("data/settings")).find("s3cret"), std::string::npos);
    qo.expect({"plugin", "browse", "web"}, 0, "");
    fs::permissions(qo.dir.path(file), fs::perms(0644));
    qo.expect({"plugin", "browse", "web"}, 1, "others may read that file");
    fs::permissions(qo.dir.path(file), fs::perms(0600));
    qo.expect({"plugin", "logout", "web"}, 0, "files stay");
    EXPECT_EQ(read(file).find("s3cret"), std::string::npos);
}
