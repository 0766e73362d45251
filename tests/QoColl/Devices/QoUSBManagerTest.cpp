#include "QoColl/Devices/QoUSBManager.h"

#include "QoColl/Devices/USBUtils.h"
#include "common/Kernel.h"
#include "common/Paths.h"
#include "common/PathsInfoMap.h"
#include "platform/DriveMap.h"
#include "support/FakeDrives.h"
#include "support/LogCapture.h"
#include "support/MemoryConfig.h"
#include "support/Print.h"
#include "support/TempDir.h"
#include "types/Utf.h"

#include <gtest/gtest.h>

namespace
{
using Info = qo::DriveInfo;

class QoUSBManager : public testing::Test, public IUsbDeviceChangedListener
{
protected:
    QoUSBManager()
    {
        initQoKernel(&m_config, nullptr);
        m_manager.init();
        m_manager.addUsbDeviceChangedListener(this);
        m_manager.addUsbDeviceChangedListener(this);
    }
    ~QoUSBManager() override { initQoKernel(nullptr, nullptr); }

    void usbDeviceChanged(const UsbDeviceInfoPtr& device, bool hasCome) override
    {
        m_heard += (hasCome ? u"+" : u"-") + device->m_name;
        if (m_leaves)
            m_manager.removeUsbDeviceChangedListener(this);
    }
    /// What listeners hear of the changes that are there by now.
    CString heard()
    {
        m_heard.Empty();
        m_manager.checkDrives();
        return m_heard;
    }

    MemoryConfig m_config;
    FakeDrives m_drives;
    CQoUSBManager m_manager;
    CString m_heard;
    bool m_leaves = false;
};
} // namespace

TEST_F(QoUSBManager, TakesSticksAndFixedDisksByUsbAndNothingElse)
{
    const struct
    {
        Info info;
        bool isAccepted;
    } cases[] = {
        {{Info::Kind::removable, Info::Medium::removable, Info::Bus::other, u"1", u"n", u""}, true},
        {{Info::Kind::fixed, Info::Medium::other, Info::Bus::usb, u"2", u"n", u""}, true},
        {{Info::Kind::fixed, Info::Medium::unknown, Info::Bus::usb, u"2", u"n", u""}, true},
        {{Info::Kind::fixed, Info::Medium::floppy, Info::Bus::usb, u"2", u"n", u""}, false},
        {{Info::Kind::fixed, Info::Medium::other, Info::Bus::usb, u"", u"n", u""}, false},
        {{Info::Kind::removable, Info::Medium::floppy, Info::Bus::usb, u"3", u"n", u""}, false},
        {{Info::Kind::fixed, Info::Medium::other, Info::Bus::other, u"4", u"n", u""}, false},
        {{Info::Kind::network, Info::Medium::other, Info::Bus::usb, u"5", u"n", u""}, false},
        {{Info::Kind::optical, Info::Medium::removable, Info::Bus::usb, u"6", u"n", u""}, false},
    };
    for (const auto& [info, isAccepted] : cases)
    {
        m_drives.put(u'E', info);
        UsbDeviceInfoPtr device;
        EXPECT_EQ(m_manager.refreshDevice(u'E', device), isAccepted) << qo::toUtf8(info.id);
        EXPECT_EQ(m_manager.getDeviceByLetter(u'E') >= 0, isAccepted) << qo::toUtf8(info.id);
    }
    CString info;
    CString id;
    EXPECT_FALSE(GetDriveInfoByLetter(u'!', info, id));
    m_drives.put(u'E', cases[1].info);
    EXPECT_TRUE(GetDriveInfoByLetter(u'e', info, id));
    // The first two letters are never looked at.
    m_drives.put(u'B', u"early");
    m_manager.refreshDevices();
    EXPECT_EQ(m_manager.getDeviceByLetter(u'B'), -1);
}

TEST_F(QoUSBManager, DeviceIsKnownByItsIdWhateverItsLetter)
{
    const LogCapture log;
    m_drives.put(u'E', u"stick", u"Ann's");
    m_drives.put(u'F', u"other\nid");
    EXPECT_EQ(heard(), CString(u"+Ann's+Maker"));
    m_manager.setDeviceConfigured(u"stick");
    m_drives.take(u'E');
    EXPECT_EQ(heard(), CString(u"-Ann's"));
    EXPECT_TRUE(log.has("CQoUSBManager::deviceChanged : device E(Ann's) removed"));
    const CQoCollPath song = m_manager.getFullPath(u"stick", u"Music\\a.mp3");
    EXPECT_EQ(song.toString(), CString(u"\\\\usb:stick\\Music\\a.mp3"));
    EXPECT_EQ(m_manager.getRealPath(song), CString());
    UsbDeviceInfoArray active;
    m_manager.getDevices(active, true, true);
    EXPECT_TRUE(active.IsEmpty());
    m_drives.put(u'G', u"stick", u"Bob's");
    EXPECT_EQ(heard(), CString(u"+Bob's"));
    EXPECT_EQ(m_manager.getRealPath(song), CString(u"G:\\Music\\a.mp3"));
    EXPECT_EQ(m_manager.getRealPath(u"unknown", u"a"), CString());
    EXPECT_GE(m_manager.getDevice(u"other\uF00Aid"), 0);

    // Another device under the letter takes it; what is not accepted is told to nobody.
    m_drives.put(u'G', Info{});
    EXPECT_EQ(heard(), CString());
    EXPECT_TRUE(log.has("device G not accepted for qo usage"));
    EXPECT_EQ(m_manager.getRealPath(song), CString());
    m_drives.take(u'Q');
    EXPECT_EQ(heard(), CString());
    m_manager.deviceChanged(qo::VolumeEvent::arrival, nullptr);
    for (const std::uint32_t mask : {0U, 1U << 26, 1U << 31})
    {
        const qo::VolumeEvent event{qo::VolumeEvent::volumeType, mask};
        m_manager.deviceChanged(qo::VolumeEvent::arrival, &event);
    }
    m_leaves = true;
    m_drives.put(u'E', u"stick");
    EXPECT_EQ(heard(), CString(u"+Maker"));
    m_drives.take(u'E');
    EXPECT_EQ(heard(), CString());
}

TEST_F(QoUSBManager, DisksWithRootFoldersOfTheOwnCollectionKeepTheirPaths)
{
    CStringArray roots;
    roots.Add(u"C:\\media\\ann\\disk\\Music");
    CQoPaths::setMusicCollectionDirs(roots, {});
    for (const auto& [folder, isLeftAlone] : {std::pair(u"C:\\media\\ann\\disk", true),
                                              std::pair(u"C:\\media\\ann\\disk\\Music\\x", true),
                                              std::pair(u"C:\\media\\ann\\stick", false)})
    {
        m_drives.mountFolder = folder;
        m_manager.checkDrives();
        EXPECT_EQ(m_drives.wasLeftAlone, isLeftAlone);
    }
}

TEST_F(QoUSBManager, RecordsOfAllFormsAreReadAndConfiguredDevicesComeBack)
{
    CStringArray records;
    for (const char16_t* record : {u"too\nfew\nfields",
                                   u"1\nfour\nMusic\nrule",
                                   u"2\nfive\nMusic\nrule\nleft out",
                                   u"3\nsix\nMusic\nrule\n\nmovies",
                                   u"4\nextra\nM\nr\nV\ns\nTalks\n1\nBooks\n9\nRadio\n2\nodd"})
        records.Add(record);
    m_manager.loadDevicesFromCfg(records);
    UsbDeviceInfoArray devices;
    m_manager.getConfiguredDevices(devices);
    ASSERT_EQ(devices.GetSize(), 4);
    EXPECT_EQ(devices[0]->m_moviesPath + u"|" + devices[0]->m_moviesUploadRule,
              CString(u"Music|rule"));
    EXPECT_EQ(devices[1]->m_moviesPath + u"|" + devices[1]->m_moviesUploadRule, CString(u"|"));
    EXPECT_EQ(devices[2]->m_moviesPath + u"|" + devices[2]->m_moviesUploadRule,
              CString(u"|movies"));
    EXPECT_EQ(devices[3]->m_extraDirs.join(u","), CString(u"Talks,Radio"));
    EXPECT_FALSE(devices[3]->m_active);

    m_manager.setDevicePaths(u"4", u"N\nX", u"V", devices[3]->m_extraDirs);
    m_manager.removeDevice(u"2");
    EXPECT_GE(m_manager.getDevice(u"2"), 0);
    CQoUSBManager next;
    next.init();
    EXPECT_EQ(next.getDevice(u"2"), -1);
    CStringArray saved;
    next.saveDevicesToCfg(saved);
    ASSERT_EQ(saved.GetSize(), 3);
    EXPECT_EQ(saved[0], CString(u"1\nfour\nMusic\nrule\nMusic\nrule"));
    EXPECT_EQ(saved[2], CString(u"4\nextra\nN\uF00AX\nr\nV\ns\nTalks\n1\nRadio\n2"));
}

TEST_F(QoUSBManager, FoldersForMusicAndMoviesAreFoundOnTheDrive)
{
    const TempDir dir;
    for (const char* folder : {"Media/My Music", "Film", "deep/er/Musik", ".Trash-1000/music"})
        dir.makeFolder(folder);
    const char16_t letter = qo::DriveMap::instance().addDevice(u"found", dir.path());
    m_drives.put(letter, u"found");
    m_manager.refreshDevices();
    UsbDeviceInfoPtr device;
    ASSERT_TRUE(m_manager.getDevice(u"found", device));
    bool foundMusic = false;
    bool foundMovies = false;
    EXPECT_TRUE(m_manager.detectMusicAndMoviesDirs(device, foundMusic, foundMovies));
    EXPECT_EQ(device->m_musicPath + u"|" + device->m_moviesPath, CString(u"Media\\My Music|Film"));
    EXPECT_TRUE(foundMusic && foundMovies);
    // What was chosen and is there stays, without another look.
    device->m_musicPath = u"deep";
    EXPECT_TRUE(m_manager.detectMusicAndMoviesDirs(device, foundMusic, foundMovies));
    EXPECT_EQ(device->m_musicPath, CString(u"deep"));
    EXPECT_FALSE(foundMusic);

    m_drives.take(letter);
    m_manager.refreshDevices();
    EXPECT_FALSE(m_manager.detectMusicAndMoviesDirs(device, foundMusic, foundMovies));
    EXPECT_EQ(device->m_musicPath, CString(u"deep"));
    qo::DriveMap::instance().removeDevice(u"found");
}
