#pragma once

#include "core/collection/PendingTags.h"

#include <QoKernel/Collection.h>

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace qo::host
{
class Session;

/// Changes on their way into the loaded collection. A later change that meets a path of an earlier
/// one waits until that one is applied, so each stage is one save; as a rule there is one. Paths in
/// collection form. For the kernel's thread.
class CollectionChanges
{
public:
    /// With keepEmptyDirs the folders on the disk are left alone: for what happened there already.
    explicit CollectionChanges(Session& session, bool keepEmptyDirs = false);
    ~CollectionChanges();
    CollectionChanges(const CollectionChanges&) = delete;
    CollectionChanges& operator=(const CollectionChanges&) = delete;

    /// A file that is there now, or has other content; its folder is analysed again.
    void scan(const CString& path);
    /// A new file at a path that was free. It comes from another path, unless that is empty: edits
    /// that wait for a file without a record there become its own.
    void arrive(const CString& path, const CString& from);
    /// A file that is back with its former record, whose path is that of the file.
    void restore(const QoFileDbItemPtr& record);
    /// A record whose file has another path now. With readAgain its tag is read if it is newer.
    void move(const CString& from, const CString& to, bool readAgain);
    /// A record whose file has gone.
    void remove(const CString& path);

    bool isEmpty() const { return m_stages.empty(); }
    /// Applies and forgets them. Throws HostError: interrupted when the progress stopped it, which
    /// leaves the collection empty, failed when it could not be saved or is not loaded. The
    /// database then has the stages before, which the sentence tells; the collection in memory is
    /// to be loaded again.
    void apply(IQoProgress& progress);

    /// The records of a file, or of all files below a folder.
    static std::vector<QoFileDbItemPtr> recordsAt(const CString& path);
    /// Null if absent.
    static QoFileDbItemPtr recordOf(const CString& path);

private:
    struct Stage;

    /// The stage that may change these paths; target may be empty.
    Stage& stageFor(const CString& path, const CString& target);
    void applyStage(const Stage& stage, IQoProgress& progress);

    Session& m_session;
    bool m_keepEmptyDirs;
    std::vector<std::unique_ptr<Stage>> m_stages;
    PendingTags::Arrivals m_arrivals;
};
} // namespace qo::host
