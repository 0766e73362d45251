#pragma once

#include "platform/FileSystem.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qo
{
/// Lists the folders that a walk (QoKernel::CFileFinder) is going to ask for, on a second thread,
/// and keeps the listings until the walk asks for them. The walk finds the same as without: links
/// are not followed, folders that it skips are not entered, errors are passed on, and what is not
/// available the walk lists itself. A listing may be as old as the time since run() began.
///
///   second thread:  list A, list B, list A/x, ...       (run())
///   walk:           takes the listing of A, of B, ...   (list())
class QO_API FolderAhead
{
public:
    static constexpr std::size_t defaultMostHeld = 250000;

    /// The folders at which the walk starts, in its order and spelling. While mostHeld entries or
    /// more are kept, no further folder is listed.
    explicit FolderAhead(std::vector<CString> starts, std::size_t mostHeld = defaultMostHeld);
    FolderAhead(const FolderAhead&) = delete;
    FolderAhead& operator=(const FolderAhead&) = delete;

    /// Lists until everything is listed or stop() is called. For one thread, which must have
    /// returned before the object is destroyed. Gives up, as if stopped, when memory runs out.
    void run() noexcept;
    /// Drops the kept listings; from now on list() lists by itself. run() returns after the listing
    /// it is working on. From any thread.
    void stop() noexcept;

    /// Used by the one walking thread instead of IFileSystem::list.
    int list(const CString& folder, std::vector<DirEntry>& entries);

private:
    struct Below
    {
        CString path;
        std::pair<std::uint64_t, std::uint64_t> identity; ///< device and inode
    };
    /// The entries of a folder in two blocks of memory: with a text for each name both threads
    /// would wait for each other at the heap's lock.
    struct Packed
    {
        std::vector<FileInfo> infos;
        std::u16string names; ///< with a NUL after each
    };
    struct Folder
    {
        CString path;
        bool isListed = false;
        int error = 0;
        std::size_t held = 0;
        Packed entries;
        std::vector<Below> below;
    };
    using Lock = std::unique_lock<std::mutex>;

    // All of these are called with the lock held; those that get it as an argument release it while
    // they list or wait.
    bool take(const CString& folder, std::vector<DirEntry>& entries, int& error);
    bool find(const CString& folder, std::size_t& number);
    bool waitForWork(Lock& lock);
    void listNext(Lock& lock, std::vector<DirEntry>& scratch);
    std::vector<Below> foldersBelow(const CString& folder,
                                    const std::vector<DirEntry>& entries) const;
    void add(const CString& path);
    void addWhatIsBelow();
    void passOver(std::size_t end);
    bool hasRoom();
    static Packed pack(const std::vector<DirEntry>& entries);
    static void unpack(const Packed& packed, std::vector<DirEntry>& entries);
    std::size_t end() const { return m_first + m_folders.size(); }
    Folder& at(std::size_t number) { return m_folders[number - m_first]; }

    const std::vector<CString> m_starts;
    const std::vector<CString> m_ownFolders;
    const std::size_t m_mostHeld;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isFull = false; ///< no more listing until half of it was taken
    std::size_t m_held = 0;
    std::size_t m_nextStart = 0;
    /// In the order of the walk, with running numbers. Folders before m_nextToList are listed or
    /// being listed; the sub-folders of those before m_nextToAdd are in this list too.
    std::deque<Folder> m_folders;
    std::size_t m_first = 0;
    std::size_t m_nextToList = 0;
    std::size_t m_nextToAdd = 0;
    std::unordered_map<std::u16string_view, std::size_t>
        m_numbers; ///< by path; the texts belong to m_folders
    std::set<std::pair<std::uint64_t, std::uint64_t>> m_visited; ///< below the current start folder
};
} // namespace qo
