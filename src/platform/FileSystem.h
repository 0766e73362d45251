#pragma once

#include "types/Export.h"
#include "types/FileTime.h"
#include "types/String.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qo
{
/// Attribute bits of a file, with the numbers that hosts of the kernel expect.
namespace attribute
{
constexpr std::uint32_t readOnly = 0x1;
constexpr std::uint32_t hidden = 0x2;
constexpr std::uint32_t directory = 0x10;
constexpr std::uint32_t normal = 0x80;
} // namespace attribute

enum class FileKind : std::uint8_t
{
    regular,
    directory,
    other ///< devices, pipes, sockets; never opened
};

/// Properties of a file; for a link those of its target.
struct FileInfo
{
    FileKind kind = FileKind::other;
    bool isLink = false; ///< the name is a symbolic link; set by list() only
    std::uint32_t attributes = 0;
    std::int64_t size = 0; ///< bytes
    FILETIME created;      ///< birth time, else the earlier of change and write time
    FILETIME accessed;
    FILETIME modified;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t links = 0; ///< hard links
};

/// What stands under a name itself: a link is not followed.
struct NameInfo
{
    enum class Kind : std::uint8_t
    {
        regular,
        directory,
        link,
        other
    };

    Kind kind = Kind::other;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    /// Tells two mounts of one file system apart: nothing can be renamed from one to the other.
    std::uint64_t mount = 0;
    std::uint64_t links = 0;   ///< hard links
    std::int64_t size = 0;     ///< bytes
    std::int64_t modified = 0; ///< nanoseconds since 1970 of the last change of the content
    std::uint32_t mode = 0;    ///< permission bits
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
};

/// An entry of a folder.
struct DirEntry
{
    CString name; ///< in collection form, one component
    FileInfo info;
};

/// How a path is looked up. anyCase is allowed for reading and tests of existence only.
enum class Spelling : std::uint8_t
{
    exact,
    anyCase ///< exact if possible, else the only name that differs in case alone
};

/// An open file, which its destructor closes. Not for several threads at once.
class QO_API IFile
{
public:
    virtual ~IFile();
    /// The number of bytes read, 0 at the end, -1 on failure (see error()).
    virtual std::int64_t read(void* buffer, std::size_t size) = 0;
    /// Writes everything, or returns false.
    virtual bool write(const void* data, std::size_t size) = 0;
    virtual bool seek(std::int64_t position) = 0;
    virtual bool seekToEnd() = 0;
    virtual std::int64_t position() const = 0;
    /// The size in bytes when the file was opened.
    virtual std::int64_t sizeAtOpen() const = 0;
    /// The system's error number of the last failure.
    virtual int error() const = 0;
};

/// Whether replaceFile() waits until the content is on the disk.
enum class Durability : std::uint8_t
{
    durable,
    canBeMadeAgain ///< for caches: complete or absent, but a power cut may lose it
};

/// How a file is opened.
enum class OpenMode : std::uint8_t
{
    read,         ///< must exist; only regular files, so it never blocks
    createAlways, ///< created or emptied; readable by its owner only
    append,       ///< created if absent; writes at the end
    update        ///< must exist; reads and writes from the start
};

/// The file services of the system, as an interface that a test can replace. Paths are in
/// collection form (drive or network paths). Listing a folder and opening a file to read fall back
/// to the only name that differs in case alone; everything else needs the exact name. Functions
/// return the system's error number, 0 for success, unless a comment says otherwise. May be called
/// from any thread.
class QO_API IFileSystem
{
public:
    virtual ~IFileSystem();

    virtual int info(const CString& path, Spelling spelling, FileInfo& info) = 0;
    bool exists(const CString& path);
    bool isDirectory(const CString& path);

    /// The entries of a folder without "." and "..", sorted by name without regard to case, then
    /// exactly. A link without target is of kind other. Left out are an entry that vanishes during
    /// the call and temporary files of this program (TemporaryNames.h). After an error, also one in
    /// looking at an entry, entries contains what was found.
    virtual int list(const CString& folder, std::vector<DirEntry>& entries) = 0;

    /// An open file; null on failure, with the error number.
    virtual std::unique_ptr<IFile> open(const CString& path, OpenMode mode, int& error) = 0;

    /// Creates one folder, for its owner only.
    virtual int makeDirectory(const CString& path) = 0;
    /// Creates a folder with its parents; success if it exists.
    virtual int makeDirectories(const CString& path) = 0;
    /// Removes the name, and never the target of a link.
    virtual int removeFile(const CString& path) = 0;
    virtual int removeDirectory(const CString& path) = 0;
    /// Renames; replaces an existing target.
    virtual int moveFile(const CString& from, const CString& to) = 0;
    /// Renames; EEXIST, with both unchanged, if the target exists.
    virtual int moveFileNoReplace(const CString& from, const CString& to) = 0;
    /// Copies content and times; replaces an existing target. After a failure the target is as
    /// before.
    virtual int copyFile(const CString& from, const CString& to) = 0;
    /// Replaces or creates a file: writes a temporary file beside it, flushes that to the disk and
    /// renames it. Readers see the old content or the new one, never a part. For its owner only.
    virtual int replaceFile(const CString& path,
                            const void* data,
                            std::size_t size,
                            Durability durability = Durability::durable) = 0;
    /// Gives the owner permission to write; changes nothing else.
    virtual int makeWritable(const CString& path) = 0;

    /// Whether the name is a symbolic link, whatever its target.
    virtual bool isLink(const CString& path) = 0;

    /// What stands under exactly that name.
    virtual int look(const CString& path, NameInfo& info) = 0;
    /// The same of what a link of that name leads to.
    virtual int lookThrough(const CString& path, NameInfo& info) = 0;
    /// Gives a folder, not a link to one, its permission bits and, where the user may, its owner.
    virtual int giveRights(const CString& folder,
                           std::uint32_t mode,
                           std::uint32_t owner,
                           std::uint32_t group) = 0;
    /// Whether this user may change the content of the file, or give and take names in the folder:
    /// EACCES, EROFS and the like if not.
    virtual int mayChange(const CString& path) = 0;
    /// Whether this user may take the name out of its folder, also where the folder keeps users
    /// from removing what is another's (sticky bit).
    virtual int mayRemove(const CString& path) = 0;
    /// Whether this user may read the file or list the folder.
    virtual int mayRead(const CString& path) = 0;
    /// A new file or link that is the same as another: content, times and, as far as the file
    /// system can hold them, owner, mode, access lists and extended attributes; a link as a link.
    /// The content is on the disk and was read back and compared when the call returns. EEXIST if
    /// the target exists, EINVAL for what is neither file nor link, ECANCELED when stop, which is
    /// asked for each block and may be empty, says so; a copy that fails leaves no target.
    virtual int
    copyAsNew(const CString& from, const CString& to, const std::function<bool()>& stop) = 0;
    /// Whether two regular files have the same bytes: 0 if so, EIO if not.
    virtual int
    compareFiles(const CString& one, const CString& other, const std::function<bool()>& stop) = 0;
    /// Waits until the disk has the file's content, or the names in the folder.
    virtual int sync(const CString& path) = 0;
    /// Waits until the disk has all that was changed on the folder's file system.
    virtual int syncAll(const CString& folder) = 0;
    /// How many bytes this user can still write on the folder's file system. ENOTSUP where it does
    /// not say.
    virtual int room(const CString& folder, std::uint64_t& bytes) = 0;
};

/// The path for calls to the system or to a library: the bytes of a POSIX path. "" if the path maps
/// to nothing.
QO_API std::string toSystemPath(const CString& path);

/// The collection form of an absolute system path.
QO_API CString fromSystemPath(const std::string& path);

/// The process's current folder, in collection form.
QO_API CString currentFolder();

/// The system's message for an error number: "2: No such file or directory".
QO_API CString errorText(int error);

/// Makes a safe local name from any foreign name (of a peer, plug-in, device, tag or invitation):
/// without separators, control characters and reserved forms, with at most 255 bytes in UTF-8 and
/// its extension kept; "_" if nothing is left.
QO_API CString safeLocalName(const CString& name);
} // namespace qo
