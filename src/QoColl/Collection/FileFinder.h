#pragma once

#include "platform/FolderLister.h"
#include "types/StringArray.h"

#include <deque>
#include <set>
#include <utility>
#include <vector>

namespace QoKernel
{
/// Which entries a walk reports: those that fulfil all conditions which m_flags switches on.
/// everything and everythingButDots are whole values and not bits.
class QO_API CFileFilter
{
public:
    enum EFlags : int
    {
        everything = -1,
        everythingButDots = -2,
        testType = 1,
        testExtension = 2,
        testAttributes = 4,
        testMinSize = 8,
        testMaxSize = 16,
        testMinCreated = 32,
        testMaxCreated = 64,
        testMinAccessed = 128,
        testMaxAccessed = 256,
        testMinModified = 512,
        testMaxModified = 1024
    };
    enum ETypes : int
    {
        anyType = -1,
        plainFiles = 1,
        directories = 2,
        dotEntries = 4
    };

    /// Whether the entry fulfils the conditions.
    bool takes(const qo::DirEntry& entry) const;

    int m_flags = everything;
    int m_typeMask = anyType;
    CString m_extension;            ///< without dot, in any case
    std::uint32_t m_attributes = 0; ///< at least one of these bits must be set
    std::int64_t m_minSize = 0;     ///< bytes; all limits are inclusive
    std::int64_t m_maxSize = 0;
    FILETIME m_minCreated;
    FILETIME m_maxCreated;
    FILETIME m_minAccessed;
    FILETIME m_maxAccessed;
    FILETIME m_minModified;
    FILETIME m_maxModified;
};

/// Where a walk starts, and whether it goes into sub-folders.
struct ScanOptions
{
    CString folder;
    bool recursive = false;
    qo::IFolderLister* lister = nullptr; ///< null for the file system itself
    /// Device and inode of folders that are not entered, whatever way leads to them; may be null.
    const std::set<std::pair<std::uint64_t, std::uint64_t>>* notEntered = nullptr;
};

/// Walks folders breadth first. The entries of a folder come in the sorted order of the file
/// system; a folder that cannot be opened is skipped, which a lister gets to know. A folder that is
/// reached a second time, through a link or a mount, is not walked again; links to folders wait
/// until all that can be reached without them was walked, so that a file has the path that it has
/// by itself. Trash folders and the kernel's own folders are not walked at all. "." and ".." are
/// never reported.
///
///   Music/{B/{x.mp3}, A/{y.mp3, link -> ../B}, z.mp3} gives z.mp3, A/y.mp3, B/x.mp3: A/link leads
///   to a folder that is known by its own path.
class QO_API CFileFinder
{
public:
    CFileFinder() = default;
    CFileFinder(const CFileFinder&) = delete;
    CFileFinder& operator=(const CFileFinder&) = delete;

    /// True when there is a first matching entry, which is then the current one. A start folder
    /// that cannot be opened gives false.
    bool findFirst(const ScanOptions& options, const CFileFilter& filter);
    /// Advances to the next matching entry; false at the end.
    bool findNext();

    /// These describe the current entry, so they are valid only after a call that returned true.
    const CString& getFileName() const { return current().name; }
    CString getFilePath() const;
    CString getFileExt() const;
    std::int64_t getFileSize() const { return current().info.size; }
    const qo::FileInfo& getFileInfo() const { return current().info; }

private:
    using Identity = std::pair<std::uint64_t, std::uint64_t>; ///< device and inode
    struct Link
    {
        CString path;
        Identity target;
    };

    const qo::DirEntry& current() const { return m_entries[m_next - 1]; }
    /// Reads the entries of a folder; false if it cannot be opened.
    bool listFolder(const CString& folder);
    bool isPassedOver(const CString& name) const;
    bool listNext();

    std::vector<CString> m_ownFolders; ///< folders of the kernel, which hold no music of the user
    CString m_baseFolder; ///< the folder that is being listed, with a closing backslash
    bool m_recursive = false;
    CFileFilter m_filter;
    std::vector<qo::DirEntry> m_entries;
    std::size_t m_next = 0;
    qo::IFolderLister* m_lister = nullptr;
    std::deque<CString> m_pendingDirs; ///< folders to be walked, in the order of discovery
    std::deque<Link> m_pendingLinks;   ///< likewise; they come last
    std::set<Identity> m_visited;
};
} // namespace QoKernel
