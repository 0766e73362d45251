#include "core/base/HostError.h"
#include "core/load/CollectionLoader.h"
#include "core/load/UnfinishedScan.h"
#include "core/load/UnreadFiles.h"
#include "core/roots/RootFolders.h"
#include "core/session/ProgressReporter.h"
#include "core/session/Session.h"
#include "host/core/MessageOf.h"
#include "support/TempDir.h"

#include <QoKernel/Inside.h>
#include <QoKernel/Logical.h>
#include <QoKernel/Physical.h>
#include <QoKernel/Tags.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
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
        // Two artists until change().
        fs::create_directories(dir.path("music/0"));
        for (int i = 0; i < 9; ++i)
            fs::copy_file(dir.path("base/" + std::to_string(i % 2) + ".mp3"),
                          dir.path("music/0/" + std::to_string(i) + ".mp3"));
        dir.write("music/0/cover.png", "a picture");
        dir.write("music/Ann.jpg", "a picture");
        dir.write("music/zz.txt", "words");
    }

    /// Some files get other tags or words, some go, and some come.
    void change()
    {
        std::vector<fs::path> files;
        for (const auto& entry : fs::recursive_directory_iterator(m_dir.path("music")))
        {
            if (entry.is_regular_file())
                files.push_back(entry.path());
        }
        std::sort(files.begin(), files.end());
        for (std::size_t i = 0; i < files.size(); ++i)
        {
            const std::string base = m_dir.path("base/" + std::to_string(i % 12) + ".mp3");
            if (files[i].parent_path().filename() == "0" && files[i].extension() == ".mp3")
                fs::copy_file(
                    m_dir.path("base/0.mp3"), files[i], fs::copy_options::overwrite_existing);
            else if (files[i].parent_path().filename() == "0")
                std::ofstream(files[i], std::ios::app) << "more";
            else if (i % 7 == 0)
                fs::remove(files[i]);
            else if (i % 7 < 5 && files[i].extension() == ".mp3")
                fs::copy_file(base, files[i], fs::copy_options::overwrite_existing);
            else if (i % 7 < 5)
                std::ofstream(files[i], std::ios::app) << "more";
            else if (i % 7 == 5)
                fs::copy_file(base, files[i].string() + " new.mp3");
        }
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

    SlicedScan::Report scanInSlices(const CStringArray& fresh, const SlicedScan::Effort& effort)
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
            SlicedScan(collection, host, progress, effort, fresh, {}).read(changes, end);
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
    /// Cancels a scan when it has read some files and is in a later slice. The sentence.
    static std::string interrupt(Session& session, const LoadOptions& scan, int files)
    {
        int events = 0;
        ProgressReporter* stop = nullptr;
        ProgressReporter stopping(
            [&](const ProgressEvent& event)
            {
                if (event.stage == IQoProgress::stageCheck && event.count > files && ++events > 1)
                    stop->cancel();
            },
            [now = ProgressReporter::Clock::time_point()]() mutable
            { return now += std::chrono::seconds(1); });
        stop = &stopping;
        return messageOf([&] { loadCollection(session, scan, stopping); }, ExitCode::interrupted);
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
    for (const auto& [files, threads] : {std::pair(1, 1), {7, 2}, {7, 16}, {1000, 0}})
    {
        const std::string name =
            "sliced" + std::to_string(files) + " by " + std::to_string(threads);
        const CString path = database(name.c_str());
        ASSERT_TRUE(load(path, {}, false));
        collection.addRootDirs(roots, {});
        const SlicedScan::Report report = scanInSlices(roots, {files, threads});
        EXPECT_TRUE(report.isSaved);
        EXPECT_EQ(report.hasMoved, files < report.added) << "or the test shows nothing";
        EXPECT_EQ(report.added, collection.getFileCount());
        ASSERT_TRUE(load(path, roots, false));
        EXPECT_EQ(stateOf(collection), whole) << name;
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
    const SlicedScan::Report report = scanInSlices(fresh, {4});
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
                interrupt(session, scan, 7);
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

TEST_F(SlicedScanTest, InterruptedRescanKeepsItsSlicesAndEndsAsOneInOnePiece)
{
    inSession([&](Session& session, const LoadOptions& scan)
              { loadCollection(session, scan, progress); });
    fs::copy(dir.path("session"), dir.path("before"), fs::copy_options::recursive);
    library.change();
    std::vector<std::string> whole;
    const auto reloaded = [&](Session& session)
    {
        loadCollection(session, {}, progress);
        return stateOf(CQoCollection::m_ownCollection);
    };
    inSession(
        [&](Session& session, const LoadOptions& scan)
        {
            const LoadReport report = loadCollection(session, scan, progress);
            EXPECT_TRUE(report.added > 0 && report.changed > 20 && report.gone > 0);
            whole = reloaded(session);
        });
    fs::remove_all(dir.path("session"));
    fs::rename(dir.path("before"), dir.path("session"));
    inSession(
        [&](Session& session, LoadOptions scan)
        {
            scan.filesInSlice = 1;
            const std::string kept = interrupt(session, scan, 40);
            EXPECT_NE(kept.find("files read so far were kept"), kept.npos) << kept;
            EXPECT_TRUE(CollectionLoader::hasUnfinishedScan());
            EXPECT_NE(reloaded(session), whole);
            const LoadReport report = loadCollection(session, scan, progress);
            EXPECT_GT(report.changed, 0);
            EXPECT_FALSE(CollectionLoader::hasUnfinishedScan());
            EXPECT_EQ(reloaded(session), whole);
        });
}
