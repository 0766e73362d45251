#include "core/runs/JournalFile.h"

#include "core/base/Disk.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace qo::host
{
namespace
{
constexpr mode_t ownerFile = 0600;
constexpr int openFlags = O_RDWR | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
constexpr off_t largestFile = off_t(4) << 30;
} // namespace

JournalFile::JournalFile(const std::string& path, int descriptor)
    : m_path(path), m_descriptor(descriptor)
{
}

JournalFile::~JournalFile()
{
    ::close(m_descriptor);
}

std::function<void()>& JournalFile::watcher()
{
    static std::function<void()> s_watcher;
    return s_watcher;
}

void JournalFile::fail(const std::string& deed, int error) const
{
    const ExitCode code = error == ENOENT        ? ExitCode::notFound
                          : error == EWOULDBLOCK ? ExitCode::busy
                                                 : ExitCode::failed;
    const std::string cause =
        error == EWOULDBLOCK ? "another process works with it" : errorWords(error);
    throw HostError(code, "the journal " + m_path + " cannot be " + deed + ": " + cause);
}

void JournalFile::lock()
{
    if (::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0)
        fail("used", errno);
}

std::unique_ptr<JournalFile> JournalFile::make(const std::string& path, const std::string& lines)
{
    // It grows under a name that nobody looks for, so that what has its own name is whole.
    const std::string fresh = path + ".new";
    std::unique_ptr<JournalFile> file(
        new JournalFile(path, ::open(fresh.c_str(), openFlags | O_CREAT, ownerFile)));
    if (file->m_descriptor < 0)
        file->fail("made", errno);
    file->lock();
    if (::ftruncate(file->m_descriptor, 0) != 0)
        file->fail("made", errno);
    file->append(lines);
    file->sync();
    int error = fileSystem().moveFileNoReplace(fromSystemPath(fresh), fromSystemPath(path));
    const bool isInPlace = error == 0;
    if (isInPlace)
        error = disk::sync(parentOf(path));
    if (error == 0)
        return file;
    ::unlink(isInPlace ? path.c_str() : fresh.c_str());
    file->fail("made", error);
}

std::unique_ptr<JournalFile> JournalFile::open(const std::string& path)
{
    std::unique_ptr<JournalFile> file(new JournalFile(path, ::open(path.c_str(), openFlags)));
    if (file->m_descriptor < 0)
        file->fail("opened", errno);
    file->lock();
    struct stat st;
    if (::fstat(file->m_descriptor, &st) != 0)
        file->fail("read", errno);
    if (!S_ISREG(st.st_mode) || st.st_size > largestFile)
        file->fail("read", S_ISREG(st.st_mode) ? EFBIG : EINVAL);
    return file;
}

std::string JournalFile::content() const
{
    struct stat st;
    if (::fstat(m_descriptor, &st) != 0)
        fail("read", errno);
    std::string text(static_cast<std::size_t>(st.st_size), '\0');
    for (std::size_t done = 0; done < text.size();)
    {
        const ssize_t got =
            ::pread(m_descriptor, text.data() + done, text.size() - done, static_cast<off_t>(done));
        if (got < 0 && errno != EINTR)
            fail("read", errno);
        if (got == 0)
            text.resize(done);
        done += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    text.resize(text.rfind('\n') + 1);
    return text;
}

void JournalFile::cutTornLine()
{
    if (::ftruncate(m_descriptor, static_cast<off_t>(content().size())) != 0)
        fail("repaired", errno);
}

void JournalFile::append(const std::string& lines)
{
    if (watcher())
        watcher()();
    const off_t before = ::lseek(m_descriptor, 0, SEEK_END);
    for (std::size_t done = 0; done < lines.size();)
    {
        const ssize_t wrote = ::write(m_descriptor, lines.data() + done, lines.size() - done);
        if (wrote < 0 && errno != EINTR)
        {
            const int error = errno;
            // Later lines must not follow half a line.
            if (::ftruncate(m_descriptor, before) != 0)
                errno = error;
            fail("written", error);
        }
        done += wrote > 0 ? static_cast<std::size_t>(wrote) : 0;
    }
    if (watcher())
        watcher()();
}

void JournalFile::sync()
{
    if (::fdatasync(m_descriptor) != 0)
        fail("written", errno);
}
} // namespace qo::host
