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
/// Changes a file by way of a copy beside it: prepare() makes the copy, the caller edits and checks
/// it, commit() lets it take the file's place, and without a commit the copy vanishes. Until the
/// commit the file is not touched, and a commit that fails leaves it as it was.
///
/// Mode, owner, group, access lists and extended attributes stay. A symbolic link is followed and
/// stays a link. A file with several names, or whose owner or attributes cannot be given to a new
/// file, is overwritten in place instead, from the checked copy and with a second copy of the old
/// content to go back to: ".qo-backup-", the file's name and "~", which a crash may leave behind.
/// Calls answer with the system's error number, 0 for success. Not for several threads at once.
class QO_API FileReplacement
{
public:
    /// The path is taken as it is spelled.
    explicit FileReplacement(const CString& path);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// ECANCELED when stop, which is asked for each block and may be empty, says so.
    int prepare(const std::function<bool()>& stop = {});
    /// Where the copy lies, as a system path; after prepare(). For reading: what others write there
    /// is not watched for errors.
    const std::string& copyPath() const;

    // The copy's bytes, after prepare(). The first failure stays: from then on nothing is written,
    // and commit() refuses with it.

    /// -1 on failure.
    std::int64_t copySize();
    /// Bytes read, fewer than asked for only at the end; -1 on failure.
    std::int64_t readCopy(std::int64_t position, void* buffer, std::size_t size);
    /// All of it or false.
    bool writeCopy(std::int64_t position, const void* data, std::size_t size);
    bool resizeCopy(std::int64_t size);
    /// The error number of the first failure, 0 if there was none.
    int copyError() const;

    /// Makes the copy durable and puts it in the file's place. EBUSY when somebody changed the
    /// file since prepare().
    int commit();
    /// The system path at which the old content was left when a failed commit could not restore it
    /// (a dying disk); empty otherwise.
    const std::string& leftBehind() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};
} // namespace qo
