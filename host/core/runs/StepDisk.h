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

    /// The folders that nothing may leave, and those in which files may lie at first besides; no
    /// targets: any place will do.
    StepDisk(std::vector<std::string> targets, std::vector<std::string> keptFolders);

    /// A file to another name on its own or another file system. It must be what the mark says, and
    /// no link may stand on the way to it or to its new folder. A
    /// copy grows in a folder of the staging name beside the target; copied is told of it before it
    /// is put in its place. stop may be empty.
    Outcome move(const MoveStep& step,
                 const FileMark& mark,
                 const std::string& stagingName,
                 const std::function<void(const FileMark&)>& copied,
                 const std::function<bool()>& stop);
    /// EEXIST for one that is there, ENOENT when the folder above is not. Rights of mode 0 are
    /// those of the folder above.
    Outcome makeFolder(const std::string& folder, const FolderRights& rights);
    /// ENOTEMPTY for one that holds something, ENOENT for one that is not there.
    static Outcome removeFolder(const std::string& folder);

private:
    Outcome checkFolders(const MoveStep& step);

    FolderGuard m_targets;
    FolderGuard m_sources;
};
} // namespace qo::host
