#pragma once

#include <QoKernel/Kernel.h>

#include <cstdint>
#include <string>
#include <vector>

namespace qo::host
{
/// By what a file is known again, without reading it.
struct FileMark
{
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;     ///< bytes
    std::int64_t modified = 0; ///< nanoseconds since 1970

    bool operator==(const FileMark&) const noexcept = default;
    /// Without the place on a disk: a faithful copy on another file system has this too.
    bool isAlike(const FileMark& other) const noexcept
    {
        return size == other.size && modified == other.modified;
    }
};

FileMark markOf(const NameInfo& info);
/// What lies under that name itself, a link not followed. The error number, 0 for success.
int markOf(const std::string& path, FileMark& mark);
/// Says too whether it is a regular file.
int markOf(const std::string& path, FileMark& mark, bool& isRegular);

/// What a plan has in mind for one file.
struct PlannedFile
{
    enum class Verdict : std::uint8_t
    {
        move,
        stay,   ///< lies where the rule wants it, or the rule does not speak of it
        refused ///< should move and cannot
    };

    Verdict verdict = Verdict::stay;
    std::string from;      ///< absolute system path
    std::string to;        ///< likewise; "" when the rule gives none
    FileMark mark;         ///< of the source when the plan was made
    std::string recordId;  ///< the record's lasting id
    std::string kind;      ///< "Music", "Picture", "Lyrics"; "" for a file of no such kind
    std::string decidedBy; ///< the way through the rule, for people: "LessTracks > {artist.name}\"
    std::string reason;    ///< why it does not move; "" when it does
    /// The device of its new folder, or of the nearest one above; 0 if nobody looked.
    std::uint64_t targetDevice = 0;
};

/// Where the files of a collection are to go, by one rule. On disk it is a text of JSON lines: a
/// first line about the whole, then one line for each file, refused ones first. System paths may
/// hold any bytes; in the text those that are no valid UTF-8 stand as the collection's own names
/// write them (U+F000 plus the byte), so that every path survives.
struct ReorganizePlan
{
    std::string id;                   ///< "20261121-201500", also the file's name
    std::string made;                 ///< "2026-11-21T20:15:00", local time
    std::string rule;                 ///< the rule's id
    std::vector<std::string> targets; ///< the folders that nothing may leave
    /// Folders that stay also when they run empty: roots, output folders and the like.
    std::vector<std::string> keptFolders;
    std::vector<PlannedFile> files;

    int count(PlannedFile::Verdict verdict) const;
    /// Why a file cannot be part of this plan, as the end of a sentence; "" when it can. Whoever
    /// moves files asks, since a plan may have been edited by hand: no path is anything but plain,
    /// and nothing moves to a place outside the targets.
    std::string fault(const PlannedFile& file) const;

    /// Throws HostError: notFound when there is no such file, failed when it is no plan.
    static ReorganizePlan read(const std::string& path);
    /// The same without the files.
    static ReorganizePlan readHead(const std::string& path);
    /// In one piece. Throws HostError.
    void write(const std::string& path) const;
};

/// A path in a JSON text and back; see ReorganizePlan. The way back gives "" for what is no
/// absolute path in that form.
std::string pathInText(const std::string& path);
std::string pathFromText(const std::string& text);
} // namespace qo::host
