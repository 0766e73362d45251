#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace qo
{
/// Changes a file through a copy beside it: prepare() makes the copy, the caller edits and checks
/// it, commit() lets it take the place of the file. Without a commit the copy is removed. The file
/// is not touched before the commit, and a commit that fails leaves it as it was.
///
///   song.mp3                      song.mp3                    song.mp3 (the edited content)
///                      prepare    .qo-tmp-... (a copy) commit
///
/// Mode, owner, group, access lists and extended attributes are kept. A symbolic link is followed
/// and stays a link. A file with several hard links, or whose owner or attributes cannot be given
/// to a new file, is overwritten in place instead, from the checked copy; a second copy of the old
/// content, named ".qo-backup-", the file's name and "~", allows going back and may be left by a
/// crash. Functions return the system's error number, 0 for success. Not for several threads at
/// once.
class QO_API FileReplacement
{
public:
    /// The path must be spelled exactly.
    explicit FileReplacement(const CString& path);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Makes the copy. ECANCELED when stop, which is called for each block and may be empty,
    /// returns true.
    int prepare(const std::function<bool()>& stop = {});
    /// The system path of the copy, after prepare(). For reading only: errors of other writers
    /// would not be noticed.
    const std::string& copyPath() const;

    // The content of the copy, after prepare(). The first failure is kept: after it nothing is
    // written, and commit() refuses with its number.

    /// The size in bytes; -1 on failure.
    std::int64_t copySize();
    /// The number of bytes read, fewer only at the end; -1 on failure.
    std::int64_t readCopy(std::int64_t position, void* buffer, std::size_t size);
    /// Writes everything, or returns false.
    bool writeCopy(std::int64_t position, const void* data, std::size_t size);
    bool resizeCopy(std::int64_t size);
    /// The error number of the first failure, 0 if there was none.
    int copyError() const;

    /// Writes the copy to the disk and puts it in the place of the file. EBUSY if the file was
    /// changed by someone since prepare().
    int commit();
    /// The system path of the old content when a failed commit could not restore it (a failing
    /// disk); "" otherwise.
    const std::string& leftBehind() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};
} // namespace qo
