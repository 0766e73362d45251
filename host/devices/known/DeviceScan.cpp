#include "devices/known/DeviceScan.h"

#include "core/base/DatabaseError.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/RecordedFile.h"
#include "core/roots/RootLister.h"

#include <QoKernel/Collection.h>

#include <chrono>

namespace qo::host
{
namespace
{
/// This host's end of the kernel's door while a device is scanned: lists as a walk of the root
/// folders does, and keeps what went wrong.
class DeviceScanHost final : public IQoScanHost
{
public:
    DeviceScanHost(const CStringArray& realFolders, const CString& ignoredNames, bool isDeep)
        : m_lister(realFolders, ignoredNames), m_isDeep(isDeep)
    {
    }

    int list(const CString& folder, std::vector<DirEntry>& entries) override
    {
        return m_lister.list(folder, entries);
    }
    bool mustRead(const QoFileDbItem& record, const FileInfo& seen) override
    {
        return m_isDeep || isOtherFile(record, seen);
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
            m_unread.Add(path);
        else if (trouble == ETrouble::twin)
            m_twins.Add(path);
    }

    const std::string& failure() const { return m_failure; }
    std::vector<std::string> remarks() const
    {
        std::vector<std::string> all = m_remarks;
        for (const std::string& text :
             {fileRemark(m_unread,
                         "a file of the device has tags that could not be read",
                         "files of the device have tags that could not be read"),
              fileRemark(m_twins,
                         "a file of the device differs from another one in case alone and is left "
                         "out",
                         "files of the device differ from others in case alone and are left out")})
        {
            if (!text.empty())
                all.push_back(text);
        }
        return all;
    }

private:
    RootLister m_lister;
    const bool m_isDeep;
    std::string m_failure;
    std::vector<std::string> m_remarks;
    CStringArray m_unread;
    CStringArray m_twins;
};

/// The foreign collection with a host of its own, empty again at the end.
class ForeignLoad
{
public:
    explicit ForeignLoad(IQoScanHost& host) { collection.setScanHost(&host); }
    ~ForeignLoad()
    {
        CDummyProgress progress;
        collection.clearCollection(&progress);
        collection.setScanHost(nullptr);
    }
    ForeignLoad(const ForeignLoad&) = delete;
    ForeignLoad& operator=(const ForeignLoad&) = delete;

    CQoCollection& collection = CQoCollection::m_foreignCollection;
};
} // namespace

DeviceReport scanDevice(Session& session,
                        const Device& device,
                        const CString& database,
                        bool isDeep,
                        ProgressReporter& progress)
{
    CStringArray real;
    for (const CString& folder : device.folders())
    {
        if (!device.isPortable())
            real.Add(theQoUSBManager.getRealPath(CQoCollPath(folder)));
    }
    DeviceScanHost host(real, session.ignoredNames(), isDeep);
    ForeignLoad load(host);
    const auto start = std::chrono::steady_clock::now();
    CQoCollection::OpResultInfo result;
    const bool isLoaded = load.collection.load(database,
                                               device.collection(),
                                               device.folders(),
                                               device.folderKinds(),
                                               true,
                                               &progress,
                                               &result);
    if (progress.wasStopped())
        throw HostError(ExitCode::interrupted,
                        "interrupted; the files of " + device.name + " are as they were before");
    if (!isLoaded || !host.failure().empty())
        throw HostError(ExitCode::failed,
                        "the files of " + device.name +
                            " could not be taken into the collection: " + host.failure());
    DeviceReport report;
    report.files = load.collection.getFileCount();
    report.added = result.m_inserted;
    report.changed = result.m_updated;
    report.gone = result.m_deleted;
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    report.remarks = host.remarks();
    return report;
}

void dropDevice(const Device& device)
{
    const CString database = Session::databasePath();
    if (!fileSystem().exists(database))
        return;
    CQoCollDb(database).deleteColl(device.collection());
}
} // namespace qo::host
