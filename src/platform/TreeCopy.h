#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <functional>
#include <memory>
#include <string>

namespace qo
{
/// Takes a file, a symbolic link or a folder with all it holds to another file system: copy() makes
/// a copy under the new path, which then exists in full or not at all, and removeSource() ends the
/// move. Until then removeTarget() takes everything back. Content, times and, as far as the other
/// file system can hold them, owner, mode, access lists and extended attributes stay; links are
/// copied as links. Calls answer with the system's error number, 0 for success. Not for several
/// threads at once.
class QO_API TreeCopy
{
public:
    /// Both paths are taken as they are spelled. The hidden folder beside the target, in which the
    /// copy grows, bears the name that is given, so that it is found after a crash, or a random
    /// one.
    TreeCopy(const CString& from, const CString& to, const std::string& stagingName = {});
    ~TreeCopy();
    TreeCopy(const TreeCopy&) = delete;
    TreeCopy& operator=(const TreeCopy&) = delete;

    /// stage() and putInPlace().
    int copy(const std::function<bool()>& stop = {});
    /// Copies to the hidden folder, makes the copy durable, reads it back and compares it. EINVAL
    /// for what is neither file, link nor folder, EBUSY for a folder in which something is mounted,
    /// ECANCELED when stop, which is asked for each block and may be empty, says so. A staged copy
    /// that is not put in its place goes with the object.
    int stage(const std::function<bool()>& stop = {});
    /// Where the staged copy lies, as a system path.
    const std::string& stagedPath() const;
    /// Gives the staged copy its name, where it overwrites nothing.
    int putInPlace();
    /// Removes what a copy under the given staging name left behind when its process was killed.
    int removeStaged();
    /// Removes what was copied, and EBUSY with everything left in place if any of it has changed
    /// since. Something new in a folder keeps that folder and gives ENOTEMPTY.
    int removeSource();
    /// Removes the copy, but leaves in place, with EBUSY, what has changed since or is another's.
    int removeTarget();

    /// Which file or folder the last failure was about, as a system path.
    const std::string& failedPath() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};
} // namespace qo
