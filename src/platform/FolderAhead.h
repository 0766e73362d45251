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
/// Lists the folders that a walk (QoKernel::CFileFinder) is going to ask for, on a thread beside
/// the walk's, and keeps the listings until they are asked for. The walk finds what it would find
/// alone: links are not followed, folders that it passes over are not entered, an error is handed
/// on like entries, and what is not at hand the walk lists itself. A listing is as of the moment
/// when it was made, which may be any time before it is asked for.
class QO_API FolderAhead
{
public:
    static constexpr std::size_t defaultMostHeld = 250000;

    /// Where the walk starts, in its order and spelling. No more folders are listed ahead while
    /// that many entries are held, a listing of any size being the last of them.
    explicit FolderAhead(std::vector<CString> starts, std::size_t mostHeld = defaultMostHeld);
    FolderAhead(const FolderAhead&) = delete;
    FolderAhead& operator=(const FolderAhead&) = delete;

    /// Lists until all was listed or stop() was called. For one thread, which has to be back before
    /// the object goes. Out of memory, it gives up as if stopped.
    void run() noexcept;
    /// Gives up what is held; from now on list() lists itself. run() returns when the listing that
    /// it is in comes to its end. From any thread.
    void stop() noexcept;

    /// In place of IFileSystem::list, for the one thread that walks.
    int list(const CString& folder, std::vector<DirEntry>& entries);

private:
    struct Below
    {
        CString path;
        std::pair<std::uint64_t, std::uint64_t> identity; ///< device and inode
    };
    /// Entries in two blocks of memory: one for each name would have both threads at the heap's
    /// lock.
    struct Packed
    {
        std::vector<FileInfo> infos;
        std::u16string names; ///< a NUL behind each
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

    // All of these hold the lock; those that are given it leave it while they list or wait.
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
    bool m_isFull = false; ///< until half of what was held has been taken
    std::size_t m_held = 0;
    std::size_t m_nextStart = 0;
    /// In the order of the walk, numbered throughout: those before m_nextToList are listed or being
    /// listed, what is below those before m_nextToAdd stands in the list as well.
    std::deque<Folder> m_folders;
    std::size_t m_first = 0;
    std::size_t m_nextToList = 0;
    std::size_t m_nextToAdd = 0;
    std::unordered_map<std::u16string_view, std::size_t> m_numbers; ///< by the folders' own paths
    std::set<std::pair<std::uint64_t, std::uint64_t>> m_visited;    ///< below the present start
};
} // namespace qo
