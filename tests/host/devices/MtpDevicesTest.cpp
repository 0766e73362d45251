#include "devices/mtp/MtpDevices.h"

#include "FakeMtp.h"
#include "devices/base/Holders.h"
#include "support/MemoryConfig.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Physical.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>

namespace
{
/// The kernel over the backend, with a phone that has a folder "Music".
class MtpDevices : public testing::Test
{
protected:
    MtpDevices()
    {
        initQoKernel(&m_config, nullptr);
        qo::specialFolders().setBase(dir.collPath("data"));
        dir.write("root/sys/bus/usb/devices/1-2/busnum", "1\n");
        dir.write("root/sys/bus/usb/devices/1-2/devnum", "4\n");
        dir.write("root/sys/bus/usb/devices/1-2/serial", "0A1B\n");
        dir.write("root/sys/bus/usb/devices/1-2/product", "Phone 7\n");
        dir.write("root/dev/bus/usb/001/004", "");
        phone() = FakePhone();
        music = phone().add({LIBMTP_FILES_AND_FOLDERS_ROOT, "Music"});
        m_devices = std::make_unique<qo::host::MtpDevices>(
            [this](const std::string& sentence) { notes += sentence + "\n"; }, dir.path("root"));
        qo::setPortableDevices(m_devices.get());
    }
    ~MtpDevices() override
    {
        qo::setPortableDevices(nullptr);
        m_devices.reset();
        initQoKernel(nullptr, nullptr);
        qo::specialFolders().setBase({});
    }

    std::uint32_t addSong(const std::string& name, const std::string& content)
    {
        return phone().add({music, name, LIBMTP_FILETYPE_MP3, content});
    }
    static CString path(const char16_t* relative)
    {
        return CString(u"\\\\wpd:18d1-4ee1-0a1b\\Card\\") + relative;
    }
    /// The names of the files below Music, with their artists.
    std::string listed(int types)
    {
        QoFileDbItemArray files;
        isWhole = CQoWPDManager::getFilesFromDevice(
            CQoCollPath(path(u"Music")), types, true, &progress, files);
        std::string text;
        for (const QoFileDbItemPtr& file : files)
            text += qo::toUtf8(CQoCollPath(file->path).getLast() + u":" + file->artist) + " ";
        return text;
    }
    std::string fetched(const char16_t* relative)
    {
        const bool isDone =
            CQoWPDManager::getFile(path(relative), dir.collPath("got"), 0, &progress, true);
        EXPECT_EQ(isDone, std::filesystem::exists(dir.path("got")));
        return isDone ? dir.read("got") : "none";
    }
    void unplug()
    {
        phone().isPresent = false;
        std::filesystem::remove(dir.path("root/dev/bus/usb/001/004"));
    }

    const TempDir dir;
    std::uint32_t music;
    std::string notes;
    bool isWhole = false;
    CDummyProgress progress;

private:
    MemoryConfig m_config;
    std::unique_ptr<qo::host::MtpDevices> m_devices;
};
constexpr int files = CQoWPDManager::deviceFiles;
} // namespace

TEST_F(MtpDevices, APhoneIsKnownByItsSerialNumberAndStaysOpen)
{
    testing::internal::CaptureStdout();
    CQoWPDManager manager;
    manager.refreshDevices();
    manager.refreshDevices();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    UsbDeviceInfoPtr device;
    ASSERT_TRUE(manager.getDevice(u"18d1-4ee1-0a1b", device));
    EXPECT_EQ(device->m_name, CString(u"Ann's phone"));
    EXPECT_TRUE(device->m_active && device->m_readable && device->m_writable);
    EXPECT_EQ(phone().calls.find("open", phone().calls.find("open") + 1), std::string::npos);
    CArray<CQoCollPath> paths;
    paths.Add(manager.createPath(device->m_id));
    std::int64_t total = 0;
    std::int64_t free = 0;
    EXPECT_TRUE(CQoWPDManager::getDeviceFillStateInfo(paths, total, free));
    EXPECT_EQ(total * 10000 + free, 10000400);
    // Read-only storages are not written to.
    phone().storage.AccessCapability = 1;
    manager.refreshDevices();
    EXPECT_FALSE(device->m_writable);
}

TEST_F(MtpDevices, FilesAreListedFetchedSentAndRemoved)
{
    addSong("a.mp3", std::string(600'000, 'a'));
    addSong("a.mp3", "second of that name");
    addSong("..", "up");
    addSong("b/c\n.mp3", "odd");
    const std::uint32_t deep = phone().add({music, "deep"});
    phone().add({deep, "d.mp3", LIBMTP_FILETYPE_MP3, "deep"});
    // Names alone cost a list for each folder, and no request for a file.
    EXPECT_EQ(listed(files | CQoWPDManager::withoutTags), "a.mp3: b/c\xEF\x80\x8A.mp3: d.mp3: ");
    EXPECT_EQ(phone().calls.find("track"), std::string::npos);
    EXPECT_EQ(listed(files), "a.mp3:Kino b/c\xEF\x80\x8A.mp3:Kino d.mp3:Kino ");
    EXPECT_TRUE(isWhole);

    for (const bool givesParts : {true, false})
    {
        phone().givesParts = givesParts;
        EXPECT_EQ(fetched(u"Music\\a.mp3"), std::string(600'000, 'a'));
        EXPECT_EQ(fetched(u"Music\\deep\\d.mp3"), "deep");
    }
    dir.write("new.mp3", "content");
    const CString target = path(u"New\\Folder\\new.mp3");
    EXPECT_TRUE(CQoWPDManager::putFile(dir.collPath("new.mp3"), {}, target, 7, &progress));
    const FakePhone::Object sent = phone().objects[phone().last];
    EXPECT_EQ(sent.name + ":" + sent.content, "new.mp3:content");
    EXPECT_EQ(sent.type, LIBMTP_FILETYPE_MP3);
    EXPECT_EQ(phone().objects[sent.parent].name, "Folder");
    EXPECT_EQ(phone().objects[phone().objects[sent.parent].parent].parent,
              LIBMTP_FILES_AND_FOLDERS_ROOT);
    EXPECT_TRUE(CQoWPDManager::deleteFile(target, &progress));
    EXPECT_FALSE(phone().objects.contains(phone().last));
}

TEST_F(MtpDevices, ATrackWhoseTagsCouldNotBeReadIsReadByTheNextScan)
{
    addSong("a.mp3", "aa");
    CQoCollection::initGlobal();
    const CString db = dir.collPath("qodb");
    CQoCollDb::CreateDatabaseIfNotValid(db, {});
    CStringArray roots;
    roots.Add(path(u"Music"));
    struct Host final : IQoScanHost
    {
        void failed(ETrouble trouble, const CString&, const CString&) override
        {
            failures += trouble == ETrouble::readTag ? 1 : 0;
        }
        int failures = 0;
    } host;
    CQoCollection& foreign = CQoCollection::m_foreignCollection;
    foreign.setScanHost(&host);
    const auto scan = [&]
    {
        CQoCollection::OpResultInfo result;
        EXPECT_TRUE(foreign.load(db, u"phone", roots, CQoPathsInfoMap(), true, &progress, &result));
        const auto file = foreign.getFileByPath(CQoCollPath(path(u"Music\\a.mp3")));
        return std::to_string(result.m_inserted) + std::to_string(result.m_updated) + ":" +
               qo::toUtf8(file->getDbItem()->artist);
    };
    std::string seen;
    for (const char* failing : {"track", "track", "", "", "track"})
    {
        phone().failing = failing;
        seen += scan() + " ";
    }
    EXPECT_EQ(seen, "10: 00: 01:Kino 00:Kino 00:Kino ");
    EXPECT_EQ(host.failures, 1);
    foreign.setScanHost(nullptr);
    CQoCollection::cleanUpGlobal();
}

TEST_F(MtpDevices, WhatIsUnpluggedFailsAtOnceAndIsFoundAgain)
{
    addSong("a.mp3", "content");
    EXPECT_EQ(listed(files), "a.mp3:Kino ");
    unplug();
    EXPECT_EQ(listed(files), "");
    EXPECT_FALSE(isWhole);
    EXPECT_EQ(fetched(u"Music\\a.mp3"), "none");
    const std::string calls = phone().calls;
    EXPECT_EQ(fetched(u"Music\\a.mp3"), "none");
    EXPECT_EQ(phone().calls, calls) << "nothing is asked of a phone that has left";
    phone().isPresent = true;
    dir.write("root/dev/bus/usb/001/004", "");
    EXPECT_EQ(fetched(u"Music\\a.mp3"), "content");
}

TEST_F(MtpDevices, WhyAPhoneCannotBeUsedIsSaidOnce)
{
    phone().isHeld = true;
    const std::string node = dir.path("root/dev/bus/usb/001/004");
    // As a desktop does that shows each phone that is plugged in.
    const pid_t holder = ::fork();
    if (holder == 0)
    {
        (void)!::open(node.c_str(), O_RDONLY);
        ::pause();
    }
    const auto holds = [&]
    { return !qo::host::holdersOf([&](const std::string& path) { return path == node; }).empty(); };
    while (!holds())
        ::usleep(1000);
    CQoWPDManager manager;
    manager.refreshDevices();
    manager.refreshDevices();
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    EXPECT_EQ(notes,
              "the device Phone 7 cannot be opened: test_host_devic (" + std::to_string(holder) +
                  ") uses it\n");
    UsbDeviceInfoPtr device;
    EXPECT_FALSE(manager.getDevice(u"18d1-4ee1-0a1b", device));
}

TEST_F(MtpDevices, ALockedPhoneIsNoDeviceUntilItIsUnlocked)
{
    phone().isLocked = true;
    CQoWPDManager manager;
    manager.refreshDevices();
    UsbDeviceInfoPtr device;
    EXPECT_FALSE(manager.getDevice(u"18d1-4ee1-0a1b", device));
    EXPECT_NE(notes.find("unlock it"), std::string::npos) << notes;
    phone().isLocked = false;
    manager.refreshDevices();
    EXPECT_TRUE(manager.getDevice(u"18d1-4ee1-0a1b", device));
}
