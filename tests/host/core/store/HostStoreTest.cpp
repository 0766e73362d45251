#include "core/store/HostStore.h"

#include "host/core/MessageOf.h"
#include "support/Contains.h"
#include "support/OrdinaryUser.h"
#include "support/TempDir.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
EditedFile edited(const char16_t* id, const CString& path, const std::string& title)
{
    return {id, path, 7, 8, {{"title", title}}};
}

/// The titles in the store, "ID path=title".
std::vector<std::string> titles(const HostStore& store)
{
    std::vector<std::string> list;
    for (const EditedFile& file : store.edits())
        list.push_back(qo::toUtf8(file.id) + " " + qo::toUtf8(file.path) + "=" +
                       file.fields.at("title"));
    return list;
}

void addMany(HostStore& store, int count)
{
    std::vector<EditedFile> files;
    for (int i = 0; i < count; ++i)
    {
        CString id;
        id.Format(u"id%05d", i);
        files.push_back(edited(id, u"C:\\" + id + u".mp3", std::string(100, 'x')));
    }
    store.replaceEdits({}, files);
}

/// Writes over a part of the file.
void spoil(const std::string& path, std::int64_t at, std::size_t count)
{
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(at);
    file << std::string(count, '\xAB');
}

/// Where the page begins that holds the value of the row: a hundred letters of two bytes.
std::int64_t pageOfRow(const std::string& database, std::size_t row)
{
    std::string value;
    for (int i = 0; i < 100; ++i)
        value += std::string("x\0", 2);
    std::size_t at = 0;
    for (std::size_t i = 0; i <= row; ++i)
        at = database.find(value, at) + value.size();
    return static_cast<std::int64_t>(at / 4096 * 4096);
}

using List = std::vector<std::string>;
} // namespace

TEST(HostStore, KeepsTheRowsOfEachTable)
{
    const TempDir dir;
    HostStore store(dir.collPath(""));
    EXPECT_TRUE(store.edits().empty());
    EXPECT_FALSE(fs::exists(dir.path("host.db"))) << "reading makes nothing";

    const CString path = qo::fromSystemPath("/music/\xff\n\xF0\x9F\x8E\xB5.mp3");
    EditedFile file{u"id", path, 12, 34, {{"artist", "a\nb\"\\"}, {"album", ""}}};
    const EditedFile bare{u"", u"C:\\b.mp3", EditedFile::unknownSize, 0, {{"year", "76"}}};
    store.replaceEdits({}, {file, bare});
    EXPECT_EQ(store.edits(), (std::vector<EditedFile>{bare, file}));
    EditedFile moved = file;
    moved.path = u"C:\\other.mp3";
    moved.fields.erase("album");
    store.replaceEdits({file}, {moved});
    EXPECT_EQ(store.edits(), (std::vector<EditedFile>{bare, moved}));

    store.changeHeads({}, {{"a b", 1, 2, ~std::uint64_t(0)}, {"c", 3, 4, 5}});
    store.changeHeads({"c"}, {{"a b", 6, 7, 8}});
    ASSERT_EQ(store.heads().size(), 1U);
    EXPECT_EQ(store.heads()[0].digest, 8U);

    ScanMark mark;
    mark.roots.Add(u"C:\\music");
    mark.lastSave = 0;
    store.setMark(mark);
    EXPECT_EQ(store.mark().lastSave, 0);
    store.setMark({});
    EXPECT_TRUE(store.mark().roots.IsEmpty());

    const std::vector<FarFolder> folders{{u"C:\\a", ~std::uint64_t(0), true}, {u"C:\\b", 2, false}};
    store.setFolders({{u"C:\\gone", 1, true}});
    store.setFolders(folders);
    EXPECT_EQ(store.folders(), folders);

    const StoredEntry found{7, u"id", u"C:\\a;b.mp3", u"", u"T", u"A", 9};
    const StoredEntry text{0, u"", u"", u"http://x", u"", u"", 0};
    store.beginPlaylistChange(3, u"1;2", {found, text, found});
    EXPECT_EQ(store.begunPlaylistChange(3), CString(u"1;2"));
    store.endPlaylistChange(3);
    EXPECT_FALSE(store.begunPlaylistChange(3));
    EXPECT_EQ(store.playlistEntries(3), (std::vector<StoredEntry>{found, text, found}));
    EXPECT_EQ(store.entriesWithoutFile(), (std::map<int, int>{{3, 1}}));
    EXPECT_TRUE(store.fileNotes().empty());
    store.replaceLivingList(u"", {u"a", u"x"});
    store.replaceLivingList(u"a", {u"b", u"y"});
    ASSERT_EQ(store.livingLists().size(), 1U);
    EXPECT_EQ(store.livingLists()[0].query, u"y");

    struct stat info
    {
    };
    ASSERT_EQ(::stat(dir.path("host.db").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600U);
}

TEST(HostStore, IsReadFromAFolderThatCannotBeWritten)
{
    const TempDir dir;
    HostStore store(dir.collPath(""));
    store.replaceEdits({}, {edited(u"id", u"C:\\a.mp3", "x")});
    fs::permissions(dir.path("host.db"), fs::perms::owner_read | fs::perms::others_read);
    const OrdinaryUser user(dir.path());
    if (!user.isPossible)
        GTEST_SKIP() << "the build folder is closed to ordinary users";
    fs::permissions(dir.path(""), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(titles(store), List{"id C:\\a.mp3=x"});
    messageOf([&] { store.replaceEdits({}, {edited(u"id", u"C:\\a.mp3", "y")}); });
    fs::permissions(dir.path(""), fs::perms::owner_all);
}

TEST(HostStore, OldFilesAreTakenOverOnce)
{
    const TempDir dir;
    const std::string edits =
        R"({"version":1,"files":{"C:\\a.mp3":{"title":"A"},"C:\\b.mp3":{"title":"B"}}})";
    const auto writeOld = [&]
    {
        dir.write("pending-tags.json", edits);
        dir.write("heads", "velmora-heads 1\nnonsense\na b c d\nid 10 20 ff\n");
        dir.write("unfinished-scan", std::string("C:\\music\0names since 42\0", 24));
        for (const char* name : {"pending-tags.json", "heads", "unfinished-scan"})
            fs::last_write_time(dir.path(name), fs::file_time_type(std::chrono::hours(1)));
    };
    writeOld();
    HostStore store(dir.collPath(""));
    const auto expectRows = [&]
    {
        EXPECT_EQ(titles(store), (List{" C:\\a.mp3=A", " C:\\b.mp3=B"}));
        ASSERT_EQ(store.heads().size(), 1U);
        EXPECT_EQ(store.heads()[0].digest, 0xFFU);
        EXPECT_EQ(store.mark().lastSave, 42);
        EXPECT_EQ(store.mark().roots.GetSize(), 1);
    };
    expectRows();
    EXPECT_FALSE(fs::exists(dir.path("host.db"))) << "a look takes nothing over";
    EXPECT_TRUE(store.prepare().empty());
    for (const char* name : {"pending-tags.json", "heads", "unfinished-scan"})
        EXPECT_FALSE(fs::exists(dir.path(name))) << name;
    expectRows();

    store.replaceEdits({store.edits()[0]}, {});
    writeOld(); // as after a crash before they were removed
    EXPECT_EQ(titles(store), List{" C:\\b.mp3=B"});
    store.prepare();
    EXPECT_EQ(titles(store), List{" C:\\b.mp3=B"}) << "what was dropped does not come back";
    EXPECT_FALSE(fs::exists(dir.path("pending-tags.json")));
}

TEST(HostStore, OldFileThatIsNoListIsSetAside)
{
    for (const char* text : {"[]",
                             "{\"version\":2,\"files\":{}}",
                             "{\"version\":1,\"files\":{\"a\":{\"artist\":1}}}",
                             "\xff\xfe"})
    {
        const TempDir dir;
        dir.write("pending-tags.json", text);
        HostStore store(dir.collPath(""));
        const std::vector<std::string> notes = store.prepare();
        ASSERT_EQ(notes.size(), 1U) << text;
        const std::string aside = notes[0].substr(notes[0].rfind('/') + 1);
        EXPECT_EQ(dir.read(aside), text);
        EXPECT_FALSE(fs::exists(dir.path("pending-tags.json"))) << text;
    }
}

TEST(HostStore, DamageCostsOnlyTheRowsThatItHits)
{
    constexpr int count = 2000;
    const struct
    {
        const char* what;
        std::size_t row; ///< whose page is spoilt
        std::size_t bytes;
        std::size_t fewest; ///< files whose edits survive
        std::size_t most;
    } cases[] = {{"a page in the middle", count / 2, 4096, count * 9 / 10, count - 1},
                 {"many pages", count / 2, 100000, count / 2, count - 1},
                 {"the schema", 0, 4096, count, count},
                 {"the schema and the first page of the edits", 0, 8192, count, count},
                 {"all but a few bytes", 0, 0, 0, 0}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        const TempDir dir;
        HostStore store(dir.collPath(""));
        addMany(store, count);
        spoil(dir.path("host.db"), c.row == 0 ? 0 : pageOfRow(dir.read("host.db"), c.row), c.bytes);
        if (c.bytes == 0)
            std::filesystem::resize_file(dir.path("host.db"), 100);
        const std::string read = c.row != 0 ? "" : messageOf([&] { (void)store.mark(); });
        EXPECT_TRUE(c.row != 0 || contains(read, "the next command"));
        const std::vector<std::string> notes = store.prepare();
        ASSERT_EQ(notes.size(), 1U);
        EXPECT_TRUE(contains(notes[0], "host.db was damaged: it was set aside as "));
        const std::size_t left = store.edits().size();
        EXPECT_GE(left, c.fewest);
        EXPECT_LE(left, c.most);
        EXPECT_TRUE(contains(notes[0], "edits of " + std::to_string(left) + " file"));
        EXPECT_TRUE(store.prepare().empty());
        store.replaceEdits({}, {edited(u"new", u"C:\\new.mp3", "x")});
        EXPECT_EQ(store.edits().size(), left + 1);
    }
}

TEST(HostStore, OlderOneGetsItsMissingTablesWithTheNextChange)
{
    const TempDir dir;
    HostStore store(dir.collPath(""));
    addMany(store, 1);
    {
        CSQLiteDB db(dir.collPath("host.db"));
        db.Open();
        for (const char16_t* const table : {u"PLAYLIST_ENTRY_T",
                                            u"PLAYLIST_CHANGE_T",
                                            u"LIVING_LIST_T",
                                            u"TAG_NOTE_T",
                                            u"OWN_NOTE_T",
                                            u"OFFER_T"})
            db.Execute(u"DROP TABLE " + CString(table));
        db.Execute(u"PRAGMA user_version = 3");
    }
    EXPECT_TRUE(store.prepare().empty());
    EXPECT_TRUE(store.playlistEntries(1).empty() && store.livingLists().empty());
    EXPECT_TRUE(store.entriesWithoutFile().empty() && !store.begunPlaylistChange(1));
    EXPECT_TRUE(store.offers().empty());
    store.replaceLivingList(u"", {u"a", u"x"});
    EXPECT_EQ(store.livingLists().size(), 1U);
    EXPECT_EQ(store.edits().size(), 1U);
}

TEST(HostStore, OneOfANewerProgramIsLeftAlone)
{
    const TempDir dir;
    HostStore store(dir.collPath(""));
    addMany(store, 1);
    {
        CSQLiteDB db(dir.collPath("host.db"));
        db.Open();
        db.Execute(u"PRAGMA user_version = 99");
    }
    const std::string before = dir.read("host.db");
    EXPECT_TRUE(contains(messageOf([&] { store.prepare(); }), "newer version"));
    EXPECT_TRUE(contains(messageOf([&] { addMany(store, 2); }), "newer version"));
    EXPECT_EQ(dir.read("host.db"), before);
}
