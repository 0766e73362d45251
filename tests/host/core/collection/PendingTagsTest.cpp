#include "core/collection/PendingTags.h"

#include "core/watch/FolderChanges.h"
#include "host/core/LoadedCollection.h"

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
using List = std::vector<std::string>;

class PendingTagsTest : public testing::Test
{
protected:
    void edit(const std::string& path, const std::string& title)
    {
        here.run(
            [&]
            {
                PendingTags pending;
                pending.set(here.dir.collPath(path), "title", title);
                pending.save();
            });
    }
    std::string relative(const CString& path) const
    {
        return qo::toSystemPath(path).substr(here.dir.path().size() + 1);
    }
    /// The edited titles by path, "music/1.mp3=x" and so on; "music/1.mp3 away" for the others.
    List edits() const
    {
        return here.run(
            [&]
            {
                const PendingTags pending;
                List list;
                for (const CString& path : pending.paths())
                    list.push_back(relative(path) + "=" + pending.fields(path).at("title"));
                for (const CString& path : pending.awayPaths())
                    list.push_back(relative(path) + " away");
                return list;
            });
    }
    void rename(const std::string& from, const std::string& to) const
    {
        fs::rename(here.dir.path(from), here.dir.path(to));
    }
    /// As a watch brings it in.
    void see(const std::string& path)
    {
        here.run(
            [&]
            {
                FolderEvent event;
                event.kind = fs::exists(here.dir.path(path)) ? FolderEvent::Kind::changed
                                                             : FolderEvent::Kind::removed;
                event.path = here.dir.path(path);
                FolderChanges(*here.session).apply({event}, *here.progress);
            });
    }
    void move(const std::string& from, const std::string& to)
    {
        here.carryOut("mv",
                      [&](FileMoves& moves)
                      { moves.move(here.dir.collPath(from), here.dir.collPath(to)); });
    }

    LoadedCollection here;
};
} // namespace

TEST_F(PendingTagsTest, BelongToTheRecordWhereverItsFileGoes)
{
    for (const char* path : {"music/a/1.mp3", "music/2.mp3", "music/3.mp3", "outside/4.mp3"})
        here.addSound(path);
    here.load();
    for (const char* path : {"music/a/1.mp3", "music/2.mp3", "music/3.mp3", "outside/4.mp3"})
        edit(path, path);
    move("music/a", "music/b");
    move("music/b/1.mp3", "music/b/ONE.mp3");
    EXPECT_EQ(edits(),
              (List{"music/2.mp3=music/2.mp3",
                    "music/3.mp3=music/3.mp3",
                    "music/b/ONE.mp3=music/a/1.mp3",
                    "outside/4.mp3=outside/4.mp3"}));
    fs::remove(here.dir.path("music/3.mp3"));
    move("music/2.mp3", "music/3.mp3");
    here.carryOut("add",
                  [&](FileMoves& moves)
                  {
                      moves.add(here.dir.collPath("outside/4.mp3"),
                                here.dir.collPath("music/2.mp3"),
                                MovedFile::Deed::move);
                  });
    EXPECT_EQ(edits(),
              (List{"music/2.mp3=outside/4.mp3",
                    "music/3.mp3=music/2.mp3",
                    "music/b/ONE.mp3=music/a/1.mp3",
                    "music/3.mp3 away"}));
}

TEST_F(PendingTagsTest, AreTakenUpByTheSameFileAgainAndByNoOther)
{
    here.addSound("music/1.mp3");
    here.addSound("music/2.mp3");
    here.load();
    const std::string first = here.records().at("music/1.mp3");
    edit("music/1.mp3", "x");
    edit("music/2.mp3", "y");

    rename("music/1.mp3", "1.mp3");
    see("music/1.mp3");
    EXPECT_EQ(edits(), (List{"music/2.mp3=y", "music/1.mp3 away"}));
    here.addSound("music/1.mp3", "sound.flac");
    see("music/1.mp3");
    EXPECT_EQ(edits(), (List{"music/2.mp3=y", "music/1.mp3 away"})) << "another file";
    fs::remove(here.dir.path("music/1.mp3"));
    see("music/1.mp3");
    rename("1.mp3", "music/1.mp3");
    see("music/1.mp3");
    EXPECT_NE(here.records().at("music/1.mp3"), first);
    EXPECT_EQ(edits(), (List{"music/1.mp3=x", "music/2.mp3=y"}));
    move("music/1.mp3", "music/3.mp3");
    EXPECT_EQ(edits(), (List{"music/2.mp3=y", "music/3.mp3=x"})) << "they are the new record's";

    rename("music/3.mp3", "3.mp3");
    here.load();
    EXPECT_EQ(edits(), (List{"music/2.mp3=y", "music/3.mp3 away"}));
    rename("3.mp3", "music/3.mp3");
    EXPECT_EQ(edits(), (List{"music/2.mp3=y", "music/3.mp3=x"})) << "it is there, if not scanned";
    here.load();
    move("music/3.mp3", "music/4.mp3");
    EXPECT_EQ(edits(), (List{"music/2.mp3=y", "music/4.mp3=x"}));
    here.addSound("music/4.MP3", "sound.flac");
    fs::remove(here.dir.path("music/4.mp3"));
    here.load();
    EXPECT_TRUE(here.records().contains("music/4.MP3"));
    EXPECT_EQ(edits(), (List{"music/2.mp3=y", "music/4.mp3 away"})) << "a name in other case";
}

TEST_F(PendingTagsTest, OfFilesWithoutARecordWaitForIt)
{
    here.dir.write(
        "data/Qorganizer/pending-tags.json",
        R"({"version":1,"files":{")" +
            [&]
            {
                std::string path = qo::toUtf8(here.dir.collPath("music/old.mp3"));
                for (std::size_t at = 0; (at = path.find('\\', at)) != path.npos; at += 2)
                    path.insert(at, 1, '\\');
                return path;
            }() +
            R"(":{"title":"z"}}})");
    here.addSound("music/1.mp3");
    here.addSound("music/old.mp3");
    edit("music/1.mp3", "x");
    EXPECT_EQ(edits(), (List{"music/1.mp3=x", "music/old.mp3=z"}));
    here.load();
    move("music/1.mp3", "music/2.mp3");
    move("music/old.mp3", "music/new.mp3");
    EXPECT_EQ(edits(), (List{"music/2.mp3=x", "music/new.mp3=z"}));
}
