#include "core/collection/PendingTags.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/session/Session.h"
#include "core/store/StoredRecords.h"

#include <algorithm>
#include <memory>

namespace qo::host
{
namespace
{
bool isAlike(const EditedFile& file, std::int64_t size, std::int64_t modified)
{
    return file.size == EditedFile::unknownSize || (file.size == size && file.modified == modified);
}

/// The size and the write time of the file at the path, as a scan would see them.
bool lookAt(const CString& path, EditedFile& file)
{
    FileInfo info;
    if (fileSystem().info(path, Spelling::exact, info) != 0 || info.kind != FileKind::regular)
        return false;
    file.size = info.size;
    file.modified = toTicks(info.modified);
    return true;
}

/// Whether the file is on the disk as it is known. One of which nothing is known is looked at.
bool isOnDisk(EditedFile& file)
{
    EditedFile found = file;
    if (!lookAt(file.path, found) || !isAlike(file, found.size, found.modified))
        return false;
    file = found;
    return true;
}

/// What the record says of its file. A write time of 0 stands for a file that is to be read again.
void learn(EditedFile& file, const StoredRecord& record)
{
    file.path = record.path;
    if (record.modified == 0)
        return;
    file.size = record.size;
    file.modified = record.modified;
}
/// Whether the record is another file's by now: one whose name differs in case alone took its place
/// in the collection, which takes both names for one, when the file went.
bool isTakenOver(const EditedFile& file, const StoredRecord& record)
{
    return file.path != record.path && file.path.CompareNoCase(record.path) == 0 &&
           record.modified != 0 && file.size != EditedFile::unknownSize &&
           file.size != record.size && file.modified != record.modified;
}
} // namespace

PendingTags::PendingTags() : m_store(Session::folder())
{
    for (EditedFile& file : m_store.edits())
        m_files.push_back({file, file, false});
    resolve();
}

void PendingTags::resolve()
{
    try
    {
        const StoredRecords records(Session::databasePath());
        resolveById(records);
        resolveByPath(records);
    }
    catch (CSQLiteException* raw)
    {
        // Whoever reads the collection itself says what is wrong with it; the edits stay.
        const std::unique_ptr<CSQLiteException> exception(raw);
        log(level::warning, u"PendingTags : %s", exception->message());
    }
    for (Entry& entry : m_files)
        entry.isAway = entry.isAway && !isOnDisk(entry.file);
    m_byPath.clear();
    for (std::size_t i = 0; i < m_files.size(); ++i)
    {
        if (!m_files[i].isAway && !m_files[i].file.fields.empty())
            m_byPath.emplace(m_files[i].file.path, i);
    }
}

void PendingTags::resolveById(const StoredRecords& records)
{
    std::map<CString, CString> pathsById;
    for (const Entry& entry : m_files)
    {
        if (!entry.file.id.IsEmpty())
            pathsById.emplace(entry.file.id, entry.file.path);
    }
    for (Entry& entry : m_files)
        entry.isAway = true;
    const auto found = records.byIds(pathsById);
    for (Entry& entry : m_files)
    {
        const auto record = found.find(entry.file.id);
        entry.isAway = record == found.end() || isTakenOver(entry.file, record->second);
        if (!entry.isAway)
            learn(entry.file, record->second);
        else if (record != found.end())
            entry.file.id.Empty();
    }
}

void PendingTags::resolveByPath(const StoredRecords& records)
{
    std::set<CString> paths;
    for (const Entry& entry : m_files)
    {
        if (entry.isAway)
            paths.insert(entry.file.path);
    }
    const auto found = records.byPaths(paths);
    std::map<CString, Entry*> byId;
    for (Entry& entry : m_files)
    {
        if (!entry.isAway && !entry.file.id.IsEmpty())
            byId.emplace(entry.file.id, &entry);
    }
    for (Entry& entry : m_files)
    {
        const auto record = entry.isAway ? found.find(entry.file.path) : found.end();
        if (record == found.end() ||
            !isAlike(entry.file, record->second.size, record->second.modified))
            continue;
        const CString& id = record->second.id;
        Entry*& owner = id.IsEmpty() ? byId[entry.file.path] : byId[id];
        if (owner)
        {
            // Edits that the record has already are younger.
            owner->file.fields.merge(entry.file.fields);
            entry.file.fields.clear();
            continue;
        }
        owner = &entry;
        entry.file.id = id;
        learn(entry.file, record->second);
        entry.isAway = false;
    }
}

std::vector<CString> PendingTags::paths() const
{
    std::vector<CString> list;
    for (const auto& [path, index] : m_byPath)
        list.push_back(path);
    return list;
}

std::vector<CString> PendingTags::awayPaths() const
{
    std::set<CString> list;
    for (const Entry& entry : m_files)
    {
        if (entry.isAway && !entry.file.fields.empty())
            list.insert(entry.file.path);
    }
    return {list.begin(), list.end()};
}

PendingTags::Fields PendingTags::fields(const CString& path) const
{
    const auto found = m_byPath.find(path);
    return found == m_byPath.end() ? Fields() : m_files[found->second].file.fields;
}

void PendingTags::set(const CString& path, const std::string& field, const std::string& value)
{
    if (const auto found = m_byPath.find(path); found != m_byPath.end())
    {
        m_files[found->second].file.fields[field] = value;
        return;
    }
    Entry entry;
    entry.file.path = path;
    entry.file.fields[field] = value;
    entry.isNew = true;
    lookAt(path, entry.file);
    m_byPath.emplace(path, m_files.size());
    m_files.push_back(std::move(entry));
}

bool PendingTags::drop(const CString& path, const std::string& field)
{
    const auto found = m_byPath.find(path);
    if (found == m_byPath.end())
        return false;
    Fields& fields = m_files[found->second].file.fields;
    const bool had = field.empty() ? !fields.empty() : fields.erase(field) > 0;
    if (field.empty())
        fields.clear();
    if (fields.empty())
        m_byPath.erase(found);
    return had;
}

bool PendingTags::dropAway(const CString& path)
{
    bool had = false;
    for (Entry& entry : m_files)
    {
        if (!entry.isAway || entry.file.path != path)
            continue;
        had = had || !entry.file.fields.empty();
        entry.file.fields.clear();
    }
    return had;
}

/// All at once: to find records by their paths takes a walk through all of them.
void PendingTags::findRecordsOfNew()
{
    std::set<CString> paths;
    for (const Entry& entry : m_files)
    {
        if (entry.isNew)
            paths.insert(entry.file.path);
    }
    if (paths.empty())
        return;
    const auto records = StoredRecords(Session::databasePath()).byPaths(paths);
    for (Entry& entry : m_files)
    {
        const auto record = entry.isNew ? records.find(entry.file.path) : records.end();
        entry.isNew = false;
        if (record == records.end())
            continue;
        entry.file.id = record->second.id;
        learn(entry.file, record->second);
    }
}

void PendingTags::save()
{
    findRecordsOfNew();
    std::vector<EditedFile> before;
    std::vector<EditedFile> after;
    for (Entry& entry : m_files)
    {
        if (entry.stored == entry.file)
            continue;
        before.push_back(entry.stored);
        after.push_back(entry.file);
    }
    if (before.empty())
        return;
    m_store.replaceEdits(before, after);
    for (Entry& entry : m_files)
        entry.stored = entry.file;
}

void PendingTags::bring(const Arrivals& arrivals)
{
    bool isMet = false;
    for (const auto& [from, to] : arrivals)
    {
        for (Entry& entry : m_files)
        {
            if (!entry.file.id.IsEmpty() || entry.file.path != from)
                continue;
            entry.file.path = to;
            // Some disks keep times less exactly than others.
            entry.file.size = EditedFile::unknownSize;
            isMet = true;
        }
    }
    if (isMet)
        resolve();
}

void PendingTags::settle(const Session& session, const Arrivals& arrivals)
{
    try
    {
        PendingTags edits;
        edits.bring(arrivals);
        edits.save();
    }
    catch (const HostError& error)
    {
        session.note(error.what());
    }
}
} // namespace qo::host
