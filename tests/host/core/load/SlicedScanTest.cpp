#include "core/base/HostError.h"
#include "core/load/CollectionLoader.h"
#include "core/load/UnfinishedScan.h"
#include "core/load/UnreadFiles.h"
#include "core/roots/RootFolders.h"
#include "core/session/ProgressReporter.h"
#include "core/session/Session.h"
#include "support/TempDir.h"

#include <QoKernel/Inside.h>
#include <QoKernel/Logical.h>
#include <QoKernel/Physical.h>
#include <QoKernel/Tags.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <random>

using namespace qo::host;
namespace fs = std::filesystem;

namespace
{
/// Music whose tags, names and gaps give the analysis of names something to find, in many folders.
class Library
{
public:
    explicit Library(const TempDir& dir) : m_dir(dir)
    {
        writeBase();
        for (const char* artist : {"Ann", "Bo", "ann lee"})
        {
            for (const char* album : {"Red Sky", "blue", "Red"})
                fillAlbum(artist, album);
        }
        dir.write("music/Ann.jpg", "a picture");
        dir.write("music/zz.txt", "words");
    }

private:
    void writeBase()
    {
        m_dir.makeFolder("base");
        for (int i = 0; i < 12; ++i)
        {
            const std::string name = "base/" + std::to_string(i) + ".mp3";
            fs::copy_file(QO_TEST_DATA "/sounds/sound.mp3", m_dir.path(name));
            CMusicTagEx tag;
            const auto set = [&](int bit) { return (i & bit) != 0; };
            tag.setArtist(i % 3 == 0 ? u"Ann" : u"Bo", CTagAttribValue::SV_Edited, true);
            tag.setAlbum(set(1) ? u"Red Sky" : u"Blue", CTagAttribValue::SV_Edited, true);
            tag.setTitle(set(2) ? u"Song" : u"Other", CTagAttribValue::SV_Edited, true);
            tag.setYear(set(4) ? u"1998" : u"", CTagAttribValue::SV_Edited, true);
            tag.setTrackNumber(set(8) ? u"2" : u"", CTagAttribValue::SV_Edited, true);
            tag.setGenre(u"Folk", CTagAttribValue::SV_Edited, true);
            EXPECT_TRUE(tag.writeTag(m_dir.collPath(name)));
        }
    }
    void fillAlbum(const std::string& artist, const std::string& album)
    {
        const std::string folder = "music/" + artist + "/" + album + "/";
        fs::create_directories(m_dir.path(folder));
        const int tracks = 2 + static_cast<int>(m_random() % 5);
        for (int i = 0; i < tracks; ++i)
        {
            const int base = static_cast<int>(m_random() % 3) == 0
                                 ? static_cast<int>(m_random() % 12)
                                 : static_cast<int>(album.size());
            fs::copy_file(m_dir.path("base/" + std::to_string(base) + ".mp3"),
                          m_dir.path(folder + std::to_string(i) + " song.mp3"));
        }
        m_dir.write(folder + "Blue front.jpg", "a picture");
        m_dir.write(folder + "a song.txt", "words");
        m_dir.write(folder + "cover.png", "another");
    }

    const TempDir& m_dir;
    std::mt19937 m_random{7};
};

std::string text(const CString& value)
{
    return qo::toUtf8(value);
}

/// Records and logical tree in their orders, without what no two scans share.
std::vector<std::string> stateOf(const CQoCollection& collection)
{
    std::vector<std::string> lines;
    QoFileDbItemArray files;
    collection.copyFiles(files);
    for (const QoFileDbItemPtr& item : files)
        lines.push_back(std::to_string(item->id) + "|" + text(item->path) + "|" +
                        text(item->artist) + "|" + text(item->album) + "|" + text(item->title) +
                        "|" + text(item->genre) + "|" + text(item->year) + "|" +
                        std::to_string(item->flags) + std::to_string(item->imported) +
                        std::to_string(item->dbState));
    for (const auto& track : CLTManager::getTracks())
        lines.push_back(text(track->toString(true)) + text(track->getAlbum()->getName()) +
                        (track->getLyrics() ? " with lyrics " : " ") +
                        text(track->getMusicFiles()[0]->getPath()));
    for (const auto& album : CLTManager::getAlbums())
        lines.push_back(text(album->toString(true)) +
                        std::to_string(album->getPictures().GetSize()));
    for (const auto& picture : CLTManager::getPictures())
        lines.push_back(text(picture->getFiles()[0]->getPath()));
    return lines;
}

class SlicedScanTest : public testing::Test
{
protected:
    SlicedScanTest()
    {
        qo::specialFolders().setBase(dir.collPath("data"));
        dir.makeFolder("data");
        CQoCollection::initGlobal();
        roots.Add(dir.collPath("music"));
    }
    ~SlicedScanTest() override
    {
        collection.clearCollection(&silent);
        CLTManager::cleanUp(true);
        qo::specialFolders().setBase({});
    }
    CString database(const char* name)
    {
        const CString path = dir.collPath(std::string("data/") + name);
        CQoCollDb::CreateDatabaseIfNotValid(path, {});
        return path;
    }
    bool load(const CString& path, const CStringArray& folders, bool rescan)
    {
        return collection.load(path, u"", folders, {}, rescan, &silent, nullptr);
    }

    SlicedScan::Report scanInSlices(const CStringArray& fresh, int files)
    {
        ScanHost host;
        collection.setScanHost(&host);
        qo::CollPathArray all;
        collection.getRootDirs(all);
        CStringArray allRoots;
        for (const CQoCollPath& root : all)
            allRoots.Add(root.toString());
        RootLister lister(allRoots, u"");
        UnreadFiles unread(collection, lister, {});
        QoFileDbItemArray records;
        collection.copyFiles(records);
        const auto changes = DiskChanges(host, unread)
                                 .between(records, RootWalk(allRoots, lister).files(silent), {});
        SlicedScan::End end;
        end.foldersToAnalyze = allRoots;
        const SlicedScan::Report report =
            SlicedScan(collection, host, progress, files, fresh).read(changes, end);
        collection.setScanHost(nullptr);
        return report;
    }

    /// With a session whose root folder the music is, and how to scan that; on the kernel's thread.
    template <class Action>
    void inSession(Action action)
    {
        Session::Options options;
        options.dataFolder = dir.path("session");
        Session session(options);
        session.kernel().run([&] { action(session, prepare(session)); });
    }
    LoadOptions prepare(Session& session)
    {
        session.prepareDatabase(Session::databasePath());
        RootFolders folders;
        folders.add(roots[0], CQoPathInfo::audioIsMusic);
        folders.store();
        LoadOptions scan;
        scan.rescan = true;
        return scan;
    }

    TempDir dir;
    Library library{dir};
    CStringArray roots;
    CQoCollection& collection = CQoCollection::m_ownCollection; ///< only it may analyse two roots
    CDummyProgress silent;
    ProgressReporter progress{[](const ProgressEvent&) {}};
};
} // namespace

TEST_F(SlicedScanTest, EndsAsAScanInOnePieceDoes)
{
    ASSERT_TRUE(load(database("whole"), roots, true));
    const std::vector<std::string> whole = stateOf(collection);
    ASSERT_GT(whole.size(), 80U);
    for (const int files : {1, 7, 1000})
    {
        const CString path = database(("sliced" + std::to_string(files)).c_str());
        ASSERT_TRUE(load(path, {}, false));
        collection.addRootDirs(roots, {});
        const SlicedScan::Report report = scanInSlices(roots, files);
        EXPECT_TRUE(report.isSaved);
        EXPECT_EQ(report.hasMoved, files < report.added) << "or the test shows nothing";
        EXPECT_EQ(report.added, collection.getFileCount());
        ASSERT_TRUE(load(path, roots, false));
        EXPECT_EQ(stateOf(collection), whole) << files << " files in a slice";
    }
}

TEST_F(SlicedScanTest, OldRootBesideANewOneKeepsWhatAScanInOnePieceKeeps)
{
    CStringArray old;
    old.Add(dir.collPath("music/Ann"));
    CStringArray fresh;
    fresh.Add(dir.collPath("music/Bo"));
    CStringArray both = old;
    both.Add(fresh[0]);
    const auto prepare = [&](const char* name)
    {
        const CString path = database(name);
        EXPECT_TRUE(load(path, old, true));
        // What the analysis finds in a record of the old root, no scan in one piece saves.
        CSQLiteDB db(path);
        db.Open();
        db.Execute(u"UPDATE FILE_T SET FT_ARTIST = '' WHERE FT_PATH LIKE '%front.jpg'");
        return path;
    };
    const CString whole = prepare("whole");
    ASSERT_TRUE(load(whole, both, true));
    ASSERT_TRUE(load(whole, both, false));
    const std::vector<std::string> expected = stateOf(collection);
    const CString sliced = prepare("sliced");
    ASSERT_TRUE(load(sliced, old, false));
    collection.addRootDirs(fresh, {});
    const SlicedScan::Report report = scanInSlices(fresh, 4);
    EXPECT_TRUE(report.isSaved);
    EXPECT_EQ(report.changed, 0);
    ASSERT_TRUE(load(sliced, both, false));
    EXPECT_EQ(stateOf(collection), expected);
}

TEST_F(SlicedScanTest, InterruptedSessionKeepsItsSlicesAndGoesOn)
{
    ASSERT_TRUE(load(database("whole"), roots, true));
    const std::vector<std::string> whole = stateOf(collection);
    collection.clearCollection(&silent);
    inSession(
        [&](Session& session, LoadOptions scan)
        {
            scan.filesInSlice = 5;
            int kept = 0;
            for (int round = 0; round < 3; ++round)
            {
                int events = 0;
                ProgressReporter* stop = nullptr;
                ProgressReporter stopping(
                    [&](const ProgressEvent& event)
                    {
                        // The second slice has begun, or a later one.
                        if (event.stage == IQoProgress::stageCheck && event.count > 7 &&
                            ++events > 1)
                            stop->cancel();
                    },
                    [now = ProgressReporter::Clock::time_point()]() mutable
                    { return now += std::chrono::seconds(1); });
                stop = &stopping;
                EXPECT_THROW(loadCollection(session, scan, stopping), HostError);
                EXPECT_TRUE(CollectionLoader::hasUnfinishedScan());
                const LoadReport report = loadCollection(session, {}, progress);
                EXPECT_FALSE(report.walked);
                EXPECT_GT(report.files, kept);
                kept = report.files;
            }
            const LoadReport report = loadCollection(session, scan, progress);
            EXPECT_FALSE(CollectionLoader::hasUnfinishedScan());
            EXPECT_GT(report.added, 0);
            EXPECT_EQ(stateOf(CQoCollection::m_ownCollection), whole);
        });
}

TEST_F(SlicedScanTest, RootThatGoesAwayDuringAScanLosesNoFile)
{
    inSession(
        [&](Session& session, const LoadOptions& scan)
        {
            RootFolders folders;
            const int files = loadCollection(session, scan, progress).files;
            dir.makeFolder("other");
            dir.write("other/x.txt", "words");
            for (const bool inSlices : {false, true})
            {
                if (inSlices)
                    folders.add(dir.collPath("other"), CQoPathInfo::audioIsMusic);
                folders.store();
                bool isAway = false;
                ProgressReporter leaving(
                    [&](const ProgressEvent& event)
                    {
                        if (event.stage != IQoProgress::stageScan || isAway)
                            return;
                        fs::rename(dir.path("music"), dir.path("away"));
                        dir.makeFolder("music");
                        isAway = true;
                    });
                EXPECT_THROW(loadCollection(session, scan, leaving), HostError);
                EXPECT_TRUE(isAway);
                fs::remove(dir.path("music"));
                fs::rename(dir.path("away"), dir.path("music"));
                CQoCollDb db(Session::databasePath());
                QoFileDbItemArray stored;
                db.getAllFiles(stored, false, u"", true);
                EXPECT_EQ(stored.GetSize(), files) << inSlices;
            }
            EXPECT_EQ(loadCollection(session, scan, progress).files, files + 1);
        });
}
