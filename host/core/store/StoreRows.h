#pragma once

#include <QoKernel/Kernel.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

/// What the host's own store holds, a struct for the rows of each table.
namespace qo::host
{
/// A file with edited tag values that are not written yet.
struct EditedFile
{
    static constexpr std::int64_t unknownSize = -1;

    CString id;                      ///< lasting id of its record; "" while it has none
    CString path;                    ///< collection form, as last known
    std::int64_t size = unknownSize; ///< bytes, as last known
    std::int64_t modified = 0;       ///< write time in ticks, as last known
    /// The new value of each field by its name ("artist"); UTF-8, "" removes the field.
    std::map<std::string, std::string> fields;

    bool operator==(const EditedFile&) const = default;
};

/// The digest of the first bytes of a file's sound, and the state of the file that it was made of.
struct StoredHead
{
    std::string id; ///< lasting id
    std::int64_t size = 0;
    std::int64_t modified = 0; ///< ticks
    std::uint64_t digest = 0;
};

/// An entry of a playlist: which song is meant, as it was when the entry was made.
struct StoredEntry
{
    int row = 0;      ///< row id in the collection, as the kernel's list has it; 0 for none
    CString id;       ///< lasting id of the file; "" if it was never found
    CString path;     ///< collection form; "" if text has the place
    CString text;     ///< a place that is no path of this system, such as a web address
    CString title;    ///< as are artist and duration: of the file, or as the list had it
    CString artist;   ///< "" if it is not known
    int duration = 0; ///< milliseconds; 0 if it is not known

    bool operator==(const StoredEntry&) const = default;
};

/// A playlist that is looked up whenever it is shown.
struct LivingList
{
    CString name;
    CString query; ///< as it was typed
};

/// What the tag of a file says beyond the collection's record.
struct TagNotes
{
    LastingId id;
    CString albumArtist;
    CString disc; ///< "1" or "1/2"
    CString comment;
    int rating = 0; ///< half stars, 1 to 10; 0 for none
    int plays = 0;

    bool isEmpty() const
    {
        return albumArtist.IsEmpty() && disc.IsEmpty() && comment.IsEmpty() && rating == 0 &&
               plays == 0;
    }
};

/// What is known of a file beside its record: of its tag, and of what people did with it here.
struct FileNotes
{
    static constexpr int ofTag = -1; ///< stored for a file that was not rated here

    CString albumArtist;
    CString disc;
    CString comment;
    int rating = 0;         ///< half stars; the one given here, or else the tag's
    std::int64_t plays = 0; ///< those that the tag counts and those counted here
    FILETIME lastPlayed = {};
    CString addedBy; ///< the user whose command took it in; "" for the owner of the data folder
};

/// What a scan has read, but whose names it has not analysed, since it was cut short.
struct ScanMark
{
    CStringArray roots; ///< root folders whose first scan has begun
    /// The time of the collection's last save (ticks) before its names were analysed; empty while
    /// files are still being read.
    std::optional<std::int64_t> lastSave;
    CStringArray files; ///< single files below other root folders

    bool isEmpty() const { return roots.IsEmpty() && files.IsEmpty(); }
};
} // namespace qo::host
