#pragma once

#include "core/collection/Trash.h"
#include "core/plan/PlanBuilder.h"
#include "core/plan/ReorganizePlan.h"
#include "core/runs/MoveRun.h"

#include <QoKernel/Collection.h>

#include <string>
#include <vector>

namespace qo::host
{
class FileMoves;
class ProgressReporter;
class Session;

/// Plans, and the runs that carry them out, that move, add and throw away what a user names, and
/// that take back other runs; see RunFiles for their files. The loaded collection follows each run:
/// records keep their ids, and a crash in between costs nothing, see applyUnfinishedMoves(). For
/// the kernel's thread.
class Reorganizer
{
public:
    /// A run as the list of them has it.
    struct Run
    {
        std::string id;
        std::string undoes; ///< the id of the run that it takes back, or ""
        std::string undone; ///< the id of the run that takes it back, or ""
        std::string kind;   ///< "reorg" for a plan, "mv", "rm", "add"
        std::string rule;   ///< "" when its plan is gone
        std::string made;   ///< when its plan was made, or the undo began; local time
        std::size_t moved = 0;
        std::size_t away = 0;   ///< files that did not reach their place
        bool isForward = true;  ///< false for an undo, true again for the undo of one
        bool isRunning = false; ///< was stopped or cut short, and can go on
        std::string complaint;  ///< why it cannot be read; then only id and made are known
    };

    explicit Reorganizer(Session& session, Trash trash = Trash());

    /// Makes a plan and keeps it, with a few older ones that were not carried out. Throws HostError
    /// as PlanBuilder::build() does.
    ReorganizePlan makePlan(const CString& rule,
                            const CString& target,
                            const QoFileDbItemArray& records,
                            IQoProgress& progress) const;
    /// Where the plan of that id is kept.
    static std::string planPath(const std::string& id);
    /// The id of the youngest plan. Throws HostError (notFound) when there is none.
    static std::string lastPlan();

    /// Throws what apply() would throw before it begins a run of the plan; changes nothing on the
    /// disk. Brings the plan up to date and returns the files that it then refuses.
    std::vector<MoveRun::Failure> check(ReorganizePlan& plan) const;
    /// Likewise for carryOut().
    void check(const FileMoves& moves) const;

    /// Carries out the plan, or goes on with a run of it that was stopped. Throws HostError:
    /// refused when it was carried out before, or while another run waits to be brought to an end;
    /// failed, with nothing done, when it is not about the root folders alone; interrupted or
    /// failed with a sentence that says what stands.
    MoveRun::Report apply(const ReorganizePlan& plan, ProgressReporter& progress);
    /// Moves, adds or throws away what a user has named. Throws HostError as apply() does.
    MoveRun::Report carryOut(const FileMoves& moves, ProgressReporter& progress);
    /// The id of the run that carryOut() made.
    const std::string& lastRun() const { return m_lastRun; }
    /// Whether a run of that id was stopped and can go on; it needs no plan for that.
    static bool canGoOn(const std::string& id);
    MoveRun::Report goOn(const std::string& id, ProgressReporter& progress);
    /// Takes back the run of that id, or the youngest that nothing has taken back. Throws HostError
    /// as apply() does.
    MoveRun::Report undo(const std::string& id, ProgressReporter& progress);
    /// What undo() would do now: the files that can go back, and those that cannot. Of an undo that
    /// was stopped the files that are left. Changes nothing. Throws HostError as undo() does before
    /// it begins.
    MoveRun::Report checkUndo(const std::string& id) const;
    /// What its journal says. Throws HostError.
    static MoveProgress progressOf(const std::string& id);
    /// Which run undo() would take back, or go on to. Throws HostError.
    static std::string undoable(const std::string& id);

    /// Sets the journal of a run aside, be it damaged, so that others can begin: it can then
    /// neither go on nor be taken back. Throws HostError.
    static void forget(const std::string& id);
    /// The youngest last.
    static std::vector<Run> runs();

private:
    void check(const MoveProgress::Start& start) const;
    std::string checkedUndoable(const std::vector<Run>& all, const std::string& id) const;
    MoveRun::Report carryOut(MoveRun& run, const std::string& id, ProgressReporter& progress);

    Session& m_session;
    Trash m_trash;
    std::string m_lastRun;
};

/// Whether the journal of a run stands that was stopped or cut short: files may have moved that the
/// stored collection knows at their old places. Quick when there is none.
bool hasUnappliedMoves();
/// The id of such a run whose journal cannot be read; "" when all can.
std::string unreadableRun();
/// Brings them into the collection, which is loaded as it is stored, and saves it. Throws
/// HostError.
void applyUnfinishedMoves(Session& session);
} // namespace qo::host
