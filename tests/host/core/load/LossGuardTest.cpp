#include "core/watch/FolderChanges.h"
#include "host/core/LoadedCollection.h"
#include "support/Contains.h"

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
void addSounds(const LoadedCollection& here, const std::string& folder, int count)
{
    for (int i = 0; i < count; ++i)
        here.addSound(folder + "/" + std::to_string(i) + ".mp3");
}

void emptyFolder(const LoadedCollection& here, const std::string& folder)
{
    for (const auto& entry : fs::directory_iterator(here.dir.path(folder)))
        fs::remove_all(entry.path());
}

void load(LoadedCollection& here, bool allowMissing)
{
    LoadOptions options;
    options.rescan = true;
    options.allowMissingRoot = allowMissing;
    loadCollection(*here.session, options, *here.progress);
}
} // namespace

TEST(LossGuard, AFolderThatIsThereWithoutItsFilesStopsTheScan)
{
    struct Case
    {
        const char* what;
        int files;       ///< that the folder had
        bool goesItself; ///< the folder too
        bool moves;      ///< its files are elsewhere now
        bool isRefused;
    };
    const Case cases[] = {{"emptied", 8, false, false, true},
                          {"a handful", 5, false, false, false},
                          {"deleted", 8, true, false, false},
                          {"moved", 8, false, true, false}};
    for (const Case& row : cases)
    {
        LoadedCollection here;
        addSounds(here, "music/disk/in", row.files);
        addSounds(here, "music/other", 3);
        here.load();
        const auto before = here.stored();
        if (row.moves)
            fs::rename(here.dir.path("music/disk/in"), here.dir.path("music/other/in"));
        emptyFolder(here, "music/disk");
        here.dir.write("music/disk/stray.txt", "words");
        if (row.goesItself)
            fs::remove_all(here.dir.path("music/disk"));
        if (!row.isRefused)
        {
            here.run([&] { load(here, false); });
            EXPECT_NE(here.stored(), before) << row.what;
            continue;
        }
        const std::string text = here.messageOf([&] { load(here, false); }, ExitCode::away);
        EXPECT_TRUE(contains(text, here.dir.path("music/disk") + " seems to be away")) << text;
        EXPECT_EQ(here.stored(), before) << row.what;
        here.run([&] { load(here, true); });
        EXPECT_EQ(here.stored().size(), 4U) << row.what;
    }
}

TEST(LossGuard, ACopyIsKeptBeforeATenthOfTheCollectionLeaves)
{
    LoadedCollection here;
    for (const bool isWatched : {false, true})
    {
        addSounds(here, "music/a", 21);
        if (!isWatched)
            addSounds(here, "music/b", 100);
        here.load();
        fs::remove_all(here.dir.path("music/a"));
        here.notes.clear();
        const std::vector<FolderEvent> events{
            {FolderEvent::Kind::removed, here.dir.path("music/a"), {}, {}}};
        if (isWatched)
            here.run([&] { FolderChanges(*here.session).apply(events, *here.progress); });
        else
            here.load();
        EXPECT_EQ(here.stored().size(), 100U);
        EXPECT_TRUE(contains(here.notes, "the collection as it was is kept in")) << isWatched;
    }
}
