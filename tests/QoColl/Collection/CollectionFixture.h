#pragma once

#include "Logical/LTManager.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/QoProgress.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <boost/make_shared.hpp>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <filesystem>

namespace fs = std::filesystem;

/// Cancels at the n-th poll.
class CancelAt : public CDummyProgress
{
public:
    explicit CancelAt(int poll) : m_left(poll) {}
    bool isCanceled() override { return m_left <= 0 || --m_left <= 0; }
    bool wasReached() const { return m_left <= 0; }

private:
    int m_left;
};

/// A music folder with a few real files and a database, loaded through one collection.
class Collection : public testing::Test
{
protected:
    Collection()
    {
        CQoCollection::initGlobal();
        qo::specialFolders().setBase(dir.collPath("data"));
        dir.makeFolder("music");
        dir.makeFolder("data");
        put("sound.mp3", "music/a/one.mp3");
        put("sound.flac", "music/a/two.flac");
        dir.write("music/a/cover.jpg", "no picture at all");
        dir.write("music/b/notes.txt", "words");
        dbPath = dir.collPath("data/qodb");
        CQoCollDb::CreateDatabaseIfNotValid(dbPath, {});
        roots.Add(dir.collPath("music"));
    }
    ~Collection() override
    {
        collection.clearCollection(&progress);
        CLTManager::cleanUp(true);
        qo::specialFolders().setBase(CString());
    }

    void put(const std::string& sound, const std::string& to)
    {
        fs::create_directories(fs::path(dir.path(to)).parent_path());
        fs::copy_file(fs::path(QO_TEST_DATA) / "sounds" / sound, dir.path(to));
    }
    bool load(bool rescan = false, IQoProgress* with = nullptr)
    {
        result = {};
        return collection.load(dbPath, u"", roots, kinds, rescan, with ? with : &progress, &result);
    }
    /// The path of every record below the first root, in their order.
    std::string records()
    {
        QoFileDbItemArray files;
        collection.copyFiles(files);
        return namesOf(files);
    }
    std::string namesOf(const QoFileDbItemArray& files) const
    {
        std::string text;
        for (const auto& item : files)
            text += qo::toUtf8(item->path.text().Mid(roots[0].GetLength() + 1)) + " ";
        return text;
    }
    QoFileDbItemPtr record(const char* name)
    {
        const auto file = collection.getFileByPath(dir.collPath(std::string("music/") + name));
        return file ? file->getDbItem() : QoFileDbItemPtr();
    }
    std::string counts() const
    {
        return std::to_string(result.m_inserted) + "+ " + std::to_string(result.m_updated) + "~ " +
               std::to_string(result.m_deleted) + "-";
    }
    void setTime(const std::string& name, std::int64_t seconds)
    {
        const timespec times[] = {{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, dir.path(name).c_str(), times, 0), 0);
    }
    void sql(const char* statement)
    {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(dir.path("data/qodb").c_str(), &db), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, statement, nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(db);
        sqlite3_close(db);
    }

    TempDir dir;
    CString dbPath;
    CStringArray roots;
    CQoPathsInfoMap kinds;
    CDummyProgress progress;
    CQoCollection collection;
    CQoCollection::OpResultInfo result;
};
