#pragma once

#include <functional>
#include <string>

struct stat;

namespace qo
{
/// Removes the folder of that name in an open one, with all it holds and without following a link.
/// The path is that of the folder, for the calls alone: onFailure gets what stays, mayRemove is
/// asked for each folder before anything in it goes. False when the folder itself stays.
class TreeRemover
{
public:
    std::function<bool(const struct stat&)> mayRemove;
    std::function<void(const std::string& path, bool isFolder, int error)> onFailure;

    bool remove(int parent, const char* name, const std::string& path) const;

private:
    bool empty(int parent, const char* name, const std::string& path) const;
    bool removeEntry(int folder, const std::string& name, const std::string& path) const;
    bool failed(const std::string& path, bool isFolder, int error) const;
};
} // namespace qo
