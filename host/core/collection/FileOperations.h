#pragma once

#include "core/collection/DiskMove.h"
#include "core/collection/Trash.h"

#include <QoKernel/Collection.h>

#include <functional>
#include <string>
#include <vector>

namespace qo::host
{
class CollectionChanges;
class ProgressReporter;
class Session;

/// Moves, throws away and adds files and folders of the loaded collection, so that disk, tree and
/// database stay in step: first the disk, then the collection, and when that cannot be saved the
/// disk is put back and the collection read again. Nothing is ever overwritten, and nothing is
/// deleted. Failures throw HostError with one sentence that tells what was kept. Paths in
/// collection form, spelled as the disk spells them. For the kernel's thread.
class FileOperations
{
public:
    struct Result
    {
        CString place;    ///< where it lies now
        int records = 0;  ///< of the collection, that moved, left or came
        std::string note; ///< a sentence when something is left to be done by hand; else empty
    };

    enum class Run
    {
        real,
        trial ///< refuses what would be refused, and otherwise only tells what would be done
    };

    explicit FileOperations(Session& session, Trash trash = Trash(), Run run = Run::real);

    /// Moves or renames, also in case alone, within the collection; onto another file system by a
    /// copy that is compared first. The target is a free path or an existing folder to put it into.
    /// Records keep their ids. Root folders, and what this program or the user cannot be without,
    /// stay where they are.
    Result move(const CString& from, const CString& to, ProgressReporter& progress);
    /// Puts it into the trash and takes its records out.
    Result remove(const CString& path, ProgressReporter& progress);
    /// Takes in a file or folder from anywhere; the target as for move().
    Result
    add(const CString& from, const CString& to, DiskMove::Mode mode, ProgressReporter& progress);

    /// Whether the program ended in the middle of a move.
    static bool wasCutShort();
    /// Lets the loaded collection follow a move that the disk has made by then, and clears away
    /// what a copy left behind. Throws HostError when it cannot be saved.
    static void takeUp(Session& session);

private:
    using Records = std::vector<QoFileDbItemPtr>;

    Result transfer(const CString& from,
                    const CString& to,
                    DiskMove::Mode mode,
                    const Records& records,
                    ProgressReporter& progress);
    /// What a move or copy that the disk has done means for the collection; the number of files.
    static int collect(const CString& from,
                       const CString& to,
                       DiskMove::Mode mode,
                       const Records& records,
                       CollectionChanges& changes);
    /// When the changes cannot be saved, what undo gives is an error number; undone and stays are
    /// what the sentence then says of the disk.
    void applyOrUndo(CollectionChanges& changes,
                     ProgressReporter& progress,
                     const std::string& deed,
                     const std::function<int()>& undo,
                     const std::string& stays);
    std::string loadAgain();

    Session& m_session;
    Trash m_trash;
    Run m_run;
};
} // namespace qo::host
