#pragma once

#include "core/collection/Trash.h"
#include "core/roots/RootLister.h"
#include "core/runs/MoveProgress.h"

#include <QoKernel/Collection.h>

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace qo::host
{
class Session;

/// Makes the run by which files and folders that a user names are moved, put into the trash or
/// added. Each request is checked when it is made and refused with a HostError of one sentence; the
/// requests before it stay. Nothing is changed, but a trash is made. A folder goes by one rename
/// where it stays on its file system, else file by file. Paths in collection form, spelled as the
/// disk spells them. For the kernel's thread, with the collection loaded.
class FileMoves
{
public:
    /// What becomes of one request.
    struct Request
    {
        CString from;
        CString to;                     ///< its place afterwards
        int files = 0;                  ///< regular files
        std::vector<std::size_t> items; ///< numbers of its files in the run
    };

    /// The kind is the name of the command; the stop, which may be empty, is asked while folders
    /// are walked.
    FileMoves(const Session& session, std::string kind, Trash trash, std::function<bool()> stop);

    /// Within the collection, also to a name that differs in case alone. The target is a free path
    /// or an existing folder to put it into. Root folders, and what this program or the user cannot
    /// be without, stay where they are.
    const Request& move(const CString& from, const CString& to);
    const Request& remove(const CString& path);
    /// Takes in a file or folder from anywhere; the target as for move(). A copy leaves the source.
    const Request& add(const CString& from, const CString& to, MovedFile::Deed deed);

    const std::vector<Request>& requests() const { return m_requests; }
    /// The whole run, with a free id.
    MoveProgress::Start start(const std::string& id) const;

private:
    struct Found;

    const Request&
    transfer(const CString& from, const CString& to, MovedFile::Deed deed, MovedFile::Outside out);
    void refuseDoubles(const std::string& from, const std::string& to) const;
    Found look(const CString& path) const;
    std::vector<Found> walk(const Found& top, const std::string& from, MovedFile::Deed deed) const;
    void needRoom(const std::vector<Found>& tree, const std::string& folder, MovedFile::Deed deed);
    void addItem(Request& request, MovedFile file);
    void addRecords(const CString& from, bool withValues);
    void addTree(Request& request, const std::vector<Found>& tree, const MovedFile& top);
    void addEmptied(const std::string& from);

    RootLister m_lister;
    std::string m_kind;
    Trash m_trash;
    std::function<bool()> m_stop;
    std::vector<Request> m_requests;
    std::vector<MovedFile> m_files;
    std::vector<MoveProgress::Record> m_records;
    std::vector<MoveStep> m_makes;
    std::vector<MoveStep> m_removals;
    std::vector<MoveStep> m_notes;
    std::unordered_set<std::string> m_emptied;
    std::unordered_map<std::uint64_t, std::uint64_t> m_needed; ///< bytes of copies, by device
    std::vector<std::string> m_bases; ///< where files may lie or come to besides the root folders
};
} // namespace qo::host
