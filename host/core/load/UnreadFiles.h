#pragma once

#include "core/roots/RootGuard.h"
#include "core/roots/RootLister.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <map>
#include <string>
#include <vector>

namespace qo::host
{
/// Tells files that have gone from those that a walk did not meet because it could not read their
/// folder: the records of the latter stay. On the thread that calls the kernel.
class UnreadFiles
{
public:
    /// What lies in a folder that was given up counts as gone.
    /// The lister is that of the walk.
    UnreadFiles(const CQoCollection& collection,
                RootLister& lister,
                const std::vector<RootProblem>& givenUp);
    UnreadFiles(const UnreadFiles&) = delete;
    UnreadFiles& operator=(const UnreadFiles&) = delete;

    /// For the path of a record whose file a walk did not meet; one that has not gone is counted.
    bool isGone(const CString& path);
    /// A sentence for each cause for which folders could not be read of which the collection knows
    /// no file.
    std::vector<std::string> folderRemarks() const;
    /// One sentence for each folder whose files stay since it could not be read, and about files
    /// that the scan leaves out from now on.
    std::vector<std::string> sentences() const;

private:
    struct Folder
    {
        int error = 0;
        int files = 0;
    };

    void count(const CString& path, int error);
    int listError(const CString& folder);

    bool isOfNoKnownFile(const CString& folder, int error) const;

    const CQoCollection& m_collection;
    RootLister& m_lister;
    CStringArray m_passedOver; ///< with closing backslashes
    std::map<CString, Folder> m_folders;
    CStringArray m_leftOut;              ///< there, but no longer part of a collection
    std::map<CString, int> m_listErrors; ///< of each folder that was asked about
};

/// Whether the system says that there is no such file; what it cannot say is no.
bool isKnownToBeGone(const CString& path);
} // namespace qo::host
