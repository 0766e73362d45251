#include "CollectionFixture.h"
#include "Logical/LTArtist.h"
#include "QoColl/Collection/QoFileChangeInfoList.h"
#include "QoColl/Collection/QoScanHost.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Devices/QoUSBManager.h"
#include "QoColl/Devices/WPDKeys.h"
#include "common/QoException.h"
#include "platform/Clock.h"
#include "platform/DriveMap.h"
#include "support/FakeDrives.h"
#include "support/FakeShare.h"
#include "support/MemoryPortable.h"

// Collections that lie elsewhere: what is there is loaded, and what is away is not lost.

namespace
{
/// The own collection, and a foreign one of one root folder in the same database.
class FarCollection : public Collection
{
protected:
    ~FarCollection() override { CQoCollection::cleanUpGlobal(); }

    bool loadForeign(const CString& root, bool rescan = true)
    {
        CStringArray dirs;
        dirs.Add(root);
        result = {};
        return foreign.load(dbPath, u"far", dirs, kinds, rescan, &progress, &result);
    }
    /// The paths that the database has of the foreign collection.
    std::string stored(int cut)
    {
        QoFileDbItemArray items;
        CQoCollDb(dbPath).getAllFiles(items, false, u"far", true);
        std::string text;
        for (const QoFileDbItemPtr& item : items)
            text += qo::toUtf8(item->path.text().Mid(cut)) + " ";
        return text;
    }

    CQoCollection& foreign = CQoCollection::m_foreignCollection;
};

struct BadFolder : IQoScanHost
{
    int list(const CString& folder, std::vector<qo::DirEntry>& entries) override
    {
        return folder.Find(u"deep") < 0 ? IQoScanHost::list(folder, entries) : EIO;
    }
};
} // namespace

TEST_F(FarCollection, FriendsArtistsStandBesideTheOwnOnes)
{
    FakeShare share;
    share.offer(FakeShare::song("5", "C:\\Music\\a.mp3", "Bob") +
                FakeShare::song("6", "C:\\Music\\b.mp3", "Eve"));
    ASSERT_TRUE(
        CQoCollection::m_ownCollection.load(dbPath, u"", roots, kinds, true, &progress, nullptr));
    const CString root(u"\\\\share:17\\");
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "2+ 0~ 0-");
    const auto bob = CLTManager::findLTArtist(CString(u"Bob"));
    ASSERT_TRUE(bob);
    EXPECT_EQ(CQoUtils::getCollection(bob), CQoUtils::CT_Foreign);
    EXPECT_GT(CQoCollection::m_ownCollection.getFileCount(), 2);
    const CString song = root + u"C:\\Music\\a.mp3";
    const CString lastingId = foreign.getFileByPath(song)->getDbItem()->velmoraId;
    EXPECT_FALSE(lastingId.IsEmpty());

    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 0~ 0-");
    // What the friend says now counts, and his new row, by which he is asked for the file.
    share.offer(FakeShare::song("9", "C:\\Music\\a.mp3", "Bo"));
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 1~ 1-");
    ASSERT_TRUE(loadForeign(root, false));
    const QoFileDbItemPtr item = foreign.getFileByPath(song)->getDbItem();
    EXPECT_EQ(item->clipUid + item->artist + item->velmoraId, CString(u"9Bo") + lastingId);
    EXPECT_FALSE(CLTManager::findLTArtist(CString(u"Eve")));

    const std::string whole = share.extract;
    share.extract.replace(whole.find("VERSION:1"), 9, "VERSION:2");
    EXPECT_FALSE(loadForeign(root));
    EXPECT_TRUE(result.m_unsupportedExtract);
    share.isBroken = true;
    EXPECT_FALSE(loadForeign(root));
    EXPECT_TRUE(result.m_extractFailed);
    // Other root folders that cannot be fetched leave no half of a collection.
    CStringArray others;
    others.Add(root + u"C:\\Music");
    EXPECT_THROW(
        try { foreign.setRootDirs(others, kinds, &progress); } catch (CQoException* caught) {
            delete caught;
            throw 0;
        },
        int);
    EXPECT_FALSE(foreign.getDir(others[0]));
    // One that is no extract costs nothing either.
    share.isBroken = false;
    share.extract = "no extract";
    EXPECT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 0~ 0-");
    EXPECT_EQ(stored(11), "C:\\Music\\a.mp3 ");
    // What the friend offers outside the root folder stays outside.
    share.offer(FakeShare::song("9", "C:\\Music\\a.mp3", "Bo") +
                FakeShare::song("10", "C:\\Secret\\b.mp3", "Bo"));
    LogCapture log;
    EXPECT_TRUE(loadForeign(others[0]));
    EXPECT_EQ(counts(), "0+ 0~ 0-");
    EXPECT_FALSE(log.has("Secret")) << log.all();
}

TEST_F(FarCollection, StickIsScannedPulledOutAndKnownAgainUnderAnotherLetter)
{
    FakeDrives drives;
    put("sound.mp3", "stick/Music/one.mp3");
    put("sound.flac", "stick/Music/deep/two.flac");
    dir.makeFolder("moved");
    qo::DriveMap& map = qo::DriveMap::instance();
    const char16_t first = map.addDevice(u"far first", dir.path("stick"));
    const char16_t second = map.addDevice(u"far second", dir.path("moved"));
    drives.put(first, u"stick");
    theQoUSBManager.checkDrives();
    const CString root(u"\\\\usb:stick\\Music");
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "2+ 0~ 0-");
    const QoFileDbItemPtr one = foreign.getFileByPath(root + u"\\one.mp3")->getDbItem();
    EXPECT_GT(one->duration, 0);
    EXPECT_GT(CQoUtils::getFileSize(foreign.getFileByPath(one->path)), 0);

    drives.take(first);
    theQoUSBManager.checkDrives();
    LogCapture log;
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 0~ 0-");
    EXPECT_EQ(foreign.getFileCount(), 2);
    EXPECT_TRUE(log.has("known files stay: \\\\usb:stick\\Music", qo::level::warning));
    EXPECT_EQ(CQoUtils::getRealPath(one->path), CString());

    // Pulled out before anything was reported, with an empty folder left where it was.
    drives.put(second, u"stick");
    theQoUSBManager.checkDrives();
    drives.take(second);
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 0~ 0-");

    fs::remove(dir.path("moved"));
    fs::rename(dir.path("stick"), dir.path("moved"));
    drives.put(second, u"stick");
    theQoUSBManager.checkDrives();
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 0~ 0-");
    EXPECT_EQ(CQoUtils::getRealPath(one->path), CString(second) + u":\\Music\\one.mp3");
    // A folder that cannot be read keeps its files, and the others are compared.
    BadFolder bad;
    fs::remove(dir.path("moved/Music/one.mp3"));
    foreign.setScanHost(&bad);
    ASSERT_TRUE(loadForeign(root));
    foreign.setScanHost(nullptr);
    EXPECT_EQ(counts(), "0+ 0~ 1-");
    EXPECT_EQ(stored(root.GetLength() + 1), "deep\\two.flac ");
    // Folders that run empty go from the stick, but not its root folder.
    CQoFileChangeInfoList changes;
    changes.addFileToDelete(root + u"\\deep\\two.flac");
    fs::remove(dir.path("moved/Music/deep/two.flac"));
    EXPECT_TRUE(foreign.applyQoFileChanges(changes, {}, &progress));
    EXPECT_FALSE(fs::exists(dir.path("moved/Music/deep")));
    EXPECT_TRUE(fs::exists(dir.path("moved/Music")));
    map.removeDevice(u"far first");
    map.removeDevice(u"far second");
    drives.take(second);
    theQoUSBManager.checkDrives();
}

TEST_F(FarCollection, FilesThatAPulledStickHidFromTheScanAreReadByTheNextOne)
{
    struct Puller : IQoScanHost
    {
        void fileRead(const QoFileDbItem&, const KVTagLib::CTags*) override
        {
            if (!drives)
                return;
            drives->take(letter);
            fs::rename(from, to);
            drives = nullptr;
        }
        FakeDrives* drives = nullptr;
        char16_t letter = 0;
        std::string from;
        std::string to;
    };
    FakeDrives drives;
    for (const char* name : {"stick/a.mp3", "stick/b.mp3"})
        put("sound.mp3", name);
    const char16_t letter = qo::DriveMap::instance().addDevice(u"far pulled", dir.path("stick"));
    drives.put(letter, u"pulled");
    theQoUSBManager.checkDrives();
    Puller puller;
    puller.drives = &drives;
    puller.letter = letter;
    puller.from = dir.path("stick");
    puller.to = dir.path("away");
    foreign.setScanHost(&puller);
    const CString root(u"\\\\usb:pulled\\");
    ASSERT_TRUE(loadForeign(root));
    foreign.setScanHost(nullptr);
    EXPECT_EQ(counts(), "2+ 0~ 0-");
    const auto durationOfB = [&]
    { return foreign.getFileByPath(root + u"b.mp3")->getDbItem()->duration; };
    EXPECT_EQ(durationOfB(), 0);
    fs::rename(dir.path("away"), dir.path("stick"));
    drives.put(letter, u"pulled");
    theQoUSBManager.checkDrives();
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 1~ 0-");
    EXPECT_GT(durationOfB(), 0);
    qo::DriveMap::instance().removeDevice(u"far pulled");
    drives.take(letter);
    theQoUSBManager.checkDrives();
}

TEST_F(FarCollection, PhoneThatIsUnpluggedAtAnyCallKeepsItsRecords)
{
    MemoryPortable phone;
    const CString music = phone.addFolder(phone.card, u"Music");
    const CString song = phone.addFile(music, u"a.mp3", "aaa");
    phone.addFile(music, u"b.mp3", "bbb");
    phone.addFile(music, u"A.mp3", "another of that name");
    phone.find(song)->values.set(qo::wpd::mediaArtist, CString(u"Ann"));
    const CString root(u"\\\\wpd:phone\\Card\\");
    phone.unplugAt(3);
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 0~ 0-");
    // What was not scanned to its end the next load scans unasked.
    phone.unplugAt(0);
    ASSERT_TRUE(loadForeign(root, false));
    EXPECT_EQ(counts(), "2+ 0~ 0-");
    EXPECT_TRUE(CLTManager::findLTArtist(CString(u"Ann")));

    const int calls = [&]
    {
        phone.unplugAt(0);
        EXPECT_TRUE(loadForeign(root));
        return phone.calls();
    }();
    for (int call = 1; call <= calls; ++call)
    {
        phone.unplugAt(call);
        ASSERT_TRUE(loadForeign(root));
        EXPECT_EQ(counts(), "0+ 0~ 0-") << "call " << call;
    }
    phone.unplugAt(0);
    qo::PropertyBag& values = phone.find(song)->values;
    values.set(qo::wpd::mediaArtist, CString(u"Eve"));
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 0~ 0-");
    values.set(qo::wpd::objectModified, qo::systemClock().now());
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 1~ 0-");
    EXPECT_EQ(foreign.getFileByPath(root + u"Music\\a.mp3")->getDbItem()->artist, CString(u"Eve"));
    // It leaves out one object in each walk, which is no reason to walk at each start.
    foreign.clearCollection(&progress);
    CQoCollDb(dbPath).deleteColl(u"far");
    phone.broken = song;
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "2+ 0~ 0-");
    phone.unplugAt(0);
    ASSERT_TRUE(loadForeign(root, false));
    EXPECT_EQ(phone.calls(), 0);
    phone.broken.Empty();
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 1~ 0-");
    std::erase_if(phone.objects,
                  [](const auto& object)
                  {
                      return std::get<CString>(*object.values.find(qo::wpd::objectName)) ==
                                 u"a title" &&
                             object.content == "bbb";
                  });
    ASSERT_TRUE(loadForeign(root));
    EXPECT_EQ(counts(), "0+ 0~ 1-");
}

TEST_F(FarCollection, FoldersOfAPhoneAreShownAndMadeThere)
{
    MemoryPortable phone;
    phone.addFile(phone.addFolder(phone.card, u"Music"), u"a.mp3", "aaa");
    foreign.loadDeviceDirs(u"phone", CQoCollPath::wpd, 0, &progress);
    EXPECT_TRUE(foreign.getDir(u"\\\\wpd:phone\\Card\\Music"));
    EXPECT_FALSE(foreign.getFileByPath(CString(u"\\\\wpd:phone\\Card\\Music\\a.mp3")));
    const CQoCollPath fresh(u"\\\\wpd:phone\\Card\\Music\\New");
    const std::size_t objects = phone.objects.size();
    EXPECT_TRUE(foreign.createNewDeviceDir(fresh, &progress));
    EXPECT_EQ(phone.objects.size(), objects + 1);
    phone.unplugAt(1);
    EXPECT_FALSE(foreign.createNewDeviceDir(CQoCollPath(u"\\\\wpd:phone\\Card\\Other"), &progress));
}
