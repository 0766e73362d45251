#include "host/cli/QoCommand.h"
#include "support/OrdinaryUser.h"

#include <sys/mount.h>

#include <fstream>
#include <functional>
#include <sstream>

namespace fs = std::filesystem;

namespace
{
/// A small library; in words "@" begins a path in its music folder, "%" one beside that.
class Library
{
public:
    Library()
    {
        qo.addTrack("x/loose.mp3", {"artist=Kino", "title=Song"});
        qo.addTrack("x/other.mp3", {"artist=Kino", "title=Other"});
        fs::copy_file(QO_TEST_DATA "/sounds/sound.mp3", qo.dir.path("new.mp3"));
        qo.dir.write("front.jpg",
                     std::string("\xff\xd8\xff\xe0\0\x10JFIF\0\1\1\0\0\1\0\1\0\0\xff\xd9", 22));
        EXPECT_EQ(qo.scan().code, 0);
        qo.dir.makeFolder("home");
        shell("mkdir kept && cp -a music data home kept");
    }
    /// As it was at first, with the times of its files.
    void reset() const { shell("rm -rf music data home && cp -a kept/* ."); }

    QoCommand::Result run(const std::vector<std::string>& words) const
    {
        std::vector<std::string> call{"--yes"};
        for (const std::string& word : words)
            call.push_back(word[0] == '@'   ? qo.music(word.substr(1))
                           : word[0] == '%' ? qo.dir.path(word.substr(1))
                                            : word);
        return qo.run(call);
    }
    void allow(const std::string& relative, unsigned mode) const
    {
        fs::permissions(qo.dir.path(relative), fs::perms(mode));
    }
    void append(const std::string& relative) const
    {
        std::ofstream(qo.dir.path(relative), std::ios::app) << "more";
    }

    /// Names, rights and contents; not what a database keeps beside itself while it is read.
    std::string content(const std::string& relative) const
    {
        std::map<std::string, std::string> entries;
        for (const auto& entry : fs::recursive_directory_iterator(qo.dir.path(relative)))
        {
            const std::string name = entry.path().filename().string();
            if (name == "lock" || name == "out" || name == "err" || name.ends_with("-wal") ||
                name.ends_with("-shm"))
                continue;
            std::ostringstream text;
            text << unsigned(entry.symlink_status().permissions()) << " ";
            if (entry.is_regular_file())
                text << std::ifstream(entry.path()).rdbuf();
            entries[entry.path().string()] = text.str();
        }
        std::string all;
        for (const auto& [path, what] : entries)
            all += path + " " + what + "\n";
        return all;
    }

    const QoCommand qo;

private:
    void shell(const std::string& line) const
    {
        const std::string call = "cd '" + qo.dir.path() + "' && " + line;
        EXPECT_EQ(std::system(call.c_str()), 0) << line; // NOLINT(concurrency-mt-unsafe)
    }
};

struct Case
{
    const char* what;
    std::vector<std::string> words;
    int code;
    std::function<void(const Library&)> prepare = [](const Library&) {};
};

void edit(const Library& library)
{
    EXPECT_EQ(library.run({"tag", "set", "@x/loose.mp3", "title=New"}).code, 0);
}
void setCover(const Library& library)
{
    EXPECT_EQ(library.run({"cover", "set", "@x/loose.mp3", "--image", "%front.jpg"}).code, 0);
}
void plan(const Library& library)
{
    EXPECT_EQ(library.run({"reorg", "plan", "--rule", "artist-track"}).code, 0);
}
void move(const Library& library)
{
    EXPECT_EQ(library.run({"mv", "@x/loose.mp3", "@moved.mp3"}).code, 0);
}
void makeRule(const Library& library)
{
    EXPECT_EQ(library.run({"rule", "new", "mine"}).code, 0);
}
void makePlaylist(const Library& library)
{
    EXPECT_EQ(library.run({"playlist", "new", "x", "@x"}).code, 0);
}
void logIn(const Library& library)
{
    EXPECT_EQ(library.run({"plugin", "login", "NAS", "--folder", "@x"}).code, 0);
}
void keepResult(const Library& library)
{
    library.qo.runSql("INSERT INTO FILE_T (FT_PATH, FT_COLL_ID) VALUES "
                      "('\\\\sresult:web\\a', '?searchresult?')");
}
/// A friend's invitation.
constexpr const char* aLink = "https://qokernel.example/anywhere/0e6da184056d4d8a8cfb0c7b8fb2dd10"
                              "B683C9FC56DE0F2406FCC208FE769F91?t=1&u=Ann&w=127.0.0.1:4848,1ffc"
                              "d2ba143252d8b996d93385a55a1442f4af91bc61659d8d817e3471880983,&v=1&c="
                              "E2D7A67C31A679C2FD7F523A77170F59";
void inviteAnn(const Library& library)
{
    EXPECT_EQ(library.run({"share", "invite", "Ann"}).code, 0);
}
void acceptBen(const Library& library)
{
    EXPECT_EQ(library.run({"share", "accept", aLink, "--as", "Ben"}).code, 0);
}
void writeList(const Library& library)
{
    library.qo.dir.write("x.m3u", "music/x/loose.mp3\n");
}
void loseSong(const Library& library)
{
    makePlaylist(library);
    fs::remove(library.qo.music("x/other.mp3"));
    EXPECT_EQ(library.run({"scan"}).code, 0);
}
void rescan(const Library& library)
{
    fs::remove(library.qo.music("x/other.mp3"));
    EXPECT_EQ(library.run({"scan"}).code, 0);
}
void damage(const Library& library)
{
    std::fstream(library.qo.database(), std::ios::in | std::ios::out) << std::string(100, 'x');
}
void makeOld(const Library& library)
{
    library.qo.runSql("UPDATE VERSION_T SET VT_VERSION = '2.0.0.31'");
}
/// The step, and then a file or folder without the right to be written.
auto locked(const std::string& relative, const std::function<void(const Library&)>& step = {})
{
    return [=](const Library& library)
    {
        if (step)
            step(library);
        library.allow(relative, fs::is_directory(library.qo.dir.path(relative)) ? 0555 : 0444);
    };
}
auto lost(const std::string& relative, const std::function<void(const Library&)>& step = {})
{
    return [=](const Library& library)
    {
        if (step)
            step(library);
        fs::remove(library.qo.dir.path(relative));
    };
}
auto taken(const std::string& relative, const std::function<void(const Library&)>& step)
{
    return [=](const Library& library)
    {
        step(library);
        library.append(relative);
    };
}

const std::string store = "data/Qorganizer";
const std::string loose = "music/x/loose.mp3";

const Case cases[] = {
    {"mv", {"mv", "@x/loose.mp3", "@moved.mp3"}, 0},
    {"mv, source locked", {"mv", "@x/loose.mp3", "@moved.mp3"}, 1, locked("music/x")},
    {"mv, target taken", {"mv", "@x/loose.mp3", "@x/other.mp3"}, 1},
    {"mv, source away", {"mv", "@x/loose.mp3", "@moved.mp3"}, 4, lost(loose)},
    {"rm", {"rm", "@x/loose.mp3"}, 0},
    {"rm, trash locked", {"rm", "@x/loose.mp3"}, 1, locked("home")},
    {"rm, source locked", {"rm", "@x/loose.mp3"}, 1, locked("music/x")},
    {"add", {"add", "%new.mp3", "--to", "@x"}, 0},
    {"add, target locked", {"add", "%new.mp3", "--to", "@x"}, 1, locked("music/x")},
    {"add, no room", {"add", "%new.mp3", "--to", "@small"}, 1},
    {"plan", {"reorg", "plan", "--rule", "artist-track"}, 0},
    {"plan, store locked", {"reorg", "plan", "--rule", "artist-track"}, 1, locked(store)},
    {"apply", {"reorg", "apply", "--last"}, 0, plan},
    {"apply, source locked", {"reorg", "apply", "--last"}, 1, locked("music/x", plan)},
    {"apply, source changed", {"reorg", "apply", "--last"}, 6, taken(loose, plan)},
    {"apply, target taken", {"reorg", "apply", "--last"}, 6, taken("music/Kino - Song.mp3", plan)},
    {"undo", {"undo"}, 0, move},
    {"undo, place locked", {"undo"}, 1, locked("music/x", move)},
    {"undo, place taken", {"undo"}, 1, taken(loose, move)},
    {"undo, file away", {"undo"}, 1, lost("music/moved.mp3", move)},
    {"tag set", {"tag", "set", "@x/loose.mp3", "title=New"}, 0},
    {"tag set, store locked", {"tag", "set", "@x/loose.mp3", "title=New"}, 1, locked(store)},
    {"tag write", {"tag", "write", "@x/loose.mp3"}, 0, edit},
    {"tag write, locked", {"tag", "write", "@x/loose.mp3"}, 1, locked("music/x", edit)},
    {"tag write, file away", {"tag", "write", "@x/loose.mp3"}, 4, lost(loose, edit)},
    {"tag revert", {"tag", "revert", "@x/loose.mp3"}, 0, edit},
    {"cover set", {"cover", "set", "@x/loose.mp3", "--image", "%front.jpg"}, 0},
    {"cover set, locked",
     {"cover", "set", "@x/loose.mp3", "--image", "%front.jpg"},
     1,
     locked("music/x")},
    {"cover remove", {"cover", "remove", "@x/loose.mp3"}, 0, setCover},
    {"cover remove, locked", {"cover", "remove", "@x/loose.mp3"}, 1, locked("music/x", setCover)},
    {"mark", {"mark", "@x/loose.mp3"}, 0},
    {"mark, store locked", {"mark", "@x/loose.mp3"}, 1, locked(store)},
    {"rate", {"rate", "@x/loose.mp3", "4"}, 0},
    {"rate, store locked", {"rate", "@x/loose.mp3", "4"}, 1, locked(store)},
    {"rate --write", {"rate", "@x/loose.mp3", "4", "--write"}, 0},
    {"played", {"played", "@x/loose.mp3"}, 0},
    {"playlist new", {"playlist", "new", "x", "@x"}, 0},
    {"playlist new, store locked", {"playlist", "new", "x", "@x"}, 1, locked(store)},
    {"living list", {"playlist", "new", "x", "--query", "kino"}, 0},
    {"playlist rm", {"playlist", "rm", "x"}, 0, makePlaylist},
    {"playlist move", {"playlist", "move", "x", "1", "2"}, 0, makePlaylist},
    {"playlist export", {"playlist", "export", "x", "%home/x.m3u"}, 0, makePlaylist},
    {"playlist export, locked",
     {"playlist", "export", "x", "%home/x.m3u"},
     1,
     locked("home", makePlaylist)},
    {"playlist copies", {"playlist", "export", "x", "--copy-to", "%home/x"}, 0, makePlaylist},
    {"playlist copies, locked",
     {"playlist", "export", "x", "--copy-to", "%home/x"},
     1,
     locked("home", makePlaylist)},
    {"playlist import", {"playlist", "import", "%x.m3u"}, 0, writeList},
    {"playlist repair", {"playlist", "repair"}, 6, loseSong},
    {"scan", {"scan"}, 0, lost(loose)},
    {"roots add", {"roots", "add", "%home"}, 0},
    {"roots rm, settings locked", {"roots", "rm", "@"}, 1, locked("data")},
    {"config set", {"config", "set", "Language", "de"}, 0},
    {"config set, settings locked", {"config", "set", "Language", "de"}, 1, locked("data")},
    {"db restore", {"db", "restore"}, 0, rescan},
    {"db restore, locked", {"db", "restore"}, 1, locked(store, rescan)},
    {"db backup", {"db", "backup"}, 0},
    {"db backup, locked", {"db", "backup"}, 1, locked(store)},
    {"db migrate", {"db", "migrate"}, 0, makeOld},
    {"db migrate, locked", {"db", "migrate"}, 1, locked(store, makeOld)},
    {"db repair", {"db", "repair"}, 6, damage},
    {"db repair, locked", {"db", "repair"}, 1, locked(store, damage)},
    {"plugin login", {"plugin", "login", "NAS", "--folder", "@x"}, 0},
    {"plugin login, settings locked",
     {"plugin", "login", "NAS", "--folder", "@x"},
     1,
     locked("data")},
    {"plugin logout", {"plugin", "logout", "NAS"}, 0, logIn},
    {"plugin get", {"plugin", "get", "NAS", "loose.mp3", "--to", "%home"}, 0, logIn},
    {"plugin get, taken", {"plugin", "get", "NAS", "loose.mp3", "--to", "@x"}, 1, logIn},
    {"plugin get, locked",
     {"plugin", "get", "NAS", "loose.mp3", "--to", "%home"},
     1,
     locked("home", logIn)},
    {"plugin put", {"plugin", "put", "%new.mp3", "--to", "NAS/more"}, 0, logIn},
    {"plugin set, a rule", {"plugin", "set", "NAS", "--music-rule", "artist-track"}, 0, logIn},
    {"plugin put, taken", {"plugin", "put", "@x/loose.mp3", "--to", "NAS"}, 1, logIn},
    {"plugin rm", {"plugin", "rm", "NAS", "loose.mp3"}, 0, logIn},
    {"plugin scan", {"plugin", "scan", "NAS"}, 0, logIn},
    {"plugin scan, locked", {"plugin", "scan", "NAS"}, 1, locked(store, logIn)},
    {"search clear", {"search", "clear"}, 0, keepResult},
    {"search clear, locked", {"search", "clear"}, 1, locked(store, keepResult)},
    {"extract write", {"extract", "write", "@x/mine.txt"}, 0},
    {"extract write, locked", {"extract", "write", "@x/mine.txt"}, 1, locked("music/x")},
    {"share invite", {"share", "invite", "Ann"}, 0},
    {"share invite, locked", {"share", "invite", "Ann"}, 1, locked(store)},
    {"share revoke", {"share", "revoke", "Ann"}, 0, inviteAnn},
    {"share accept", {"share", "accept", aLink}, 0},
    {"share forget", {"share", "forget", "Ben"}, 0, acceptBen},
    {"rule new", {"rule", "new", "mine"}, 0},
    {"rule new, locked", {"rule", "new", "mine"}, 1, locked(store)},
    {"rule rm", {"rule", "rm", "mine"}, 0, makeRule},
    {"rule rm, locked", {"rule", "rm", "mine"}, 1, locked(store, makeRule)}};

/// A file system of 64 KiB that is full, where this user may make one.
class SmallDisk
{
public:
    explicit SmallDisk(const std::string& folder) : m_folder(folder)
    {
        fs::create_directory(folder);
        isMounted = ::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=64k,mode=0777") == 0;
        std::ofstream(folder + "/full.mp3") << std::string(64 * 1024, 'x');
    }
    ~SmallDisk()
    {
        if (isMounted)
            ::umount(m_folder.c_str());
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isMounted;

private:
    std::string m_folder;
};
} // namespace

TEST(DryRun, ComesToWhatTheRealRunComesToAndChangesNothing)
{
    const Library library;
    for (const Case& each : cases)
    {
        SCOPED_TRACE(each.what);
        library.reset();
        std::optional<SmallDisk> disk;
        if (std::string(each.what) == "add, no room")
        {
            disk.emplace(library.qo.music("small"));
            if (!disk->isMounted)
                continue;
            EXPECT_EQ(library.run({"scan"}).code, 0);
        }
        each.prepare(library);
        const OrdinaryUser user(library.qo.dir.path());
        if (!user.isPossible)
            GTEST_SKIP() << "the administrator cannot be another user here";

        const std::string before = library.content("");
        std::vector<std::string> dryWords = each.words;
        dryWords.insert(dryWords.begin(), "--dry-run");
        const QoCommand::Result dry = library.run(dryWords);
        EXPECT_EQ(dry.code, each.code) << dry.out << dry.err;
        EXPECT_EQ(library.content(""), before);

        const std::string music = library.content("music");
        const QoCommand::Result real = library.run(each.words);
        EXPECT_EQ(real.code, each.code) << real.out << real.err;
        const bool isDone = each.code == 0 || each.code == 6;
        EXPECT_TRUE(isDone ? library.content("") != before : library.content("music") == music)
            << real.err;
    }
}
