#pragma once

#include "core/base/FoldersAbove.h"

#include <QoKernel/Kernel.h>

#include <functional>
#include <memory>
#include <string>

namespace qo
{
class TreeCopy;
}

namespace qo::host
{
/// The disk's part of moving or copying a file or folder to a free name, in a way that can be taken
/// back until finish(). Nothing is ever overwritten. Paths in collection form, as the disk spells
/// them. Not for several threads at once.
class DiskMove
{
public:
    enum class Mode
    {
        move,
        copy ///< the source stays
    };

    DiskMove(const CString& from, const CString& to, Mode mode);
    ~DiskMove();
    DiskMove(const DiskMove&) = delete;
    DiskMove& operator=(const DiskMove&) = delete;

    /// The hidden folder in which a copy of this process grows; see TreeCopy.
    static std::string stagingName();

    /// Refuses beforehand what perform() would refuse after a look at the two places, in which all
    /// stays as it is. Throws HostError.
    void check() const;
    /// Renames, or copies to another file system, where the source stays until finish(). Throws
    /// HostError with everything as it was. stop, which may be empty, is asked while it copies.
    void perform(const std::function<bool()>& stop);
    /// Removes a source that was copied to be moved. What is left behind is told in a sentence.
    std::string finish();
    /// Puts everything back, also folders that were removed since because they were empty. The
    /// error number, 0 for success.
    int undo();

private:
    void copyTree(const std::function<bool()>& stop);
    void needRemovable() const;
    [[noreturn]] void fail(int error, const std::string& place = std::string()) const;

    CString m_from;
    CString m_to;
    Mode m_mode;
    std::unique_ptr<TreeCopy> m_copy; ///< null while a rename did it
    FoldersAbove m_foldersAbove;      ///< of the source
};
} // namespace qo::host
