#include "platform/FolderAhead.h"

#include "platform/FolderNames.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"

#include <algorithm>
#include <utility>

// Two threads work on one list of folders in the order of the walk: the second thread in run()
// lists the next one that is not listed yet, the walk takes listings from the front. When the walk
// catches up, it lists a folder itself instead of waiting.

namespace qo
{
FolderAhead::FolderAhead(std::vector<CString> starts, std::size_t mostHeld)
    : m_starts(std::move(starts)), m_ownFolders(specialFolders().ownFolders()), m_mostHeld(mostHeld)
{
    addWhatIsBelow();
}

void FolderAhead::run() noexcept
{
    try
    {
        std::vector<DirEntry> scratch;
        Lock lock(m_mutex);
        while (waitForWork(lock))
            listNext(lock, scratch);
    }
    catch (...)
    {
        stop();
    }
}

void FolderAhead::stop() noexcept
{
    const Lock lock(m_mutex);
    m_first = m_nextToList = m_nextToAdd = end();
    m_nextStart = m_starts.size();
    m_held = 0;
    m_numbers.clear();
    m_folders.clear();
    m_visited.clear();
    m_changed.notify_all();
}

int FolderAhead::list(const CString& folder, std::vector<DirEntry>& entries)
{
    int error = 0;
    try
    {
        if (take(folder, entries, error))
            return error;
    }
    catch (...)
    {
        stop();
    }
    return fileSystem().list(folder, entries);
}

bool FolderAhead::take(const CString& folder, std::vector<DirEntry>& entries, int& error)
{
    Lock lock(m_mutex);
    std::size_t number = 0;
    if (!find(folder, number))
        return false;
    const auto isKept = [&] { return number >= m_first; };
    while (isKept() && !at(number).isListed)
    {
        // The walk has caught up: it helps instead of waiting.
        if (m_nextToList == number || (m_nextToList < end() && hasRoom()))
            listNext(lock, entries);
        else
            m_changed.wait(lock);
    }
    if (!isKept())
        return false;
    error = at(number).error;
    const Packed packed = std::move(at(number).entries);
    passOver(number + 1);
    lock.unlock();
    unpack(packed, entries);
    return true;
}

bool FolderAhead::find(const CString& folder, std::size_t& number)
{
    const auto known = m_numbers.find(folder.view());
    if (known != m_numbers.end())
    {
        number = known->second;
        // The walk has the same order, so it has skipped everything before this folder.
        passOver(number);
        return true;
    }
    const auto start = std::find(
        m_starts.begin() + static_cast<std::ptrdiff_t>(m_nextStart), m_starts.end(), folder);
    if (start == m_starts.end())
        return false;
    m_nextStart = static_cast<std::size_t>(start - m_starts.begin());
    number = end();
    passOver(number);
    return true;
}

bool FolderAhead::waitForWork(Lock& lock)
{
    while (m_nextToList < end() ? !hasRoom() : m_nextToAdd < end())
        m_changed.wait(lock);
    return m_nextToList < end();
}

void FolderAhead::listNext(Lock& lock, std::vector<DirEntry>& scratch)
{
    const std::size_t number = m_nextToList++;
    const CString path = at(number).path;
    lock.unlock();
    const int error = fileSystem().list(path, scratch);
    std::vector<Below> below = foldersBelow(path, scratch);
    Packed entries = pack(scratch);
    lock.lock();
    if (number < m_first)
        return;
    Folder& folder = at(number);
    folder.error = error;
    folder.held = entries.infos.size() + below.size() + 1;
    folder.entries = std::move(entries);
    folder.below = std::move(below);
    folder.isListed = true;
    m_held += folder.held;
    addWhatIsBelow();
    m_changed.notify_all();
}

std::vector<FolderAhead::Below>
FolderAhead::foldersBelow(const CString& folder, const std::vector<DirEntry>& entries) const
{
    std::vector<Below> below;
    const CString base = folder.view().ends_with(u'\\') ? folder : folder + u"\\";
    for (const DirEntry& entry : entries)
    {
        const FileInfo& info = entry.info;
        if (info.kind == FileKind::directory && !info.isLink &&
            !isPassedOver(m_ownFolders, base, entry.name))
            below.push_back({base + entry.name, {info.device, info.inode}});
    }
    return below;
}

FolderAhead::Packed FolderAhead::pack(const std::vector<DirEntry>& entries)
{
    Packed packed;
    std::size_t length = 0;
    for (const DirEntry& entry : entries)
        length += entry.name.view().size() + 1;
    packed.infos.reserve(entries.size());
    packed.names.reserve(length);
    for (const DirEntry& entry : entries)
    {
        packed.infos.push_back(entry.info);
        packed.names.append(entry.name.view()).push_back(u'\0');
    }
    return packed;
}

void FolderAhead::unpack(const Packed& packed, std::vector<DirEntry>& entries)
{
    entries.clear();
    entries.reserve(packed.infos.size());
    const char16_t* name = packed.names.c_str();
    for (const FileInfo& info : packed.infos)
    {
        entries.push_back({CString(name), info});
        name += entries.back().name.view().size() + 1;
    }
}

void FolderAhead::add(const CString& path)
{
    m_folders.push_back({path, false, 0, 0, {}, {}});
    if (!m_numbers.try_emplace(m_folders.back().path.view(), end() - 1).second)
        m_folders.pop_back();
}

/// Adds the sub-folders of listed folders, and the next start folder when everything below the one
/// before is known.
void FolderAhead::addWhatIsBelow()
{
    for (;;)
    {
        for (; m_nextToAdd < end() && at(m_nextToAdd).isListed; ++m_nextToAdd)
        {
            const std::vector<Below> below = std::move(at(m_nextToAdd).below);
            for (const Below& folder : below)
            {
                if (m_visited.insert(folder.identity).second)
                    add(folder.path);
            }
        }
        if (m_nextToAdd < end() || m_nextStart == m_starts.size())
            return;
        m_visited.clear();
        add(m_starts[m_nextStart++]);
    }
}

void FolderAhead::passOver(std::size_t end)
{
    for (; m_first < end; ++m_first)
    {
        m_held -= m_folders.front().held;
        m_numbers.erase(m_folders.front().path.view());
        m_folders.pop_front();
    }
    m_nextToList = std::max(m_nextToList, end);
    m_nextToAdd = std::max(m_nextToAdd, end);
    addWhatIsBelow();
    if (m_isFull && hasRoom())
        m_changed.notify_all();
}

bool FolderAhead::hasRoom()
{
    m_isFull = m_held >= m_mostHeld || (m_isFull && m_held > m_mostHeld / 2);
    return !m_isFull;
}
} // namespace qo
