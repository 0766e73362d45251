#pragma once

#include "core/roots/FarFolder.h"
#include "core/store/StoreRows.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class CSQLiteDB;

namespace qo::host
{
/// What the host knows beside the collection: the database "host.db" in the data folder, which only
/// its owner can read. Every call is one transaction over a connection of its own. Reading needs no
/// lock and writes nothing; an absent store is an empty one. Only the holder of the data folder's
/// lock may write, which makes the store when it is absent, takes over the text files of earlier
/// versions, and replaces a damaged store by a new one with all rows that can be read. Failures are
/// HostError. Not for several threads at once.
class HostStore
{
public:
    /// Opens nothing.
    explicit HostStore(const CString& folder);

    /// For the holder of the lock, before anything else: looks whether the store is sound, mends it
    /// if it is not, and takes over the old files. The sentences for the user.
    std::vector<std::string> prepare();

    /// Each file once; files without an id by their paths.
    std::vector<EditedFile> edits() const;
    /// Replaces the rows of the files "before" by those of "after". Rows of other files stay.
    void replaceEdits(const std::vector<EditedFile>& before, const std::vector<EditedFile>& after);

    std::vector<StoredHead> heads() const;
    void changeHeads(const std::vector<std::string>& goneIds,
                     const std::vector<StoredHead>& changed);

    ScanMark mark() const;
    /// An empty one removes the mark.
    void setMark(const ScanMark& mark);
    void addReadFiles(const CStringArray& files);

    /// Files that the last scan was not allowed to read, in collection form; with the id of a
    /// service's collection those of which it could not fetch the tags.
    CStringArray unreadFiles(const CString& collection = CString()) const;
    void setUnreadFiles(const CStringArray& files, const CString& collection = CString());

    /// As the last scan found them.
    std::vector<FarFolder> folders() const;
    /// Replaces all rows.
    void setFolders(const std::vector<FarFolder>& folders);

    /// By which extensions the last scan knew music and pictures, as FileKinds writes them.
    CString fileKinds() const { return fact(u"file kinds"); }
    void setFileKinds(const CString& kinds) { setFact(u"file kinds", kinds); }

    /// What the last scan said of files, a line each: the next one does not say it again.
    CString fileRemarks() const { return fact(u"file remarks"); }
    void setFileRemarks(const CString& lines) { setFact(u"file remarks", lines); }

    /// The lasting ids of the files that have a check mark. Ids of files that are gone stay, since
    /// an undo may bring the file back.
    std::unordered_set<LastingId> checkedFiles() const;
    void changeChecked(const std::vector<LastingId>& gone, const std::vector<LastingId>& added);
    void clearChecked();

    // Notes of files, by their lasting ids. Those of files that are gone stay, as check marks do.

    std::unordered_map<LastingId, FileNotes> fileNotes() const;
    /// Replaces what was known of the tags of these files.
    void setTagNotes(const std::vector<TagNotes>& notes);
    void setAddedBy(const std::vector<LastingId>& ids, const CString& user);
    /// Half stars; 0 says that the file has none, whatever its tag says, and FileNotes::ofTag that
    /// this counts.
    void setRating(const std::vector<LastingId>& ids, int halfStars);
    /// Counts a play of each file, the last at that time (ticks) or later.
    void addPlays(const std::vector<LastingId>& ids, int plays, std::int64_t when);

    // Playlists, by the ids that the kernel gives them. A change begins here, then the kernel's
    // list is changed, and then it ends here: what is cut short between can be seen and finished.

    std::vector<StoredEntry> playlistEntries(int playlist) const;
    /// Replaces the entries. tracks is the kernel's list before its change.
    void beginPlaylistChange(int playlist,
                             const CString& tracks,
                             const std::vector<StoredEntry>& entries);
    void endPlaylistChange(int playlist);
    /// The kernel's list before the change, if one has begun and not ended.
    std::optional<CString> begunPlaylistChange(int playlist) const;
    void forgetPlaylist(int playlist);
    /// How many entries without a file each playlist has; those with none are left out.
    std::map<int, int> entriesWithoutFile() const;

    /// By their names.
    std::vector<LivingList> livingLists() const;
    /// Removes the one of that name, if there is one, and adds another unless its name is "".
    void replaceLivingList(const CString& formerName, const LivingList& list);

    /// Which files each share offers, by its share id: a query as it was typed, "" for all.
    std::map<CString, CString> offers() const;
    void setOffer(const CString& shareId, const CString& query);
    void forgetOffer(const CString& shareId);

private:
    using Work = std::function<void(CSQLiteDB&)>;

    /// "" for none. The name is not quoted.
    CString fact(const char16_t* name) const;
    void setFact(const char16_t* name, const CString& value);

    void read(const Work& work) const;
    /// Returns the path of the old file of that name if its rows are not in the store yet, else "".
    CString read(const Work& work, const char16_t* oldName) const;
    void write(const Work& work);
    void writeOnce(const Work& work);
    /// Copies what can be read into a new store and sets the damaged one aside.
    void repair();
    void takeOver(CSQLiteDB& db);
    void takeOverFile(CSQLiteDB& db, const char16_t* name, const Work& insertRows);
    bool isSound() const;
    CString oldFile(const char16_t* name) const;
    std::vector<EditedFile> oldEdits();

    CString m_folder;
    CString m_file;
    std::vector<std::string> m_notes;
};
} // namespace qo::host
