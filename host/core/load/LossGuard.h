#pragma once

#include "core/load/DiskChanges.h"
#include "core/roots/RootGuard.h"
#include "core/roots/RootLister.h"

#include <cstddef>
#include <vector>

namespace qo::host
{
/// Tells files that were deleted from files whose disk is away, before their records leave.
///
/// Two signs speak for a disk that is away. A folder below a root was the place of another disk, or
/// a link to one, at the last scan, and is not now. Or a folder is there and has lost all the files
/// that the collection knew in it, more than a handful, at once: /music/usb, say, holds a stray
/// "readme" and none of its 900 songs. A folder that has itself gone was deleted; files that turn
/// up elsewhere with the same size and write time have moved. Both are no loss.
///
/// On the kernel's thread.
class LossGuard
{
public:
    /// A folder that loses no more files than that may lose them all.
    static constexpr std::size_t handful = 5;

    /// All records of the collection, and what a scan would make of them.
    LossGuard(const QoFileDbItemArray& records, const std::vector<DiskChange>& changes);

    /// The folders whose disk seems to be away; known are the far folders of the last scan.
    std::vector<RootProblem> findAway(const std::vector<FarFolder>& known) const;
    /// Whether a record would leave, be it one whose file seems to have moved.
    bool isLoss() const { return m_leaving > 0; }
    bool isGreatLoss() const;
    /// Whether so much leaves, a tenth of the collection and more than twenty files, that a copy of
    /// the database is wanted first.
    static bool isGreatLoss(std::size_t leaving, std::size_t all);

private:
    struct Count
    {
        std::size_t known = 0;
        std::size_t lost = 0;
    };
    void addAwayDisks(const std::vector<FarFolder>& known,
                      std::vector<RootProblem>& problems) const;
    void addEmptied(std::vector<RootProblem>& problems) const;

    const QoFileDbItemArray& m_records;
    std::vector<CString> m_lost; ///< the paths of files that have gone and not moved
    std::size_t m_leaving = 0;
};
} // namespace qo::host
