#include "core/collection/DiskMove.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"

#include <QoKernel/Inside.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <set>

namespace qo::host
{
namespace
{
/// Whether a disk that takes both spellings for one name has the same file under both.
bool isSameFile(const CString& a, const CString& b)
{
    struct stat first;
    struct stat second;
    return a.CompareNoCase(b) == 0 && ::lstat(toSystemPath(a).c_str(), &first) == 0 &&
           ::lstat(toSystemPath(b).c_str(), &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

int renameOnDisk(const CString& from, const CString& to)
{
    const int error = fileSystem().moveFileNoReplace(from, to);
    return error == EEXIST && isSameFile(from, to) ? fileSystem().moveFile(from, to) : error;
}

/// Whether such an error can only come of what is written to.
bool isOfTarget(int error)
{
    return error == ENOSPC || error == EDQUOT || error == EFBIG || error == EROFS;
}

bool isAcrossDevices(const std::string& from, const std::string& to)
{
    struct stat source;
    struct stat folder;
    return ::lstat(from.c_str(), &source) == 0 && ::stat(parentOf(to).c_str(), &folder) == 0 &&
           source.st_dev != folder.st_dev;
}

/// The folders that something is taken out of when all of it goes. What cannot be listed cannot be
/// copied either.
std::set<std::string> foldersThatLose(const std::string& path)
{
    namespace fs = std::filesystem;
    std::set<std::string> folders{parentOf(path)};
    std::error_code error;
    if (fs::symlink_status(path, error).type() != fs::file_type::directory)
        return folders;
    fs::recursive_directory_iterator entry(
        path, fs::directory_options::skip_permission_denied, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error))
        folders.insert(parentOf(entry->path().string()));
    return folders;
}
} // namespace

DiskMove::DiskMove(const CString& from, const CString& to, Mode mode)
    : m_from(from), m_to(to), m_mode(mode), m_foldersAbove(toSystemPath(from))
{
}

DiskMove::~DiskMove() = default;

std::string DiskMove::stagingName()
{
    return ".qo-" + std::to_string(::getpid());
}

void DiskMove::fail(int error, const std::string& place) const
{
    const std::string source = shownPath(m_from);
    const std::string cause = (place.empty() || place == source ? "" : place + ": ") +
                              (error == EXDEV    ? "it cannot be copied"
                               : error == EEXIST ? "there is already a file of that name"
                                                 : errorWords(error));
    throw HostError(error == ENOENT      ? ExitCode::notFound
                    : error == ECANCELED ? ExitCode::interrupted
                                         : ExitCode::failed,
                    source + " cannot be " + (m_mode == Mode::move ? "moved" : "copied") + " to " +
                        shownPath(m_to) + ": " + cause);
}

void DiskMove::perform(const std::function<bool()>& stop)
{
    if (m_mode == Mode::copy)
        return copyTree(stop);
    const int error = renameOnDisk(m_from, m_to);
    if (error == EXDEV)
        copyTree(stop);
    else if (error != 0)
        fail(error);
}

void DiskMove::check() const
{
    if (m_mode == Mode::move && isAcrossDevices(toSystemPath(m_from), toSystemPath(m_to)))
        needRemovable();
}

/// Better to know before a long copy than after it.
void DiskMove::needRemovable() const
{
    for (const std::string& folder : foldersThatLose(toSystemPath(m_from)))
    {
        if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0)
            fail(errno, "nothing may be taken out of " + folder);
    }
}

void DiskMove::copyTree(const std::function<bool()>& stop)
{
    if (m_mode == Mode::move)
        needRemovable();
    auto copy = std::make_unique<TreeCopy>(m_from, m_to, stagingName());
    if (const int error = copy->copy(stop))
        fail(error, isOfTarget(error) ? parentOf(toSystemPath(m_to)) : copy->failedPath());
    m_copy = std::move(copy);
}

std::string DiskMove::finish()
{
    if (!m_copy || m_mode == Mode::copy)
        return {};
    if (const int error = m_copy->removeSource())
        return shownPath(m_from) + " was copied to " + shownPath(m_to) +
               ", but the old one could not be removed in full: " + m_copy->failedPath() + ": " +
               errorWords(error);
    return {};
}

int DiskMove::undo()
{
    if (m_copy)
        return m_copy->removeTarget();
    const int error = m_foldersAbove.makeAgain();
    return error != 0 ? error : renameOnDisk(m_to, m_from);
}
} // namespace qo::host
