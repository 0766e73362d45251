#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <functional>
#include <memory>
#include <string>

namespace qo
{
/// Moves a file, a symbolic link or a folder with its content to another file system, by copying:
/// copy() makes a copy under the new path, which then exists completely or not at all, and
/// removeSource() completes the move. Until then removeTarget() undoes everything.
///
///   /a/Album -> /b/Album                         a crash leaves
///   stage()          /b/.qo-x/copy/...           the staging folder .qo-x: see removeStaged()
///   putInPlace()     rename to /b/Album          both, complete
///   removeSource()   /a/Album is removed         a part of /a/Album, and /b/Album complete
///
/// Content and times are kept and, as far as the other file system can, owner, mode, access lists
/// and extended attributes. Links are copied as links. Functions return the system's error number,
/// 0 for success. Not for several threads at once.
class QO_API TreeCopy
{
public:
    /// Both paths must be exact. stagingName is the name of the hidden folder beside the target in
    /// which the copy is made, so that it can be found after a crash; "" chooses a random name.
    TreeCopy(const CString& from, const CString& to, const std::string& stagingName = {});
    ~TreeCopy();
    TreeCopy(const TreeCopy&) = delete;
    TreeCopy& operator=(const TreeCopy&) = delete;

    /// stage() followed by putInPlace().
    int copy(const std::function<bool()>& stop = {});
    /// Copies to the staging folder, flushes the copy to the disk, reads it again and compares it.
    /// EINVAL for anything but files, links and folders, EBUSY for a folder in which something is
    /// mounted, ECANCELED when stop, which is called for each block and may be empty, returns true.
    /// The destructor removes a staged copy that was not put in place.
    int stage(const std::function<bool()>& stop = {});
    /// The system path of the staged copy.
    const std::string& stagedPath() const;
    /// Renames the staged copy to the target, which must not exist.
    int putInPlace();
    /// Removes what a killed process has left under the given staging name.
    int removeStaged();
    /// Removes the source. EBUSY, with everything left in place, if any of it has changed since. A
    /// folder with something new in it is kept, with ENOTEMPTY.
    int removeSource();
    /// Removes the copy, except what has changed since or belongs to others: EBUSY.
    int removeTarget();

    /// The system path of the file or folder that the last failure is about.
    const std::string& failedPath() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};
} // namespace qo
