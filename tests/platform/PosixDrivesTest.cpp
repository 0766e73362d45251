#include "platform/posix/PosixDrives.h"

#include "platform/DriveMap.h"
#include "platform/posix/MountTable.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace
{
namespace fs = std::filesystem;

/// What a system tells of its disks, as files of the test.
class System
{
public:
    System() : drives({m_dir.path("mounts"), m_dir.path("sys"), m_dir.path("udev")}, map) {}

    /// A disk with one partition, numbers N:0 and N:1; properties are lines such as "ID_BUS=usb".
    void addDisk(const std::string& name,
                 int number,
                 bool removable,
                 const std::string& properties,
                 const std::string& partitionProperties)
    {
        const std::string disk = "sys/devices/" + name;
        const std::string major = std::to_string(number);
        m_dir.write(disk + "/dev", major + ":0\n");
        m_dir.write(disk + "/removable", removable ? "1\n" : "0\n");
        m_dir.write(disk + "/part/dev", major + ":1\n");
        m_dir.write(disk + "/part/partition", "1\n");
        m_dir.makeFolder("sys/dev/block");
        fs::create_directory_symlink(m_dir.path(disk), m_dir.path("sys/dev/block/" + major + ":0"));
        fs::create_directory_symlink(m_dir.path(disk + "/part"),
                                     m_dir.path("sys/dev/block/" + major + ":1"));
        m_dir.write("udev/b" + major + ":0", lines(properties));
        m_dir.write("udev/b" + major + ":1", lines(partitionProperties));
    }
    /// Out of the slot; what was mounted stays in the table.
    void pull(int number)
    {
        fs::remove(m_dir.path("sys/dev/block/" + std::to_string(number) + ":1"));
    }
    /// Another card in the slot, with that file system.
    void changeCard(int number, const std::string& properties)
    {
        m_dir.write("udev/b" + std::to_string(number) + ":1", lines(properties));
    }
    void addMapping(const std::string& name, int number, const std::string& slave)
    {
        const std::string folder = "sys/devices/" + name;
        m_dir.write(folder + "/dev", std::to_string(number) + ":0\n");
        m_dir.makeFolder(folder + "/slaves");
        fs::create_directory_symlink(m_dir.path("sys/devices/" + slave),
                                     m_dir.path(folder + "/slaves/part"));
        m_dir.makeFolder("sys/class/block");
        fs::create_directory_symlink(m_dir.path(folder), m_dir.path("sys/class/block/" + name));
    }
    void mount(const std::string& table) { m_dir.write("mounts", table); }
    /// "+D-E": what the next look finds.
    std::string update(const std::function<bool(const CString&)>& isLeftAlone = {})
    {
        std::string text;
        for (const qo::DriveChange& change : drives.update(isLeftAlone))
            text += std::string(change.hasCome ? "+" : "-") + static_cast<char>(change.letter);
        return text;
    }

    qo::DriveMap map;

private:
    static std::string lines(const std::string& properties)
    {
        std::string text = "S:disk/by-id/x\nI:12\n";
        for (std::size_t start = 0; start < properties.size();)
        {
            const std::size_t end = std::min(properties.find(';', start), properties.size());
            text += "E:" + properties.substr(start, end - start) + "\n";
            start = end + 1;
        }
        return text;
    }

    const TempDir m_dir;

public:
    qo::PosixDrives drives;
};

std::string mountLine(const std::string& device,
                      const std::string& point,
                      const std::string& root = "/",
                      const std::string& rest = "vfat /dev/sdx1 rw")
{
    return "36 35 " + device + " " + root + " " + point + " rw shared:3 master:1 - " + rest + "\n";
}
} // namespace

TEST(PosixDrives, SticksAndDisksByUsbHaveLettersAndOthersDoNot)
{
    System system;
    system.addDisk("sda", 1, false, "ID_BUS=ata;ID_SERIAL=inner", "ID_FS_UUID=a");
    system.addDisk("sdb",
                   2,
                   true,
                   "ID_BUS=usb;ID_SERIAL=stick;ID_VENDOR=Good_Co;ID_MODEL=Flash_",
                   "ID_FS_UUID=fs;ID_PART_ENTRY_UUID=part;ID_FS_LABEL=My_Stick;"
                   "ID_FS_LABEL_ENC=My\\x20Stick");
    system.addDisk("sdc", 3, false, "ID_BUS=usb;ID_SERIAL=disk\\x", "ID_FS_UUID=c");
    system.addDisk("sdd", 4, true, "ID_BUS=ata", "ID_FS_UUID=d");
    system.addDisk("sr0", 5, true, "ID_BUS=usb;ID_CDROM=1;ID_SERIAL=cd", "");
    system.addDisk("fd0", 6, true, "ID_SERIAL=floppy", "");
    system.addDisk("sde", 7, true, "ID_BUS=usb", "ID_FS_TYPE=vfat"); // could not be known again
    system.addMapping("dm-0", 254, "sdc/part");
    system.mount(mountLine("1:1", "/home") + mountLine("2:1", "/media/My\\040Stick") +
                 mountLine("2:1", "/home/ann/Bound", "/Music") + "cut line\n36 35 3:1 /\n" +
                 mountLine("0:99", "/media/crypt", "/", "ext4 /dev/dm-0 rw") +
                 mountLine("4:1", "/media/d") + mountLine("5:0", "/media/cd") +
                 mountLine("6:0", "/media/floppy") + mountLine("7:1", "/media/e") +
                 mountLine("0:5", "/proc", "/", "proc proc rw"));
    EXPECT_EQ(system.update(), "+D+E+F");
    qo::DriveInfo info;
    ASSERT_TRUE(system.drives.look(u'D', info));
    EXPECT_EQ(info.id, CString(u"stick-part"));
    EXPECT_EQ(info.name, CString(u"Good Co Flash"));
    EXPECT_EQ(info.label, CString(u"My Stick"));
    EXPECT_EQ(info.kind, qo::DriveInfo::Kind::removable);
    EXPECT_EQ(system.map.toSystem(u"D:\\a.mp3"), "/media/My Stick/a.mp3");
    // An encrypted volume is known by the partition that it lies on.
    ASSERT_TRUE(system.drives.look(u'E', info));
    EXPECT_EQ(info.id, CString(u"disk\uF05Cx-c"));
    EXPECT_EQ(info.kind, qo::DriveInfo::Kind::fixed);
    EXPECT_EQ(info.bus, qo::DriveInfo::Bus::usb);
    ASSERT_TRUE(system.drives.look(u'F', info));
    EXPECT_EQ(info.id, CString(u"d"));
    EXPECT_FALSE(system.drives.look(u'G', info));
}

TEST(PosixDrives, DriveKeepsItsLetterWhenItLeavesAndComesBackElsewhere)
{
    System system;
    system.addDisk("sdb", 2, true, "ID_BUS=usb;ID_SERIAL=one", "ID_FS_UUID=u");
    system.addDisk("sdc", 3, true, "ID_BUS=usb;ID_SERIAL=two", "ID_FS_UUID=u");
    system.mount(mountLine("2:1", "/m/one") + mountLine("3:1", "/m/two"));
    EXPECT_EQ(system.update(), "+D+E");
    EXPECT_EQ(system.update(), "");
    system.mount(mountLine("3:1", "/m/two"));
    qo::DriveInfo info;
    EXPECT_FALSE(system.drives.look(u'D', info)) << "gone, though nobody has looked for changes";
    EXPECT_EQ(system.update(), "-D");
    EXPECT_EQ(system.map.toSystem(u"D:\\"), "");
    system.mount(mountLine("2:1", "/n/one") + mountLine("3:1", "/n/two"));
    EXPECT_EQ(system.update(), "+D+E");
    EXPECT_EQ(system.map.toSystem(u"D:\\x"), "/n/one/x");
    // Another disk mounted over it hides it.
    system.mount(mountLine("2:1", "/n/one") + mountLine("3:1", "/n/one"));
    EXPECT_EQ(system.update(), "-D+E");
    EXPECT_EQ(system.map.toSystem(u"E:\\x"), "/n/one/x");
    // Pulled out without being unmounted.
    ASSERT_TRUE(system.drives.look(u'E', info));
    system.pull(3);
    EXPECT_FALSE(system.drives.look(u'E', info));
    EXPECT_EQ(system.update(), "-E");
}

TEST(PosixDrives, AnotherCardInTheSlotIsAnotherDrive)
{
    System system;
    system.addDisk("sdb", 2, true, "ID_BUS=usb;ID_SERIAL=slot", "ID_FS_UUID=u");
    system.mount(mountLine("2:1", "/m/card"));
    EXPECT_EQ(system.update(), "+D");
    system.changeCard(2, "ID_FS_UUID=v");
    qo::DriveInfo info;
    EXPECT_FALSE(system.drives.look(u'D', info));
    EXPECT_EQ(system.update(), "-D+E");
    ASSERT_TRUE(system.drives.look(u'E', info));
    EXPECT_EQ(info.id, CString(u"slot-v"));
}

TEST(PosixDrives, OfTwoDisksWithOneIdTheFirstIsThatDrive)
{
    System system;
    system.addDisk("sdb", 2, true, "ID_BUS=usb;ID_SERIAL=same", "ID_FS_UUID=u");
    system.addDisk("sdc", 3, true, "ID_BUS=usb;ID_SERIAL=same", "ID_FS_UUID=u");
    system.mount(mountLine("3:1", "/m/three"));
    EXPECT_EQ(system.update(), "+D");
    system.mount(mountLine("2:1", "/m/two") + mountLine("3:1", "/m/three"));
    EXPECT_EQ(system.update(), "");
    EXPECT_EQ(system.map.toSystem(u"D:\\x"), "/m/three/x");
    system.mount(mountLine("2:1", "/m/two"));
    EXPECT_EQ(system.update(), "+D");
    EXPECT_EQ(system.map.toSystem(u"D:\\x"), "/m/two/x");
}

TEST(PosixDrives, TheSystemsOwnDiskAndThoseThatAreLeftAloneGetNoLetter)
{
    System system;
    system.addDisk("sdb", 2, true, "ID_BUS=usb;ID_SERIAL=system", "ID_FS_UUID=u");
    system.addDisk("sdc", 3, true, "ID_BUS=usb;ID_SERIAL=own", "ID_FS_UUID=v");
    system.addDisk("sdd", 4, true, "ID_BUS=usb;ID_SERIAL=boot", "ID_FS_UUID=w");
    system.mount(mountLine("2:1", "/m/more") + mountLine("2:0", "/") + mountLine("3:1", "/m/own") +
                 mountLine("4:1", "/m/most") + mountLine("4:0", "/boot/efi"));
    const auto isOwn = [](const CString& folder) { return folder == u"C:\\m\\own"; };
    EXPECT_EQ(system.update(isOwn), "");
    EXPECT_EQ(system.map.fromSystem("/m/own/x"), CString(u"C:\\m\\own\\x"));
    const auto mounted = system.drives.mounted();
    ASSERT_EQ(mounted.size(), 1U);
    EXPECT_EQ(mounted[0].point + " " + mounted[0].source, "/m/own /dev/sdx1");
    // So is each other place of that disk, even one that shows a folder of it alone.
    const std::string other = mountLine("3:1", "/m/other");
    system.mount(other + mountLine("3:1", "/m/own"));
    EXPECT_EQ(system.update(isOwn), "");
    system.mount(other + mountLine("3:1", "/m/own", "/Music"));
    EXPECT_EQ(system.update(isOwn), "");
    system.mount(mountLine("3:1", "/m/own"));
    // A disk that had a letter before it got a root folder is left alone from then on.
    EXPECT_EQ(system.update(), "+D");
    EXPECT_EQ(system.update(isOwn), "-D");
    EXPECT_EQ(system.map.fromSystem("/m/own/x"), CString(u"C:\\m\\own\\x"));
}
