#pragma once

#include "support/TempDir.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

/// Real disks for a test: images of file systems, mounted by loop devices, of which udev is said to
/// know that they are sticks. The mounts are this process's and its children's alone. Needs an
/// administrator and a system that can do it; see problem.
class Sticks
{
public:
    explicit Sticks(const TempDir& dir) : m_dir(dir)
    {
        if (::geteuid() != 0 || ::unshare(CLONE_NEWNS) != 0 ||
            ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", "/run", "tmpfs", 0, nullptr) != 0)
            problem = "disks can be mounted by the administrator alone";
        else
            std::filesystem::create_directories("/run/udev/data");
    }
    ~Sticks()
    {
        if (!problem.empty())
            return;
        run("umount -l '" + m_dir.path("m") + "'/* 2>/dev/null");
    }
    Sticks(const Sticks&) = delete;
    Sticks& operator=(const Sticks&) = delete;

    /// A stick of that label and size, not mounted yet: with FAT, as sticks have it, where the
    /// system knows that.
    void make(const std::string& name, int megabytes = 16)
    {
        const std::string image = m_dir.path(name + ".img");
        std::ofstream(image).close();
        std::filesystem::resize_file(image, std::uintmax_t(megabytes) << 20U);
        const std::string program = hasFat() ? "mkfs.vfat" : "mkfs.ext4 -q";
        if (!run("PATH=$PATH:/sbin:/usr/sbin " + program + " '" + image + "' >/dev/null 2>&1"))
            problem = "there is no " + program;
    }
    std::string image(const std::string& name) const { return m_dir.path(name + ".img"); }
    /// Plugs it in at dir/m/place, with that serial number; the system path of the place.
    std::string plug(const std::string& name, const std::string& place, const std::string& serial)
    {
        const std::string point = m_dir.path("m/" + place);
        std::filesystem::create_directories(point);
        if (!run("mount -o loop '" + m_dir.path(name + ".img") + "' '" + point + "' 2>/dev/null"))
        {
            problem = "no loop device can be mounted";
            return point;
        }
        std::ofstream("/run/udev/data/b" + numberAt(point))
            << "E:ID_BUS=usb\nE:ID_SERIAL=" << serial << "\nE:ID_FS_UUID=u\nE:ID_FS_LABEL=" << name
            << "\n";
        return point;
    }
    static bool unplug(const std::string& point) { return run("umount -l '" + point + "'"); }

    static bool hasFat()
    {
        std::ifstream list("/proc/filesystems");
        const std::string text{std::istreambuf_iterator<char>(list), {}};
        return text.find("vfat") != std::string::npos;
    }

    std::string problem; ///< why there are no disks; "" when there are

private:
    static bool run(const std::string& command)
    {
        return std::system(command.c_str()) == 0; // NOLINT(concurrency-mt-unsafe)
    }
    /// "7:0" of what is mounted there.
    static std::string numberAt(const std::string& point)
    {
        std::ifstream table("/proc/self/mountinfo");
        std::string number;
        for (std::string line; std::getline(table, line);)
        {
            if (line.find(" " + point + " ") == std::string::npos)
                continue;
            std::istringstream fields(line);
            fields >> number >> number >> number;
        }
        return number;
    }

    const TempDir& m_dir;
};
