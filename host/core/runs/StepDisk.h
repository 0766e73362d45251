#pragma once

#include "core/runs/FolderGuard.h"
#include "core/runs/MoveStep.h"

#include <functional>
#include <string>
#include <vector>

namespace qo::host
{
/// The disk's part of the steps of a run. Nothing is ever overwritten, and what fails leaves things
/// as they were. Not for several threads at once.
class StepDisk
{
public:
    /// How a step ended.
    struct Outcome
    {
        int error = 0;   ///< 0: done; ECANCELED: stopped
        std::string why; ///< a clause for people, "" when done
        /// There is nothing where the file was: it is gone, or its disk is away.
        bool isSourceAway = false;
    };
    /// What a move has to know besides its step.
    struct Moving
    {
        const MovedFile& file;
        const FileMark& mark;    ///< of the file as it must be now
        std::string stagingName; ///< of the folder beside the target in which a copy grows
        std::function<void(const FileMark&)> copied; ///< called before a copy gets its place
        std::function<bool()> stop;                  ///< may be empty
    };

    /// The folders that nothing may leave, and those in which files may lie at first besides; no
    /// targets: any place will do.
    StepDisk(std::vector<std::string> targets, std::vector<std::string> keptFolders);

    /// A file to another name on its own or another file system; a folder only on its own. It must
    /// be what the mark says, and no link may stand on the way to it or to its new folder, and the
    /// disk of that folder must be there.
    Outcome move(const MoveStep& step, const Moving& moving);
    /// EEXIST for one that is there, ENOENT when the folder above is not. Rights of mode 0 are
    /// those of the folder above.
    Outcome makeFolder(const std::string& folder, const FolderRights& rights);
    /// ENOTEMPTY for one that holds something, ENOENT for one that is not there.
    static Outcome removeFolder(const std::string& folder);
    /// A new file with that text, on the disk in full or not at all.
    static Outcome writeNote(const std::string& path, const std::string& text);
    /// EBUSY, with the file left alone, if it holds anything else.
    static Outcome removeNote(const std::string& path, const std::string& text);
    static bool holdsNote(const std::string& path, const std::string& text);

    /// Whether what lies there is the file of that mark as it was; of a folder, whether it is the
    /// same one.
    static bool isUnchanged(const FileMark& now, const FileMark& mark, MovedFile::What what);
    /// Removes what a copy that was interrupted left in the folder of that name beside its target.
    static int removeStaged(const std::string& target, const std::string& stagingName);

private:
    Outcome checkFolders(const MoveStep& step);
    Outcome checkTargetDisk(const MoveStep& step, const MovedFile& file) const;

    std::vector<std::string> m_bases;
    FolderGuard m_targets;
    FolderGuard m_sources;
};
} // namespace qo::host
