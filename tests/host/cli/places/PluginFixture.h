#pragma once

#include "host/cli/QoCommand.h"
#include "support/Servers.h"

#include <csignal>
#include <fstream>

namespace fs = std::filesystem;

/// The command with a folder as the plug-in "NAS".
class PluginCommand : public testing::Test
{
protected:
    PluginCommand()
    {
        dir("nas/Music/Kino");
        write("nas/Music/Kino/01.mp3", "first");
        write("nas/Music/b\nc.mp3", std::string(5000, 'x'));
        dir("to");
        qo.expect({"plugin", "login", "NAS", "--folder", qo.dir.path("nas")}, 0, "logged in");
    }

    void dir(const std::string& relative) const { fs::create_directories(qo.dir.path(relative)); }
    void write(const std::string& relative, const std::string& text) const
    {
        std::ofstream(qo.dir.path(relative)) << text;
    }
    std::string read(const std::string& relative) const { return qo.dir.read(relative); }
    /// What the command says goes into the file "said".
    int logIn(const std::string& password, const std::string& service) const
    {
        std::string variables; // and never the bus of whoever runs the tests
        for (const std::string& variable : qo.moreVariables)
            variables += " '" + variable + "'";
        const std::string call =
            "echo '" + password + "' | env -u DBUS_SESSION_BUS_ADDRESS -u XDG_RUNTIME_DIR" +
            variables + " " QO_COMMAND " --data '" + qo.dir.path("data") + "' plugin login " +
            service + " --user ann >'" + qo.dir.path("said") + "' 2>&1";
        return WEXITSTATUS(std::system(call.c_str())); // NOLINT(concurrency-mt-unsafe)
    }
    /// Two tracks behind a music server, which is the plug-in "home"; null where none is installed.
    std::unique_ptr<SupysonicServer> serveMusic() const
    {
        qo.addTrack("x/1.mp3", {"artist=AC/DC", "album=..", "title=a\uFF0Fb"});
        qo.addTrack("x/2.mp3", {"artist=Ann", "album=One", "title=Two"});
        auto server = std::make_unique<SupysonicServer>(qo.music(), qo.dir.path("state"));
        if (!server->isRunning)
            return nullptr;
        const std::string service = "home --subsonic " + server->url();
        EXPECT_EQ(logIn("wrong", service), 1);
        EXPECT_EQ(logIn("s3cret", service), 0) << read("said");
        return server;
    }
    /// Interrupts the command when it has begun a file in the folder "to", and expects none there.
    void expectNoPartOf(const std::vector<std::string>& words) const
    {
        const pid_t pid = qo.start(words);
        for (int i = 0; i < 1000 && isEmpty("to"); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_FALSE(isEmpty("to"));
        ::kill(pid, SIGINT);
        const QoCommand::Result result = qo.finish(pid);
        EXPECT_EQ(result.code, 130) << result.err;
        EXPECT_TRUE(isEmpty("to"));
    }
    bool isEmpty(const std::string& relative) const { return fs::is_empty(qo.dir.path(relative)); }

    QoCommand qo;
};
