#pragma once

#include <QoKernel/Collection.h>

#include <set>
#include <string>
#include <vector>

namespace qo::host
{
class ProgressReporter;
class Session;

/// Something that is not as it should be.
struct Finding
{
    std::string topic; ///< a word for programs, such as "gone"
    std::string what;  ///< "3 records whose files are gone"
    std::size_t count = 0;
    std::vector<std::string> examples; ///< the first few, as people see them
    std::string mend;                  ///< what to do about it
    bool isMended = false;
};

/// Looks the whole house over: the database and what stands beside it, the root folders, and
/// whether the collection and the disk agree. Changes nothing, unless it is to mend, and then only
/// what cannot harm: it removes what writers that were killed left behind, and takes a snapshot
/// where there is none. On the kernel's thread.
class Doctor
{
public:
    /// To mend, the session needs the lock.
    Doctor(Session& session, bool mends) : m_session(session), m_mends(mends) {}

    /// The data folder. False if the collection cannot be loaded.
    bool examineData();
    /// The rest; the collection is loaded. Throws HostError when it is interrupted.
    void examineCollection(ProgressReporter& progress);

    const std::vector<Finding>& findings() const { return m_findings; }
    bool isAllWell() const;

private:
    /// Nothing if there is nothing of it.
    void add(const char* topic,
             const std::vector<std::string>& all,
             const std::string& ofOne,
             const std::string& ofMany,
             const std::string& mend,
             bool isMended = false);
    void lookAtSnapshots();
    void lookAtRoom(const CString& folder, std::uint64_t wanted);
    void lookAtStore();
    void lookAtRuns();
    void lookAtPlaylists();
    void lookAtRoots();
    void compareWithDisk(ProgressReporter& progress);
    void lookAtTemporaries(const std::vector<CString>& folders);
    void lookAtCovers(const QoFileDbItemArray& records);
    void lookAtWatches(std::size_t folders);

    Session& m_session;
    bool m_mends;
    std::vector<Finding> m_findings;
    std::set<CString> m_edited; ///< files that are there and have edits, in collection form
    CStringArray m_walked;      ///< root folders that are there
};
} // namespace qo::host
