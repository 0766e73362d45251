#pragma once

#include "types/Export.h"
#include "types/FileTime.h"
#include "types/String.h"

#include <memory>
#include <string>
#include <vector>

namespace qo
{
/// Attribute bits of a file, as the kernel's filters and callers know them.
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
    other ///< devices, pipes, sockets: never opened
};

/// What the system says of a file; links are followed.
struct FileInfo
{
    FileKind kind = FileKind::other;
    bool isLink = false; ///< the name itself is a symbolic link; only a listing knows it
    std::uint32_t attributes = 0;
    std::int64_t size = 0; ///< bytes
    FILETIME created;      ///< birth time, else the smaller of change and write time
    FILETIME accessed;
    FILETIME modified;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t links = 0; ///< hard links
};

struct DirEntry
{
    CString name; ///< in collection form, one component
    FileInfo info;
};

/// How a path is looked up. Only reading and existence tests may use anyCase.
enum class Spelling : std::uint8_t
{
    exact,
    anyCase ///< exact first; failing that, the only entry that differs in case alone
};

/// An open file; closed by the destructor. Not for several threads at once.
class QO_API IFile
{
public:
    virtual ~IFile();
    /// Bytes read, 0 at the end, -1 on failure (see error()).
    virtual std::int64_t read(void* buffer, std::size_t size) = 0;
    /// All of it or false.
    virtual bool write(const void* data, std::size_t size) = 0;
    virtual bool seek(std::int64_t position) = 0;
    virtual bool seekToEnd() = 0;
    virtual std::int64_t position() const = 0;
    /// Bytes in the file when it was opened.
    virtual std::int64_t sizeAtOpen() const = 0;
    /// The system's error number of the last failure.
    virtual int error() const = 0;
};

/// Whether replaceFile() waits until the disk has the content.
enum class Durability : std::uint8_t
{
    durable,
    canBeMadeAgain ///< for caches: still never a part, but a power cut may lose it
};

enum class OpenMode : std::uint8_t
{
    read,         ///< must exist; never blocks, refuses what is no regular file
    createAlways, ///< new or emptied, readable by its owner only
    append,       ///< made when absent, writing starts at the end
    update        ///< must exist; reads and writes from the start
};

/// The file services of the system. Paths are in collection form (drive or network paths). Every
/// call answers with the system's error number, 0 for success, unless it says otherwise. Safe from
/// any thread.
class QO_API IFileSystem
{
public:
    virtual ~IFileSystem();

    virtual int info(const CString& path, Spelling spelling, FileInfo& info) = 0;
    bool exists(const CString& path);
    bool isDirectory(const CString& path);

    /// The entries of a folder without "." and "..", sorted by name without regard to case, then
    /// exactly. A link to nowhere is of kind other; an entry that vanishes meanwhile is left out,
    /// and so are temporary files of this program (TemporaryNames.h). A failure, also to look at an
    /// entry whose name can be read, delivers what it found.
    virtual int list(const CString& folder, std::vector<DirEntry>& entries) = 0;

    /// Null on failure, with the error number.
    virtual std::unique_ptr<IFile> open(const CString& path, OpenMode mode, int& error) = 0;

    /// One level, readable by its owner only.
    virtual int makeDirectory(const CString& path) = 0;
    /// With its parents; an existing folder is a success.
    virtual int makeDirectories(const CString& path) = 0;
    /// Removes the name itself, never what a link points to.
    virtual int removeFile(const CString& path) = 0;
    virtual int removeDirectory(const CString& path) = 0;
    /// Overwrites an existing target.
    virtual int moveFile(const CString& from, const CString& to) = 0;
    /// EEXIST, with both as they were, if the target exists.
    virtual int moveFileNoReplace(const CString& from, const CString& to) = 0;
    /// The content and the times; overwrites an existing target. The target is complete or, after
    /// a failure, as it was.
    virtual int copyFile(const CString& from, const CString& to) = 0;
    /// Writes a temporary file beside the target, makes it durable and puts it in the target's
    /// place: readers see the old content or the new, never a part. Owner-only permissions.
    virtual int replaceFile(const CString& path,
                            const void* data,
                            std::size_t size,
                            Durability durability = Durability::durable) = 0;
    /// Gives the owner write permission; touches nothing else.
    virtual int makeWritable(const CString& path) = 0;

    /// Whether the name itself is a symbolic link, wherever it leads.
    virtual bool isLink(const CString& path) = 0;
};

/// The path for calls into the system or a third-party library: bytes of a POSIX path. Empty when
/// the path maps to nothing.
QO_API std::string toSystemPath(const CString& path);

/// The one collection form of an absolute system path.
QO_API CString fromSystemPath(const std::string& path);

/// The process's current folder, in collection form.
QO_API CString currentFolder();

/// The system's message for an error number, led by "%u: ".
QO_API CString errorText(int error);

/// Makes any foreign name (of a peer, plug-in, device, tag or invitation) one safe local name: no
/// separators, controls or reserved forms, at most 255 bytes in UTF-8 with the extension kept; "_"
/// when nothing is left.
QO_API CString safeLocalName(const CString& name);
} // namespace qo
