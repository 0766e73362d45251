#pragma once

#include "core/store/HostStore.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qo::host
{
class Session;
class StoredRecords;

/// Edited tag values that are not written into their files yet, as the host's store has them. They
/// belong to the record of the file by its lasting id, wherever it moves. A file that has no record
/// goes by its path, size and write time; when a record appears there with the same size and time,
/// it takes the edits up, and so it does for those of a record that is gone. Example: a.mp3 leaves
/// its folder while it is watched, and its record goes; when a.mp3 is put back as it was, its new
/// record has the edits. Another file of that name does not get them. Edits whose file is nowhere
/// to be found wait as those of a file that is away. Not for several threads at once.
class PendingTags
{
public:
    using Fields = std::map<std::string, std::string>;
    /// Where files without a record came from and where they are now, in collection form.
    using Arrivals = std::vector<std::pair<CString, CString>>;

    /// Of the session's data folder. On the thread that calls the kernel, as all that follows; the
    /// collection need not be loaded. Throws HostError.
    PendingTags();

    /// Current paths of the files that are there, in collection form and in their order.
    std::vector<CString> paths() const;
    /// Last known paths of the files that are away.
    std::vector<CString> awayPaths() const;
    /// The edits of a file that is there; empty when nothing is pending for it.
    Fields fields(const CString& path) const;
    bool isEdited(const CString& path) const { return m_byPath.contains(path); }
    void set(const CString& path, const std::string& field, const std::string& value);
    /// Drops one field, or all with an empty name. Whether there was anything.
    bool drop(const CString& path, const std::string& field = std::string());
    /// Drops all edits of files that are away and were last known there. Whether there were any.
    bool dropAway(const CString& path);

    /// Brings what changed into the store. With the lock of the data folder. Throws HostError.
    void save();

    /// Lets the store know where the files are by now, after the collection was loaded or changed
    /// and is saved. A failure is noted: the next time makes up for it.
    static void settle(const Session& session, const Arrivals& arrivals = {});

private:
    struct Entry
    {
        EditedFile stored; ///< without fields while the store has nothing of it
        EditedFile file;
        bool isAway = false;
        bool isNew = false; ///< its record was not looked for yet
    };

    void bring(const Arrivals& arrivals);
    /// Finds the records of all files.
    void resolve();
    void resolveById(const StoredRecords& records);
    void resolveByPath(const StoredRecords& records);
    void findRecordsOfNew();

    HostStore m_store;
    std::vector<Entry> m_files;
    /// Of the files with edits that are there, by their paths: the index in the list.
    std::map<CString, std::size_t> m_byPath;
};
} // namespace qo::host
