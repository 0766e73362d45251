#include "KVTagLib/Tags.h"
#include "PluginFixture.h"
#include "QoColl/Plugins/QoPluginManager.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "plugins/folder/FolderEntry.h"

#include <boost/smart_ptr/enable_shared_from_this.hpp>

#include <fstream>

namespace
{
using qo::host::FinishedOperation;

/// An entry of any name, place and size.
PluginResultPtr
entry(const CString& name, const CString& place, bool isFolder, std::int64_t size = 0)
{
    return boost::make_shared<qo::host::FolderEntry>(place, name, isFolder, size);
}

/// An artist, album or track.
class AnyTrack : public IGenericResult
{
public:
    AnyTrack(const char16_t* artist, const char16_t* album, const char16_t* title)
        : m_artist(artist), m_album(album), m_title(title)
    {
    }
    EKind GetKind() const override { return RK_Other; }
    CString GetArtist() const override { return m_artist; }
    CString GetAlbum() const override { return m_album; }
    CString GetTitle() const override { return m_title; }
    CString GetExtension() const override { return u"mp3"; }

private:
    CString m_artist;
    CString m_album;
    CString m_title;
};

/// Goes through these states, and stays in the last one.
class AnyOperation : public IPluginOperation
{
public:
    AnyOperation(std::vector<int> states, const CString& error, int& living)
        : m_states(std::move(states)), m_error(error), m_living(living)
    {
        ++m_living;
    }
    ~AnyOperation() override { --m_living; }
    void Poll() override { m_next += m_next + 1 < m_states.size() ? 1 : 0; }
    int GetState() override { return m_states[m_next]; }
    bool GetProgress(std::int64_t& done, std::int64_t& total) override
    {
        done = static_cast<std::int64_t>(m_next) * 5;
        total = 10;
        return true;
    }
    void GetResults(PluginResultArray& results) override { results.Add({}); }
    CString GetErrorText() override { return m_error; }

private:
    const std::vector<int> m_states;
    const CString m_error;
    std::size_t m_next = 0;
    int& m_living;
};

/// What each of its functions answers, a test says.
class HostilePlugin : public qo::host::StoredPlugin,
                      public IPhysicalBrowseWrapper,
                      public ILogicalBrowseWrapper,
                      public IDownloadWrapper,
                      public ILoginWrapper,
                      public boost::enable_shared_from_this<HostilePlugin>
{
public:
    using Lister = std::function<PluginOperationPtr(const PluginResultPtr&)>;

    explicit HostilePlugin(const char16_t* id) : StoredPlugin(id, nullptr) {}

    Lister folders;                                 ///< a plug-in of folders, if set
    std::function<PluginOperationPtr(int)> logical; ///< of artists, albums and tracks: 0, 1 and 2
    std::function<PluginOperationPtr()> login;
    std::function<std::string(std::int64_t end)> bytes; ///< a download, if set
    bool hasRanges = true;
    std::vector<std::int64_t> fetched; ///< the ends of ranges

    boost::shared_ptr<IPhysicalBrowseWrapper> GetPhysicalBrowse() override
    {
        return folders ? shared_from_this() : nullptr;
    }
    boost::shared_ptr<ILogicalBrowseWrapper> GetLogicalBrowse() override
    {
        return logical ? shared_from_this() : nullptr;
    }
    boost::shared_ptr<IDownloadWrapper> GetDownload() override
    {
        return bytes ? shared_from_this() : nullptr;
    }
    boost::shared_ptr<ILoginWrapper> GetLogin() override
    {
        return login ? shared_from_this() : nullptr;
    }

    PluginOperationPtr GetRootFolder() override
    {
        return FinishedOperation::withResult(entry(u"", u"/", true));
    }
    PluginOperationPtr GetSubFoldersAndFiles(const PhysicalResultPtr& folder) override
    {
        return folders(folder);
    }
    PluginOperationPtr GetFillState() override { return FinishedOperation::withResults({}); }
    PluginOperationPtr GetArtists() override { return logical(0); }
    PluginOperationPtr GetAlbums(const PluginResultPtr&) override { return logical(1); }
    PluginOperationPtr GetTracksForAlbum(const PluginResultPtr&) override { return logical(2); }
    PluginOperationPtr CheckCredentials(const CString&, const CString&) override { return login(); }
    bool CanTryCredentials(const CString&, const CString& password) override
    {
        return !password.IsEmpty();
    }
    bool CanSetRanges(bool& can) override
    {
        can = hasRanges;
        return true;
    }
    boost::shared_ptr<IPluginDownload> CreateDownload(const PluginResultPtr&,
                                                      const CString& target) override
    {
        return boost::make_shared<Part>(*this, target);
    }

private:
    struct Part : IPluginDownload
    {
        Part(HostilePlugin& owner, const CString& path) : plugin(owner), target(path) {}
        bool SetRange(std::int64_t, std::int64_t last) override
        {
            end = last;
            return true;
        }
        bool GetSize(std::int64_t& size) override
        {
            size = 1;
            return true;
        }
        bool Run(IQoProgress* progress) override
        {
            plugin.fetched.push_back(end);
            const std::string content = plugin.bytes(end);
            qo::fileSystem().replaceFile(target, content.data(), content.size());
            while (content == "stall" && !progress->isCanceled())
                std::this_thread::yield();
            return content != "stall";
        }
        HostilePlugin& plugin;
        CString target;
        std::int64_t end = -1;
    };
};

PluginOperationPtr listOf(std::initializer_list<PluginResultPtr> entries)
{
    PluginResultArray results;
    for (const PluginResultPtr& entry : entries)
        results.Add(entry);
    return FinishedOperation::withResults(std::move(results));
}

class HostilePlugins : public PluginFixture
{
protected:
    HostilePlugins() { plugins->add(far); }
    ~HostilePlugins() override { EXPECT_EQ(living, 0) << "requests were not released"; }

    PluginOperationPtr operation(std::vector<int> states, const char16_t* error = u"")
    {
        return boost::make_shared<AnyOperation>(std::move(states), error, living);
    }
    QoFileDbItemArray scan(int type = CQoPluginManager::PI_Folders | CQoPluginManager::PI_Files)
    {
        QoFileDbItemArray files;
        CQoPluginManager::getFilesFromPlugin(static_cast<CQoPluginManager::EPluginItemType>(type),
                                             at(u"Far"),
                                             0xffff,
                                             &progress,
                                             files);
        return files;
    }

    boost::shared_ptr<HostilePlugin> far = boost::make_shared<HostilePlugin>(u"Far");
    int living = 0;
};
} // namespace

TEST_F(HostilePlugins, NamesOfEntriesAreOneComponentOrLeftOut)
{
    const CString longName(u'x', 1001);
    far->folders = [&](const PluginResultPtr&)
    {
        PluginResultArray results;
        for (const char16_t* const name :
             {u"", u".", u"..", u"../up", u"a\\b", u"tab\t", u"\xD800half", u"50%1"})
            results.Add(entry(name, u"", false, -5));
        results.Add(entry(longName, u"", false));
        results.Add({});
        results.Add(boost::make_shared<AnyTrack>(u"a", u"b", u"c"));
        return FinishedOperation::withResults(std::move(results));
    };
    const QoFileDbItemArray files = scan();
    EXPECT_EQ(pathsOf(files),
              qo::toUtf8(CString(u"../up\n50%%1\na\xF05C"
                                 u"b\ntab\xF009\n\xFFFDhalf\n")));
    for (const QoFileDbItemPtr& file : files)
    {
        EXPECT_EQ(file->size, 0);
        const CQoCollPath path(file->path);
        EXPECT_EQ(path.getCount(), 1);
        EXPECT_EQ(path.toString(), file->path);
        PhysicalResultPtr found;
        EXPECT_TRUE(CQoPluginManager::getPathResultFromPhysicalPlugin(path, &progress, found))
            << qo::toUtf8(file->path);
    }
}

TEST_F(HostilePlugins, FoldersThatLeadBackOrDownForEverEnd)
{
    // Each folder has itself, its parent and a file in it.
    far->folders = [&](const PluginResultPtr&)
    {
        return listOf({entry(u"up", u"/", true),
                       entry(u"loop", u"/loop", true),
                       entry(u"x.mp3", u"", false)});
    };
    EXPECT_EQ(pathsOf(scan()), "loop\nloop\\loop\nloop\\up\nloop\\x.mp3\nup\nx.mp3\n");

    int number = 0;
    far->folders = [&](const PluginResultPtr&)
    {
        CString path;
        path.Format(u"/%d", ++number);
        return listOf({entry(u"a", path, true)});
    };
    EXPECT_EQ(scan().GetSize(), 64);
}

TEST_F(HostilePlugins, RequestsThatFailOrNeverEndAreLeft)
{
    struct Row
    {
        std::vector<int> states;
        int questions; ///< until the user cancels
        bool isFailure;
    };
    const Row rows[] = {{{4}, -1, true},
                        {{0, 1, 2, 99}, -1, true},
                        {{-1}, -1, true},
                        {{2}, 20, false},
                        {{0, 1, 2, 3}, -1, false}}; // without a folder in its results
    for (const Row& row : rows)
    {
        log.clear();
        far->folders = [&](const PluginResultPtr&) { return operation(row.states); };
        CountedProgress counted(row.questions);
        PhysicalResultPtr found;
        EXPECT_FALSE(
            CQoPluginManager::getPathResultFromPhysicalPlugin(at(u"Far", u"a"), &counted, found));
        EXPECT_EQ(log.has("GetSubFoldersAndFiles(, /) failed", qo::level::error), row.isFailure)
            << log.all();
        EXPECT_EQ(log.has("getResultsSync : op canceled", 40), row.questions > 0);
    }
    // A folder that cannot be listed is no empty folder.
    far->folders = [&](const PluginResultPtr& folder)
    {
        const bool isRoot = boost::dynamic_pointer_cast<IPhysicalResult>(folder)->GetPath() == u"/";
        return isRoot ? listOf({entry(u"broken", u"/b", true), entry(u"x.mp3", u"", false)})
                      : PluginOperationPtr();
    };
    QoFileDbItemArray files;
    EXPECT_FALSE(CQoPluginManager::getFilesFromPlugin(
        CQoPluginManager::PI_Files, at(u"Far"), 0xffff, &progress, files));
    EXPECT_EQ(pathsOf(files), "x.mp3\n");
}

TEST_F(HostilePlugins, ARequestIsAskedAfterEachWaitAndTellsItsProgressInPercent)
{
    PluginResultArray results;
    CountedProgress counted;
    EXPECT_TRUE(CQoPluginManager::getResultsSync(operation({0, 1, 2, 3}), results, &counted, true));
    EXPECT_EQ(clock.rests[42], 4);
    EXPECT_EQ(counted.positions, (std::vector<std::uintptr_t>{0, 50, 100}));
    EXPECT_FALSE(CQoPluginManager::getResultsSync(operation({7}), results, nullptr));
    EXPECT_TRUE(log.has("getResultsSync : op didn't succeed : state = 7", 40));
    EXPECT_EQ(results.GetSize(), 2) << "results are taken whatever the end";
}

TEST_F(HostilePlugins, TagsThatLieAboutTheirSizeAreNotFetched)
{
    far->folders = [](const PluginResultPtr&)
    { return listOf({entry(u"../../x.mp3", u"", false, 1000)}); };
    struct Row
    {
        std::string header;
        std::vector<std::int64_t> fetched;
        const char* failure;
    };
    const std::string id3("ID3\x04\0\0", 6);
    const Row rows[] = {
        {id3 + std::string("\0\0\x02\x01", 4), {10, 267}, ""},
        {id3 + std::string("\0\0\x07\x5e", 4), {10, 1000}, ""},
        {id3 + std::string("\0\0\x07\x5f", 4), {10}, "couldnt download id3v2 header for "},
        {id3 + "\x7f\x7f\x7f\x7f", {10}, "couldnt download id3v2 header for "},
        {id3 + std::string("\0\0\x80\0", 4), {10}, ""},
        {std::string("ID3\xff\0\0\0\0\x02\x01", 10), {10}, ""},
        {"OggS567890", {10}, ""},
        {"ID3", {10}, "couldnt read first 10 bytes from "},
    };
    for (const Row& row : rows)
    {
        log.clear();
        far->fetched.clear();
        far->bytes = [&](std::int64_t) { return row.header; };
        EXPECT_EQ(scan().GetSize(), 1);
        EXPECT_EQ(far->fetched, row.fetched);
        EXPECT_EQ(log.count("couldnt", 10), *row.failure ? 1 : 0) << log.all();
        EXPECT_TRUE(log.has(row.failure));
    }
    far->hasRanges = false;
    far->fetched.clear();
    EXPECT_EQ(scan().GetSize(), 1);
    EXPECT_TRUE(far->fetched.empty());
    EXPECT_TRUE(log.has("checkCanSetDownloadRanges : cannot set ranges to plugin Far", 40));
    EXPECT_TRUE(CQoPluginManager::shouldShowPhysicalPluginWarning(u"far"));
}

TEST_F(HostilePlugins, ADownloadThatStallsOrFailsLeavesNoTarget)
{
    far->folders = [](const PluginResultPtr&)
    {
        return listOf({entry(u"x.mp3", u"", false),
                       entry(u"X.MP3", u"", false),
                       entry(u"folder", u"", true)});
    };
    far->bytes = [](std::int64_t) { return std::string("stall"); };
    const CString target = dir.collPath("x.mp3");
    CountedProgress stopped(12);
    EXPECT_FALSE(CQoPluginManager::downloadFile(at(u"Far", u"x.mp3"), target, true, &stopped));
    EXPECT_FALSE(qo::fileSystem().exists(target));
    EXPECT_FALSE(log.has("", qo::level::error)) << log.all();

    far->bytes = [](std::int64_t) -> std::string { throw std::bad_alloc(); };
    dir.write("x.mp3", "former");
    EXPECT_FALSE(CQoPluginManager::downloadFile(at(u"Far", u"x.mp3"), target, false, &progress));
    EXPECT_TRUE(log.has("downloadFile : download failed with state 4", qo::level::error));
    EXPECT_FALSE(qo::fileSystem().exists(target));

    for (const char16_t* const path : {u"folder", u"X.mp3", u""})
        EXPECT_FALSE(CQoPluginManager::getDownloadItem(at(u"Far", path), target, false, nullptr));
}

TEST_F(HostilePlugins, ArtistsAlbumsAndTracksBecomeRecordsAndAreFoundAgain)
{
    far->logical = [](int level)
    {
        if (level == 0)
            return listOf({boost::make_shared<AnyTrack>(u"Ann", u"", u""),
                           boost::make_shared<AnyTrack>(u"", u"", u"")});
        if (level == 1)
            return listOf({boost::make_shared<AnyTrack>(u"", u"A\\B/..", u"")});
        return listOf({boost::make_shared<AnyTrack>(u"", u"", u"Dawn"),
                       boost::make_shared<AnyTrack>(u"", u"", u"Dawn"),
                       boost::make_shared<AnyTrack>(u"", u"", u"")});
    };
    const QoFileDbItemArray files = scan();
    EXPECT_EQ(pathsOf(files),
              qo::toUtf8(CString(u" \\A\xF05C"
                                 u"B/..\\ .mp3\n \\A\xF05C"
                                 u"B/..\\Dawn.mp3\nAnn\\A\xF05C"
                                 u"B/..\\ .mp3\nAnn\\A\xF05C"
                                 u"B/..\\Dawn.mp3\n")));
    EXPECT_EQ(files[3]->artist, CString(u"Ann"));
    EXPECT_EQ(files[3]->title, CString(u"Dawn"));
    for (const QoFileDbItemPtr& file : files)
    {
        QoFileDbItemArray one;
        CQoPluginManager::getFilesFromLogicalPlugin(CQoCollPath(file->path), &progress, one);
        ASSERT_EQ(one.GetSize(), 1) << qo::toUtf8(file->path) << log.all();
        EXPECT_EQ(one[0]->path, file->path);
    }
    QoFileDbItemArray none;
    CQoPluginManager::getFilesFromLogicalPlugin(at(u"Far", u"a\\b\\c\\d"), &progress, none);
    CQoPluginManager::getFilesFromLogicalPlugin(at(u"Far", u"Bob"), &progress, none);
    EXPECT_EQ(none.GetSize(), 0);
    EXPECT_TRUE(
        log.has("getFilesFromLogicalPlugin : invalid path '\\\\lplugin:Far\\a\\b\\c\\d'", 10));
    EXPECT_TRUE(log.has("getPathResultFromLogicalPlugin : artistName Bob not found", 10));
}

TEST_F(HostilePlugins, ATrackThatComesDownGetsTheTagOfItsPath)
{
    far->logical = [](int level)
    {
        return listOf({boost::make_shared<AnyTrack>(
            level == 0 ? u"Ann" : u"", level == 1 ? u"Gold" : u"", level == 2 ? u"Dawn" : u"")});
    };
    std::ifstream sound(QO_TEST_DATA "/sounds/sound.mp3", std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(sound), {}};
    far->bytes = [&](std::int64_t) { return content; };
    const CString target = dir.collPath("track.mp3");
    ASSERT_TRUE(CQoPluginManager::downloadFile(
        at(u"Far", u"Ann\\Gold\\Dawn.mp3"), target, false, &progress))
        << log.all();
    KVTagLib::CTags tags;
    ASSERT_TRUE(CMusicTagEx::readTag(target, tags));
    CString artist;
    CString album;
    CString title;
    EXPECT_TRUE(tags.GetFirstValidArtist(artist) && tags.GetAlbum(album) && tags.GetTitle(title));
    EXPECT_EQ(artist + u"/" + album + u"/" + title, CString(u"Ann/Gold/Dawn"));
}

TEST_F(HostilePlugins, CredentialsAreAcceptedRefusedOrRefusedForACause)
{
    using Manager = CQoPluginManager;
    const auto check = [](const char16_t* user, const char16_t* password)
    { return Manager::checkPluginCredentials(u"Far", user, password, true); };
    EXPECT_EQ(check(u"", u""), Manager::LC_Ok) << "there is no login";
    struct Row
    {
        int state;
        const char16_t* error;
        Manager::ELoginCheckResult result;
    };
    const Row rows[] = {{3, u"", Manager::LC_Ok},
                        {4, u"Account expired", Manager::LC_AccountExpired},
                        {4, u"Wrong server path", Manager::LC_WrongServerPath},
                        {4, u"account expired", Manager::LC_Failed},
                        {3, u"Account expired", Manager::LC_Ok}};
    for (const Row& row : rows)
    {
        far->login = [&] { return operation({row.state}, row.error); };
        EXPECT_EQ(check(u"ann", u"hunter2"), row.result);
        EXPECT_EQ(check(u"ann", u""), Manager::LC_Failed) << "no use in trying that";
    }
    EXPECT_EQ(log.count("CheckCredentials failed for plugin Far", 10), 3);
    EXPECT_EQ(log.count("checkPluginCredentials : Account expired", 10), 1);
    far->SetCredentials(u"ann", u"hunter2");
    EXPECT_EQ(Manager::checkPluginCredentials(u"Far"), Manager::LC_Ok);
    EXPECT_FALSE(log.has("hunter2"));
    CString user;
    CString password;
    EXPECT_TRUE(Manager::getPluginCredentials(u"Far", user, password));
    EXPECT_EQ(password, CString(u"hunter2"));
}

TEST_F(HostilePlugins, APluginThatCannotBrowseHasNoPaths)
{
    EXPECT_FALSE(at(u"Far").isValid());
    EXPECT_TRUE(log.has("createPath : plugin 'Far' is not physical or logical", 10));
    far->logical = [](int) { return PluginOperationPtr(); };
    EXPECT_EQ(CQoPluginManager::getPluginMusicPath(u"far"), CString(u"\\\\lplugin:far\\"));
    EXPECT_TRUE(CQoPluginManager::isPluginConfigured(u"Far"));
    log.clear();
    boost::shared_ptr<IPlugin> plugin;
    EXPECT_FALSE(CQoPluginManager::getPlugin(u"none", plugin));
    EXPECT_FALSE(CQoPluginManager::existPlugin(u"none"));
    EXPECT_FALSE(CQoPluginManager::isPluginConfigured(u"none"));
    EXPECT_EQ(log.count("CQoPluginManager::getPlugin : plugin 'none' not found", 10), 1);
    CQoPluginManager::setPluginsManager({});
    CStringArray ids;
    CQoPluginManager::getConfiguredBrowsePlugins(ids, true);
    EXPECT_TRUE(ids.IsEmpty());
    EXPECT_FALSE(CQoPluginManager::existPlugin(u"Far"));
}
