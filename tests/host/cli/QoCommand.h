#pragma once

#include "support/TempDir.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <vector>

/// The real command with a data folder, a home folder and a music folder of its own.
class QoCommand
{
public:
    struct Result
    {
        int code = -1; ///< as a shell gives it: 128 and more for a signal
        std::string out;
        std::string err;

        std::vector<nlohmann::json> json() const
        {
            std::vector<nlohmann::json> list;
            std::istringstream lines(out);
            for (std::string line; std::getline(lines, line);)
                list.push_back(nlohmann::json::parse(line));
            return list;
        }
    };

    QoCommand() { dir.makeFolder("music"); }

    /// Puts a sound of tests/data there under a name below the music folder; its system path.
    std::string addSound(const std::string& relative, const std::string& sound = "sound.mp3") const
    {
        const std::string target = music(relative);
        std::filesystem::create_directories(std::filesystem::path(target).parent_path());
        std::filesystem::copy_file(std::string(QO_TEST_DATA "/sounds/") + sound, target);
        return target;
    }
    /// The same with a tag of its own, of words like "artist=x".
    std::string addTrack(const std::string& relative,
                         const std::vector<std::string>& fields,
                         const std::string& sound = "sound.mp3") const
    {
        const std::string file = addSound(relative, sound);
        std::vector<std::string> words{"tag", "set", file};
        words.insert(words.end(), fields.begin(), fields.end());
        EXPECT_EQ(run(words).code, 0);
        EXPECT_EQ(run({"tag", "write", file}).code, 0);
        return file;
    }
    void addSounds(const std::string& folder, int count) const
    {
        const std::string first = addSound(folder + "/0.mp3");
        for (int i = 1; i < count; ++i)
            std::filesystem::create_hard_link(first,
                                              music(folder + "/" + std::to_string(i) + ".mp3"));
    }
    std::string music(const std::string& relative = std::string()) const
    {
        return dir.path(relative.empty() ? "music" : "music/" + relative);
    }
    std::string database() const { return dir.path("data/Qorganizer/qodb"); }

    /// Starts it without waiting; its output goes to files of its own, "out" and "err" with the
    /// name ahead.
    pid_t start(const std::vector<std::string>& arguments, const std::string& name = "") const
    {
        std::vector<std::string> words{QO_COMMAND, "--data", dir.path("data")};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<std::string> variables{
            "HOME=" + dir.path("home"), "LC_ALL=C", "TZ=UTC", "TERM=dumb"};
        variables.insert(variables.end(), moreVariables.begin(), moreVariables.end());
        std::vector<char*> argv = pointers(words);
        std::vector<char*> environment = pointers(variables);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(
            &actions, 1, dir.path(name + "out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(
            &actions, 2, dir.path(name + "err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        pid_t pid = -1;
        const int error =
            ::posix_spawn(&pid, QO_COMMAND, &actions, nullptr, argv.data(), environment.data());
        posix_spawn_file_actions_destroy(&actions);
        EXPECT_EQ(error, 0) << "cannot start " QO_COMMAND;
        return pid;
    }
    Result finish(pid_t pid, const std::string& name = "") const
    {
        int status = 0;
        ::waitpid(pid, &status, 0);
        Result result;
        result.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        result.out = dir.read(name + "out");
        result.err = dir.read(name + "err");
        return result;
    }
    Result run(const std::vector<std::string>& arguments) const { return finish(start(arguments)); }
    Result scan() const { return run({"scan", music()}); }
    /// The paths that "ls --json" gives.
    std::vector<std::string> paths() const
    {
        std::vector<std::string> list;
        for (const auto& record : run({"ls", "--json"}).json())
            list.push_back(record["path"]);
        return list;
    }
    /// The lasting id of each file, by its path below the music folder.
    std::map<std::string, std::string> ids() const
    {
        std::map<std::string, std::string> map;
        for (const auto& record : run({"ls", "--json"}).json())
            map[record["path"].get<std::string>().substr(music().size() + 1)] = record["velmoraId"];
        return map;
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> list;
        for (const auto& [name, id] : ids())
            list.push_back(name);
        return list;
    }

    /// A call, its exit code and a part of what it says.
    struct Refusal
    {
        std::vector<std::string> words;
        int code;
        std::string text;
    };
    /// Calls each of them, with the command's name ahead unless it is "".
    void expectRefusals(const std::string& command, const std::vector<Refusal>& refusals) const
    {
        for (const Refusal& refusal : refusals)
        {
            std::vector<std::string> words = refusal.words;
            if (!command.empty())
                words.insert(words.begin(), command);
            expect(words, refusal.code, refusal.text);
        }
    }
    void expect(const std::vector<std::string>& words, int code, const std::string& text) const
    {
        const Result result = run(words);
        EXPECT_EQ(result.code, code) << testing::PrintToString(words) << result.err;
        EXPECT_NE((result.out + result.err).find(text), std::string::npos)
            << text << "\n"
            << result.out << result.err;
    }
    void runSql(const char* sql) const
    {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(database().c_str(), &db), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(db);
        sqlite3_close(db);
    }
    /// Waits until a file is there; false after ten seconds.
    static bool waitFor(const std::string& path)
    {
        for (int i = 0; i < 2000; ++i)
        {
            if (std::filesystem::exists(path))
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return false;
    }

    TempDir dir;
    std::vector<std::string> moreVariables; ///< of its environment, "NAME=value"

private:
    static std::vector<char*> pointers(std::vector<std::string>& words)
    {
        std::vector<char*> list;
        for (std::string& word : words)
            list.push_back(word.data());
        list.push_back(nullptr);
        return list;
    }
};
