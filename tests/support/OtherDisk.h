#pragma once

#include <string>

/// A folder on another file system than the build's, gone at the end; path is empty where there is
/// none.
class OtherDisk
{
public:
    OtherDisk();
    ~OtherDisk();
    OtherDisk(const OtherDisk&) = delete;
    OtherDisk& operator=(const OtherDisk&) = delete;

    std::string path;
};
