#include "platform/FileReplacement.h"

#include "platform/FileSystem.h"
#include "platform/TemporaryNames.h"
#include "platform/posix/CopyContent.h"
#include "platform/posix/FileAttributes.h"
#include "platform/posix/PosixFile.h"

#include <climits>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

// prepare() follows links, opens the file and copies it to a SideFile with the same attributes.
// commit() renames the copy over the file. Where that would lose something (hard links, attributes)
// it overwrites the file in place:
//
//   1. write a backup of the old content and flush it      a crash leaves the old file
//   2. reserve room for the new content                    a full disk is noticed here
//   3. overwrite the file and flush it                     a crash leaves the backup beside it
//   4. on failure overwrite it again from the backup

namespace qo
{
namespace
{
/// The folder of a path with its closing slash.
std::string folderOf(const std::string& path)
{
    return path.substr(0, path.rfind('/') + 1);
}

/// The name of a backup, cut between two UTF-8 characters to the length that the folder allows. It
/// does not end with the original's extension, so nothing takes it for another song.
std::string backupName(const std::string& folder, const std::string& name)
{
    constexpr char end = '~';
    const long found = ::pathconf(folder.c_str(), _PC_NAME_MAX);
    std::size_t length = (found > 1 ? static_cast<std::size_t>(found) : NAME_MAX) - 1;
    if (name.size() <= length)
        return name + end;
    while (length > 0 && (name[length] & 0xC0) == 0x80)
        --length;
    return name.substr(0, length) + end;
}

/// A new file beside another one; removed at the end unless keep() is called.
class SideFile
{
public:
    SideFile() = default;
    ~SideFile()
    {
        if (m_file)
            ::unlink(m_path.c_str());
    }
    SideFile(const SideFile&) = delete;
    SideFile& operator=(const SideFile&) = delete;

    int makeBeside(const std::string& target)
    {
        m_path = temporaryBeside(target);
        return take(::mkostemp(m_path.data(), O_CLOEXEC));
    }
    /// Under a name that shows whose content it is, for whoever finds it after a crash.
    int makeBackupOf(const std::string& target)
    {
        constexpr int tries = 100;
        const std::string folder = folderOf(target);
        const std::string name = target.substr(folder.size());
        int error = EEXIST;
        // An existing backup may be the only copy of a file, so it is not touched.
        for (int i = 1; i <= tries && error == EEXIST; ++i)
        {
            const std::string number = i == 1 ? "" : std::to_string(i) + "-";
            m_path = folder + backupName(folder, ".qo-backup-" + number + name);
            error = take(::open(m_path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        }
        return error;
    }
    void keep() { m_file.reset(); }

    PosixFile& file() { return *m_file; }
    int descriptor() const { return m_file->descriptor(); }
    const std::string& path() const { return m_path; }

private:
    int take(int descriptor)
    {
        if (descriptor < 0)
            return errno;
        m_file = std::make_unique<PosixFile>(descriptor);
        return 0;
    }

    std::string m_path;
    std::unique_ptr<PosixFile> m_file;
};

/// Opens a regular file without following a link at its end; null, with errno, for anything else.
std::unique_ptr<PosixFile> openRegular(const std::string& path, int flags, struct stat& st)
{
    const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (descriptor < 0)
        return nullptr;
    auto file = std::make_unique<PosixFile>(descriptor);
    if (::fstat(descriptor, &st) != 0)
        return nullptr;
    if (S_ISREG(st.st_mode))
        return file;
    errno = EINVAL;
    return nullptr;
}

/// Whether both are the same file with the same content, by inode, size and write time.
bool sameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

/// Flushes the folder of a file, so that a rename in it lasts. Failures are ignored: after a power
/// cut the name means the old or the new content, and both are complete.
void syncFolder(const std::string& target)
{
    const int descriptor = ::open(folderOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0)
        PosixFile(descriptor).sync();
}

/// Gives a file the content of another and flushes it.
int overwrite(PosixFile& from, PosixFile& to)
{
    struct stat st;
    if (::fstat(from.descriptor(), &st) != 0)
        return errno;
    if (const int error = copyContent(from, to); error != 0)
        return error;
    if (::ftruncate(to.descriptor(), st.st_size) != 0)
        return errno;
    return to.sync();
}
} // namespace

struct FileReplacement::State
{
    explicit State(const CString& path) : given(toSystemPath(path)) {}

    int overwriteInPlace();
    /// Reserves room, so that a full disk is noticed before the first byte of the file is
    /// overwritten.
    int makeRoom(PosixFile& file) const;
    /// Keeps the first error number; always false, so that a caller can return it.
    bool failed(int error)
    {
        copyError = copyError != 0 ? copyError : error;
        return false;
    }

    std::string given;
    std::string target; ///< the given path with all links followed
    std::string left;
    struct stat before = {};
    std::unique_ptr<PosixFile> source;
    SideFile copy;
    bool inPlace = false;
    int copyError = 0;
};

FileReplacement::FileReplacement(const CString& path) : m_state(std::make_unique<State>(path)) {}

FileReplacement::~FileReplacement() = default;

int FileReplacement::prepare(const std::function<bool()>& stop)
{
    State& state = *m_state;
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(state.given.c_str(), nullptr),
                                                           &std::free);
    if (!real)
        return errno;
    state.target = real.get();
    if (::access(state.target.c_str(), W_OK) != 0)
        return errno;
    state.source = openRegular(state.target, O_RDONLY, state.before);
    if (!state.source)
        return errno;
    if (const int error = state.copy.makeBeside(state.target); error != 0)
        return error;
    // The source stays open, so the backup later reads this very file, even if its name is
    // replaced.
    const int from = state.source->descriptor();
    // Some file systems can share the blocks of the copy with the file; others need a real copy.
    if (::ioctl(state.copy.descriptor(), FICLONE, from) != 0)
    {
        if (const int error = copyContent(*state.source, state.copy.file(), stop); error != 0)
            return error;
    }
    state.inPlace =
        state.before.st_nlink > 1 || !copyAttributes(from, state.before, state.copy.descriptor());
    return 0;
}

const std::string& FileReplacement::copyPath() const
{
    return m_state->copy.path();
}

const std::string& FileReplacement::leftBehind() const
{
    return m_state->left;
}

std::int64_t FileReplacement::copySize()
{
    struct stat st;
    if (::fstat(m_state->copy.descriptor(), &st) == 0)
        return st.st_size;
    m_state->failed(errno);
    return -1;
}

/// Reads at a position, so no other reader of the copy is disturbed.
std::int64_t FileReplacement::readCopy(std::int64_t position, void* buffer, std::size_t size)
{
    auto* bytes = static_cast<char*>(buffer);
    std::size_t done = 0;
    while (done < size)
    {
        const ssize_t got = ::pread(m_state->copy.descriptor(),
                                    bytes + done,
                                    size - done,
                                    position + static_cast<off_t>(done));
        if (got == 0)
            break;
        if (got > 0)
            done += static_cast<std::size_t>(got);
        else if (errno != EINTR)
        {
            m_state->failed(errno);
            return -1;
        }
    }
    return static_cast<std::int64_t>(done);
}

bool FileReplacement::writeCopy(std::int64_t position, const void* data, std::size_t size)
{
    if (m_state->copyError != 0)
        return false;
    const auto* bytes = static_cast<const char*>(data);
    std::size_t done = 0;
    while (done < size)
    {
        const ssize_t put = ::pwrite(m_state->copy.descriptor(),
                                     bytes + done,
                                     size - done,
                                     position + static_cast<off_t>(done));
        if (put > 0)
            done += static_cast<std::size_t>(put);
        else if (put == 0 || errno != EINTR)
            return m_state->failed(put == 0 ? EIO : errno);
    }
    return true;
}

bool FileReplacement::resizeCopy(std::int64_t size)
{
    if (m_state->copyError != 0)
        return false;
    return ::ftruncate(m_state->copy.descriptor(), size) == 0 || m_state->failed(errno);
}

int FileReplacement::copyError() const
{
    return m_state->copyError;
}

int FileReplacement::commit()
{
    State& state = *m_state;
    if (state.copyError != 0)
        return state.copyError;
    if (const int error = state.copy.file().sync(); error != 0)
        return error;
    // The file may have been changed or replaced while the copy was edited.
    struct stat now;
    if (::lstat(state.target.c_str(), &now) != 0)
        return errno;
    if (!sameFile(now, state.before))
        return EBUSY;
    if (state.inPlace)
        return state.overwriteInPlace();
    if (::rename(state.copy.path().c_str(), state.target.c_str()) != 0)
        return errno;
    state.copy.keep();
    syncFolder(state.target);
    return 0;
}

/// If reserving stops half-way, the file is cut to its old size again; its content is untouched.
int FileReplacement::State::makeRoom(PosixFile& file) const
{
    struct stat wanted;
    if (::fstat(copy.descriptor(), &wanted) != 0)
        return errno;
    if (wanted.st_size <= before.st_size)
        return 0;
    const int error = ::posix_fallocate(file.descriptor(), 0, wanted.st_size);
    // Some file systems cannot reserve room; there only the backup protects the content.
    if (error == 0 || error == EINVAL || error == EOPNOTSUPP)
        return 0;
    return ::ftruncate(file.descriptor(), before.st_size) == 0 ? error : errno;
}

int FileReplacement::State::overwriteInPlace()
{
    SideFile backup;
    if (const int error = backup.makeBackupOf(target); error != 0)
        return error;
    if (const int error = overwrite(*source, backup.file()); error != 0)
        return error;
    struct stat st;
    const auto file = openRegular(target, O_WRONLY, st);
    if (!file)
        return errno;
    if (!sameFile(st, before))
        return EBUSY;
    if (const int error = makeRoom(*file); error != 0)
        return error;
    // From here on a crash may leave a mixed file, so the backup's name must be on the disk.
    syncFolder(target);
    const int error = overwrite(copy.file(), *file);
    if (error != 0 && overwrite(backup.file(), *file) != 0)
    {
        left = backup.path();
        backup.keep();
    }
    return error;
}
} // namespace qo
