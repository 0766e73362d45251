#pragma once

#include "core/load/UnfinishedScan.h"
#include "core/roots/RootFolders.h"

#include <QoKernel/Collection.h>

namespace qo::host
{
/// How the root folders of the settings differ from those that the database was last scanned with.
/// On the thread that calls the kernel; throws what the database layer throws.
class RootChanges
{
public:
    RootChanges(const RootFolders& roots, const UnfinishedScan& mark, const CString& database);

    /// To be read in slices: new ones, and those whose first scan was cut short.
    const CStringArray& fresh() const { return m_fresh; }
    /// Those that the database knows and that stay as they are.
    const CStringArray& kept() const { return m_kept; }
    bool haveSomeLeft() const { return m_haveSomeLeft; }
    /// Whether it is enough to read the fresh ones and to take out the files of those that left;
    /// a scan of all does only the former.
    bool canBeFollowed(bool rescan) const;

private:
    void findFresh(const RootFolders& roots, const UnfinishedScan& mark, const CString& database);
    void findKept(const RootFolders& roots, const CString& database);

    CStringArray m_fresh;
    CStringArray m_kept;
    bool m_haveSomeLeft = false;
    bool m_areEntangled = false; ///< the files of one belong to another, or are of another kind
};
} // namespace qo::host
