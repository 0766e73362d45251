#include "support/OtherDisk.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

OtherDisk::OtherDisk()
{
    std::string name = "/dev/shm/qo-test-XXXXXX";
    struct stat there;
    struct stat here;
    if (::stat("/dev/shm", &there) == 0 && ::stat(QO_TEST_TEMP, &here) == 0 &&
        there.st_dev != here.st_dev && ::mkdtemp(name.data()))
        path = name;
}

OtherDisk::~OtherDisk()
{
    if (!path.empty())
        std::filesystem::remove_all(path);
}
