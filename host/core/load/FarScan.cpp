#include "core/load/FarScan.h"

#include "core/base/DatabaseError.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/RecordedFile.h"
#include "core/load/ScanHostUse.h"
#include "core/roots/RootGuard.h"
#include "core/roots/RootLister.h"
#include "core/roots/StoredRoots.h"
#include "core/store/HostStore.h"

#include <QoKernel/Collection.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <unordered_set>

namespace qo::host
{
namespace
{
/// This host's end of the kernel's door during the scan: lists as a walk of the root folders
/// does, and keeps what went wrong.
class FarScanHost final : public IQoScanHost
{
public:
    FarScanHost(const FarCollection& collection,
                const CString& ignoredNames,
                bool isDeep,
                ProgressReporter& progress)
        : m_progress(progress)
        , m_name(collection.name)
        , m_lister(collection.diskFolders, ignoredNames)
        , m_isDeep(isDeep)
    {
    }

    /// Called with the unread files before the records are saved, so that an end between the two
    /// costs a few fetches, and no tag for good.
    void setNotFetchedSink(std::function<void(const CStringArray& files)> sink)
    {
        m_sink = std::move(sink);
    }
    void beforeSave() override
    {
        try
        {
            if (m_sink && !m_notFetched.IsEmpty())
                m_sink(m_notFetched);
        }
        catch (const HostError& error)
        {
            m_failure = error.what();
            m_progress.cancel();
        }
    }

    int list(const CString& folder, std::vector<DirEntry>& entries) override
    {
        return m_lister.list(folder, entries);
    }
    bool mustRead(const QoFileDbItem& record, const FileInfo& seen) override
    {
        return m_isDeep || isOtherFile(record, seen) || m_readAgain.contains(record.path);
    }
    /// An empty place mostly is one that is away, such as the folder in which a disk was mounted.
    void beforeNames(const QoFileDbItemArray& records) override
    {
        m_isEmptied =
            !records.IsEmpty() && std::all_of(records.begin(),
                                              records.end(),
                                              [](const QoFileDbItemPtr& item)
                                              { return item->dbState == dbState::deleted; });
        if (m_isEmptied)
            m_progress.cancel();
    }
    void failed(ETrouble trouble, const CString& path, const CString& cause) override
    {
        if (trouble == ETrouble::load || trouble == ETrouble::save)
            m_failure = databaseWords(cause);
        else if (trouble == ETrouble::unlisted)
            m_remarks.push_back(shownPath(path) +
                                " was not listed in full, so the files that are "
                                "known of it stay: " +
                                plainWords(cause));
        else if (trouble == ETrouble::readTag || trouble == ETrouble::absent)
        {
            m_unread.Add(path);
            if (CQoCollPath::typeOf(path) == CQoCollPath::physicalPlugin)
                m_notFetched.Add(path);
        }
        else if (trouble == ETrouble::twin)
            m_twins.Add(path);
    }

    /// Files whose tags could not be fetched are asked for by the next scan.
    void startWithNotFetched(const CStringArray& paths)
    {
        m_readAgain = {paths.begin(), paths.end()};
    }
    const CStringArray& notFetched() const { return m_notFetched; }
    bool startedWithAny() const { return !m_readAgain.empty(); }
    bool isEmptied() const { return m_isEmptied; }
    const std::string& failure() const { return m_failure; }
    std::vector<std::string> remarks() const
    {
        std::vector<std::string> all = m_remarks;
        for (const std::string& text :
             {fileRemark(m_unread,
                         "a file of " + m_name + " has tags that could not be read",
                         "files of " + m_name + " have tags that could not be read"),
              fileRemark(
                  m_twins,
                  "a file of " + m_name + " differs from another one in case alone and is left out",
                  "files of " + m_name + " differ from others in case alone and are left out")})
        {
            if (!text.empty())
                all.push_back(text);
        }
        return all;
    }

private:
    ProgressReporter& m_progress;
    bool m_isEmptied = false;
    std::function<void(const CStringArray& files)> m_sink;
    const std::string m_name;
    RootLister m_lister;
    const bool m_isDeep;
    std::string m_failure;
    std::vector<std::string> m_remarks;
    CStringArray m_unread;
    CStringArray m_notFetched;
    std::unordered_set<CString> m_readAgain;
    CStringArray m_twins;
};

/// The foreign collection with a host of its own, empty again at the end.
class ForeignLoad
{
public:
    explicit ForeignLoad(IQoScanHost& host) : m_use(collection, host) {}
    ~ForeignLoad()
    {
        CDummyProgress progress;
        collection.clearCollection(&progress);
    }
    ForeignLoad(const ForeignLoad&) = delete;
    ForeignLoad& operator=(const ForeignLoad&) = delete;

    CQoCollection& collection = CQoCollection::m_foreignCollection;

private:
    const ScanHostUse m_use;
};
} // namespace

FarScanReport scanFar(Session& session,
                      const FarCollection& collection,
                      const CString& database,
                      bool isDeep,
                      ProgressReporter& progress)
{
    if (collection.id.IsEmpty())
        throw HostError(ExitCode::failed, collection.name + " has no collection of its own");
    FarScanHost host(collection, session.ignoredNames(), isDeep, progress);
    const bool isTrial = database != Session::databasePath();
    const CStringArray former = HostStore(Session::folder()).unreadFiles(collection.id);
    host.startWithNotFetched(former);
    if (!isTrial)
        host.setNotFetchedSink(
            [&](const CStringArray& files)
            {
                CStringArray all = former;
                for (const CString& file : files)
                    all.Add(file);
                HostStore(Session::folder()).setUnreadFiles(all, collection.id);
            });
    ForeignLoad load(host);
    const auto start = std::chrono::steady_clock::now();
    CQoCollection::OpResultInfo result;
    const bool isLoaded = load.collection.load(
        database, collection.id, collection.folders, collection.kinds, true, &progress, &result);
    if (host.isEmptied())
        throw HostError(ExitCode::away,
                        collection.name +
                            " is empty, but the collection has files of it, which stay: is all of "
                            "it there? Who forgets the place forgets them");
    if (progress.wasStopped() && host.failure().empty())
        throw HostError(ExitCode::interrupted,
                        "interrupted; the files of " + collection.name +
                            " are as they were before");
    const std::string failed =
        "the files of " + collection.name + " could not be taken into the collection";
    if (result.m_unsupportedExtract)
        throw HostError(ExitCode::failed,
                        failed + ": their list was written by a newer version of the program");
    if (!isLoaded || !host.failure().empty())
        throw HostError(ExitCode::failed,
                        failed + (host.failure().empty() ? "" : ": " + host.failure()));
    if (!isTrial && (host.startedWithAny() || !host.notFetched().IsEmpty()))
        HostStore(Session::folder()).setUnreadFiles(host.notFetched(), collection.id);
    FarScanReport report;
    report.files = load.collection.getFileCount();
    report.added = result.m_inserted;
    report.changed = result.m_updated;
    report.gone = result.m_deleted;
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    report.remarks = host.remarks();
    return report;
}

void dropFar(const CString& collectionId)
{
    const CString database = Session::databasePath();
    HostStore store(Session::folder());
    if (!collectionId.IsEmpty() && !store.unreadFiles(collectionId).IsEmpty())
        store.setUnreadFiles({}, collectionId);
    // The user's own collection is the one without an id.
    if (!collectionId.IsEmpty() && fileSystem().exists(database))
        CQoCollDb(database).deleteColl(collectionId);
}

std::optional<std::int64_t> countFar(const CString& database, const CString& collectionId)
{
    CollInfoDbItem info;
    if (!isCollection(database) || !CQoCollDb(database).getCollInfo(collectionId, info))
        return {};
    return countFiles(database, collectionId);
}
} // namespace qo::host
