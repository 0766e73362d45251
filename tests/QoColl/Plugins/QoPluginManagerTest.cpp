#include "QoColl/Plugins/QoPluginManager.h"

#include "KVTagLib/Tags.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "PluginFixture.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "plugins/folder/FolderPlugin.h"

#include <filesystem>

namespace
{
namespace fs = std::filesystem;

/// The folder plug-in "NAS" over a real folder with real sounds.
class FolderPluginFiles : public PluginFixture
{
protected:
    FolderPluginFiles()
    {
        dir.makeFolder("nas");
        plugins->add(
            boost::make_shared<qo::host::FolderPlugin>(u"NAS", dir.collPath("nas"), &config));
    }

    void addSound(const std::string& name, const char* sound)
    {
        fs::create_directories(fs::path(dir.path(name)).parent_path());
        fs::copy_file(std::string(QO_TEST_DATA "/sounds/") + sound, dir.path(name));
    }
    /// A sound with a full tag at its start.
    void addTaggedSound(const std::string& name)
    {
        addSound(name, "sound.mp3");
        KVTagLib::CTags tags;
        tags.AddArtist(u"Ann", false);
        tags.SetAlbum(u"Gold");
        tags.SetTitle(u"Dawn");
        tags.SetGenre(u"Rock");
        tags.SetTrackNumber(u"3");
        tags.SetYear(u"1976");
        tags.SetLyrics(u"The sun comes up");
        ASSERT_TRUE(tags.AddPicture(qo::fromSystemPath(QO_TEST_DATA "/sounds/red.jpg")));
        ASSERT_TRUE(CMusicTagEx::writeTag(dir.collPath(name), tags));
    }
    std::string contentOf(const std::string& sound) const
    {
        fs::copy_file(QO_TEST_DATA "/sounds/" + sound, dir.path(sound));
        return dir.read(sound);
    }
};
} // namespace

TEST_F(FolderPluginFiles, AScanFindsFilesWithTheTagsAtTheirStartAndWaitsOnceForEachRequest)
{
    addTaggedSound("nas/Music/Ann/Dawn.mp3");
    addSound("nas/Music/plain.ogg", "sound.ogg");
    dir.write("nas/Music/tiny.mp3", "ID3");
    fs::create_directory_symlink(dir.path("nas"), dir.path("nas/Music/loop"));
    QoFileDbItemArray files;
    CQoPluginManager::getFilesFromPlugin(
        CQoPluginManager::PI_Files, at(u"NAS"), 0xffff, &progress, files);
    EXPECT_EQ(pathsOf(files), "Music\\Ann\\Dawn.mp3\nMusic\\plain.ogg\nMusic\\tiny.mp3\n")
        << log.all();
    EXPECT_EQ(clock.rests[42], 1 + 3) << "the root, and a listing for each of three folders";

    const QoFileDbItem& dawn = *files[0];
    EXPECT_EQ(dawn.artist, CString(u"Ann"));
    EXPECT_EQ(dawn.album, CString(u"Gold"));
    EXPECT_EQ(dawn.title, CString(u"Dawn"));
    EXPECT_EQ(dawn.genre, CString(u"Rock"));
    EXPECT_EQ(dawn.trackNumber, CString(u"3"));
    EXPECT_EQ(dawn.year, CString(u"1976"));
    EXPECT_EQ(dawn.lyrics, CString(u"The sun comes up"));
    EXPECT_TRUE(dawn.lyricsLoaded);
    EXPECT_TRUE(qo::fileSystem().exists(dawn.picturePath));
    EXPECT_EQ(dawn.size,
              static_cast<std::int64_t>(fs::file_size(dir.path("nas/Music/Ann/Dawn.mp3"))));
    EXPECT_TRUE(files[1]->title.IsEmpty());
    EXPECT_EQ(log.count("couldnt", qo::level::error), 1) << "that the third has no 10 bytes";
    EXPECT_TRUE(log.has("couldnt read first 10 bytes from ", qo::level::error));

    // A second scan that knows the files fetches nothing of them.
    log.clear();
    QoFileDbItemArray again;
    struct AllKnown final : IPluginScan
    {
        bool isToBeRead(const QoFileDbItem&, bool& isKnown) override { return !(isKnown = true); }
        void notRead(const CString&) override {}
    } scan;
    EXPECT_TRUE(CQoPluginManager::getFilesFromPlugin(
        CQoPluginManager::PI_Files, at(u"NAS"), 0xffff, &progress, again, &scan));
    EXPECT_EQ(pathsOf(again), pathsOf(files));
    EXPECT_EQ(clock.rests[42], 2 * (1 + 3));
    EXPECT_FALSE(log.has("couldnt")) << log.all();
}

TEST_F(FolderPluginFiles, ACollectionKeepsTagsAndRecordsWhileTheServerIsDown)
{
    CQoCollection::initGlobal();
    addTaggedSound("nas/Music/Dawn.mp3");
    addSound("nas/Music/plain.ogg", "sound.ogg");
    const CString db = dir.collPath("qodb");
    CQoCollDb::CreateDatabaseIfNotValid(db, {});
    CStringArray roots;
    roots.Add(at(u"NAS").toString());
    CQoCollection& foreign = CQoCollection::m_foreignCollection;
    CQoCollection::OpResultInfo result;
    const auto load = [&](bool rescan)
    {
        result = {};
        return foreign.load(db, u"NAS", roots, CQoPathsInfoMap(), rescan, &progress, &result);
    };
    const auto artist = [&]
    { return foreign.getFileByPath(at(u"NAS", u"Music\\Dawn.mp3"))->getDbItem()->artist; };
    ASSERT_TRUE(load(false));
    EXPECT_EQ(result.m_inserted, 2);
    EXPECT_EQ(artist(), CString(u"Ann"));
    const int requests = clock.rests[42];
    for (const bool isDown : {false, true})
    {
        if (isDown)
            fs::rename(dir.path("nas"), dir.path("away"));
        ASSERT_TRUE(load(true));
        EXPECT_EQ(result.m_inserted + result.m_updated + result.m_deleted, 0);
        EXPECT_EQ(foreign.getFileCount(), 2);
        EXPECT_EQ(artist(), CString(u"Ann"));
    }
    EXPECT_LE(clock.rests[42], 2 * requests + 1) << "a scan that knows the files asks for none";
    fs::rename(dir.path("away"), dir.path("nas"));
    foreign.clearCollection(&progress);
    foreign.loadDeviceDirs(u"NAS", CQoCollPath::physicalPlugin, 0xffff, &progress);
    EXPECT_TRUE(foreign.getDir(at(u"NAS", u"Music")));
    EXPECT_TRUE(foreign.createNewDeviceDir(at(u"NAS", u"Music\\New"), &progress));
    EXPECT_TRUE(fs::is_directory(dir.path("nas/Music/New")));
    CQoCollection::cleanUpGlobal();
}

TEST_F(FolderPluginFiles, TheDepthCountsTheLevelsThatAreListed)
{
    dir.write("nas/a/b/c/d.txt", "x");
    const auto walk = [&](int type, const char16_t* path, int depth)
    {
        QoFileDbItemArray files;
        CQoPluginManager::getFilesFromPlugin(static_cast<CQoPluginManager::EPluginItemType>(type),
                                             at(u"NAS", path),
                                             depth,
                                             &progress,
                                             files);
        return pathsOf(files);
    };
    EXPECT_EQ(walk(1, nullptr, 0), "a\n");
    EXPECT_EQ(walk(1, nullptr, 1), "a\n");
    EXPECT_EQ(walk(1, nullptr, 2), "a\na\\b\n");
    EXPECT_EQ(walk(3, u"A\\b", 0xffff), "A\\b\\c\nA\\b\\c\\d.txt\n");
    EXPECT_EQ(walk(2, nullptr, 3), "");
    EXPECT_EQ(walk(3, u"gone", 3), "");
    EXPECT_TRUE(log.has("getFilesFromPhysicalPlugin : \\\\pplugin:NAS\\gone not found", 10));
}

TEST_F(FolderPluginFiles, AFileGoesUpAndComesDownAndLeaves)
{
    const std::string sound = contentOf("sound.flac");
    CQoCollPath target = at(u"NAS", u"Music\\Ann\\Dawn.flac");
    CountedProgress counted;
    const auto size = static_cast<std::int64_t>(sound.size());
    ASSERT_TRUE(
        CQoPluginManager::uploadFile(dir.collPath("sound.flac"), target, size, false, &counted))
        << log.all();
    EXPECT_EQ(dir.read("nas/Music/Ann/Dawn.flac"), sound);
    EXPECT_EQ(target, at(u"NAS", u"Music\\Ann\\Dawn.flac"));

    // What is there stays unless it shall be replaced.
    dir.write("other.flac", "other");
    EXPECT_FALSE(
        CQoPluginManager::uploadFile(dir.collPath("other.flac"), target, 5, false, &progress));
    EXPECT_TRUE(log.has("CQoPluginManager::uploadFile : UploadFile(", 10));
    EXPECT_EQ(dir.read("nas/Music/Ann/Dawn.flac"), sound);

    for (const bool direct : {false, true})
    {
        EXPECT_TRUE(
            CQoPluginManager::downloadFile(target, dir.collPath("back.flac"), direct, &progress));
        EXPECT_EQ(dir.read("back.flac"), sound);
        fs::remove(dir.path("back.flac"));
    }
    const auto item = CQoPluginManager::getPlayDownloadItem(target);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->GetState(), IDownloadItem::DS_Idle);
    EXPECT_EQ(item->GetTargetPath().Right(9), CString(u"Dawn.flac"));

    // Only exactly that file is removed, and never the root.
    EXPECT_FALSE(CQoPluginManager::deleteFile(at(u"NAS", u"Music\\Ann\\dawn.flac"), &progress));
    EXPECT_FALSE(CQoPluginManager::deleteFile(at(u"NAS"), &progress));
    EXPECT_EQ(log.count("CQoPluginManager::deleteFile : cannot get path result for file ", 10), 2);
    EXPECT_TRUE(CQoPluginManager::deleteFile(target, &progress));
    EXPECT_FALSE(fs::exists(dir.path("nas/Music/Ann/Dawn.flac")));
    EXPECT_TRUE(CQoPluginManager::deleteFile(CQoCollPath(u"C:\\x.mp3"), &progress));
    EXPECT_FALSE(
        CQoPluginManager::downloadFile(target, dir.collPath("back.flac"), false, &progress));
    EXPECT_TRUE(log.has("CQoPluginManager::downloadFile : getDownloadItem(", 10));
}

TEST_F(FolderPluginFiles, ACancelledTransferLeavesNothing)
{
    const std::string large(8 * 1024 * 1024, 'x');
    dir.write("large.wav", large);
    dir.write("nas/far.wav", large);
    // Cancelled while the first bytes go, or while they come.
    for (const int questions : {8, 9, 10, 12})
    {
        CountedProgress up(questions);
        CQoCollPath target = at(u"NAS", u"new.wav");
        const bool isUp =
            CQoPluginManager::uploadFile(dir.collPath("large.wav"), target, 1, true, &up);
        EXPECT_EQ(fs::exists(dir.path("nas/new.wav")), isUp);
        CountedProgress down(questions);
        dir.write("near.wav", "former");
        const bool isDown = CQoPluginManager::downloadFile(
            at(u"NAS", u"far.wav"), dir.collPath("near.wav"), false, &down);
        EXPECT_TRUE(dir.read("near.wav") == (isDown ? large : "former") ||
                    (!isDown && !fs::exists(dir.path("near.wav"))));
    }
    EXPECT_FALSE(log.has("failed", qo::level::error)) << log.all();
    fs::remove(dir.path("nas/new.wav"));
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path("nas")), {}), 1) << "a part is left";
}

TEST_F(FolderPluginFiles, NamesOfPathsStayInTheFolder)
{
    dir.write("source.mp3", "x");
    CStringArray components;
    for (const char16_t* const name : {u"..", u"../../up", u"a\nb\\c", u"...mp3"})
        components.Add(name);
    CQoCollPath target(CQoCollPath::physicalPlugin, u"NAS", components);
    ASSERT_TRUE(
        CQoPluginManager::uploadFile(dir.collPath("source.mp3"), target, 1, false, &progress))
        << log.all();
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path("nas")), {}), 1);
    EXPECT_EQ(dir.read("nas/_/.._.._up/a_b_c/...mp3"), "x");
}

TEST_F(FolderPluginFiles, FoldersAreMadeOnceAndTheRoomIsKnown)
{
    const CQoCollPath path = at(u"NAS", u"Music\\Ann");
    for (int round = 0; round < 2; ++round)
        EXPECT_TRUE(CQoPluginManager::createDir(path, &progress));
    EXPECT_TRUE(fs::is_directory(dir.path("nas/Music/Ann")));
    CountedProgress stopped(0);
    EXPECT_FALSE(CQoPluginManager::createDir(path, &stopped));

    std::int64_t total = 0;
    std::int64_t free = 0;
    bool unlimited = true;
    EXPECT_TRUE(CQoPluginManager::getPluginFillStateInfo(u"NAS", total, free, unlimited));
    EXPECT_GT(total, free);
    EXPECT_FALSE(unlimited);
    EXPECT_FALSE(CQoPluginManager::getPluginFillStateInfo(u"none", total, free, unlimited));

    int min = 1;
    int max = 0;
    CQoPluginManager::getPluginPathDepthLimits(u"NAS", min, max);
    EXPECT_EQ(min, 0);
    EXPECT_EQ(max, 260);

    fs::remove_all(dir.path("nas"));
    EXPECT_FALSE(CQoPluginManager::createDir(path, &progress));
    EXPECT_TRUE(log.has("getRootPathResultFromPhysicalPlugin : GetRootFolder failed", 10));
}

TEST_F(FolderPluginFiles, SettingsOutliveThePluginAndLeaveWithARemoval)
{
    CStringArray extra;
    extra.Add(u"Talks\\Old");
    CQoPathsInfoMap info;
    info.SetAt(u"Talks\\Old", CQoPathInfo::allIsMusic);
    EXPECT_FALSE(CQoPluginManager::isPluginConfigured(u"NAS"));
    CQoPluginManager::setPluginMusicPath(u"nas", u"Musik");
    CQoPluginManager::setPluginMoviesUploadRule(u"nas", u"rule");
    CQoPluginManager::setPluginCredentials(u"nas", u"ann", u"hunter2");
    CQoPluginManager::setPluginExtraInputPaths(u"nas", extra, info);
    EXPECT_TRUE(CQoPluginManager::savePluginSettings(u"NAS"));
    plugins = boost::make_shared<qo::host::PluginList>();
    plugins->add(boost::make_shared<qo::host::FolderPlugin>(u"NAS", dir.collPath("nas"), &config));
    CQoPluginManager::setPluginsManager(plugins);

    EXPECT_TRUE(CQoPluginManager::isPluginConfigured(u"NAS"));
    EXPECT_EQ(CQoPluginManager::getPluginMoviesUploadRule(u"NAS"), CString(u"rule"));
    CArray<CQoCollPath> paths;
    CQoPluginManager::getPluginFullPaths(u"NAS", false, paths);
    EXPECT_EQ(qo::joinPaths(paths), CString(u"\\\\pplugin:NAS\\Musik,\\\\pplugin:NAS\\Talks\\Old"));
    CQoPathsInfoMap types;
    CQoPluginManager::getPluginQoPathsInfoMap(u"NAS", false, types);
    EXPECT_EQ(types.getType(u"\\\\pplugin:NAS\\Talks\\Old"), CQoPathInfo::allIsMusic);
    for (const auto& [section, keys] : config.sections)
    {
        for (const auto& [key, value] : keys)
            EXPECT_EQ(value.Find(u"hunter2"), -1) << qo::toUtf8(section);
    }
    EXPECT_FALSE(log.has("hunter2"));

    EXPECT_TRUE(CQoPluginManager::removePluginSettings(u"NAS"));
    CString user(u"?");
    CString password(u"?");
    EXPECT_TRUE(CQoPluginManager::getPluginCredentials(u"NAS", user, password));
    EXPECT_TRUE(user.IsEmpty() && password.IsEmpty());
    EXPECT_FALSE(CQoPluginManager::isPluginConfigured(u"NAS"));
    EXPECT_FALSE(CQoPluginManager::savePluginSettings(u"none"));
    EXPECT_FALSE(CQoPluginManager::removePluginSettings(u"none"));
}

TEST_F(FolderPluginFiles, FoldersForMusicAndMoviesAreGuessedUnlessThoseChosenAreThere)
{
    struct Row
    {
        const char* folders;
        const char16_t* music;  ///< chosen before
        const char16_t* movies; ///< likewise
        const char16_t* found;
    };
    // "music|movies", with '!' after a name of which no folder was found.
    const Row rows[] = {
        {"My/Music My/Videos Music", u"", u"", u"Music|My\\Videos"},
        {"a b", u"", u"", u"!|!"},
        {"a b Music Video", u"a", u"b", u"a!|b!"},
        {"a Music Video", u"a", u"b", u"Music|Video"},
        {"too/deep/Music Video", u"", u"", u"!|"},
        {"Music/Video", u"", u"", u"|"},
    };
    for (const Row& row : rows)
    {
        fs::remove_all(dir.path("nas"));
        dir.makeFolder("nas");
        std::istringstream folders(row.folders);
        for (std::string folder; folders >> folder;)
            dir.makeFolder("nas/" + folder);
        CQoPluginManager::setPluginMusicPath(u"NAS", row.music);
        CQoPluginManager::setPluginMoviesPath(u"NAS", row.movies);
        CString music;
        CString movies;
        bool foundMusic = false;
        bool foundMovies = false;
        CQoPluginManager::detectMusicAndMoviesDirs(u"NAS", music, movies, foundMusic, foundMovies);
        EXPECT_EQ(music + (foundMusic ? u"|" : u"!|") + movies + (foundMovies ? u"" : u"!"),
                  CString(row.found))
            << row.folders;
    }
}
