#pragma once

#include "platform/FileSystem.h"
#include "types/StringArray.h"

#include <set>
#include <utility>
#include <vector>

namespace QoKernel
{
/// Which entries a walk reports. All conditions that m_flags switches on must hold.
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

    bool takes(const qo::DirEntry& entry) const;

    int m_flags = everything;
    int m_typeMask = anyType;
    CString m_extension;            ///< without dot, in any case
    std::uint32_t m_attributes = 0; ///< at least one of these bits must be set
    std::int64_t m_minSize = 0;     ///< bytes; all bounds are inclusive
    std::int64_t m_maxSize = 0;
    FILETIME m_minCreated;
    FILETIME m_maxCreated;
    FILETIME m_minAccessed;
    FILETIME m_maxAccessed;
    FILETIME m_minModified;
    FILETIME m_maxModified;
};

struct ScanOptions
{
    CString folder;
    bool recursive = false;
};

/// Walks folders breadth first. The entries of a folder come in the file system's sorted order; a
/// folder that cannot be opened is passed over (see qo::folderErrors()). A folder that is reached a
/// second time, through a link or a mount, is not walked again; one that a trash or the kernel's
/// own data is kept in is not walked at all. Neither "." nor ".." is ever delivered by the system.
class QO_API CFileFinder
{
public:
    CFileFinder() = default;
    CFileFinder(const CFileFinder&) = delete;
    CFileFinder& operator=(const CFileFinder&) = delete;

    /// True when a first matching entry stands ready. A starting folder that cannot be opened
    /// yields nothing.
    bool findFirst(const ScanOptions& options, const CFileFilter& filter);
    bool findNext();

    /// Of the current entry; only after a call that returned true.
    const CString& getFileName() const { return current().name; }
    CString getFilePath() const;
    CString getFileExt() const;
    std::int64_t getFileSize() const { return current().info.size; }
    const qo::FileInfo& getFileInfo() const { return current().info; }

private:
    const qo::DirEntry& current() const { return m_entries[m_next - 1]; }
    bool listFolder(const CString& folder);
    bool isPassedOver(const CString& name) const;

    std::vector<CString> m_ownFolders; ///< the kernel's: nothing in them is the user's music
    CString m_baseFolder;              ///< being listed, with its closing backslash
    bool m_recursive = false;
    CFileFilter m_filter;
    std::vector<qo::DirEntry> m_entries;
    std::vector<bool> m_isNew; ///< for each entry: a folder to be walked
    std::size_t m_next = 0;
    CStringArray m_pendingDirs; ///< in order of discovery
    int m_nextPending = 0;
    std::set<std::pair<std::uint64_t, std::uint64_t>> m_visited; ///< device and inode
};
} // namespace QoKernel
