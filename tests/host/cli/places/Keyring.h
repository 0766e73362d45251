#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

/// A session bus with a store of passwords on it, both in a folder of their own.
class Keyring
{
public:
    /// The GNOME keyring. There is no window to ask anyone with, so a locked one stays locked.
    explicit Keyring(const std::string& folder)
        : Keyring(folder,
                  "exec gnome-keyring-daemon --unlock --components=secrets --foreground <'" +
                      folder + "/bus.conf'") // any bytes are a password
    {
    }
    Keyring(const std::string& folder, const std::string& words) : m_folder(folder)
    {
        std::filesystem::create_directories(folder);
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
        std::ofstream(folder + "/bus.conf")
            << "<busconfig><listen>unix:path=" << folder
            << "/bus</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
               "<allow receive_sender=\"*\"/>"
               "<allow own=\"*\"/></policy></busconfig>";
        m_bus = start("exec dbus-daemon --nofork --config-file='" + folder + "/bus.conf'");
        for (int i = 0; i < 500 && !std::filesystem::exists(folder + "/bus"); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        m_keyring = start(words);
        for (int i = 0; i < 200 && !isRunning(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ~Keyring()
    {
        end(m_keyring);
        end(m_bus);
    }
    Keyring(const Keyring&) = delete;
    Keyring& operator=(const Keyring&) = delete;

    /// What a program needs to find it.
    std::string variable() const
    {
        return "DBUS_SESSION_BUS_ADDRESS=unix:path=" + m_folder + "/bus";
    }
    bool isRunning() const { return call("ReadAlias string:default"); }
    bool lock() const
    {
        return call("Lock array:objpath:/org/freedesktop/secrets/collection/login");
    }
    void end() { end(m_keyring); }

private:
    bool call(const std::string& method) const
    {
        const std::string words = variable() +
                                  " dbus-send --session --print-reply --reply-timeout=2000 "
                                  "--dest=org.freedesktop.secrets /org/freedesktop/secrets "
                                  "org.freedesktop.Secret.Service." +
                                  method + " >/dev/null 2>&1";
        return std::system(words.c_str()) == 0; // NOLINT(concurrency-mt-unsafe)
    }
    pid_t start(const std::string& words) const
    {
        const std::string line = "HOME='" + m_folder + "' XDG_RUNTIME_DIR='" + m_folder +
                                 "' XDG_DATA_HOME='" + m_folder + "' " + variable() + "; export " +
                                 "HOME XDG_RUNTIME_DIR XDG_DATA_HOME DBUS_SESSION_BUS_ADDRESS; " +
                                 words + " >>'" + m_folder + "/log' 2>&1";
        const pid_t pid = ::fork();
        if (pid == 0)
        {
            ::execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
            ::_exit(127);
        }
        return pid;
    }
    static void end(pid_t& pid)
    {
        if (pid <= 0)
            return;
        ::kill(pid, SIGTERM);
        ::waitpid(pid, nullptr, 0);
        pid = 0;
    }

    const std::string m_folder;
    pid_t m_bus = 0;
    pid_t m_keyring = 0;
};
