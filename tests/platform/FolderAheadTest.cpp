#include "platform/FolderAhead.h"

#include "QoColl/Collection/FileFinder.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/Contains.h"
#include "support/OrdinaryUser.h"
#include "support/Print.h"
#include "support/TempDir.h"
#include "support/Words.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <optional>
#include <thread>

using qo::DirEntry;
using qo::FolderAhead;

namespace
{
/// The real file system, for looking alone. While it lives all listings go through it; a hook may
/// have its say before each.
class WatchedFileSystem final : public qo::IFileSystem
{
public:
    WatchedFileSystem() { qo::setFileSystem(this); }
    ~WatchedFileSystem() override { qo::setFileSystem(nullptr); }

    int list(const CString& folder, std::vector<DirEntry>& entries) override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_listed.push_back(folder);
        }
        if (onList)
            onList(folder);
        return m_real.list(folder, entries);
    }
    int info(const CString& path, qo::Spelling spelling, qo::FileInfo& info) override
    {
        return m_real.info(path, spelling, info);
    }
    std::unique_ptr<qo::IFile> open(const CString&, qo::OpenMode, int& error) override
    {
        error = ENOSYS;
        return nullptr;
    }
    int makeDirectory(const CString&) override { return ENOSYS; }
    int makeDirectories(const CString&) override { return ENOSYS; }
    int removeFile(const CString&) override { return ENOSYS; }
    int removeDirectory(const CString&) override { return ENOSYS; }
    int moveFile(const CString&, const CString&) override { return ENOSYS; }
    int moveFileNoReplace(const CString&, const CString&) override { return ENOSYS; }
    int copyFile(const CString&, const CString&) override { return ENOSYS; }
    int replaceFile(const CString&, const void*, std::size_t, qo::Durability) override
    {
        return ENOSYS;
    }
    int makeWritable(const CString&) override { return ENOSYS; }
    bool isLink(const CString& path) override { return m_real.isLink(path); }

    std::vector<CString> listed()
    {
        const std::lock_guard lock(m_mutex);
        return m_listed;
    }
    int total() { return static_cast<int>(listed().size()); }

    std::function<void(const CString&)> onList;

private:
    qo::IFileSystem& m_real = qo::fileSystem();
    std::mutex m_mutex;
    std::vector<CString> m_listed;
};

/// Lists ahead of this thread's walks while it lives.
class Ahead
{
public:
    explicit Ahead(std::vector<CString> starts, std::size_t mostHeld = FolderAhead::defaultMostHeld)
        : folders(std::move(starts), mostHeld), thread([this] { folders.run(); })
    {
        qo::setFolderAhead(&folders);
    }
    ~Ahead()
    {
        qo::setFolderAhead(nullptr);
        folders.stop();
        if (thread.joinable())
            thread.join();
    }

    FolderAhead folders;
    std::thread thread;
};

/// All that a walk meets, a line each.
std::string walk(const std::vector<CString>& starts)
{
    std::string found;
    for (const CString& start : starts)
    {
        QoKernel::CFileFinder finder;
        const QoKernel::CFileFilter all;
        for (bool any = finder.findFirst({start, true}, all); any; any = finder.findNext())
            found += qo::toUtf8(finder.getFilePath()) + " " +
                     std::to_string(finder.getFileInfo().inode) + "\n";
    }
    return found;
}

/// A tree with all that a walk treats in its own way; gives where walks of it start.
std::vector<CString> makeTree(const TempDir& dir)
{
    for (const std::string& name :
         wordsOf("one/A/1/x one/A/2/x one/b/deep/er/still/x one/caf\xE9/back\\slash/x "
                 "one/.Trash-1000/files/x one/m/Trash/files/x one/m/Trash/info/x one/m/n/o/x "
                 "one/own/qodb one/shut/x one/top two/x outside/in/x"))
        dir.write(name, "x");
    dir.makeFolder("two/empty");
    const std::pair<const char*, const char*> links[] = {{"..", "one/A/up"},
                                                         {"m/n", "one/a_early_way"},
                                                         {"../outside", "one/way_out"},
                                                         {"nowhere", "one/lost"},
                                                         {"../one", "two/one"}};
    for (const auto& [target, link] : links)
        EXPECT_EQ(::symlink(target, dir.path(link).c_str()), 0);
    return {dir.collPath("one"), dir.collPath("missing"), dir.collPath("two")};
}
} // namespace

TEST(FolderAhead, WalksFindWhatTheyWouldFindAlone)
{
    const struct
    {
        const char* name;
        bool isDoneBefore; ///< the walk comes when all is listed
        std::size_t mostHeld;
        int endsAt = 0; ///< the listing at which it stops
        bool endsBadly = false;
    } cases[] = {{"late walk", true, 1000},
                 {"early walk", false, 1000},
                 {"little room", false, 5},
                 {"no room", false, 0},
                 {"stopped at once", false, 1000, 1},
                 {"stopped", false, 1000, 7},
                 {"stopped before the walk", true, 1000, 7},
                 {"no memory at once", false, 1000, 1, true},
                 {"no memory", true, 1000, 9, true}};
    const TempDir dir;
    const std::vector<CString> starts = makeTree(dir);
    qo::specialFolders().setBase(dir.collPath("one/own"));
    ASSERT_EQ(::chmod(dir.path("one/shut").c_str(), 0), 0);
    const OrdinaryUser user(dir.path());
    const std::string alone = walk(starts);
    EXPECT_TRUE(contains(alone, "deep\\er\\still\\x"));
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        WatchedFileSystem files;
        std::optional<Ahead> ahead;
        std::atomic<FolderAhead*> toEnd{nullptr};
        const std::thread::id here = std::this_thread::get_id();
        files.onList = [&](const CString&)
        {
            if (c.endsAt == 0 || files.total() < c.endsAt || std::this_thread::get_id() == here)
                return;
            if (c.endsBadly)
                throw std::bad_alloc();
            toEnd.wait(nullptr);
            toEnd.load()->stop();
        };
        ahead.emplace(starts, c.mostHeld);
        toEnd = &ahead->folders;
        toEnd.notify_all();
        if (c.isDoneBefore)
            ahead->thread.join();
        EXPECT_EQ(walk(starts), alone);
        EXPECT_EQ(walk(starts), alone) << "a second time";
        ahead.reset();
    }
    qo::specialFolders().setBase(CString());
    ::chmod(dir.path("one/shut").c_str(), 0700);
}

TEST(FolderAhead, ListsNothingTwiceAndNothingThatTheWalkPassesOver)
{
    const TempDir dir;
    const std::vector<CString> starts = makeTree(dir);
    for (const std::size_t mostHeld : {0, 5, 1000})
    {
        WatchedFileSystem files;
        {
            const Ahead ahead(starts, mostHeld);
            walk(starts);
        }
        std::vector<CString> listed = files.listed();
        std::sort(listed.begin(), listed.end());
        for (std::size_t i = 0; i < listed.size(); ++i)
        {
            EXPECT_TRUE(i == 0 || listed[i] != listed[i - 1]) << qo::toUtf8(listed[i]);
            EXPECT_EQ(listed[i].Find(u"Trash"), -1) << qo::toUtf8(listed[i]);
        }
        EXPECT_TRUE(
            std::binary_search(listed.begin(), listed.end(), dir.collPath("one/a_early_way")));
    }
}

TEST(FolderAhead, ErrorsAreHandedOnLikeEntries)
{
    const TempDir dir;
    const CString missing = dir.collPath("missing");
    FolderAhead ahead({missing, dir.collPath()});
    ahead.run();
    dir.makeFolder("missing");
    std::vector<DirEntry> entries(1);
    EXPECT_EQ(ahead.list(missing, entries), ENOENT);
    EXPECT_TRUE(entries.empty());
    EXPECT_EQ(ahead.list(dir.collPath(), entries), 0);
    EXPECT_TRUE(entries.empty()) << "as of the moment when it was listed";
    EXPECT_EQ(ahead.list(dir.collPath(), entries), 0);
    EXPECT_EQ(entries.size(), 1U) << "a second time it is listed anew";
}

TEST(FolderAhead, ListsNoFurtherThanItsRoomGoes)
{
    const TempDir dir;
    for (int i = 0; i < 40; ++i)
        dir.write("folder" + std::to_string(i) + "/x", "x");
    WatchedFileSystem files;
    Ahead ahead({dir.collPath()}, 6); // three folders with their file
    std::vector<DirEntry> entries;
    for (int asked = 1; asked <= 3; ++asked)
    {
        const CString folder = entries.empty() ? dir.collPath() : dir.collPath("folder0");
        ASSERT_EQ(ahead.folders.list(folder, entries), 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_LE(files.total() - asked, 4) << "one more while both list";
    }
}
